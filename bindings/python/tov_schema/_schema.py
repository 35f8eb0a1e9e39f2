"""Schemas, and what is done with them."""
import contextlib
import ctypes
import dataclasses
import os
import pathlib
from typing import Any, ContextManager, Dict, Iterable, List, Mapping, NamedTuple, Optional, Sequence, Tuple, Union

from . import _changes, _checks, _collations, _report, _values
from . import _library as c
from ._changes import Changes, Step
from ._checks import Checked

Path = Union[str, "os.PathLike[str]"]
_CLOCKS = {"reported": 0, "utc": 1, "local": 2}
_KINDS = {"auto": 0, "json": 1, "package": 2, "script": 3}
_RULES = {"server": 0, "basic": 1}
_INDEXES = {"all": 0, "references": 1, "none": 2}
_COLLATIONS = {"builtin": 0, "server": 1}


@dataclasses.dataclass(frozen=True)
class Finding:
    """Something of a source that could not be carried over unchanged; docs/findings.md lists the codes."""

    code: str
    severity: str  # "error", "warning", "note" or "info"
    reason: str
    table: Optional[str] = None
    column: Optional[str] = None
    place: Optional[str] = None  # in a script: "orders.sql:12:5"
    host_text: Optional[str] = None  # the server's own text


class Imported(NamedTuple):
    schema: "Schema"
    findings: List[Finding]


@dataclasses.dataclass(frozen=True)
class Column:
    """How the values of a column are kept. `left_out` says why the SQLite table does not have it."""

    name: str
    server_type: str  # "" where the source does not say it, as of computed columns
    nullable: bool
    required: bool  # each INSERT must give it a value
    left_out: Optional[str]
    details: Mapping[str, Any]  # all that tov_client__describe_columns() says

    def load(self, stored: Any) -> Any:
        """Python's value of what the database has: a Decimal, UUID, datetime ... None is NULL.

        >>> price.load(1250)        # a decimal(9,2)
        Decimal('12.50')
        """
        return _values.load(_values.Type.of(self.server_type), stored)

    def dump(self, value: Any) -> Any:
        """What the database is to have for Python's value; ValueError for one that would have to be rounded.

        >>> price.dump(Decimal("12.5"))
        1250
        """
        return _values.dump(_values.Type.of(self.server_type), value)


@dataclasses.dataclass(frozen=True)
class Table:
    """A table of a schema: its names in SQLite and on the server, and its columns in the server's order."""

    name: str
    server_name: str
    columns: Tuple[Column, ...]

    def column(self, name: str) -> Column:
        """The column of a name, in any case; KeyError when there is none."""
        for column in self.columns:
            if column.name.lower() == name.lower():
                return column
        raise KeyError(name)

    def load_row(self, row: Mapping[str, Any]) -> Dict[str, Any]:
        """A row that was read, such as a sqlite3.Row, with Python's values."""
        return {name: self.column(name).load(row[name]) for name in row.keys()}

    def insert(self, row: Mapping[str, Any]) -> Tuple[str, List[Any]]:
        """The statement that stores a row, and its parameters: what sqlite3's execute() takes. Columns that are not
        given have their defaults.

        >>> connection.execute(*orders.insert({"Id": 1, "Total": Decimal("9.90")}))
        """
        columns = [self.column(name) for name in row]
        left_out = [column.name for column in columns if column.left_out]
        if left_out:
            raise KeyError(f"the SQLite table does not have {', '.join(left_out)}")
        names = ", ".join(f'"{column.name}"' for column in columns)
        values = [column.dump(value) for column, value in zip(columns, row.values())]
        if not columns:
            return f'INSERT INTO "{self.name}" DEFAULT VALUES', []
        return f'INSERT INTO "{self.name}" ({names}) VALUES ({", ".join("?" * len(values))})', values


@dataclasses.dataclass(frozen=True)
class Loaded:
    """What became of the rows: a map for each file and table ("table", "read", "loaded", "rejected", "shortened" ...),
    and a line about each of the first rows that were refused."""

    files: List[Dict[str, Any]]
    remarks: List[str]

    @property
    def loaded(self) -> int:
        return sum(file.get("loaded", 0) for file in self.files)

    @property
    def rejected(self) -> int:
        return sum(file.get("rejected", 0) for file in self.files)


class Schema:
    """A schema document. It is used by one thread at a time."""

    def __init__(self, handle: ctypes.c_void_p):
        self._handle = handle
        self._tables: Optional[List[Table]] = None  # once asked for: nothing changes a schema

    def __del__(self) -> None:
        if getattr(self, "_handle", None):
            with c.Call() as call:
                c.free_schema(call.context, ctypes.byref(self._handle))

    @classmethod
    def from_json(cls, text: str) -> "Schema":
        """Reads a document as to_json() or `tov-schema import` writes it. Raises Error when it is not one."""
        handle = ctypes.c_void_p()
        with c.Call() as call:
            call(c.schema_from_json, c.encoded(text), ctypes.byref(handle))
        return cls(handle)

    @classmethod
    def of_database(cls, database: Path) -> "Schema":
        """The schema that a database was created from, as the database has recorded it; Error when it has not."""
        handle = ctypes.c_void_p()
        with c.Call() as call:
            call(c.read_record, c.encoded_path(database), ctypes.byref(handle), None)
        return cls(handle)

    def to_json(self) -> str:
        """The document as JSON text."""
        string = ctypes.c_void_p()
        with c.Call() as call:
            call(c.schema_to_json, self._handle, ctypes.byref(string))
            return call.take_string(string)

    def tables(self) -> List[Table]:
        """All tables in schema order, with how their values are kept."""
        if self._tables is None:
            guide = ctypes.c_void_p()
            with c.Call() as call:
                call(c.describe_columns, self._handle, None, ctypes.byref(guide))
                described = call.take_map(guide)
            self._tables = [_table(table) for table in described["tables"]]
        return list(self._tables)

    def table(self, name: str) -> Table:
        """The table of a name, as SQLite or the server has it, in any case; KeyError when there is none."""
        for table in self.tables():
            if name.lower() in (table.name.lower(), table.server_name.lower()):
                return table
        raise KeyError(name)

    def creation_order(self) -> List[str]:
        """The ids of all tables, referenced ones before those that refer to them."""
        ids, remarks = ctypes.c_void_p(), ctypes.c_void_p()
        with c.Call() as call:
            call(c.creation_order, self._handle, ctypes.byref(ids), ctypes.byref(remarks))
            call.take_texts(remarks)
            return call.take_texts(ids)

    def check(self) -> None:
        """Raises Error, naming the place, when the document holds anything unsafe in SQL text."""
        with c.Call() as call:
            call(c.check_texts, self._handle)

    def create_database(self, path: Path, *, views: bool = False, rules: str = "server", indexes: str = "all",
                        collations: str = "builtin") -> None:
        """Creates the tables, indexes and triggers in a database file: all of them, or none and Error.

        views: also a view v_TABLE for each table, which shows values as the server does.
        rules: "server" refuses what the server refuses, "basic" what the types alone refuse.
        indexes: "all", "references" (those that foreign keys need) or "none".
        collations: "server" compares strings as the server does, with an extension that every connection needs then
            (connect(collations="server")); "builtin" comes as near as SQLite's own means do.
        """
        options = _create_options(views, rules, indexes, collations)
        with c.Call() as call, _collations_for(collations):
            call(c.create_database, self._handle, c.encoded_path(path), ctypes.byref(options))

    def script(self, *, views: bool = False, rules: str = "server", indexes: str = "all",
               collations: str = "builtin") -> str:
        """The script that create_database() runs."""
        options, script = _create_options(views, rules, indexes, collations), ctypes.c_void_p()
        with c.Call() as call:
            call(c.write_script, self._handle, ctypes.byref(options), ctypes.byref(script))
            return call.take_string(script)

    def check_database(self, database: Path, *, rules: str = "server", only: Iterable[str] = (),
                       skip: Iterable[str] = (), limit: int = 0) -> Checked:
        """Looks for rows that the server would refuse, in a database that anything may have made.

        rules: "server", or "basic" for what breaks the types alone.
        only, skip: names of tables, in SQLite or on the server.
        limit: stop after so many violations; 0 for none.

        >>> for violation in schema.check_database("shop.db").violations:
        ...     print(violation.table, violation.rowid, violation.message)
        """
        return _checks.check(self._handle, database, _choice("rules", _RULES, rules), only, skip, limit)

    def compare(self, new: "Schema", *, by_id: bool = False, renames: Iterable[str] = ()) -> Changes:
        """What has changed from this schema to a new one, by their content.

        by_id: tables and columns with one id are the same, for schemas of one origin; else names decide.
        renames: OLD=NEW, of tables and of TABLE.COLUMN, so that nothing is guessed.

        >>> [table.name for table in old.compare(new).tables]
        ['sales.Orders']
        """
        return _changes.compare(self._handle, new._handle, by_id, renames)

    def plan_migration(self, new: "Schema", *, by_id: bool = False, renames: Iterable[str] = ()) -> List[Step]:
        """The steps from a database that was created from this schema to one of the new schema, without a database."""
        return _changes.plan(self._handle, new._handle, _changes.migrate_options((), by_id, renames, None))

    def migration_script(self, new: "Schema", *, allow: Iterable[str] = (), by_id: bool = False,
                         renames: Iterable[str] = ()) -> str:
        """The same as a script for the sqlite3 shell (with -bail). Error names the losses that are not allowed."""
        return _changes.write(self._handle, new._handle, _changes.migrate_options(allow, by_id, renames, None))

    def migrate_database(self, database: Path, *, allow: Iterable[str] = (), by_id: bool = False,
                         renames: Iterable[str] = ()) -> None:
        """Migrates a database to this schema from the one that it has recorded, with its rows: as a whole, or not at
        all and Error, at a loss that is not allowed for instance, or at a row that this schema does not take.

        allow: what may be lost, TABLE or TABLE.COLUMN of the old schema.
        by_id, renames: as of compare().
        """
        _changes.migrate(database, self._handle, _changes.migrate_options(allow, by_id, renames, None))

    def report_html(self, *, title: Optional[str] = None, findings: Iterable[Finding] = (),
                    database: Optional[Path] = None, changes: Optional[Changes] = None) -> str:
        """A report for people, as one HTML page that needs nothing but a browser.

        findings: those of import_source().  database: its rows are counted and checked.
        changes: those of compare() from an earlier schema to this one.
        """
        return _report.html(self._handle, title, _finding_maps(findings), database, changes and changes.details)

    def report_markdown(self, *, title: Optional[str] = None, findings: Iterable[Finding] = (),
                        database: Optional[Path] = None, changes: Optional[Changes] = None) -> Dict[str, str]:
        """The same as Markdown with Mermaid diagrams: the texts of README.md and a file for each table, by name."""
        return _report.markdown(self._handle, title, _finding_maps(findings), database, changes and changes.details)

    def load(self, database: Path, files: Iterable[Path], *, table: Optional[str] = None, format: Optional[str] = None,
             encoding: Optional[str] = None, field_end: Optional[str] = None, row_end: Optional[str] = None,
             null_word: Optional[str] = None, header: Optional[bool] = None, rejects: Optional[Path] = None,
             max_rejects: int = 0, batch: int = 0, exact: bool = False, all_or_nothing: bool = False,
             again: bool = False, check_references: bool = True) -> Loaded:
        """Loads the rows of files, which the server's tools or others wrote, into a created database.

        Rows that the database does not accept are refused, not an error; `rejects` is a folder that keeps them.
        What is not said of the files (format, encoding, what ends fields and rows) is found out from their first rows.
        A load that was interrupted goes on where it was.
        """
        options = c.LoadOptions(
            tbl=c.encoded(table), format=c.encoded(format), encoding=c.encoded(encoding), field_end=c.encoded(field_end),
            row_end=c.encoded(row_end), null_word=c.encoded(null_word), header=0 if header is None else 1 if header else -1,
            rejects=c.encoded_path(rejects), max_rejects=max_rejects, batch=batch, exact=exact,
            all_or_nothing=all_or_nothing, again=again, skip_references=not check_references)

        def load_all(call: c.Call, loader: ctypes.c_void_p) -> None:
            for file in files:
                call(c.load_file, loader, c.encoded_path(file))
        return self._load(database, options, load_all)

    def load_package(self, database: Path, package: Path, *, rejects: Optional[Path] = None, exact: bool = False,
                     all_or_nothing: bool = False) -> Loaded:
        """Loads the rows that a package (.bacpac) carries into a created database; see load()."""
        return self._load_package(database, package, pathlib.Path(package).read_bytes(), rejects, exact, all_or_nothing)

    def unload(self, database: Path, folder: Path, *, tables: Sequence[str] = (), query: Optional[str] = None,
               format: Optional[str] = None, encoding: Optional[str] = None, field_end: Optional[str] = None,
               row_end: Optional[str] = None) -> List[Dict[str, Any]]:
        """Writes rows as the server's tools do, a file for each table: "bcp", "csv", "json" or "insert".

        Gives for each file a map with "table", "file", "dialect", "rows" and "unreadable".
        """
        names, report = c.strings(tables), ctypes.c_void_p()
        options = c.UnloadOptions(format=c.encoded(format), encoding=c.encoded(encoding), field_end=c.encoded(field_end),
                                  row_end=c.encoded(row_end), tbls=names, tbl_count=len(names), query=c.encoded(query))
        with c.Call() as call, _collations.added_if_there():
            call(c.unload, self._handle, c.encoded_path(database), c.encoded_path(folder), ctypes.byref(options),
                 ctypes.byref(report))
            return call.take_maps(report)

    def _load_package(self, database: Path, package: Path, content: bytes, rejects: Optional[Path] = None,
                      exact: bool = False, all_or_nothing: bool = False) -> Loaded:
        options = c.LoadOptions(rejects=c.encoded_path(rejects), exact=exact, all_or_nothing=all_or_nothing)
        raised = c.Raised()

        def read(context: Any, _: Any, take: Any, take_data: Any) -> None:
            def pass_on(context: Any, _: Any, part: Any, data: Any, size: int) -> None:
                with raised.caught(context):
                    described = part.contents
                    take(context, take_data, described.schema_name, described.tbl_name, described.number, data, size)
            with raised.caught(context):
                c.read_row_parts(context, content, len(content), c.TakeRows(pass_on), None)

        def load_all(call: c.Call, loader: ctypes.c_void_p) -> None:
            call(c.load_parts, loader, c.encoded_path(package), c.ReadParts(read), None)
        with raised:
            return self._load(database, options, load_all)

    def _load(self, database: Path, options: c.LoadOptions, load_all: Any) -> Loaded:
        loader, report, remarks = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_void_p()
        with c.Call() as call, _collations.added_if_there():
            call(c.open_loader, self._handle, c.encoded_path(database), ctypes.byref(options), ctypes.byref(loader))
            try:
                load_all(call, loader)
                call(c.finish_load, loader, ctypes.byref(report), ctypes.byref(remarks))
            finally:
                c.free_loader(call.context, loader)
            return Loaded(call.take_maps(report), call.take_texts(remarks))


def _create_options(views: bool, rules: str, indexes: str, collations: str) -> c.CreateOptions:
    return c.CreateOptions(views=views, rules=_choice("rules", _RULES, rules),
                           indexes=_choice("indexes", _INDEXES, indexes),
                           collations=_choice("collations", _COLLATIONS, collations))


def _collations_for(collations: str) -> ContextManager[None]:
    return _collations.added() if collations == "server" else contextlib.nullcontext()


def _finding_maps(findings: Iterable[Finding]) -> List[Dict[str, str]]:
    return [{name: value for name, value in dataclasses.asdict(finding).items() if value is not None}
            for finding in findings]


def _choice(what: str, numbers: Mapping[str, int], word: str) -> int:
    if word not in numbers:
        raise ValueError(f"{what} is one of {', '.join(numbers)}, not {word!r}")
    return numbers[word]


def _table(described: Mapping[str, Any]) -> Table:
    columns = tuple(Column(column["name"], column.get("server_type", ""), column.get("nullable", True),
                           column.get("required", False), column.get("left_out"), column)
                    for column in described["columns"])
    return Table(described["table"], described.get("server_table", described["table"]), columns)


class _Sources(List[Tuple[str, bytes]]):
    """The names and contents of files that were read."""


def _sources(paths: Union[_Sources, Path, Iterable[Path]]) -> _Sources:
    if isinstance(paths, _Sources):
        return paths
    if isinstance(paths, (str, os.PathLike)):
        paths = [paths]
    files: List[pathlib.Path] = []
    for path in map(pathlib.Path, paths):
        if path.is_dir():
            files += sorted(file for file in path.rglob("*") if file.suffix.lower() in (".sql", ".sqlproj"))
        else:
            files.append(path)
    return _Sources((str(file), file.read_bytes()) for file in files)


def import_source(source: Union[bytes, Path, Iterable[Path]], *, kind: str = "auto", encoding: Optional[str] = None,
                  only: Iterable[str] = (), skip: Iterable[str] = (), renames: Iterable[str] = (),
                  defines: Iterable[str] = (), txid: int = 0, clock: str = "reported",
                  constants: Iterable[str] = (), types: Iterable[str] = ()) -> Imported:
    """Makes a schema of a package, scripts (files or folders of them) or a catalogue export, by path or as bytes.

    kind: "auto" looks at the content; "json", "package" or "script" says what it is.
    only, skip: patterns of SCHEMA.TABLE with * and ?.  renames: OLD=NEW.  defines: NAME=VALUE of script variables.
    clock: what getdate() becomes in defaults: "local", "utc", or "reported", which is local with a finding for each.
    constants: NAME=VALUE of functions such as db_name and suser_sname.
    types: NAME=TYPE of columns, SCHEMA.TABLE.COLUMN, and of alias types, in place of the server's.

    >>> schema, findings = tov_schema.import_source("Shop.bacpac")
    """
    sources = [("", source)] if isinstance(source, bytes) else _sources(source)
    files = (c.HostFile * len(sources))(*(c.HostFile(c.encoded_path(name) or None, content, len(content))
                                          for name, content in sources))
    lists = {name: c.strings(words) for name, words in
             (("only", only), ("skip", skip), ("renames", renames), ("defines", defines),
              ("constants", constants), ("types", types))}
    options = c.HostOptions(txid=txid, source=_choice("kind", _KINDS, kind), encoding=c.encoded(encoding),
                            clock=_choice("clock", _CLOCKS, clock),
                            **{name: c.HostList(words, len(words)) for name, words in lists.items()})
    handle, findings = ctypes.c_void_p(), ctypes.c_void_p()
    with c.Call() as call:
        call(c.import_files, files, len(sources), ctypes.byref(options), ctypes.byref(handle), ctypes.byref(findings))
        schema = Schema(handle)
        return Imported(schema, [Finding(**finding) for finding in call.take_maps(findings)])


def convert(source: Union[Path, Iterable[Path]], database: Path, *, views: bool = False, rules: str = "server",
            indexes: str = "all", collations: str = "builtin",
            **options: Any) -> Tuple[Schema, List[Finding], Loaded]:
    """Imports a source, creates the database and loads the rows that a package or INSERT statements hold.

    options: those of import_source().
    """
    files: Any = _sources(source)  # which import_source() takes too, in private
    schema, findings = import_source(files, **options)
    schema.create_database(database, views=views, rules=rules, indexes=indexes, collations=collations)
    kinds = {c.recognise(content, len(content)) for _, content in files}
    if kinds == {_KINDS["package"]}:
        return schema, findings, schema._load_package(database, *files[0])
    if kinds == {_KINDS["script"]}:
        loaded = schema.load(database, [name for name, _ in files], format="insert", encoding=options.get("encoding"))
        return schema, findings, loaded
    return schema, findings, Loaded([], [])
