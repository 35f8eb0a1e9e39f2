#!/usr/bin/env python3
"""Makes the package of the sample business with rows: its package without (shop.dacpac), and those of shop_rows.py.

    make_bacpac.py SHOP.DACPAC SHOP.BACPAC

Rows are kept in such a package in bcp's native Unicode form: the columns of a table one after the other, little
end first, without those that the server computes. Equal input makes equal bytes.
"""
import struct
import sys
import zipfile
from datetime import date, datetime
from typing import NamedTuple
from xml.etree import ElementTree

from shop_rows import rows_of_shop

NAMESPACE = "{http://schemas.microsoft.com/sqlserver/dac/Serialization/2012/02}"


class Column(NamedTuple):
    type: str
    nullable: bool
    length: int  # 0 for max
    precision: int
    scale: int


def properties(element):
    return {found.get("Name"): found.get("Value") for found in element.findall(NAMESPACE + "Property")}


def related(element, relationship):
    """What an element's relationship holds: elements or references."""
    for found in element.findall(NAMESPACE + "Relationship"):
        if found.get("Name") == relationship:
            for entry in found:
                yield from entry


def column_of(element, aliases):
    specifier = next(related(element, "TypeSpecifier"))
    sizes = properties(specifier)
    name = next(related(specifier, "Type")).get("Name")
    if name in aliases:
        sizes = properties(aliases[name])
        name = next(related(aliases[name], "Type")).get("Name")
    return Column(
        name.split(".")[-1].strip("[]"),
        properties(element).get("IsNullable") != "False",
        *(int(sizes.get(size, 0)) for size in ("Length", "Precision", "Scale")),
    )


def tables_of(model):
    """The columns that rows have, by table."""
    elements = ElementTree.fromstring(model).find(NAMESPACE + "Model").findall(NAMESPACE + "Element")
    aliases = {found.get("Name"): found for found in elements if found.get("Type") == "SqlUserDefinedDataType"}
    return {
        found.get("Name").replace("[", "").replace("]", ""): [
            column_of(column, aliases)
            for column in related(found, "Columns")
            if column.get("Type") == "SqlSimpleColumn"
        ]
        for found in elements
        if found.get("Type") == "SqlTable"
    }


def time_of_day(value, scale):
    """The fractions of a second since midnight, in the bytes that the scale takes."""
    seconds = value.hour * 3600 + value.minute * 60 + value.second
    return ((seconds * 10**6 + value.microsecond) * 10**scale // 10**6).to_bytes(
        3 if scale <= 2 else 4 if scale <= 4 else 5, "little"
    )


def days(value):
    return (value.toordinal() - 1).to_bytes(3, "little")


def ten_thousandths(value):
    return int(value.scaleb(4))


def decimal(value, column):
    digits = abs(int(value.scaleb(column.scale))).to_bytes(16, "little")
    return bytes([column.precision, column.scale, value >= 0]) + digits


def money(value):
    return struct.pack("<iI", ten_thousandths(value) >> 32, ten_thousandths(value) & 0xFFFFFFFF)


def legacy_moment(value):
    """A datetime: days since 1900, and three hundredths of a second since midnight."""
    since_midnight = value - datetime.combine(value, datetime.min.time())
    return struct.pack("<iI", (value.date() - date(1900, 1, 1)).days, round(since_midnight.total_seconds() * 300))


def moment_of_minutes(value):
    return struct.pack("<HH", (value.date() - date(1900, 1, 1)).days, value.hour * 60 + value.minute)


# Types whose values all have the same size, and the bytes of one.
FIXED = {
    "bit": lambda value, column: bytes([value]),
    "tinyint": lambda value, column: struct.pack("<B", value),
    "smallint": lambda value, column: struct.pack("<h", value),
    "int": lambda value, column: struct.pack("<i", value),
    "bigint": lambda value, column: struct.pack("<q", value),
    "real": lambda value, column: struct.pack("<f", value),
    "float": lambda value, column: struct.pack("<d", value),
    "decimal": decimal,
    "numeric": decimal,
    "money": lambda value, column: money(value),
    "smallmoney": lambda value, column: struct.pack("<i", ten_thousandths(value)),
    "date": lambda value, column: days(value),
    "time": lambda value, column: time_of_day(value, column.scale),
    "datetime": lambda value, column: legacy_moment(value),
    "smalldatetime": lambda value, column: moment_of_minutes(value),
    "datetime2": lambda value, column: time_of_day(value, column.scale) + days(value),
    # In UTC, with the offset in minutes.
    "datetimeoffset": lambda value, column: time_of_day(value, column.scale) + days(value) + struct.pack("<h", 0),
    "uniqueidentifier": lambda value, column: value.bytes_le,
    "rowversion": lambda value, column: value,
    "timestamp": lambda value, column: value,
}
# Of these, the ones that have their length before them even where NULL is not allowed.
ALWAYS_WITH_LENGTH = {"bit", "decimal", "numeric", "uniqueidentifier", "rowversion", "timestamp"}
# Other types have a length of two bytes, or of eight with (max).
BYTES_OF_LENGTH = {
    **dict.fromkeys(("text", "ntext", "image"), 4),
    **dict.fromkeys(("xml", "hierarchyid", "geography", "geometry", "sql_variant"), 8),
}


def field(value, column):
    """A value with its length before it where the type has one; all ones are NULL."""
    if column.type in FIXED:
        data = None if value is None else FIXED[column.type](value, column)
        size = 1 if column.nullable or column.type in ALWAYS_WITH_LENGTH else 0
    else:
        padded = value.ljust(column.length) if column.type in ("char", "nchar") and value is not None else value
        data = padded.encode("utf-16-le") if isinstance(padded, str) else padded
        size = BYTES_OF_LENGTH.get(column.type, 2 if column.length else 8)
        if column.type == "char" and not column.nullable:
            size = 0
    if data is None:
        if not column.nullable:
            raise ValueError(f"NULL for a {column.type} that needs a value")
        return b"\xff" * size
    return len(data).to_bytes(size, "little") + data if size else data


def row_part(rows, columns):
    return b"".join(field(value, column) for row in rows for value, column in zip(row, columns, strict=True))


def replaced(text, old, new):
    if text.count(old) != 1:
        raise ValueError(f"not there once: {old}")
    return text.replace(old, new)


def with_rows(files, rows):
    """The files of a package and the parts that hold its rows; model and checksum stay as they are."""
    count = sum(len(of_table) for of_table in rows.values())
    statistics = f"<ExportStatistics><TableRowCountTotalTag>{count}</TableRowCountTotalTag></ExportStatistics>"
    origin = files["Origin.xml"].decode()
    origin = replaced(origin, "<ContainsExportedData>false<", "<ContainsExportedData>true<")
    origin = replaced(origin, "<Checksums>", statistics + "<Checksums>")
    types = replaced(
        files["[Content_Types].xml"].decode(),
        "</Types>",
        '<Default Extension="BCP" ContentType="application/octet-stream" /></Types>',
    )
    tables = tables_of(files["model.xml"])
    parts = {
        f"Data/{name}/TableData-000-00000.BCP": row_part(of_table, tables.pop(name)) for name, of_table in rows.items()
    }
    if tables:
        raise ValueError(f"no rows for {', '.join(tables)}")
    return {**files, "Origin.xml": origin.encode(), "[Content_Types].xml": types.encode(), **parts}


def main(source, target):
    with zipfile.ZipFile(source) as package:
        files = {name: package.read(name) for name in package.namelist()}
    with zipfile.ZipFile(target, "w") as package:
        for name, data in with_rows(files, rows_of_shop()).items():
            entry = zipfile.ZipInfo(name, (2024, 1, 1, 0, 0, 0))
            package.writestr(entry, data, zipfile.ZIP_DEFLATED)


if __name__ == "__main__":
    main(*sys.argv[1:])
