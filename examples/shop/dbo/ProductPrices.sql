CREATE TABLE [dbo].[ProductPrices] (
    [ProductId] INT          NOT NULL,
    [ValidFrom] DATETIME     NOT NULL,
    [Price]     MONEY        NOT NULL,
    [SetBy]     VARCHAR(MAX) NULL,
    [SetAt]     DATETIME     CONSTRAINT [DF_ProductPrices_SetAt] DEFAULT (getdate()) NOT NULL,
    CONSTRAINT [PK_ProductPrices] PRIMARY KEY CLUSTERED ([ProductId], [ValidFrom]),
    CONSTRAINT [CK_ProductPrices_Price] CHECK ([Price]>(0)),
    CONSTRAINT [FK_ProductPrices_Products] FOREIGN KEY ([ProductId]) REFERENCES [dbo].[Products] ([ProductId]) ON DELETE CASCADE
);
