CREATE TABLE [dbo].[Suppliers] (
    [SupplierId]   SMALLINT IDENTITY(1, 1)                      NOT NULL,
    [Name]         NVARCHAR(100)                                NOT NULL,
    [CountryCode]  CHAR(2) COLLATE Latin1_General_BIN2          NOT NULL,
    [Phone]        VARCHAR(30) COLLATE Latin1_General_100_CS_AS NULL,
    [Rating]       TINYINT                                      CONSTRAINT [DF_Suppliers_Rating] DEFAULT ((3)) NOT NULL,
    [OpensAt]      TIME(0)                                      CONSTRAINT [DF_Suppliers_OpensAt] DEFAULT ('08:00:00') NOT NULL,
    [Terms]        TEXT                                         NULL,
    [DailyFee]     SMALLMONEY                                   CONSTRAINT [DF_Suppliers_DailyFee] DEFAULT ((0.5)) NOT NULL,
    [ContractFrom] SMALLDATETIME                                NULL,
    CONSTRAINT [PK_Suppliers] PRIMARY KEY CLUSTERED ([SupplierId]),
    CONSTRAINT [CK_Suppliers_Rating] CHECK ([Rating]>=(1) AND [Rating]<=(5)),
    CONSTRAINT [FK_Suppliers_Countries] FOREIGN KEY ([CountryCode]) REFERENCES [dbo].[Countries] ([Code])
);
