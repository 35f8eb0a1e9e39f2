"""Python's values of a column's, both ways: Decimal, UUID, date, time, datetime, bool, int, float, str, bytes.

A rounded value is never stored: what the column cannot hold exactly raises ValueError. The exceptions are what the
server rounds as well: the microseconds of a datetime, time or datetime2 are rounded to the column's fraction, and the
float of a real to 32 bits. And the times that SQLite would round are cut to three digits, as the loader does it:
docs/values.md says which.
"""
import datetime
import decimal
import math
import re
import struct
import uuid
from typing import Any, Callable, Dict, NamedTuple, Optional, Tuple

_MOMENT = re.compile(r"(?:(\d{4})-(\d\d)-(\d\d))?[ T]?(?:(\d\d):(\d\d):(\d\d)(?:\.(\d+))?)?(?: ([+-])(\d\d):(\d\d))?")


class Type(NamedTuple):
    """A type of the server, such as decimal(9,2): its name and what is in its parentheses."""

    name: str
    sizes: Tuple[int, ...]

    @classmethod
    def of(cls, text: str) -> "Type":
        name, _, rest = text.partition("(")
        return cls(name, tuple(int(size) for size in re.findall(r"\d+", rest)))

    @property
    def scale(self) -> int:
        """Digits after the point of a number, or of a second's fraction."""
        if self.name in ("money", "smallmoney"):
            return 4
        if self.name in ("decimal", "numeric"):
            return self.sizes[1] if len(self.sizes) > 1 else 0
        if self.name in ("time", "datetime2", "datetimeoffset"):
            return self.sizes[0] if self.sizes else 7
        return 0


def _parts(text: str) -> Dict[str, Any]:
    match = _MOMENT.fullmatch(text)
    if not match:
        raise ValueError(f"neither a date nor a time: {text!r}")
    fraction = (match[7] or "").ljust(7, "0")
    parts: Dict[str, Any] = {}
    if match[1]:
        parts.update(year=int(match[1]), month=int(match[2]), day=int(match[3]))
    if match[4]:
        parts.update(hour=int(match[4]), minute=int(match[5]), second=int(match[6]), microsecond=int(fraction[:6]))
    if match[8]:
        offset = datetime.timedelta(hours=int(match[9]), minutes=int(match[10]))
        parts["tzinfo"] = datetime.timezone(-offset if match[8] == "-" else offset)
    return parts


def _moment(make: Callable[..., Any]) -> Callable[[Type, str], Any]:
    def load(_: Type, stored: str) -> Any:
        # Python has no tenths of microseconds; a text that has some stays what it is, digits and all.
        fraction = re.search(r"\.\d{6}([1-9])", stored)
        return stored if fraction else make(**_parts(stored))
    return load


def _load_decimal(type_: Type, stored: int) -> decimal.Decimal:
    digits = tuple(int(digit) for digit in str(abs(stored)))
    return decimal.Decimal((int(stored < 0), digits, -type_.scale))


_LOAD: Dict[str, Callable[[Type, Any], Any]] = {
    "bit": lambda _, stored: bool(stored),
    "uniqueidentifier": lambda _, stored: uuid.UUID(bytes_le=bytes(stored)),
    "date": _moment(datetime.date),
    "time": _moment(datetime.time),
    **{name: _load_decimal for name in ("decimal", "numeric", "money", "smallmoney")},
    **{name: _moment(datetime.datetime) for name in ("datetime", "datetime2", "smalldatetime", "datetimeoffset")},
}


def load(type_: Type, stored: Any) -> Any:
    """Python's value of what the database has."""
    convert = _LOAD.get(type_.name)
    return stored if stored is None or convert is None else convert(type_, stored)


_EXACT = decimal.Context(prec=60, traps=[decimal.Inexact])


def _scaled(number: decimal.Decimal, scale: int) -> Optional[int]:
    """The number as a whole one of so many digits after the point; None when it has more of them."""
    if not number or number.adjusted() + scale < 0:
        return None if number else 0
    try:
        return int(number.scaleb(scale, _EXACT).to_integral_exact(context=_EXACT))
    except decimal.Inexact:
        return None


def _dump_decimal(type_: Type, value: Any) -> int:
    if isinstance(value, float):
        raise ValueError(f"a float is not exact; give a Decimal or a str: {value!r}")
    number = decimal.Decimal(value)
    if not number.is_finite():
        raise ValueError(f"not a finite number: {value!r}")
    if number.adjusted() + type_.scale > 18 and number:  # an integer of so many digits is not even made
        raise ValueError(f"more than 63 bits: {value!r}")
    stored = _scaled(number, type_.scale)
    if stored is None:
        raise ValueError(f"more than {type_.scale} digits after the point: {value!r}")
    if not -(2**63) <= stored < 2**63:
        raise ValueError(f"more than 63 bits: {value!r}")
    return stored


def _dump_float(_: Type, value: Any) -> float:
    if not math.isfinite(value):
        raise ValueError(f"not a finite number: {value!r}")
    return float(value)


def _dump_real(type_: Type, value: Any) -> float:
    return float(struct.unpack("<f", struct.pack("<f", _dump_float(type_, value)))[0])


def _rounded(value: Any, step: int, base: int = 1_000_000) -> Any:
    """The moment rounded half up to steps of base / step microseconds, as whole steps since midnight."""
    micros = ((value.hour * 60 + value.minute) * 60 + value.second) * 1_000_000 + value.microsecond
    return (micros * step * 2 + base) // (base * 2)


def _clock(ticks: int, per_second: int, digits: int) -> str:
    seconds, rest = divmod(ticks, per_second)
    text = f"{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"
    return text + (f".{rest:0{digits}}" if digits else "")


def _date_and_clock(value: datetime.datetime, per_second: int) -> Tuple[datetime.date, int]:
    day, ticks = value.date(), _rounded(value, per_second)
    if ticks == 86_400 * per_second:
        return day + datetime.timedelta(days=1), 0
    return day, ticks


def _fraction(ticks: int, scale: int) -> str:
    """A clock with a fraction of that many digits; the database keeps one or two as three."""
    text = _clock(ticks, 10**scale, scale)
    return text + "0" * (3 - scale) if scale in (1, 2) else text


def _dump_time(type_: Type, value: datetime.time) -> str:
    scale = min(type_.scale, 6)
    ticks = min(_rounded(value, 10**scale), 86_400 * 10**scale - 1)
    if scale >= 4 and ticks * 2000 // 10**scale % 2:  # half a millisecond or more beside the whole ones
        return _clock(ticks // 10**(scale - 3), 1000, 3)
    return _fraction(ticks, scale) + "0" * (type_.scale - scale)


def _dump_datetime2(type_: Type, value: datetime.datetime) -> str:
    scale = min(type_.scale, 6)
    day, ticks = _date_and_clock(value, 10**scale)
    if scale >= 4 and ticks * 2000 // 10**scale == 86_400 * 2000 - 1 and type_.name == "datetime2":
        return f"{day.isoformat()} 23:59:59.999"
    return f"{day.isoformat()} {_fraction(ticks, scale)}" + "0" * (type_.scale - scale)


def _dump_datetime(_: Type, value: datetime.datetime) -> str:
    day, ticks = _date_and_clock(value, 300)
    seconds, third = divmod(ticks, 300)
    return f"{day.isoformat()} {_clock(seconds, 1, 0)}.{(third * 10 + 1) // 3:03}"


def _dump_smalldatetime(_: Type, value: datetime.datetime) -> str:
    minute = value.replace(second=0, microsecond=0)
    if value.second * 1000 + value.microsecond // 1000 > 29_998:  # the server rounds up from 29.999 seconds on
        minute += datetime.timedelta(minutes=1)
    return minute.isoformat(" ")


def _dump_datetimeoffset(type_: Type, value: datetime.datetime) -> str:
    offset = value.utcoffset()
    if offset is None:
        raise ValueError(f"a datetimeoffset needs a datetime with an offset: {value!r}")
    minutes, seconds = divmod(offset, datetime.timedelta(minutes=1))
    if seconds:
        raise ValueError(f"seconds in the offset: {value!r}")
    sign, minutes = ("-", -minutes) if minutes < 0 else ("+", minutes)
    return f"{_dump_datetime2(type_, value.replace(tzinfo=None))} {sign}{minutes // 60:02}:{minutes % 60:02}"


def _naive(dump: Callable[[Type, Any], str]) -> Callable[[Type, Any], str]:
    def checked(type_: Type, value: Any) -> str:
        if value.tzinfo is not None:
            raise ValueError(f"the column has no offset: {value!r}")
        return dump(type_, value)
    return checked


_DUMP: Dict[str, Tuple[Any, Callable[[Type, Any], Any]]] = {
    "real": ((float, int), _dump_real),
    "float": ((float, int), _dump_float),
    "bit": (bool, lambda _, value: int(value)),
    "uniqueidentifier": (uuid.UUID, lambda _, value: value.bytes_le),
    "date": (datetime.date, lambda _, value: value.isoformat()),
    "time": (datetime.time, _naive(_dump_time)),
    "datetime": (datetime.datetime, _naive(_dump_datetime)),
    "datetime2": (datetime.datetime, _naive(_dump_datetime2)),
    "smalldatetime": (datetime.datetime, _naive(_dump_smalldatetime)),
    "datetimeoffset": (datetime.datetime, _dump_datetimeoffset),
}
_NUMBERS = ("decimal", "numeric", "money", "smallmoney")


def dump(type_: Type, value: Any) -> Any:
    """What the database is to have for Python's value. A str for a moment or the like is stored as it is.

    A char is filled up to so many characters. In UTF-8 or a double-byte code page the server counts bytes: there a str
    with other characters than ASCII has to be filled up before.
    """
    try:
        return None if value is None else _dump(type_, value)
    except ArithmeticError as error:
        raise ValueError(f"not a value of a {type_.name}: {value!r}") from error


def _dump(type_: Type, value: Any) -> Any:
    if type_.name in _NUMBERS:
        return _dump_decimal(type_, value)
    if type_.name == "char" and isinstance(value, str) and type_.sizes:
        return value.ljust(type_.sizes[0])
    if type_.name == "nchar" and isinstance(value, str) and type_.sizes:
        units = len(value.encode("utf-16-le")) // 2
        return value + " " * (type_.sizes[0] - units)
    if type_.name == "binary" and isinstance(value, (bytes, bytearray)) and type_.sizes:
        return bytes(value).ljust(type_.sizes[0], b"\0")
    expected, convert = _DUMP.get(type_.name, (None, None))
    if expected is None or convert is None:
        return value
    if expected is datetime.date and isinstance(value, datetime.datetime):
        raise ValueError(f"a date has no time: {value!r}")
    return convert(type_, value) if isinstance(value, expected) else value
