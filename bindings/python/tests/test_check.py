"""Rows that the server would refuse, and strings as it compares them."""
import sqlite3

import pytest

import tov_schema
from tov_schema import _checks, _collations


@pytest.fixture
def strangers(tmp_path):
    """A database that somebody else has made."""
    path = tmp_path / "strangers.db"
    connection = sqlite3.connect(path)
    connection.executescript("""
        CREATE TABLE Customers (Id INTEGER PRIMARY KEY, Name TEXT, Code TEXT);
        INSERT INTO Customers VALUES (1, 'Ada', 'A   '), (2, NULL, 'B   '), (3, 'Bob', 'toolong');
        CREATE TABLE "sales.Orders" (Id INTEGER PRIMARY KEY, Customer INTEGER, Day TEXT);
        INSERT INTO "sales.Orders" VALUES (1, 9, '2024-02-30')""")
    connection.close()
    return path


def test_violations_say_what_where_and_why(schema, strangers):
    violations, is_whole = schema.check_database(strangers, only=["dbo.Customers"])
    assert is_whole
    assert violations == [
        tov_schema.Violation("null", "error", "must not be NULL", "Customers", "Name", 2, "Id=2", "NULL"),
        tov_schema.Violation("too-long", "error", "width exceeded: 4", "Customers", "Code", 3, "Id=3", "'toolong'")]


def test_tables_are_chosen_and_violations_limited(schema, strangers):
    def codes(**options):
        checked = schema.check_database(strangers, **options)
        return [(violation.table, violation.code) for violation in checked.violations if violation.severity == "error"]
    assert codes(skip=["Customers"]) == [("sales.Orders", "wrong-form"), ("sales.Orders", "no-such-row")]
    limited = schema.check_database(strangers, limit=1)
    assert len(limited.violations) == 1 and not limited.is_whole and not limited.is_accepted
    with pytest.raises(tov_schema.Error, match='no table "Nowhere"'):
        schema.check_database(strangers, only=["Nowhere"])
    with pytest.raises(ValueError, match="server, basic"):
        schema.check_database(strangers, rules="strict")


def test_what_the_server_would_take(schema, database):
    assert schema.check_database(database) == ([], True)
    assert schema.check_database(database).is_accepted


def test_an_exception_while_violations_are_taken_is_not_lost(schema, strangers, monkeypatch):
    def interrupt(_):
        raise KeyboardInterrupt
    monkeypatch.setattr(_checks, "_violation", interrupt)
    with pytest.raises(KeyboardInterrupt):
        schema.check_database(strangers)


@pytest.fixture
def german(tmp_path):
    """A schema whose key is compared by a collation of the server."""
    script = tmp_path / "german.sql"
    script.write_text("CREATE TABLE T (Street nvarchar(40) COLLATE Latin1_General_CI_AS NOT NULL PRIMARY KEY)")
    schema, findings = tov_schema.import_source(script)
    assert [(finding.code, finding.severity) for finding in findings] == [("comparison-approximate", "info")]
    return schema


def test_a_database_of_the_servers_collations(german, tmp_path):
    path = tmp_path / "german.db"
    german.create_database(path, collations="server")
    with pytest.raises(sqlite3.OperationalError, match="no such collation"):
        tov_schema.connect(path).execute("INSERT INTO T VALUES ('Hauptstraße')")
    connection = tov_schema.connect(path, collations="server")
    connection.execute("INSERT INTO T VALUES ('Hauptstraße')")
    with pytest.raises(sqlite3.IntegrityError, match="UNIQUE"):
        connection.execute("INSERT INTO T VALUES ('HAUPTSTRASSE ')")
    connection.commit()
    assert german.check_database(path) == ([], True)
    rows = tmp_path / "T.csv"
    rows.write_text("Street\nhauptstrasse\nNebenstraße\n")
    assert (lambda loaded: (loaded.loaded, loaded.rejected))(german.load(path, [rows])) == (1, 1)


def test_the_collations_are_those_of_the_connection_alone(german, tmp_path):
    german.create_database(tmp_path / "builtin.db")
    assert _collations.has_collations(tov_schema.connect(tmp_path / "builtin.db", collations="server"))
    assert not _collations.has_collations(tov_schema.connect(tmp_path / "builtin.db"))
    assert not _collations.has_collations(sqlite3.connect(":memory:"))


def test_duplicates_are_found_as_the_server_compares(german, tmp_path):
    connection = sqlite3.connect(tmp_path / "plain.db")
    connection.executescript("CREATE TABLE T (Street TEXT); INSERT INTO T VALUES ('Straße'), ('STRASSE')")
    checked = german.check_database(tmp_path / "plain.db")
    assert [violation.code for violation in checked.violations] == ["duplicate-key"]


def test_without_the_extension(german, tmp_path, monkeypatch):
    monkeypatch.setattr(_collations, "_extension", None)
    monkeypatch.setattr(_collations, "_find", lambda: None)
    with pytest.raises(ImportError, match="TOV_SQLITE_LIBRARY"):
        german.create_database(tmp_path / "g.db", collations="server")
    german.create_database(tmp_path / "g.db")
    with pytest.raises(ImportError, match="TOV_SQLITE_LIBRARY"):
        tov_schema.connect(tmp_path / "g.db", collations="server")
    assert german.check_database(tmp_path / "g.db").is_accepted
    monkeypatch.setattr(_collations, "_find", lambda: str(tmp_path / "libtov_sqlite.so"))
    with pytest.raises(ImportError, match="cannot be used"):
        german.create_database(tmp_path / "h.db", collations="server")


def test_collations_are_one_of_two(german, tmp_path):
    for use in (lambda: german.create_database(tmp_path / "g.db", collations="icu"),
                lambda: tov_schema.connect(tmp_path / "g.db", collations="icu")):
        with pytest.raises(ValueError, match="builtin, server"):
            use()
