CREATE TABLE [dbo].[Categories] (
    [CategoryId] INT IDENTITY(1, 1)  NOT NULL,
    [ParentId]   INT                 NULL,
    [Name]       NVARCHAR(60)        NOT NULL,
    [SortOrder]  SMALLINT            CONSTRAINT [DF_Categories_SortOrder] DEFAULT ((-1)) NOT NULL,
    [Place]      [sys].[hierarchyid] NULL,
    CONSTRAINT [PK_Categories] PRIMARY KEY CLUSTERED ([CategoryId]),
    CONSTRAINT [FK_Categories_Parent] FOREIGN KEY ([ParentId]) REFERENCES [dbo].[Categories] ([CategoryId]),
    CONSTRAINT [UQ_Categories_Name] UNIQUE NONCLUSTERED ([Name])
);

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'the category that holds this one', @level0type = N'SCHEMA', @level0name = N'dbo', @level1type = N'TABLE', @level1name = N'Categories', @level2type = N'COLUMN', @level2name = N'ParentId';
