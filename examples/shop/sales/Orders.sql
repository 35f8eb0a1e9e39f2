CREATE TABLE [sales].[Orders] (
    [OrderId]       BIGINT IDENTITY(1, 1)               NOT NULL,
    [OrderNo]       CHAR(10)                            NOT NULL,
    [CustomerId]    INT                                 NOT NULL,
    [PlacedAt]      DATETIME2(3)                        CONSTRAINT [DF_Orders_PlacedAt] DEFAULT (sysutcdatetime()) NOT NULL,
    [RequiredBy]    DATE                                NULL,
    [Status]        CHAR(1)                             CONSTRAINT [DF_Orders_Status] DEFAULT ('N') NOT NULL,
    [Currency]      CHAR(3) COLLATE Latin1_General_BIN2 CONSTRAINT [DF_Orders_Currency] DEFAULT ('EUR') NOT NULL,
    [Total]         MONEY                               CONSTRAINT [DF_Orders_Total] DEFAULT ((0)) NOT NULL,
    [ParentOrderId] BIGINT                              NULL,
    CONSTRAINT [PK_Orders] PRIMARY KEY CLUSTERED ([OrderId]),
    CONSTRAINT [CK_Orders_Status] CHECK ([Status]='X' OR [Status]='S' OR [Status]='P' OR [Status]='N'),
    CONSTRAINT [CK_Orders_Total] CHECK ([Total]>=(0)),
    CONSTRAINT [FK_Orders_Customers] FOREIGN KEY ([CustomerId]) REFERENCES [dbo].[Customers] ([CustomerId]),
    CONSTRAINT [FK_Orders_Parent] FOREIGN KEY ([ParentOrderId]) REFERENCES [sales].[Orders] ([OrderId]),
    CONSTRAINT [UQ_Orders_OrderNo] UNIQUE NONCLUSTERED ([OrderNo])
);

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'N new, P packed, S shipped, X cancelled', @level0type = N'SCHEMA', @level0name = N'sales', @level1type = N'TABLE', @level1name = N'Orders', @level2type = N'COLUMN', @level2name = N'Status';

GO

EXECUTE sp_addextendedproperty @name = N'MS_Description', @value = N'the order that this one completes', @level0type = N'SCHEMA', @level0name = N'sales', @level1type = N'TABLE', @level1name = N'Orders', @level2type = N'COLUMN', @level2name = N'ParentOrderId';
