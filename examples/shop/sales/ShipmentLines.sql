CREATE TABLE [sales].[ShipmentLines] (
    [ShipmentNo] VARCHAR(20)   NOT NULL,
    [OrderId]    BIGINT        NOT NULL,
    [LineNumber] SMALLINT      NOT NULL,
    [Quantity]   DECIMAL(9, 3) NOT NULL,
    [Label]      VARBINARY(64) NULL,
    CONSTRAINT [PK_ShipmentLines] PRIMARY KEY CLUSTERED ([ShipmentNo], [OrderId], [LineNumber]),
    CONSTRAINT [FK_ShipmentLines_OrderLines] FOREIGN KEY ([OrderId], [LineNumber]) REFERENCES [sales].[OrderLines] ([OrderId], [LineNumber]) ON DELETE CASCADE,
    CONSTRAINT [FK_ShipmentLines_Shipments] FOREIGN KEY ([ShipmentNo]) REFERENCES [sales].[Shipments] ([ShipmentNo]) ON DELETE CASCADE ON UPDATE CASCADE
);
