CREATE TABLE [dbo].[Products] (
    [ProductId]    INT                NOT NULL,
    [Sku]          NCHAR(8)           NOT NULL,
    [Name]         NVARCHAR(120)      NOT NULL,
    [CategoryId]   INT                NOT NULL,
    [SupplierId]   SMALLINT           NULL,
    [ReplacedBy]   INT                NULL,
    [Price]        DECIMAL(18, 4)     CONSTRAINT [DF_Products_Price] DEFAULT ((0.0000)) NOT NULL,
    [Cost]         DECIMAL(12, 4)     NULL,
    [Margin]       AS ([Price]-[Cost]),
    [Weight]       FLOAT(53)          NULL,
    [Colour]       [dbo].[ColourName] CONSTRAINT [DF_Products_Colour] DEFAULT (N'none') NOT NULL,
    [Discontinued] BIT                CONSTRAINT [DF_Products_Discontinued] DEFAULT ('False') NOT NULL,
    [Picture]      VARBINARY(MAX)     NULL,
    [Manual]       XML                NULL,
    [Description]  NVARCHAR(MAX)      CONSTRAINT [DF_Products_Description] DEFAULT (N'') NULL,
    [Changed]      TIMESTAMP          NOT NULL,
    CONSTRAINT [PK_Products] PRIMARY KEY CLUSTERED ([ProductId]),
    CONSTRAINT [CK_Products_Price] CHECK ([Price]>=(0)),
    CONSTRAINT [CK_Products_Replacement] CHECK ([ReplacedBy]<>[ProductId]),
    CONSTRAINT [CK_Products_Sku] CHECK ([Sku] like N'[A-Z][A-Z]-[0-9][0-9][0-9][0-9][0-9]'),
    CONSTRAINT [CK_Products_Weight] CHECK ([Weight]>(0)),
    CONSTRAINT [FK_Products_Categories] FOREIGN KEY ([CategoryId]) REFERENCES [dbo].[Categories] ([CategoryId]),
    CONSTRAINT [FK_Products_Replacement] FOREIGN KEY ([ReplacedBy]) REFERENCES [dbo].[Products] ([ProductId]),
    CONSTRAINT [FK_Products_Suppliers] FOREIGN KEY ([SupplierId]) REFERENCES [dbo].[Suppliers] ([SupplierId]) ON DELETE SET NULL,
    CONSTRAINT [UQ_Products_Sku] UNIQUE NONCLUSTERED ([Sku])
)
WITH (DATA_COMPRESSION = PAGE);

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'the product that took its place', @level0type = N'SCHEMA', @level0name = N'dbo', @level1type = N'TABLE', @level1name = N'Products', @level2type = N'COLUMN', @level2name = N'ReplacedBy';
