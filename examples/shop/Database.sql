CREATE DATABASE [Shop] COLLATE Latin1_General_CI_AS;
GO

CREATE SCHEMA [sales];
GO

CREATE TYPE [dbo].[ColourName] FROM NVARCHAR(20) NOT NULL;
GO

CREATE DEFAULT [dbo].[no_carrier] AS N'none';
GO
