"""libtov_sqlite, the extension that compares strings as the server does: for SQLite connections while they are opened."""
import contextlib
import ctypes
import ctypes.util
import os
import pathlib
import sqlite3
import threading
from typing import Any, Iterator, Optional

from . import _library as c

_lock = threading.Lock()
_users = 0
_extension: Optional[ctypes.CDLL] = None


def _find() -> Optional[str]:
    given = os.environ.get("TOV_SQLITE_LIBRARY")
    packed = pathlib.Path(__file__).parent / "lib" / "libtov_sqlite.so.0"
    return given or (str(packed) if packed.exists() else ctypes.util.find_library("tov_sqlite"))


def _entry() -> Any:
    """The function by which SQLite takes the extension; ImportError when it is not there."""
    global _extension
    if _extension is None:
        path = _find()
        if path is None:
            raise ImportError("libtov_sqlite is neither in this package nor installed; "
                              "TOV_SQLITE_LIBRARY may say where it is")
        try:
            _extension = ctypes.CDLL(path)
        except OSError as error:  # of ICU, perhaps
            raise ImportError(f"libtov_sqlite cannot be used: {error}") from error
    return _extension.sqlite3_tovsqlite_init


@contextlib.contextmanager
def added() -> Iterator[None]:
    """Connections that are opened meanwhile have the extension. ImportError when it is not there."""
    global _users
    with _lock:
        entry = _entry()
        if _users == 0:
            c.add_extension(entry)
        _users += 1
    try:
        yield
    finally:
        with _lock:
            _users -= 1
            if _users == 0:
                c.remove_extension(entry)


@contextlib.contextmanager
def added_if_there() -> Iterator[None]:
    """The same, or nothing where the extension is not there."""
    with contextlib.ExitStack() as stack:
        with contextlib.suppress(ImportError):
            stack.enter_context(added())
        yield


def has_collations(connection: sqlite3.Connection) -> bool:
    try:
        connection.execute("SELECT '' = '' COLLATE Latin1_General_CI_AS")
    except sqlite3.OperationalError:
        return False
    return True


def load_into(connection: sqlite3.Connection) -> None:
    """Gives a connection the extension. Python may have a SQLite of its own, which the library's knows nothing of."""
    if not hasattr(connection, "enable_load_extension"):
        raise sqlite3.NotSupportedError("this Python's sqlite3 loads no extensions, and has another SQLite than "
                                        "libtov_schema_tools")
    connection.enable_load_extension(True)
    try:
        connection.load_extension(_find() or "")
    finally:
        connection.enable_load_extension(False)
