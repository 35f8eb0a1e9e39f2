CREATE TABLE [dbo].[Stock] (
    [WarehouseId] UNIQUEIDENTIFIER                         NOT NULL,
    [ProductId]   INT                                      NOT NULL,
    [Quantity]    INT                                      CONSTRAINT [DF_Stock_Quantity] DEFAULT ((0)) NOT NULL,
    [Reserved]    INT                                      CONSTRAINT [DF_Stock_Reserved] DEFAULT ((0)) NOT NULL,
    [Shelf]       CHAR(6) COLLATE Latin1_General_100_CS_AS NULL,
    [CountedAt]   DATETIME2(0)                             NULL,
    [Seal]        BINARY(16)                               CONSTRAINT [DF_Stock_Seal] DEFAULT(0x00000000000000000000000000000000) NULL,
    CONSTRAINT [PK_Stock] PRIMARY KEY CLUSTERED ([WarehouseId], [ProductId]),
    CONSTRAINT [CK_Stock_Quantity] CHECK ([Quantity]>=(0)),
    CONSTRAINT [CK_Stock_Reserved] CHECK ([Reserved]>=(0) AND [Reserved]<=[Quantity]),
    CONSTRAINT [FK_Stock_Products] FOREIGN KEY ([ProductId]) REFERENCES [dbo].[Products] ([ProductId]),
    CONSTRAINT [FK_Stock_Warehouses] FOREIGN KEY ([WarehouseId]) REFERENCES [dbo].[Warehouses] ([WarehouseId]) ON DELETE CASCADE
);

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'What lies where', @level0type = N'SCHEMA', @level0name = N'dbo', @level1type = N'TABLE', @level1name = N'Stock';
