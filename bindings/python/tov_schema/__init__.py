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
import pathlib
import sqlite3
from typing import Any, Dict

from . import _collations
from ._changes import Change, Changes, Step, TableChange
from ._checks import Checked, Violation
from ._library import Error, Frame
from ._schema import Column, Finding, Imported, Loaded, Path, Schema, Table, convert, import_source

__all__ = ["Change", "Changes", "Checked", "Column", "Error", "Finding", "Frame", "Imported", "Loaded", "Schema", "Step",
           "Table", "TableChange", "Violation", "connect", "convert", "import_source"]
__version__ = "0.1.0"


def connect(database: Path, *, collations: str = "builtin", **options: Any) -> sqlite3.Connection:
    """Opens a created database with the two settings that its rules need and a database does not keep: references are
    checked, and triggers run for rows that an action of a reference or REPLACE deletes. Rows are sqlite3.Row. A file
    that is not there is not made.

    collations: "server" gives the connection the server's collations, which a database that was created so needs, and
        upper() and lower() that know more letters than those of ASCII.
    options: those of sqlite3.connect(), but for autocommit=False, which takes the settings no longer: set
    connection.autocommit afterwards.
    """
    if not options.get("uri"):
        database, options = pathlib.Path(database).absolute().as_uri() + "?mode=rw", {**options, "uri": True}
    if collations not in ("builtin", "server"):
        raise ValueError(f"collations is one of builtin, server, not {collations!r}")
    connection = _connect(database, collations == "server", options)
    connection.execute("PRAGMA recursive_triggers = ON")
    if connection.execute("PRAGMA foreign_keys = ON").execute("PRAGMA foreign_keys").fetchone() != (1,):
        connection.close()
        raise ValueError("references would not be checked: the connection is in a transaction from the beginning")
    connection.row_factory = sqlite3.Row
    return connection


def _connect(database: Path, with_collations: bool, options: Dict[str, Any]) -> sqlite3.Connection:
    if not with_collations:
        return sqlite3.connect(database, **options)
    with _collations.added():
        connection = sqlite3.connect(database, **options)
    if not _collations.has_collations(connection):
        try:
            _collations.load_into(connection)
        except BaseException:
            connection.close()
            raise
    return connection
