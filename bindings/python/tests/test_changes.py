"""Two schemas: what has changed, the way of a database from one to the other, and a report on both."""
import sqlite3

import pytest

import tov_schema
from tov_schema import _library

OLD = "CREATE TABLE Orders (Id int NOT NULL PRIMARY KEY, Total decimal(9,2) NULL, Remark nvarchar(20) NULL)"
NEW = """CREATE TABLE Orders (Id int NOT NULL PRIMARY KEY, Total decimal(12,3) NULL, Placed date NULL)
GO
CREATE TABLE Tags (Id int NOT NULL PRIMARY KEY)"""


@pytest.fixture
def made(tmp_path):
    def make(script):
        path = tmp_path / "made.sql"
        path.write_text(script)
        return tov_schema.import_source(path).schema
    return make


@pytest.fixture
def filled(made, tmp_path):
    """A database of the old schema with a row."""
    path = tmp_path / "filled.db"
    made(OLD).create_database(path)
    connection = tov_schema.connect(path)
    connection.execute("INSERT INTO Orders VALUES (1, 1250, 'soon')")
    connection.commit()
    return path


def test_a_schema_does_not_differ_from_itself(made):
    changes = made(OLD).compare(made(OLD))
    assert not changes
    assert (changes.changes, changes.tables) == ((), ())


def test_changes_say_what_was_and_is(made):
    changes = made(OLD).compare(made(NEW), renames=["Orders.Remark="])
    assert changes
    assert [(table.name, table.change) for table in changes.tables] == [("dbo.Orders", "changed"), ("dbo.Tags", "added")]
    orders = {(change.name, change.change): change for change in changes.tables[0].changes}
    assert orders["Total", "changed"] == tov_schema.Change(
        "column", "changed", "Total", member="type", old="decimal(9,2)", new="decimal(12,3)")
    assert {("Remark", "removed"), ("Placed", "added")} < set(orders)
    assert changes.details["tables"][0]["name"] == "dbo.Orders"


def test_renames_are_guessed_or_given(made):
    old, new = made(OLD), made(OLD.replace("Remark", "Note"))
    def renamed(**options):
        return [(change.old_name, change.name, change.guess) for table in old.compare(new, **options).tables
                for change in table.changes if change.change == "renamed"]
    assert renamed(renames=["Orders.Remark=Note"]) == [("Remark", "Note", False)]
    assert renamed() == [("Remark", "Note", True)]
    with pytest.raises(tov_schema.Error) as caught:
        renamed(renames=["Orders.Absent=Note"])
    assert caught.value.frames


def test_a_plan_names_what_would_be_lost(made):
    steps = made(OLD).plan_migration(made(NEW), renames=["Orders.Remark="])
    losses = [step for step in steps if step.loss]
    assert [(step.effect, step.table) for step in losses] == [("loses data", "Orders")]
    assert losses[0].loss.endswith("Orders.Remark")
    assert any("CREATE TABLE" in sql for step in steps for sql in step.sql)


def test_a_database_is_migrated_with_its_rows(made, filled):
    new = made(NEW)
    with pytest.raises(tov_schema.Error, match="Remark"):
        new.migrate_database(filled, renames=["Orders.Remark="])
    assert tov_schema.Schema.of_database(filled).compare(made(OLD)).tables == ()
    new.migrate_database(filled, renames=["Orders.Remark="], allow=["Orders.Remark"])
    assert sqlite3.connect(filled).execute("SELECT * FROM Orders").fetchall() == [(1, 12500, None)]
    assert tov_schema.Schema.of_database(filled).compare(new).tables == ()


def test_the_script_of_a_migration(made, filled):
    old, new = made(OLD), made(NEW)
    with pytest.raises(tov_schema.Error, match="Remark"):
        old.migration_script(new, renames=["Orders.Remark="])
    script = old.migration_script(new, renames=["Orders.Remark="], allow=["Orders.Remark"])
    assert script.count("COMMIT") == 1 and "CREATE TABLE" in script


def test_a_database_without_a_record(made, tmp_path):
    path = tmp_path / "other.db"
    sqlite3.connect(path).execute("CREATE TABLE T (A)")
    with pytest.raises(tov_schema.Error):
        tov_schema.Schema.of_database(path)


def test_a_report_is_one_page(made, filled):
    old, new = made(OLD), made(NEW)
    page = new.report_html(title="Orders and more", changes=old.compare(new, renames=["Orders.Remark="]))
    assert page.lower().startswith("<!doctype html>") and "Orders and more" in page
    assert "Remark" in page and "Remark" not in new.report_html()
    assert old.report_html(database=filled) != old.report_html()


def test_findings_are_in_the_report(tmp_path):
    path = tmp_path / "computed.sql"
    path.write_text("CREATE TABLE T (Id int NOT NULL PRIMARY KEY, Twice AS (Id * 2))")
    schema, findings = tov_schema.import_source(path)
    assert "column-computed" in schema.report_html(findings=findings)
    assert "column-computed" not in schema.report_html()


def test_a_report_in_markdown(made):
    files = made(NEW).report_markdown(title="Shop")
    assert "README.md" in files and len(files) == 3
    assert files["README.md"].startswith("# Shop")


def test_an_exception_while_files_are_taken_is_not_lost(made, monkeypatch):
    class Interrupting:
        def decode(self):
            raise KeyboardInterrupt
    taking = _library.TakeReportFile

    def take_report_file(function):
        return taking(lambda context, data, name, text: function(context, data, Interrupting(), text))
    monkeypatch.setattr(_library, "TakeReportFile", take_report_file)
    with pytest.raises(KeyboardInterrupt):
        made(NEW).report_markdown()


def test_a_report_of_a_database_that_is_not_there(made, tmp_path):
    with pytest.raises(tov_schema.Error):
        made(NEW).report_html(database=tmp_path / "absent.db")
    assert not (tmp_path / "absent.db").exists()
