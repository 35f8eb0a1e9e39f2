CREATE TABLE [dbo].[Warehouses] (
    [WarehouseId] UNIQUEIDENTIFIER  CONSTRAINT [DF_Warehouses_WarehouseId] DEFAULT (newsequentialid()) NOT NULL,
    [Name]        NVARCHAR(60)      NOT NULL,
    [Location]    [sys].[geography] NULL,
    [Outline]     [sys].[geometry]  NULL,
    [OpenedOn]    DATE              NOT NULL,
    [ClosedOn]    DATE              NULL,
    [Notes]       SQL_VARIANT       NULL,
    CONSTRAINT [PK_Warehouses] PRIMARY KEY CLUSTERED ([WarehouseId]),
    CONSTRAINT [CK_Warehouses_Closed] CHECK ([ClosedOn]>=[OpenedOn]),
    CONSTRAINT [UQ_Warehouses_Name] UNIQUE NONCLUSTERED ([Name])
);
