"""A report on a schema for people."""
import ctypes
import json
from typing import Any, Dict, Iterable, List, Mapping, Optional

from . import _collations
from . import _library as c


class _Content:
    """What a report says besides the schema; it is kept while the library borrows it."""

    def __init__(self, call: c.Call, title: Optional[str], findings: Iterable[Mapping[str, Any]], database: Any,
                 changes: Optional[Mapping[str, Any]]):
        found = list(findings)
        self._maps: List[ctypes.c_void_p] = []
        self._call = call
        self._changes = ctypes.c_void_p() if changes is None else self._map(changes)
        self._findings = ctypes.c_void_p()
        if found:
            call(c.get_varray, self._map({"findings": found}), b"findings", ctypes.byref(self._findings))
        self.options = c.ReportOptions(title=c.encoded(title), findings=self._findings,
                                       database=c.encoded_path(database), changes=self._changes)

    def _map(self, content: Mapping[str, Any]) -> ctypes.c_void_p:
        handle = ctypes.c_void_p()
        self._call(c.vhash_from_json, ctypes.byref(handle), json.dumps(content).encode())
        self._maps.append(handle)
        return handle

    def __enter__(self) -> Any:
        return ctypes.byref(self.options)

    def __exit__(self, *_: Any) -> None:
        for handle in self._maps:
            c.free_vhash(self._call.context, handle)


def html(handle: ctypes.c_void_p, *content: Any) -> str:
    page = ctypes.c_void_p()
    with c.Call() as call, _collations.added_if_there(), _Content(call, *content) as options:
        call(c.write_html_report, handle, options, ctypes.byref(page))
        return call.take_string(page)


def markdown(handle: ctypes.c_void_p, *content: Any) -> Dict[str, str]:
    files: Dict[str, str] = {}
    raised = c.Raised()

    def take(context: Any, _: Any, name: bytes, text: bytes) -> None:
        with raised.caught(context):
            files[name.decode()] = text.decode("utf-8", "replace")
    with raised, c.Call() as call, _collations.added_if_there(), _Content(call, *content) as options:
        call(c.write_markdown_report, handle, options, c.TakeReportFile(take), None)
    return files
