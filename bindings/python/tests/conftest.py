import os
import pathlib

import pytest

import tov_schema

SCRIPT = """
CREATE TABLE dbo.Customers (Id int IDENTITY NOT NULL PRIMARY KEY, Name nvarchar(20) NOT NULL, Code char(4) NULL)
GO
CREATE TABLE sales.Orders (
    Id int NOT NULL PRIMARY KEY,
    Customer int NULL REFERENCES dbo.Customers (Id) ON DELETE CASCADE,
    Total decimal(9,2) NULL, Paid money NULL, IsOpen bit NULL, Ratio float NULL,
    Token uniqueidentifier NULL, Hash binary(4) NULL,
    Day date NULL, At time(3) NULL, Fine time(7) NULL, Placed datetime NULL, Rough smalldatetime NULL,
    Sent datetime2(1) NULL, Exact datetime2(7) NULL, Stamp datetimeoffset(3) NULL,
    Four time(4) NULL, FourToo datetime2(4) NULL, FineStamp datetimeoffset(7) NULL, Light real NULL, Wide nchar(4) NULL,
    Twice AS (Total * 2))
GO
INSERT dbo.Customers (Name, Code) VALUES (N'Ada', 'A'), (N'Bob', NULL)
INSERT sales.Orders (Id, Customer, Total) VALUES (1, 1, 9.90), (2, 7, 1.00)
"""


@pytest.fixture
def script(tmp_path):
    path = tmp_path / "shop.sql"
    path.write_text(SCRIPT)
    return path


@pytest.fixture
def schema(script):
    return tov_schema.import_source(script).schema


@pytest.fixture
def database(schema, tmp_path):
    path = tmp_path / "shop.db"
    schema.create_database(path)
    return path


@pytest.fixture
def package():
    """A package with the rows of a small business, which the build makes; TOV_EXAMPLES is the folder that has it."""
    return pathlib.Path(os.environ["TOV_EXAMPLES"]) / "shop.bacpac"
