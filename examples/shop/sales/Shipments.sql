CREATE TABLE [sales].[Shipments] (
    [ShipmentNo] VARCHAR(20)        NOT NULL,
    [ShipmentId] INT IDENTITY(1, 1) NOT NULL,
    [OrderId]    BIGINT             NOT NULL,
    [Carrier]    NVARCHAR(40)       NOT NULL,
    [Parcels]    TINYINT            CONSTRAINT [DF_Shipments_Parcels] DEFAULT ((1)) NOT NULL,
    [SentAt]     DATETIME2(7)       NULL,
    [LastSeen]   DATETIMEOFFSET(7)  NULL,
    CONSTRAINT [PK_Shipments] PRIMARY KEY CLUSTERED ([ShipmentNo]),
    CONSTRAINT [CK_Shipments_Parcels] CHECK ([Parcels]>(0)),
    CONSTRAINT [FK_Shipments_Orders] FOREIGN KEY ([OrderId]) REFERENCES [sales].[Orders] ([OrderId]),
    CONSTRAINT [UQ_Shipments_ShipmentId] UNIQUE NONCLUSTERED ([ShipmentId])
);

GO

EXECUTE sp_bindefault @defname = N'[dbo].[no_carrier]', @objname = N'[sales].[Shipments].[Carrier]';
