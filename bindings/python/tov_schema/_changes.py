"""What has changed between two schemas, and the way of a database from one to the other."""
import ctypes
import dataclasses
from typing import Any, Dict, Iterable, List, Mapping, Optional, Tuple

from . import _collations
from . import _library as c


@dataclasses.dataclass(frozen=True)
class Change:
    """Something that differs: of a table, or of the schema as a whole."""

    kind: str  # "schema", "sequence", "table", "column", "primary key", "unique key", "foreign key", "check", "index"
    change: str  # "added", "removed", "renamed" or "changed"
    name: Optional[str] = None
    old_name: Optional[str] = None  # of what was renamed
    guess: bool = False  # the renaming follows from no option and no id
    member: Optional[str] = None  # what of it has changed: "type"
    old: Optional[str] = None
    new: Optional[str] = None


@dataclasses.dataclass(frozen=True)
class TableChange:
    """A table that differs."""

    name: str
    change: str  # "added", "removed", "renamed" or "changed"
    old_name: Optional[str] = None
    guess: bool = False
    old_id: Optional[str] = None
    new_id: Optional[str] = None
    changes: Tuple[Change, ...] = ()


@dataclasses.dataclass(frozen=True)
class Changes:
    """All that differs between two schemas; it is false when nothing does."""

    changes: Tuple[Change, ...]  # of the schema as a whole
    tables: Tuple[TableChange, ...]
    details: Mapping[str, Any]  # all that tov_client__compare() says

    def __bool__(self) -> bool:
        return bool(self.changes or self.tables)


@dataclasses.dataclass(frozen=True)
class Step:
    """A step of a migration."""

    description: str
    effect: str  # "free", "rebuilds", "may fail" or "loses data"
    sql: Tuple[str, ...]
    table: Optional[str] = None
    count: Optional[str] = None  # a query that counts the rows which may fail, or what is lost
    loss: Optional[str] = None  # what `allow` has to say so that the step may be done
    only_apply: bool = False  # no script has it: values are converted as a load does


def _known(record: Any, described: Mapping[str, Any]) -> Dict[str, Any]:
    """The members that the record has: a later library may say more."""
    names = {field.name for field in dataclasses.fields(record)}
    return {name: value for name, value in described.items() if name in names}


def _changes(described: Mapping[str, Any]) -> Tuple[Change, ...]:
    return tuple(Change(**_known(Change, change)) for change in described.get("changes", ()))


def _table_change(described: Mapping[str, Any]) -> TableChange:
    return dataclasses.replace(TableChange(**_known(TableChange, described)), changes=_changes(described))


def _compare_options(by_id: bool, renames: Iterable[str]) -> c.CompareOptions:
    texts = c.strings(renames)
    return c.CompareOptions(by_id=by_id, renames=texts, rename_count=len(texts))


def compare(old: ctypes.c_void_p, new: ctypes.c_void_p, by_id: bool, renames: Iterable[str]) -> Changes:
    options, changes = _compare_options(by_id, renames), ctypes.c_void_p()
    with c.Call() as call:
        call(c.compare, old, new, ctypes.byref(options), ctypes.byref(changes))
        described = call.take_map(changes)
    return Changes(_changes(described), tuple(map(_table_change, described["tables"])), described)


def migrate_options(allow: Iterable[str], by_id: bool, renames: Iterable[str],
                    create: Optional[c.CreateOptions]) -> c.MigrateOptions:
    losses = c.strings(allow)
    return c.MigrateOptions(compare=_compare_options(by_id, renames),
                            create=None if create is None else ctypes.pointer(create), allowed_losses=losses,
                            allowed_loss_count=len(losses))


def plan(old: ctypes.c_void_p, new: ctypes.c_void_p, options: c.MigrateOptions) -> List[Step]:
    steps = ctypes.c_void_p()
    with c.Call() as call:
        call(c.plan_migration, old, new, ctypes.byref(options), ctypes.byref(steps))
        return [Step(**{**_known(Step, step), "effect": step["class"], "sql": tuple(step.get("sql", ()))})
                for step in call.take_maps(steps)]


def write(old: ctypes.c_void_p, new: ctypes.c_void_p, options: c.MigrateOptions) -> str:
    script = ctypes.c_void_p()
    with c.Call() as call:
        call(c.write_migration, old, new, ctypes.byref(options), ctypes.byref(script))
        return call.take_string(script)


def migrate(database: Any, new: ctypes.c_void_p, options: c.MigrateOptions) -> None:
    with c.Call() as call, _collations.added_if_there():
        call(c.migrate_database, c.encoded_path(database), new, ctypes.byref(options))
