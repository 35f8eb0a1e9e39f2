"""The C libraries: where they are, what their operations take, and how their failures become exceptions."""
import contextlib
import ctypes
import ctypes.util
import json
import os
import pathlib
from typing import Any, Iterable, Iterator, List, NamedTuple, Optional

_POINTER = ctypes.c_void_p
_SQLITE_DOMAIN = 8  # the upper 32 bits of KT_ERR_SQLITE()
_UNEXPECTED_VALUE = 0x1000001F4


class Frame(NamedTuple):
    """A place in the library's source that a failure went through."""

    file: str
    line: int


class Error(Exception):
    """A failure of the library.

    code: the error code, as the C headers define it; that of SQLite is in its lower 32 bits when `is_sqlite` is true.
    frames: the places that the failure went through, the innermost first.
    """

    def __init__(self, code: int, description: str, frames: List[Frame]):
        super().__init__(description)
        self.code = code
        self.frames = frames

    @property
    def is_sqlite(self) -> bool:
        return self.code >> 32 == _SQLITE_DOMAIN


class HostList(ctypes.Structure):
    _fields_ = [("items", ctypes.POINTER(ctypes.c_char_p)), ("count", ctypes.c_size_t)]


class HostOptions(ctypes.Structure):
    _fields_ = [("txid", ctypes.c_int64), ("verbose", ctypes.c_int32), ("source", ctypes.c_int32),
                ("encoding", ctypes.c_char_p), ("only", HostList), ("skip", HostList), ("renames", HostList),
                ("defines", HostList), ("clock", ctypes.c_int32), ("constants", HostList),
                ("types", HostList)]


class HostFile(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("bytes", ctypes.c_char_p), ("size", ctypes.c_size_t)]


class RowPart(ctypes.Structure):
    _fields_ = [("schema_name", ctypes.c_char_p), ("tbl_name", ctypes.c_char_p), ("number", ctypes.c_uint32),
                ("size", ctypes.c_uint64)]


CreateProgress = ctypes.CFUNCTYPE(None, _POINTER, ctypes.c_uint32, ctypes.c_uint32)
LoadProgress = ctypes.CFUNCTYPE(None, _POINTER, ctypes.c_char_p, ctypes.c_int64, ctypes.c_int64)


class CreateOptions(ctypes.Structure):
    _fields_ = [("views", ctypes.c_int32), ("progress", CreateProgress), ("data", _POINTER), ("rules", ctypes.c_int32),
                ("indexes", ctypes.c_int32), ("collations", ctypes.c_int32), ("no_record", ctypes.c_int32),
                ("checks", ctypes.c_int32)]


class LoadOptions(ctypes.Structure):
    _fields_ = [("tbl", ctypes.c_char_p), ("format", ctypes.c_char_p), ("encoding", ctypes.c_char_p),
                ("field_end", ctypes.c_char_p), ("row_end", ctypes.c_char_p), ("null_word", ctypes.c_char_p),
                ("header", ctypes.c_int32), ("rejects", ctypes.c_char_p), ("max_rejects", ctypes.c_int64),
                ("batch", ctypes.c_int64), ("exact", ctypes.c_int32), ("all_or_nothing", ctypes.c_int32),
                ("again", ctypes.c_int32), ("skip_references", ctypes.c_int32), ("with_triggers", ctypes.c_int32),
                ("is_scratch", ctypes.c_int32), ("progress", LoadProgress), ("data", _POINTER)]


class UnloadOptions(ctypes.Structure):
    _fields_ = [("format", ctypes.c_char_p), ("encoding", ctypes.c_char_p), ("field_end", ctypes.c_char_p),
                ("row_end", ctypes.c_char_p), ("tbls", ctypes.POINTER(ctypes.c_char_p)),
                ("tbl_count", ctypes.c_uint32), ("query", ctypes.c_char_p)]


class ViolationKind(ctypes.Structure):
    _fields_ = [("code", ctypes.c_char_p), ("severity", ctypes.c_char_p), ("meaning", ctypes.c_char_p)]


class Violation(ctypes.Structure):
    _fields_ = [("kind", ctypes.POINTER(ViolationKind)), ("tbl", ctypes.c_char_p), ("has_rowid", ctypes.c_int32),
                ("rowid", ctypes.c_int64), ("key", ctypes.c_char_p), ("col", ctypes.c_char_p),
                ("value", ctypes.c_char_p), ("message", ctypes.c_char_p)]


class CheckOptions(ctypes.Structure):
    _fields_ = [("rules", ctypes.c_int32), ("only", ctypes.POINTER(ctypes.c_char_p)), ("only_count", ctypes.c_uint32),
                ("skip", ctypes.POINTER(ctypes.c_char_p)), ("skip_count", ctypes.c_uint32), ("max", ctypes.c_int64),
                ("progress", CreateProgress), ("progress_data", _POINTER)]


class CompareOptions(ctypes.Structure):
    _fields_ = [("by_id", ctypes.c_int32), ("renames", ctypes.POINTER(ctypes.c_char_p)),
                ("rename_count", ctypes.c_uint32)]


class MigrateOptions(ctypes.Structure):
    _fields_ = [("compare", CompareOptions), ("create", ctypes.POINTER(CreateOptions)),
                ("allowed_losses", ctypes.POINTER(ctypes.c_char_p)), ("allowed_loss_count", ctypes.c_uint32)]


class ReportOptions(ctypes.Structure):
    _fields_ = [("title", ctypes.c_char_p), ("findings", _POINTER), ("database", ctypes.c_char_p),
                ("changes", _POINTER)]


TakeViolation = ctypes.CFUNCTYPE(None, _POINTER, _POINTER, ctypes.POINTER(Violation))
TakeReportFile = ctypes.CFUNCTYPE(None, _POINTER, _POINTER, ctypes.c_char_p, ctypes.c_char_p)
# void (*)(ctx, data, part, bytes, size), and the two of loading parts.
TakeRows = ctypes.CFUNCTYPE(None, _POINTER, _POINTER, ctypes.POINTER(RowPart), _POINTER, ctypes.c_size_t)
TakePart = ctypes.CFUNCTYPE(None, _POINTER, _POINTER, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_uint32, _POINTER,
                            ctypes.c_size_t)
ReadParts = ctypes.CFUNCTYPE(None, _POINTER, _POINTER, TakePart, _POINTER)


def _find() -> str:
    given = os.environ.get("TOV_SCHEMA_LIBRARY")
    packed = pathlib.Path(__file__).parent / "lib" / "libtov_schema_tools.so.0"
    if given:
        return given
    if packed.exists():
        return str(packed)
    installed = ctypes.util.find_library("tov_schema_tools")
    if installed:
        return installed
    raise ImportError("libtov_schema_tools is neither in this package nor installed; "
                      "TOV_SCHEMA_LIBRARY may say where it is")


_library = ctypes.CDLL(_find())


def _declare(name: str, *arguments: Any, result: Any = None) -> Any:
    function = getattr(_library, name)
    function.argtypes = list(arguments)
    function.restype = result
    return function


_OUT = ctypes.POINTER(_POINTER)
_alloc_context = _declare("KT_context__alloc", _OUT)
_free_context = _declare("KT_context__free", _POINTER)
_has_err = _declare("KT_context__has_err", _POINTER, result=ctypes.c_int32)
_set_err = _declare("KT_context__err", _POINTER, ctypes.c_uint64, ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p)
_err_code = _declare("KT_context__err_code", _POINTER, result=ctypes.c_uint64)
_err_description = _declare("KT_context__err_description", _POINTER, result=ctypes.c_char_p)
_count_frames = _declare("KT_context__count_err_stackframes", _POINTER, result=ctypes.c_uint32)
_get_frame = _declare("KT_context__get_nth_err_stackframe", _POINTER, ctypes.c_uint32,
                      ctypes.POINTER(ctypes.c_char_p), ctypes.POINTER(ctypes.c_int32))
_alloc_string = _declare("KT_string__alloc", _POINTER, _OUT)
_free_string = _declare("KT_string__free", _POINTER, _POINTER)
_string_sz = _declare("KT_string__sz", _POINTER, result=ctypes.c_char_p)
_vhash_to_json = _declare("KT_vhash__to_json", _POINTER, _POINTER, _POINTER)
free_vhash = _declare("KT_vhash__free", _POINTER, _POINTER)
vhash_from_json = _declare("KT_vhash__alloc__from_json__sz", _POINTER, _OUT, ctypes.c_char_p)
get_varray = _declare("KT_vhash__get__varray", _POINTER, _POINTER, ctypes.c_char_p, _OUT)
_free_varray = _declare("KT_varray__free", _POINTER, _POINTER)
_count_varray = _declare("KT_varray__count", _POINTER, _POINTER, ctypes.POINTER(ctypes.c_uint32))
_get_vhash = _declare("KT_varray__get__vhash", _POINTER, _POINTER, ctypes.c_uint32, _OUT)
_get_sz = _declare("KT_varray__get__sz", _POINTER, _POINTER, ctypes.c_uint32, ctypes.POINTER(ctypes.c_char_p))

free_schema = _declare("tov_schema__nullfree", _POINTER, _OUT)
schema_from_json = _declare("tov_schema__from_json", _POINTER, ctypes.c_char_p, _OUT)
schema_to_json = _declare("tov_schema__to_json", _POINTER, _POINTER, _OUT)
check_texts = _declare("tov_client__check_texts", _POINTER, _POINTER)
import_files = _declare("tov_host__import_files", _POINTER, ctypes.POINTER(HostFile), ctypes.c_size_t,
                        ctypes.POINTER(HostOptions), _OUT, _OUT)
recognise = _declare("tov_host__recognise", ctypes.c_char_p, ctypes.c_size_t, result=ctypes.c_int32)
read_row_parts = _declare("tov_host__read_row_parts", _POINTER, ctypes.c_char_p, ctypes.c_size_t, TakeRows, _POINTER)
create_database = _declare("tov_client__create_database__with", _POINTER, _POINTER, ctypes.c_char_p,
                           ctypes.POINTER(CreateOptions))
write_script = _declare("tov_client__write_script__with", _POINTER, _POINTER, ctypes.POINTER(CreateOptions), _OUT)
creation_order = _declare("tov_client__creation_order", _POINTER, _POINTER, _OUT, _OUT)
describe_columns = _declare("tov_client__describe_columns", _POINTER, _POINTER, ctypes.c_char_p, _OUT)
open_loader = _declare("tov_client__open_loader", _POINTER, _POINTER, ctypes.c_char_p, ctypes.POINTER(LoadOptions),
                       _OUT)
load_file = _declare("tov_client__load_file", _POINTER, _POINTER, ctypes.c_char_p)
load_parts = _declare("tov_client__load_parts", _POINTER, _POINTER, ctypes.c_char_p, ReadParts, _POINTER)
finish_load = _declare("tov_client__finish_load", _POINTER, _POINTER, _OUT, _OUT)
free_loader = _declare("tov_client__free_loader", _POINTER, _POINTER)
read_record = _declare("tov_client__read_record", _POINTER, ctypes.c_char_p, _OUT, ctypes.POINTER(CreateOptions))
check_database = _declare("tov_client__check_database", _POINTER, _POINTER, ctypes.c_char_p,
                          ctypes.POINTER(CheckOptions), TakeViolation, _POINTER, ctypes.POINTER(ctypes.c_int32))
compare = _declare("tov_client__compare", _POINTER, _POINTER, _POINTER, ctypes.POINTER(CompareOptions), _OUT)
plan_migration = _declare("tov_client__plan_migration", _POINTER, _POINTER, _POINTER, ctypes.POINTER(MigrateOptions),
                          _OUT)
write_migration = _declare("tov_client__write_migration", _POINTER, _POINTER, _POINTER, ctypes.POINTER(MigrateOptions),
                           _OUT)
migrate_database = _declare("tov_client__migrate_database", _POINTER, ctypes.c_char_p, _POINTER,
                            ctypes.POINTER(MigrateOptions))
write_html_report = _declare("tov_client__write_html_report", _POINTER, _POINTER, ctypes.POINTER(ReportOptions), _OUT)
write_markdown_report = _declare("tov_client__write_markdown_report", _POINTER, _POINTER,
                                 ctypes.POINTER(ReportOptions), TakeReportFile, _POINTER)
# Of the SQLite that the library is linked with.
add_extension = _declare("sqlite3_auto_extension", _POINTER, result=ctypes.c_int)
remove_extension = _declare("sqlite3_cancel_auto_extension", _POINTER, result=ctypes.c_int)
unload = _declare("tov_client__unload", _POINTER, _POINTER, ctypes.c_char_p, ctypes.c_char_p,
                  ctypes.POINTER(UnloadOptions), _OUT)


class Raised:
    """Exceptions of functions that the library calls back: ctypes drops them, so the first ends what the library does,
    and comes out of the block in which this was the context."""

    def __init__(self) -> None:
        self._error: Optional[BaseException] = None

    @contextlib.contextmanager
    def caught(self, context: ctypes.c_void_p) -> Iterator[None]:
        """What a function that is called back does."""
        try:
            yield
        except BaseException as error:
            self._error = self._error or error
            _set_err(context, _UNEXPECTED_VALUE, b"a function of Python's", 0, b"an exception in Python")

    def __enter__(self) -> "Raised":
        return self

    def __exit__(self, _: Any, error: Optional[BaseException], __: Any) -> None:
        if self._error is not None and isinstance(error, Error):
            raise self._error from None


class Call:
    """A context for some calls: each raises what failed."""

    def __init__(self) -> None:
        self.context = _POINTER()
        _alloc_context(ctypes.byref(self.context))
        if not self.context:
            raise MemoryError

    def __enter__(self) -> "Call":
        return self

    def __exit__(self, *_: Any) -> None:
        _free_context(self.context)

    def __call__(self, function: Any, *arguments: Any) -> None:
        function(self.context, *arguments)
        self.check()

    def check(self) -> None:
        if not _has_err(self.context):
            return
        frames = []
        for n in range(_count_frames(self.context)):
            file, line = ctypes.c_char_p(), ctypes.c_int32()
            _get_frame(self.context, n, ctypes.byref(file), ctypes.byref(line))
            frames.append(Frame((file.value or b"").decode(), line.value))
        raise Error(_err_code(self.context), _err_description(self.context).decode("utf-8", "replace"), frames)

    def take_string(self, string: ctypes.c_void_p) -> str:
        """The text of a string that the library handed over, which is freed."""
        try:
            return bytes(_string_sz(string)).decode("utf-8", "surrogateescape")
        finally:
            _free_string(self.context, string)

    def take_map(self, handle: ctypes.c_void_p) -> Any:
        try:
            return self._json(handle)
        finally:
            free_vhash(self.context, handle)

    def take_maps(self, handle: ctypes.c_void_p) -> List[Any]:
        """The maps of a list that the library handed over, null being an empty one; it is freed."""
        def get(n: int) -> Any:
            item = _POINTER()
            self(_get_vhash, handle, n, ctypes.byref(item))
            return self._json(item)
        return self._take_list(handle, get)

    def take_texts(self, handle: ctypes.c_void_p) -> List[str]:
        def get(n: int) -> str:
            item = ctypes.c_char_p()
            self(_get_sz, handle, n, ctypes.byref(item))
            return (item.value or b"").decode("utf-8", "replace")
        return self._take_list(handle, get)

    def _take_list(self, handle: ctypes.c_void_p, get: Any) -> List[Any]:
        if not handle:
            return []
        try:
            count = ctypes.c_uint32()
            self(_count_varray, handle, ctypes.byref(count))
            return [get(n) for n in range(count.value)]
        finally:
            _free_varray(self.context, handle)

    def _json(self, handle: ctypes.c_void_p) -> Any:
        string = _POINTER()
        self(_alloc_string, ctypes.byref(string))
        try:
            self(_vhash_to_json, handle, string)
        except Error:
            _free_string(self.context, string)
            raise
        return json.loads(self.take_string(string))


def encoded(text: Optional[str]) -> Optional[bytes]:
    """Text as a C string; None, which leaves the choice to the library, as null."""
    return None if text is None else _c_string(text.encode())


def strings(texts: Iterable[str]) -> Any:
    """Texts as an array of C strings, which has to stay while the library uses it."""
    items = [_c_string(text.encode()) for text in texts]
    return (ctypes.c_char_p * len(items))(*items)


def encoded_path(path: Any) -> Optional[bytes]:
    return None if path is None else _c_string(os.fsencode(path))


def _c_string(text: bytes) -> bytes:
    if b"\0" in text:  # where C takes it for the end
        raise ValueError(f"a NUL in {text!r}")
    return text
