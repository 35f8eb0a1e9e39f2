CREATE TABLE [dbo].[Countries] (
    [Code]   CHAR(2) COLLATE Latin1_General_BIN2 NOT NULL,
    [Name]   NVARCHAR(80)                        NOT NULL,
    [Prefix] SMALLINT                            NULL,
    CONSTRAINT [PK_Countries] PRIMARY KEY CLUSTERED ([Code]),
    CONSTRAINT [CK_Countries_Code] CHECK ([Code]<>''),
    CONSTRAINT [UQ_Countries_Name] UNIQUE NONCLUSTERED ([Name])
);

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'international dialling code', @level0type = N'SCHEMA', @level0name = N'dbo', @level1type = N'TABLE', @level1name = N'Countries', @level2type = N'COLUMN', @level2name = N'Prefix';
