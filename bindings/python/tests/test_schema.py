"""The whole way: sources, schemas, databases, rows."""
import json
import sqlite3
import sys
import zipfile

import pytest

import tov_schema
from tov_schema import _library


def test_a_script_becomes_a_schema_with_findings(script):
    schema, findings = tov_schema.import_source(script)
    assert [table.server_name for table in schema.tables()] == ["dbo.Customers", "sales.Orders"]
    assert [(finding.code, finding.table, finding.column, finding.severity) for finding in findings] == [
        ("column-computed", "sales.Orders", "Twice", "warning"),
        ("type-as-text", "sales.Orders", "Stamp", "warning"),
        ("type-as-text", "sales.Orders", "FineStamp", "warning")]


def test_sources_may_be_bytes_and_folders(script, schema):
    assert tov_schema.import_source(script.read_bytes()).schema.to_json() == schema.to_json()
    assert tov_schema.import_source(script.parent).schema.to_json() == schema.to_json()


def test_only_skip_and_rename(script):
    def names(**options):
        return [table.name for table in tov_schema.import_source(script, **options).schema.tables()]
    assert names(only=["sales.*"]) == ["sales.Orders"]
    assert names(skip=["Orders"]) == ["Customers"]
    assert names(renames=["sales.Orders=Orders"]) == ["Customers", "Orders"]


def test_clocks_and_constants(tmp_path):
    script = tmp_path / "clock.sql"
    script.write_text("CREATE TABLE T (At datetime2(0) DEFAULT getdate(), By_ nvarchar(50) DEFAULT suser_sname())")
    schema, findings = tov_schema.import_source(script, clock="utc", constants=["suser_sname=app"])
    assert findings == []
    assert "(datetime('now'))" in schema.to_json() and "'app'" in schema.to_json()
    assert [finding.code for finding in tov_schema.import_source(script).findings] == [
        "default-clock", "default-dropped"]


def test_types():
    script = b"CREATE TABLE dbo.T (Id int PRIMARY KEY, A money)"
    imported = tov_schema.import_source(script, types=["dbo.T.A=decimal(9,1)"])
    declared = tov_schema.import_source(script.replace(b"money", b"decimal(9,1)"))
    assert imported.findings == []
    assert imported.schema.to_json() == declared.schema.to_json()


def test_json_is_read_back(schema):
    text = schema.to_json()
    assert json.loads(text)["tbls"]
    assert tov_schema.Schema.from_json(text).to_json() == text


def test_errors_have_code_text_and_frames(tmp_path):
    with pytest.raises(tov_schema.Error, match=r"line 1, column 9: expected a value, found the end") as caught:
        tov_schema.Schema.from_json('{"tbls":')
    assert caught.value.code == 0x200000005
    assert not caught.value.is_sqlite
    assert caught.value.frames and all(frame.file.startswith("src/") and frame.line > 0 for frame in caught.value.frames)
    with pytest.raises(tov_schema.Error, match=r"broken.sql:1:"):
        broken = tmp_path / "broken.sql"
        broken.write_text("CREATE TABLE (")
        tov_schema.import_source(broken)


def test_a_database_that_has_the_table_already_is_left_alone(schema, database):
    with pytest.raises(tov_schema.Error, match="already exists") as caught:
        schema.create_database(database)
    assert caught.value.is_sqlite


def test_the_script_creates_the_same(schema, database):
    other = sqlite3.connect(":memory:")
    other.executescript("\n".join(line for line in schema.script().splitlines() if not line.startswith(".")))
    def names(connection):
        return connection.execute("SELECT type, name FROM sqlite_schema ORDER BY 1, 2").fetchall()
    assert names(other) == names(sqlite3.connect(database))


def test_options_of_creating(schema, tmp_path):
    def names(**options):
        schema.create_database(tmp_path / "o.db", **options)
        found = sqlite3.connect(tmp_path / "o.db").execute("SELECT name FROM sqlite_schema").fetchall()
        (tmp_path / "o.db").unlink()
        return {name for name, in found}
    assert "v_Customers" in names(views=True) - names()
    assert names(indexes="none") < names(indexes="all")
    with pytest.raises(ValueError, match="server, basic"):
        names(rules="strict")


def test_connections_have_the_two_settings(database):
    connection = tov_schema.connect(database)
    assert connection.execute("PRAGMA foreign_keys").fetchone()[0] == 1
    assert connection.execute("PRAGMA recursive_triggers").fetchone()[0] == 1
    connection.execute('INSERT INTO "sales.Orders" (Id, Customer) VALUES (1, 5)')
    with pytest.raises(sqlite3.IntegrityError, match="FOREIGN KEY"):
        connection.commit()
    connection.rollback()
    with pytest.raises(sqlite3.IntegrityError, match=r"\[Name\] constraint violation: width exceeded: 20"):
        connection.execute("INSERT INTO Customers (Name) VALUES (?)", ["x" * 21])
    connection.close()


def test_connect_makes_no_file(tmp_path):
    with pytest.raises(sqlite3.OperationalError, match="unable to open"):
        tov_schema.connect(tmp_path / "absent.db")
    assert not (tmp_path / "absent.db").exists()


def test_connect_takes_names_that_a_uri_would_not(schema, tmp_path):
    for name in ("a b.db", "50%.db", "what?.db", "x#y.db"):
        schema.create_database(tmp_path / name)
        assert tov_schema.connect(tmp_path / name).execute("SELECT count(*) FROM Customers").fetchone()[0] == 0


def test_a_connection_that_cannot_check_references_is_refused(database):
    class Begun(sqlite3.Connection):
        """What autocommit=False is from Python 3.12 on."""

        def __init__(self, *arguments, **options):
            super().__init__(*arguments, **options)
            self.execute("BEGIN")
    with pytest.raises(ValueError, match="references would not be checked"):
        tov_schema.connect(database, factory=Begun)


def test_convert_takes_any_iterable(script, tmp_path):
    _, _, loaded = tov_schema.convert((path for path in [script]), tmp_path / "all.db")
    assert (loaded.loaded, loaded.rejected) == (3, 1)


def test_convert_loads_the_rows_and_keeps_the_refused_ones_apart(script, tmp_path):
    schema, findings, loaded = tov_schema.convert(script, tmp_path / "all.db")
    assert (loaded.loaded, loaded.rejected, len(findings)) == (3, 1, 3)
    assert len(loaded.remarks) == 1 and "row 2" in loaded.remarks[0]
    rows = tov_schema.connect(tmp_path / "all.db").execute("SELECT Name, Code FROM Customers").fetchall()
    assert [tuple(row) for row in rows] == [("Ada", "A   "), ("Bob", None)]


def test_files_are_loaded_and_unloaded(schema, database, tmp_path):
    (tmp_path / "Customers.csv").write_text("Id,Name,Code\n1,Ada,AB\n3,Eve,ABCDE\n")
    loaded = schema.load(database, [tmp_path / "Customers.csv"], rejects=tmp_path / "kept")
    assert (loaded.loaded, loaded.rejected) == (1, 1)
    assert (tmp_path / "kept" / "Customers.csv").read_text().splitlines()[0] == "Id,Name,Code"
    [file] = schema.unload(database, tmp_path / "out", tables=["dbo.Customers"], format="json")
    assert file["rows"] == 1
    assert json.loads((tmp_path / "out" / file["file"]).read_text()) == {"Id": 1, "Name": "Ada", "Code": "AB  "}


def test_a_package_is_converted(tmp_path, package):
    schema, _, loaded = tov_schema.convert(package, tmp_path / "shop.db")
    assert loaded.rejected == 0
    connection = tov_schema.connect(tmp_path / "shop.db")
    assert loaded.loaded == sum(connection.execute(f'SELECT count(*) FROM "{table.name}"').fetchone()[0]
                                for table in schema.tables()) > 500


def test_no_file_is_made_by_what_fails(schema, tmp_path):
    with pytest.raises(tov_schema.Error):
        schema.create_database(tmp_path / "no" / "such" / "folder.db")
    with pytest.raises(tov_schema.Error):
        schema.load(tmp_path / "absent.db", [])
    assert not (tmp_path / "absent.db").exists()


@pytest.fixture
def incomplete(tmp_path, package):
    """The package without the rows of one table, so that those that refer to them are refused after all parts."""
    path = tmp_path / "incomplete.bacpac"
    with zipfile.ZipFile(package) as whole, zipfile.ZipFile(path, "w") as part:
        for entry in whole.namelist():
            if not entry.startswith("Data/dbo.Customers/"):
                part.writestr(entry, whole.read(entry))
    return path


@pytest.mark.parametrize("time", [1, 2])
@pytest.mark.parametrize("where", ["before the rows", "in the rows"])
def test_an_exception_while_rows_are_passed_on_is_not_lost(tmp_path, incomplete, monkeypatch, where, time):
    """Such as that of Ctrl-C. The rows are read a second time to find those that are refused after all parts."""
    schema, _ = tov_schema.import_source(incomplete)
    schema.create_database(tmp_path / "shop.db")
    read_row_parts, times = _library.read_row_parts, 0

    def read(*arguments):
        nonlocal times
        times += 1
        if times == time and where == "before the rows":
            raise KeyboardInterrupt
        read_row_parts(*arguments)

    def trace(frame, _event, _argument):
        if frame.f_code.co_name != "pass_on":
            return None
        if times == time and where == "in the rows" and "described" in frame.f_locals:
            raise KeyboardInterrupt
        return trace
    monkeypatch.setattr(_library, "read_row_parts", read)
    sys.settrace(trace)
    try:
        with pytest.raises(KeyboardInterrupt):
            schema.load_package(tmp_path / "shop.db", incomplete)
    finally:
        sys.settrace(None)
    assert times == time


def test_names_are_utf_8_and_hold_no_nul(schema, database, script, tmp_path):
    for call in (lambda: schema.load(database, [], table="a\0b"), lambda: schema.load(database, ["a\0b"]),
                 lambda: tov_schema.import_source(script, only=["a\0b"]),
                 lambda: tov_schema.Schema.from_json(schema.to_json() + "\0")):
        with pytest.raises(ValueError, match="NUL"):
            call()
    with pytest.raises(UnicodeEncodeError):
        schema.load(database, [], table="\udcff")  # half of a character, which a path may be
