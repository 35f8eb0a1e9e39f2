"""SQL Server tables in SQLite databases.

    import tov_schema

    schema, findings = tov_schema.import_source("Shop.dacpac")
    schema.create_database("shop.db")
    connection = tov_schema.connect("shop.db")
    orders = schema.table("sales.Orders")
    connection.execute(*orders.insert({"OrderNo": "2026-00001", "Total": Decimal("47.42")}))
    row = connection.execute('SELECT * FROM "sales.Orders"').fetchone()
    orders.load_row(row)["Total"]       # Decimal('47.42')
"""
import sqlite3
from typing import Any

from ._library import Error, Frame
from ._schema import Column, Finding, Imported, Loaded, Path, Schema, Table, convert, import_source

__all__ = ["Column", "Error", "Finding", "Frame", "Imported", "Loaded", "Schema", "Table", "connect", "convert",
           "import_source"]
__version__ = "0.1.0"


def connect(database: Path, **options: Any) -> sqlite3.Connection:
    """Opens a created database with the two settings that its rules need and a database does not keep: references are
    checked, and triggers run for rows that an action of a reference or REPLACE deletes. Rows are sqlite3.Row.

    options: those of sqlite3.connect().
    """
    connection = sqlite3.connect(database, **options)
    connection.execute("PRAGMA foreign_keys = ON")
    connection.execute("PRAGMA recursive_triggers = ON")
    connection.row_factory = sqlite3.Row
    return connection
