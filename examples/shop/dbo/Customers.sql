CREATE TABLE [dbo].[Customers] (
    [CustomerId]  INT IDENTITY(1, 1)                  NOT NULL,
    [CustomerNo]  VARCHAR(12)                         NOT NULL,
    [Name]        NVARCHAR(100)                       NOT NULL,
    [Email]       NVARCHAR(254)                       NULL,
    [CountryCode] CHAR(2) COLLATE Latin1_General_BIN2 CONSTRAINT [DF_Customers_CountryCode] DEFAULT ('DE') NOT NULL,
    [Kind]        CHAR(1)                             CONSTRAINT [DF_Customers_Kind] DEFAULT ('P') NOT NULL,
    [CreditLimit] MONEY                               CONSTRAINT [DF_Customers_CreditLimit] DEFAULT ((250.00)) NOT NULL,
    [Discount]    REAL                                CONSTRAINT [DF_Customers_Discount] DEFAULT ((0)) NOT NULL,
    [IsActive]    BIT                                 CONSTRAINT [DF_Customers_IsActive] DEFAULT ((1)) NOT NULL,
    [Since]       DATE                                CONSTRAINT [DF_Customers_Since] DEFAULT (getutcdate()) NOT NULL,
    [Portrait]    IMAGE                               NULL,
    [Remarks]     NTEXT                               NULL,
    [RowGuid]     UNIQUEIDENTIFIER                    CONSTRAINT [DF_Customers_RowGuid] DEFAULT (newid()) NOT NULL ROWGUIDCOL,
    CONSTRAINT [PK_Customers] PRIMARY KEY CLUSTERED ([CustomerId]),
    CONSTRAINT [CK_Customers_CreditLimit] CHECK ([CreditLimit]>=(0)),
    CONSTRAINT [CK_Customers_Discount] CHECK ([Discount]>=(0) AND [Discount]<=(0.5)),
    CONSTRAINT [CK_Customers_Email] CHECK ([Email] like '%@%'),
    CONSTRAINT [CK_Customers_Kind] CHECK ([Kind]='C' OR [Kind]='P'),
    CONSTRAINT [FK_Customers_Countries] FOREIGN KEY ([CountryCode]) REFERENCES [dbo].[Countries] ([Code]) ON UPDATE CASCADE,
    CONSTRAINT [UQ_Customers_CustomerNo] UNIQUE NONCLUSTERED ([CustomerNo])
);

GO

CREATE UNIQUE NONCLUSTERED INDEX [UX_Customers_Email]
    ON [dbo].[Customers]([Email]);

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'Whoever orders, private or company', @level0type = N'SCHEMA', @level0name = N'dbo', @level1type = N'TABLE', @level1name = N'Customers';

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'P private, C company', @level0type = N'SCHEMA', @level0name = N'dbo', @level1type = N'TABLE', @level1name = N'Customers', @level2type = N'COLUMN', @level2name = N'Kind';
