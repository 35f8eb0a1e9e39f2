"""Rows of a database that the server would refuse."""
import ctypes
import dataclasses
from typing import Any, Iterable, List, NamedTuple, Optional

from . import _collations
from . import _library as c


@dataclasses.dataclass(frozen=True)
class Violation:
    """Something that the server would refuse, or that could not be looked at; docs/check.md lists the codes."""

    code: str
    severity: str  # "error", or "note" for what was not looked at
    message: str
    table: Optional[str] = None
    column: Optional[str] = None  # of a key with several their names, joined with ", "
    rowid: Optional[int] = None
    key: Optional[str] = None  # the row's primary key: "OrderNo='2024-1', Line=3"
    value: Optional[str] = None  # as an SQL literal, shortened


class Checked(NamedTuple):
    violations: List[Violation]
    is_whole: bool  # not ended at the limit

    @property
    def is_accepted(self) -> bool:
        """Whether all was looked at and the server would take it."""
        return self.is_whole and all(violation.severity != "error" for violation in self.violations)


def _text(text: Optional[bytes]) -> Optional[str]:
    return None if text is None else text.decode("utf-8", "replace")


def _violation(described: c.Violation) -> Violation:
    kind = described.kind.contents
    return Violation(kind.code.decode(), kind.severity.decode(), _text(described.message) or "", _text(described.tbl),
                     _text(described.col), described.rowid if described.has_rowid else None, _text(described.key),
                     _text(described.value))


def check(handle: ctypes.c_void_p, database: Any, rules: int, only: Iterable[str], skip: Iterable[str],
          limit: int) -> Checked:
    violations: List[Violation] = []
    raised = c.Raised()

    def take(context: Any, _: Any, violation: Any) -> None:
        with raised.caught(context):
            violations.append(_violation(violation.contents))
    wanted, unwanted, is_whole = c.strings(only), c.strings(skip), ctypes.c_int32()
    options = c.CheckOptions(rules=rules, only=wanted, only_count=len(wanted), skip=unwanted, skip_count=len(unwanted),
                             max=limit)
    with raised, c.Call() as call, _collations.added_if_there():
        call(c.check_database, handle, c.encoded_path(database), ctypes.byref(options), c.TakeViolation(take), None,
             ctypes.byref(is_whole))
    return Checked(violations, bool(is_whole.value))
