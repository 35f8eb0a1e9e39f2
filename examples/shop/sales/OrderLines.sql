CREATE TABLE [sales].[OrderLines] (
    [OrderId]     BIGINT           NOT NULL,
    [LineNumber]  SMALLINT         NOT NULL,
    [ProductId]   INT              NOT NULL,
    [WarehouseId] UNIQUEIDENTIFIER NULL,
    [Quantity]    DECIMAL(9, 3)    CONSTRAINT [DF_OrderLines_Quantity] DEFAULT ((1)) NOT NULL,
    [UnitPrice]   MONEY            NOT NULL,
    [Discount]    NUMERIC(5, 4)    CONSTRAINT [DF_OrderLines_Discount] DEFAULT ((0.0500)) NOT NULL,
    [LineTotal]   AS (([Quantity]*[UnitPrice])*((1)-[Discount])),
    CONSTRAINT [PK_OrderLines] PRIMARY KEY CLUSTERED ([OrderId], [LineNumber]),
    CONSTRAINT [CK_OrderLines_LineNumber] CHECK ([LineNumber]>(0)),
    CONSTRAINT [CK_OrderLines_Quantity] CHECK ([Quantity]>(0)),
    CONSTRAINT [FK_OrderLines_Orders] FOREIGN KEY ([OrderId]) REFERENCES [sales].[Orders] ([OrderId]) ON DELETE CASCADE,
    CONSTRAINT [FK_OrderLines_Products] FOREIGN KEY ([ProductId]) REFERENCES [dbo].[Products] ([ProductId]),
    CONSTRAINT [FK_OrderLines_Stock] FOREIGN KEY ([WarehouseId], [ProductId]) REFERENCES [dbo].[Stock] ([WarehouseId], [ProductId])
);
