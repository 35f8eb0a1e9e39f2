"""Python's values into the database and back, under its own rules."""
import datetime as dt
import decimal
import sqlite3
import uuid

import pytest

import tov_schema

D = decimal.Decimal
CASES = [
    ("Total", D("12.5"), 1250, D("12.50")),
    ("Total", 7, 700, D("7.00")),
    ("Total", "-0.01", -1, D("-0.01")),
    ("Paid", D("1.2345"), 12345, D("1.2345")),
    ("IsOpen", True, 1, True),
    ("Ratio", 0.1, 0.1, 0.1),
    ("Token", uuid.UUID("6F9619FF-8B86-D011-B42D-00C04FC964FF"), bytes.fromhex("FF19966F868B11D0B42D00C04FC964FF"),
     uuid.UUID("6F9619FF-8B86-D011-B42D-00C04FC964FF")),
    ("Hash", b"\x0a\x1b", b"\x0a\x1b\0\0", b"\x0a\x1b\0\0"),
    ("Day", dt.date(2024, 2, 29), "2024-02-29", dt.date(2024, 2, 29)),
    ("At", dt.time(7, 0, 0, 123456), "07:00:00.123", dt.time(7, 0, 0, 123000)),
    ("At", dt.time(23, 59, 59, 999999), "23:59:59.999", dt.time(23, 59, 59, 999000)),
    ("Fine", dt.time(7, 0, 0, 123456), "07:00:00.1234560", dt.time(7, 0, 0, 123456)),
    ("Fine", "07:00:00.1234567", "07:00:00.1234567", "07:00:00.1234567"),
    ("Placed", dt.datetime(2024, 1, 2, 3, 4, 5, 1000), "2024-01-02 03:04:05.000", dt.datetime(2024, 1, 2, 3, 4, 5)),
    ("Placed", dt.datetime(2024, 1, 2, 3, 4, 5, 2000), "2024-01-02 03:04:05.003",
     dt.datetime(2024, 1, 2, 3, 4, 5, 3000)),
    ("Placed", dt.datetime(2024, 1, 2, 3, 4, 5, 6000), "2024-01-02 03:04:05.007",
     dt.datetime(2024, 1, 2, 3, 4, 5, 7000)),
    ("Placed", dt.datetime(2024, 12, 31, 23, 59, 59, 999000), "2025-01-01 00:00:00.000", dt.datetime(2025, 1, 1)),
    ("Rough", dt.datetime(2024, 1, 2, 3, 59, 29, 998000), "2024-01-02 03:59:00", dt.datetime(2024, 1, 2, 3, 59)),
    ("Rough", dt.datetime(2024, 1, 2, 3, 59, 29, 999000), "2024-01-02 04:00:00", dt.datetime(2024, 1, 2, 4, 0)),
    ("Sent", dt.datetime(2024, 1, 2, 3, 4, 5, 160000), "2024-01-02 03:04:05.200",
     dt.datetime(2024, 1, 2, 3, 4, 5, 200000)),
    ("Exact", dt.datetime(2024, 1, 2, 3, 4, 5, 123456), "2024-01-02 03:04:05.1234560",
     dt.datetime(2024, 1, 2, 3, 4, 5, 123456)),
    ("Stamp", dt.datetime(2024, 1, 2, 3, 4, 5, 123456, dt.timezone(dt.timedelta(hours=-3, minutes=-30))),
     "2024-01-02 03:04:05.123 -03:30",
     dt.datetime(2024, 1, 2, 3, 4, 5, 123000, dt.timezone(dt.timedelta(hours=-3, minutes=-30)))),
    ("Total", D("1." + 70 * "0"), 100, D("1.00")),
    ("Total", D("0E+999999"), 0, D("0.00")),
    ("Light", 0.1, 0.10000000149011612, 0.10000000149011612),
    ("Light", 7, 7.0, 7.0),
    ("Wide", "ab", "ab  ", "ab  "),
    ("Wide", "a\U0001F600", "a\U0001F600 ", "a\U0001F600 "),
    ("Day", None, None, None),
    # What SQLite's time functions would round has three digits, as the loader stores it.
    ("Four", dt.time(7, 0, 0, 123400), "07:00:00.1234", dt.time(7, 0, 0, 123400)),
    ("Four", dt.time(7, 0, 0, 123500), "07:00:00.123", dt.time(7, 0, 0, 123000)),
    ("Four", dt.time(7, 0, 0, 999900), "07:00:00.999", dt.time(7, 0, 0, 999000)),
    ("Four", dt.time(23, 59, 59, 999999), "23:59:59.999", dt.time(23, 59, 59, 999000)),
    ("Fine", dt.time(7, 0, 0, 123499), "07:00:00.1234990", dt.time(7, 0, 0, 123499)),
    ("Fine", dt.time(7, 0, 0, 123500), "07:00:00.123", dt.time(7, 0, 0, 123000)),
    ("Fine", dt.time(23, 59, 59, 999999), "23:59:59.999", dt.time(23, 59, 59, 999000)),
    ("FourToo", dt.datetime(2024, 1, 2, 3, 4, 5, 123500), "2024-01-02 03:04:05.1235",
     dt.datetime(2024, 1, 2, 3, 4, 5, 123500)),
    ("FourToo", dt.datetime(2024, 1, 2, 23, 59, 59, 999500), "2024-01-02 23:59:59.999",
     dt.datetime(2024, 1, 2, 23, 59, 59, 999000)),
    ("FourToo", dt.datetime(2024, 1, 2, 23, 59, 59, 999999), "2024-01-03 00:00:00.0000", dt.datetime(2024, 1, 3)),
    ("Exact", dt.datetime(2024, 1, 2, 3, 4, 5, 999999), "2024-01-02 03:04:05.9999990",
     dt.datetime(2024, 1, 2, 3, 4, 5, 999999)),
    ("Exact", dt.datetime(2024, 1, 2, 23, 59, 59, 999999), "2024-01-02 23:59:59.999",
     dt.datetime(2024, 1, 2, 23, 59, 59, 999000)),
    ("FineStamp", dt.datetime(2024, 1, 2, 23, 59, 59, 999999, dt.timezone.utc),
     "2024-01-02 23:59:59.9999990 +00:00", dt.datetime(2024, 1, 2, 23, 59, 59, 999999, dt.timezone.utc)),
]


@pytest.mark.parametrize("column, value, stored, loaded", CASES)
def test_a_value_is_stored_and_read_back(schema, database, column, value, stored, loaded):
    orders = schema.table("sales.Orders")
    with tov_schema.connect(database) as connection:
        connection.execute(*orders.insert({"Id": 1, column: value}))
        row = connection.execute(f'SELECT Id, {column} FROM "sales.Orders"').fetchone()
    assert row[column] == stored
    assert orders.load_row(row) == {"Id": 1, column: loaded}
    assert type(orders.load_row(row)[column]) is type(loaded)


@pytest.mark.parametrize("column, value, message", [
    ("Total", 0.1, "a float is not exact"),
    ("Total", D("0.001"), "more than 2 digits after the point"),
    ("Total", D("NaN"), "not a finite number"),
    ("Paid", D(10) ** 18, "more than 63 bits"),
    ("Total", D("1." + 65 * "0" + "1"), "more than 2 digits after the point"),
    ("Total", D("1E-999999"), "more than 2 digits after the point"),
    ("Total", D("1E+999999999"), "more than 63 bits"),
    ("Total", "abc", "not a value of a decimal: 'abc'"),
    ("Ratio", float("nan"), "not a finite number"),
    ("Light", float("inf"), "not a finite number"),
    ("Light", 1e39, "not a value of a real: 1e[+]39"),
    ("Sent", dt.datetime(9999, 12, 31, 23, 59, 59, 999999), "not a value of a datetime2"),
    ("Placed", dt.datetime(9999, 12, 31, 23, 59, 59, 999999), "not a value of a datetime"),
    ("Rough", dt.datetime(9999, 12, 31, 23, 59, 59), "not a value of a smalldatetime"),
    ("Stamp", dt.datetime(2024, 1, 1, tzinfo=dt.timezone(dt.timedelta(seconds=30))), "seconds in the offset"),
    ("Day", dt.datetime(2024, 1, 1), "a date has no time"),
    ("Placed", dt.datetime(2024, 1, 1, tzinfo=dt.timezone.utc), "the column has no offset"),
    ("Stamp", dt.datetime(2024, 1, 1), "needs a datetime with an offset"),
])
def test_what_the_column_cannot_hold_is_not_made_to_fit(schema, column, value, message):
    with pytest.raises(ValueError, match=message):
        schema.table("sales.Orders").column(column).dump(value)


def test_the_database_has_the_last_word(schema, database):
    with tov_schema.connect(database) as connection, pytest.raises(sqlite3.IntegrityError, match=r"\[Day\]"):
        connection.execute(*schema.table("sales.Orders").insert({"Id": 1, "Day": "31.12.2024"}))


def test_columns_and_tables_are_found_in_any_case(schema):
    assert schema.table("SALES.orders").column("total").server_type == "decimal(9,2)"
    with pytest.raises(KeyError):
        schema.table("Nothing")
    with pytest.raises(KeyError):
        schema.table("Customers").column("Nothing")
    with pytest.raises(KeyError, match="does not have Twice"):
        schema.table("sales.Orders").insert({"Twice": 1})


def test_a_row_without_columns_has_its_defaults(schema):
    assert schema.table("Customers").insert({}) == ('INSERT INTO "Customers" DEFAULT VALUES', [])
