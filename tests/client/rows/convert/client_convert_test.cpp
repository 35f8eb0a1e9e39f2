// Every type, every form, every edge: what becomes of a field.
#include "rows/convert/client_bytes.hpp"
#include "rows/convert/client_convert.hpp"

#include <gtest/gtest.h>

namespace {

constexpr client_server_type simple(client_base base)
{
    return {base};
}
constexpr client_server_type decimal(uint8_t precision, uint8_t scale)
{
    return {client_base::decimal, true, precision, scale};
}
constexpr client_server_type scaled(client_base base, uint8_t scale)
{
    return {base, true, 0, scale};
}
constexpr client_server_type sized(client_base base, int32_t length, uint16_t code_page = 1252)
{
    return {base, true, 0, 0, code_page, length};
}

// The value as text: numbers as they are, texts in quotes, blobs in hex; or the code of the reject. A shortened value
// has a mark behind it.
std::string shown(client_converter &converter, const client_server_type &type, const client_field &field)
{
    client_value value;
    const client_reject reject = client_convert(converter, type, field, value);
    if (reject != client_reject::none)
        return client_reject_word(reject);
    const std::string mark = value.shortened ? " shortened" : "";
    switch (value.storage) {
    case client_storage::null:
        return "NULL";
    case client_storage::integer:
        return std::to_string(value.integer);
    case client_storage::real: {
        char digits[40];
        snprintf(digits, sizeof digits, "%.17g", value.real);
        return digits;
    }
    case client_storage::text:
        return "'" + std::string(value.bytes) + "'" + mark;
    case client_storage::blob:
        break;
    }
    std::string hex = "x";
    client_append_hex(hex, value.bytes);
    return hex;
}

struct convert_case {
    const char *name;
    client_server_type type;
    client_form form;
    std::string_view field;
    const char *expected;
};

void check(const convert_case &c)
{
    SCOPED_TRACE(std::string(c.name) + ": " + std::string(c.field));
    client_converter converter;
    EXPECT_EQ(shown(converter, c.type, {c.form, c.field}), c.expected);
}

using namespace std::string_view_literals;
constexpr client_form text = client_form::text;
constexpr client_form literal = client_form::literal;
constexpr client_form number = client_form::number;
constexpr client_form hex = client_form::hex;

constexpr client_server_type bit = simple(client_base::bit);
constexpr client_server_type tinyint = simple(client_base::tinyint);
constexpr client_server_type smallint = simple(client_base::smallint);
constexpr client_server_type integer = simple(client_base::integer);
constexpr client_server_type bigint = simple(client_base::bigint);
constexpr client_server_type money = simple(client_base::money);
constexpr client_server_type smallmoney = simple(client_base::smallmoney);
constexpr client_server_type real = simple(client_base::real);
constexpr client_server_type floating = simple(client_base::floating);

constexpr convert_case number_cases[] = {
    {"bit", bit, text, "1", "1"},
    {"a bit is no word", bit, text, "True", "not-a-bit"},
    {"a bit is no other number", bit, text, "2", "not-a-bit"},
    {"a bit of JSON", bit, client_form::boolean, "true", "1"},
    {"a bit of JSON that is off", bit, client_form::boolean, "false", "0"},
    {"true is no integer", integer, client_form::boolean, "true", "not-a-number"},
    {"tinyint", tinyint, text, "255", "255"},
    {"tinyint has no sign", tinyint, text, "-1", "out-of-range"},
    {"minus zero is zero", tinyint, text, "-0", "0"},
    {"tinyint ends at 255", tinyint, text, "256", "out-of-range"},
    {"smallint", smallint, text, "-32768", "-32768"},
    {"smallint ends", smallint, text, "-32769", "out-of-range"},
    {"int", integer, text, "+2147483647", "2147483647"},
    {"int ends", integer, text, "2147483648", "out-of-range"},
    {"int is not empty", integer, text, "", "not-a-number"},
    {"int is not a sign", integer, text, "-", "not-a-number"},
    {"int is not a point", integer, text, ".", "not-a-number"},
    {"int has no blanks", integer, text, " 1", "not-a-number"},
    {"int has no letters", integer, text, "1a", "not-a-number"},
    {"int in hex", integer, text, "0x10", "not-a-number"},
    {"int with a fraction of zeros", integer, text, "12.00", "12"},
    {"int with a fraction", integer, text, "12.5", "too-precise"},
    {"int has no groups", integer, text, "1,000", "not-a-number"},
    {"bigint", bigint, text, "-9223372036854775808", "-9223372036854775808"},
    {"bigint at the other end", bigint, number, "9223372036854775807", "9223372036854775807"},
    {"bigint ends", bigint, text, "9223372036854775808", "out-of-range"},
    {"far beyond", bigint, text, "99999999999999999999999999999999999999999", "out-of-range"},
    {"decimal is scaled", decimal(9, 2), text, "12.5", "1250"},
    {"decimal without a leading zero", decimal(9, 4), text, ".2500", "2500"},
    {"negative without a leading zero", decimal(9, 2), text, "-.5", "-50"},
    {"decimal ending in a point", decimal(9, 2), text, "7.", "700"},
    {"zeros too many", decimal(9, 2), text, "12.5000", "1250"},
    {"digits too many", decimal(9, 2), text, "12.505", "too-precise"},
    {"decimal beyond its digits", decimal(4, 2), text, "100", "out-of-range"},
    {"decimal at its limit", decimal(4, 2), text, "-99.99", "-9999"},
    {"decimal of 38 digits", decimal(38, 0), text, "9223372036854775807", "9223372036854775807"},
    {"decimal beyond 63 bits", decimal(38, 0), text, "9223372036854775808", "out-of-range"},
    {"negative decimal beyond 63 bits", decimal(38, 0), text, "-9223372036854775808", "out-of-range"},
    {"decimal of 18 fraction digits", decimal(18, 18), text, "0.123456789012345678", "123456789012345678"},
    {"zero at any scale", decimal(38, 38), text, "0", "0"},
    {"scaled out of 63 bits", decimal(38, 30), text, "1", "out-of-range"},
    {"exponent", decimal(9, 6), text, "9.9E-5", "99"},
    {"exponent that loses digits", decimal(9, 4), text, "9.9E-5", "too-precise"},
    {"exponent upwards", decimal(9, 2), number, "1.5e+3", "150000"},
    {"exponent without digits", decimal(9, 2), text, "1.5e", "not-a-number"},
    {"exponent without a number", decimal(9, 2), text, "e5", "not-a-number"},
    {"exponent beyond reason", decimal(9, 2), text, "1e999999999", "out-of-range"},
    {"two points", decimal(9, 2), text, "1.2.3", "not-a-number"},
    {"two points with an exponent", decimal(9, 2), text, "1.2.3e1", "not-a-number"},
    {"money", money, text, "22080.0", "220800000"},
    {"money at its end", money, text, "922337203685477.5807", "9223372036854775807"},
    {"the least money", money, text, "-922337203685477.5808", "-9223372036854775808"},
    {"money ends", money, text, "-922337203685477.5809", "out-of-range"},
    {"money with five digits", money, text, "1.00001", "too-precise"},
    {"smallmoney", smallmoney, text, "-214748.3648", "-2147483648"},
    {"smallmoney ends", smallmoney, text, "214748.3648", "out-of-range"},
    {"float", floating, text, "0.99980003999200195", "0.99980003999200195"},
    {"float with an exponent", floating, text, "5E-05", "5.0000000000000002e-05"},
    {"float without a leading zero", floating, text, "-.5", "-0.5"},
    {"float beyond", floating, text, "1e309", "out-of-range"},
    {"nan is no number", floating, text, "nan", "not-a-number"},
    {"infinity is no number", floating, text, "-inf", "not-a-number"},
    {"float in hex", floating, text, "0x1p3", "not-a-number"},
    {"real is rounded to 32 bits", real, text, "0.1", "0.10000000149011612"},
    {"real beyond", real, text, "3.5e38", "out-of-range"},
    {"a date of a spreadsheet is no number", integer, text, "00:00.0", "not-a-number"},
    {"bytes are no number", integer, hex, "0x01", "not-a-number"},
    {"what the server computes", integer, client_form::server, "getdate()", "server-value"},
};

TEST(ClientConvert, Numbers)
{
    for (const convert_case &c : number_cases)
        check(c);
}

constexpr client_server_type date = simple(client_base::date);
constexpr client_server_type datetime = simple(client_base::datetime);
constexpr client_server_type smalldatetime = simple(client_base::smalldatetime);
constexpr client_server_type time7 = scaled(client_base::time, 7);
constexpr client_server_type datetime7 = scaled(client_base::datetime2, 7);
constexpr client_server_type offset7 = scaled(client_base::datetimeoffset, 7);

constexpr convert_case moment_cases[] = {
    {"date", date, text, "2013-07-01", "'2013-07-01'"},
    {"date without marks", date, text, "20130701", "'2013-07-01'"},
    {"date with no time of day", date, text, "2013-07-01 00:00:00.000", "'2013-07-01'"},
    {"date with a time of day", date, text, "2013-07-01 12:00:00", "time-of-day"},
    {"date with the least time of day", date, text, "2013-07-01 00:00:00.00000000001", "time-of-day"},
    {"leap day", date, text, "2000-02-29", "'2000-02-29'"},
    {"no leap day", date, text, "1900-02-29", "not-a-date"},
    {"first date", date, text, "0001-01-01", "'0001-01-01'"},
    {"last date", date, text, "9999-12-31", "'9999-12-31'"},
    {"year zero", date, text, "0000-01-01", "not-a-date"},
    {"a spreadsheet's date", date, text, "May 31, 2016", "not-a-date"},
    {"a spreadsheet's other date", date, text, "00/01/1900", "not-a-date"},
    {"a spreadsheet's hidden date", date, text, "########", "not-a-date"},
    {"a marked date in a file", date, text, "7/4/1996", "not-a-date"},
    {"a marked date in a script", date, literal, "7/4/1996", "'1996-07-04'"},
    {"year first", date, literal, "1962/2/18", "'1962-02-18'"},
    {"year of two digits", date, literal, "06/12/94", "'1994-06-12'"},
    {"year of two digits in this century", date, literal, "06/12/49", "'2049-06-12'"},
    {"month 13 of a script", date, literal, "13/12/1994", "not-a-date"},
    {"different marks", date, literal, "7/4-1996", "not-a-date"},
    {"time", time7, text, "07:00:00.0000000", "'07:00:00.0000000'"},
    {"time without a fraction", time7, text, "07:00:00", "'07:00:00.0000000'"},
    {"time(0)", scaled(client_base::time, 0), text, "07:00:00.000", "'07:00:00'"},
    {"time(3)", scaled(client_base::time, 3), text, "07:00:00.1200000", "'07:00:00.120'"},
    {"time too precise", scaled(client_base::time, 3), text, "07:00:00.1234", "too-precise"},
    {"time that the checks would round", time7, text, "07:00:00.1235000", "'07:00:00.123' shortened"},
    {"time that they would not", time7, text, "07:00:00.1234999", "'07:00:00.1234999'"},
    {"time of 24 hours", time7, text, "24:00:00", "not-a-time"},
    {"time of a spreadsheet", time7, text, "00:00.0", "not-a-time"},
    {"time with a date", time7, text, "2013-07-01 07:00:00", "not-a-time"},
    {"datetime", datetime, text, "2025-09-11 11:15:07.263", "'2025-09-11 11:15:07.263'"},
    {"datetime without a fraction", datetime, text, "2025-09-11T11:15:07", "'2025-09-11 11:15:07.000'"},
    {"datetime of a day", datetime, text, "2025-09-11", "'2025-09-11 00:00:00.000'"},
    {"datetime goes to 1/300 seconds", datetime, text, "2025-09-11 11:15:07.264", "'2025-09-11 11:15:07.263'"},
    {"datetime goes up", datetime, text, "2025-09-11 11:15:07.265", "'2025-09-11 11:15:07.267'"},
    {"datetime goes into the next year", datetime, text, "2025-12-31 23:59:59.999", "'2026-01-01 00:00:00.000'"},
    {"datetime does not go beyond", datetime, text, "9999-12-31 23:59:59.999", "out-of-range"},
    {"datetime of four digits", datetime, text, "2025-09-11 11:15:07.2630", "'2025-09-11 11:15:07.263'"},
    {"datetime too precise", datetime, text, "2025-09-11 11:15:07.2631", "too-precise"},
    {"first datetime", datetime, text, "1753-01-01", "'1753-01-01 00:00:00.000'"},
    {"before the first datetime", datetime, text, "1752-12-31", "out-of-range"},
    {"datetime of a spreadsheet", datetime, text, "00:00.0", "not-a-datetime"},
    {"datetime with an offset", datetime, text, "2025-09-11 11:15:07Z", "not-a-datetime"},
    {"datetime of a script", datetime, literal, "6/15/1995 11:05 PM", "'1995-06-15 23:05:00.000'"},
    {"noon of a script", datetime, literal, "6/15/1995 12:05PM", "'1995-06-15 12:05:00.000'"},
    {"midnight of a script", datetime, literal, "6/15/1995 12:05AM", "'1995-06-15 00:05:00.000'"},
    {"13 hours with PM", datetime, literal, "6/15/1995 13:05PM", "not-a-datetime"},
    {"datetime of bytes", datetime, hex, "0x0000A2E500000000", "'2014-03-05 00:00:00.000'"},
    {"date of bytes", date, hex, "0xDAB93700", "'9999-12-31'"},
    {"date of three bytes", date, hex, "0xDAB937", "not-a-date"},
    {"time of bytes", time7, hex, "0x070100000000", "'00:00:00.0000001'"},
    {"time of bytes of another scale", time7, hex, "0x060100000000", "not-a-time"},
    {"time of no bytes", time7, hex, "0x", "not-a-time"},
    {"datetime2 of bytes", datetime7, hex, "0x070100000000DAB937", "'9999-12-31 00:00:00.0000001'"},
    {"datetime of too few bytes", datetime, hex, "0x0000A2E5", "not-a-datetime"},
    {"smalldatetime", smalldatetime, text, "2025-09-11 11:15:29.998", "'2025-09-11 11:15:00'"},
    {"smalldatetime goes up", smalldatetime, text, "2025-09-11 11:15:29.999", "'2025-09-11 11:16:00'"},
    {"last smalldatetime", smalldatetime, text, "2079-06-06 23:59:00", "'2079-06-06 23:59:00'"},
    {"beyond the last smalldatetime", smalldatetime, text, "2079-06-07", "out-of-range"},
    {"datetime2", datetime7, text, "2013-07-01 12:30:45.1234567", "'2013-07-01 12:30:45.1234567'"},
    {"datetime2(0)", scaled(client_base::datetime2, 0), text, "2013-07-01 12:30:45", "'2013-07-01 12:30:45'"},
    {"datetime2(1) is filled up", scaled(client_base::datetime2, 1), text, "2013-07-01 12:30:45.1",
     "'2013-07-01 12:30:45.100'"},
    {"the end of a day", datetime7, text, "2013-07-01 23:59:59.9995000", "'2013-07-01 23:59:59.999' shortened"},
    {"just before it", datetime7, text, "2013-07-01 23:59:59.9994999", "'2013-07-01 23:59:59.9994999'"},
    {"eight digits", datetime7, text, "2013-07-01 23:59:59.99949991", "too-precise"},
    {"datetimeoffset", offset7, text, "2013-07-01 12:30:45.1234567 +02:00", "'2013-07-01 12:30:45.1234567 +02:00'"},
    {"datetimeoffset in UTC", offset7, text, "2013-07-01T12:30:45Z", "'2013-07-01 12:30:45.0000000 +00:00'"},
    {"the first moment with an offset", offset7, text, "0001-01-01 01:30:00 +01:30",
     "'0001-01-01 01:30:00.0000000 +01:30'"},
    {"before all days in UTC", offset7, text, "0001-01-01 01:29:59.9999999 +01:30", "out-of-range"},
    {"the last moment with an offset", offset7, text, "9999-12-31 22:29:59.9999999 -01:30",
     "'9999-12-31 22:29:59.9999999 -01:30'"},
    {"after all days in UTC", offset7, text, "9999-12-31 22:30:00 -01:30", "out-of-range"},
    {"offset too far", offset7, text, "2013-07-01 12:30:45 +14:01", "not-a-datetime"},
};

TEST(ClientConvert, DatesAndTimes)
{
    for (const convert_case &c : moment_cases)
        check(c);
}

constexpr client_server_type varchar4 = sized(client_base::varchar, 4);
constexpr client_server_type nvarchar4 = sized(client_base::nvarchar, 4);
constexpr client_server_type xml = simple(client_base::xml);
constexpr client_server_type guid = simple(client_base::guid);
constexpr client_server_type varbinary3 = sized(client_base::varbinary, 3);

constexpr convert_case text_cases[] = {
    {"text", varchar4, text, "abcd", "'abcd'"},
    {"empty is not NULL", varchar4, text, "", "''"},
    {"text too long", varchar4, text, "abcde", "too-long"},
    {"blanks count", varchar4, text, "abcd ", "too-long"},
    {"a byte for each letter of the code page", varchar4, text, "äöüß", "'äöüß'"},
    {"two bytes in a Japanese code page", sized(client_base::varchar, 4, 932), text, "日本", "'日本'"},
    {"too many of them", sized(client_base::varchar, 4, 932), text, "日本x", "too-long"},
    {"half-width kana take one", sized(client_base::varchar, 4, 932), text, "ｱｲｳｴ", "'ｱｲｳｴ'"},
    {"bytes of UTF-8", sized(client_base::varchar, 4, 65001), text, "äöü", "too-long"},
    {"units of UTF-16", nvarchar4, text, "😀😀", "'😀😀'"},
    {"too many units", nvarchar4, text, "😀😀x", "too-long"},
    {"char is filled up", sized(client_base::fixed_char, 4), text, "AB", "'AB  '"},
    {"nchar is filled up", sized(client_base::fixed_nchar, 4), text, "😀", "'😀  '"},
    {"not UTF-8", nvarchar4, text, "a\xFF", "not-utf-8"},
    {"overlong", nvarchar4, text, "\xC0\x80", "not-utf-8"},
    {"cut character", nvarchar4, text, "\xE2\x82", "not-utf-8"},
    {"half a pair", nvarchar4, text, "\xED\xA0\x80", "half-surrogate"},
    {"beyond Unicode", nvarchar4, text, "\xF4\x90\x80\x80", "not-utf-8"},
    {"a mark before xml", xml, text, "\xEF\xBB\xBF<a/>", "'<a/>'"},
    {"a mark before a text", nvarchar4, text, "\xEF\xBB\xBF<a/", "'\xEF\xBB\xBF<a/'"},
    {"a number for a text", varchar4, number, "12.5", "'12.5'"},
    {"an exponent for a text", varchar4, number, "1e5", "wrong-form"},
    {"bytes for a text", varchar4, hex, "0x41", "wrong-form"},
    {"guid", guid, text, "6F9619FF-8B86-D011-B42D-00C04FC964FF", "xFF19966F868B11D0B42D00C04FC964FF"},
    {"guid in lower case and braces", guid, literal, "{6f9619ff-8b86-d011-b42d-00c04fc964ff}",
     "xFF19966F868B11D0B42D00C04FC964FF"},
    {"guid without hyphens", guid, text, "6F9619FF8B86D011B42D00C04FC964FF", "not-a-guid"},
    {"guid with a wrong digit", guid, text, "6F9619FF-8B86-D011-B42D-00C04FC964FG", "not-a-guid"},
    {"binary", varbinary3, text, "0aFF", "x0AFF"},
    {"binary with 0x", varbinary3, hex, "0x0aFF", "x0AFF"},
    {"no bytes", varbinary3, text, "", "x"},
    {"binary too long", varbinary3, text, "01020304", "too-long"},
    {"half a byte", varbinary3, text, "012", "not-binary"},
    {"no digits", varbinary3, text, "b'GI", "not-binary"},
    {"binary(n) is filled up", sized(client_base::binary, 3), text, "01", "x010000"},
    {"Base64", varbinary3, client_form::base64, "Cv8=", "x0AFF"},
    {"Base64 without its end", varbinary3, client_form::base64, "Cv8", "x0AFF"},
    {"Base64 with bits too many", varbinary3, client_form::base64, "Cv9=", "not-binary"},
    {"Base64 cut", varbinary3, client_form::base64, "C", "not-binary"},
    {"rowversion", simple(client_base::rowversion), text, "00000000000007D1", "x00000000000007D1"},
    {"rowversion of another size", simple(client_base::rowversion), text, "07D1", "not-binary"},
    {"the root of a hierarchy", simple(client_base::clr), text, "", "x"},
};

TEST(ClientConvert, TextsAndBytes)
{
    for (const convert_case &c : text_cases)
        check(c);
}

constexpr client_form native = client_form::native;

constexpr convert_case native_cases[] = {
    {"bit", bit, native, "\1"sv, "1"},
    {"bit of another value", bit, native, "\2"sv, "out-of-range"},
    {"tinyint", tinyint, native, "\xFF"sv, "255"},
    {"smallint", smallint, native, "\xFE\xFF"sv, "-2"},
    {"int", integer, native, "\1\0\0\x80"sv, "-2147483647"},
    {"int of another size", integer, native, "\1\0"sv, "bad-row"},
    {"bigint", bigint, native, "\0\0\0\0\0\0\0\x80"sv, "-9223372036854775808"},
    {"money, high half first", money, native, "\1\0\0\0\2\0\0\0"sv, "4294967298"},
    {"the least money", money, native, "\0\0\0\x80\0\0\0\0"sv, "-9223372036854775808"},
    {"smallmoney", smallmoney, native, "\xFF\xFF\xFF\xFF"sv, "-1"},
    {"real", real, native, "\xCD\xCC\xCC\x3D"sv, "0.10000000149011612"},
    {"float that is none", floating, native, "\0\0\0\0\0\0\xF8\x7F"sv, "not-a-number"},
    {"decimal", decimal(9, 2), native, "\x09\x02\x01\xE2\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv, "1250"},
    {"negative decimal", decimal(9, 2), native, "\x09\x02\x00\xE2\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv, "-1250"},
    {"decimal of another scale", decimal(9, 3), native, "\x09\x02\x01\xE2\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv, "12500"},
    {"decimal of a lesser scale", decimal(9, 1), native, "\x09\x02\x01\xE2\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv, "125"},
    {"decimal that loses a digit", decimal(9, 0), native, "\x09\x02\x01\xE2\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv,
     "too-precise"},
    {"decimal beyond 63 bits", decimal(38, 0), native, "\x26\x00\x01\0\0\0\0\0\0\0\x80\0\0\0\0\0\0\0\0"sv,
     "out-of-range"},
    {"decimal beyond 64 bits", decimal(38, 0), native, "\x26\x00\x01\0\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0"sv,
     "out-of-range"},
    {"date", date, native, "\xDA\xB9\x37"sv, "'9999-12-31'"},
    {"date beyond", date, native, "\xDB\xB9\x37"sv, "out-of-range"},
    {"time", time7, native, "\0\0\0\0\0"sv, "'00:00:00.0000000'"},
    {"time beyond a day", scaled(client_base::time, 0), native, "\x80\x51\x01"sv, "out-of-range"},
    {"datetime", datetime, native, "\xE5\xA2\0\0\x01\0\0\0"sv, "'2014-03-05 00:00:00.003'"},
    {"smalldatetime", smalldatetime, native, "\xFF\xFF\x9F\x05"sv, "'2079-06-06 23:59:00'"},
    {"datetime2", scaled(client_base::datetime2, 3), native, "\x01\0\0\0\0\0\0"sv, "'0001-01-01 00:00:00.001'"},
    {"datetimeoffset holds UTC", scaled(client_base::datetimeoffset, 0), native, "\0\0\0\x01\0\0\xC4\xFF"sv,
     "'0001-01-01 23:00:00 -01:00'"},
    {"datetimeoffset before all days", scaled(client_base::datetimeoffset, 0), native, "\0\0\0\0\0\0\xC4\xFF"sv,
     "out-of-range"},
    {"datetime whose time is a day", datetime, native, "\0\0\0\0\x00\x82\x8B\x01"sv, "out-of-range"},
    {"datetime beyond all days", datetime, native, "\xFF\xFF\xFF\x7F\0\0\0\0"sv, "out-of-range"},
    {"datetime of 1752", datetime, native, "\x45\x2E\xFF\xFF\0\0\0\0"sv, "out-of-range"},
    {"datetime of 1753", datetime, native, "\x46\x2E\xFF\xFF\0\0\0\0"sv, "'1753-01-01 00:00:00.000'"},
    {"datetime of another size", datetime, native, "\0\0\0\0"sv, "bad-row"},
    {"smalldatetime whose time is a day", smalldatetime, native, "\0\0\xA0\x05"sv, "out-of-range"},
    {"datetime2 of another size", scaled(client_base::datetime2, 3), native, "\1\0"sv, "bad-row"},
    {"offset beyond 14 hours", scaled(client_base::datetimeoffset, 0), native, "\0\0\0\1\0\0\x49\x03"sv,
     "out-of-range"},
    {"float of another size", floating, native, "\0\0\0\0"sv, "bad-row"},
    {"decimal of another size", decimal(9, 2), native, "\x09\x02\x01\xE2\x04"sv, "bad-row"},
    {"decimal of a scale that overflows", decimal(38, 20), native,
     "\x26\x00\x01\xFF\xFF\xFF\xFF\xFF\0\0\0\0\0\0\0\0\0\0\0"sv, "out-of-range"},
    {"bytes", varbinary3, native, "\1\2"sv, "x0102"},
    {"bytes that are filled up", sized(client_base::binary, 3), native, "\1"sv, "x010000"},
    {"bytes too many", varbinary3, native, "\1\2\3\4"sv, "too-long"},
    {"text of UTF-16", varchar4, native, "a\0\xE4\0"sv, "'aä'"},
    {"a pair", nvarchar4, native, "\x3D\xD8\x00\xDE"sv, "'😀'"},
    {"half a pair", nvarchar4, native, "\x3D\xD8"sv, "half-surrogate"},
    {"the other half", nvarchar4, native, "\x00\xDE"sv, "half-surrogate"},
    {"half a unit", nvarchar4, native, "a"sv, "bad-row"},
    {"guid", guid, native, "0123456789abcdef"sv, "x30313233343536373839616263646566"},
};

TEST(ClientConvert, NativeBytes)
{
    for (const convert_case &c : native_cases)
        check(c);
}

TEST(ClientConvert, NullGoesWhereItIsAllowed)
{
    client_converter converter;
    client_server_type type{client_base::integer};
    EXPECT_EQ(shown(converter, type, {}), "NULL");
    type.nullable = false;
    EXPECT_EQ(shown(converter, type, {}), "null-not-allowed");
}

TEST(ClientConvert, ExactRefusesWhatWouldBeShortened)
{
    client_converter converter;
    converter.exact = true;
    EXPECT_EQ(shown(converter, time7, {text, "07:00:00.1235000"}), "needs-shortening");
    EXPECT_EQ(shown(converter, time7, {text, "07:00:00.1234000"}), "'07:00:00.1234000'");
}

TEST(ClientConvert, TheDateOrderIsTheScripts)
{
    client_converter converter;
    converter.date_order = client_date_order::dmy;
    EXPECT_EQ(shown(converter, date, {literal, "7/4/1996"}), "'1996-04-07'");
    converter.date_order = client_date_order::ymd;
    EXPECT_EQ(shown(converter, date, {literal, "96/7/4"}), "'1996-07-04'");
}

TEST(ClientConvert, EveryDayGoesThereAndBack)
{
    client_converter converter;
    for (int32_t days = 0; days <= 3652058; days += 97) {
        const char bytes[3] = {static_cast<char>(days), static_cast<char>(days >> 8), static_cast<char>(days >> 16)};
        client_value value;
        ASSERT_EQ(client_convert(converter, date, {native, {bytes, 3}}, value), client_reject::none);
        client_moment moment;
        ASSERT_TRUE(client_parse_kept_moment(value.bytes, moment)) << value.bytes;
        ASSERT_EQ(moment.days, days) << value.bytes;
    }
}

TEST(ClientConvert, BytesGoThereAndBack)
{
    std::string all;
    for (int n = 0; n < 256; n++) {
        std::string base64, hex_text, back, back_too;
        client_append_base64(base64, all);
        client_append_hex(hex_text, all);
        EXPECT_TRUE(client_append_from_base64(back, base64));
        EXPECT_TRUE(client_append_from_hex(back_too, hex_text));
        EXPECT_EQ(back, all);
        EXPECT_EQ(back_too, all);
        all.push_back(static_cast<char>(n));
    }
    std::string guid_text;
    client_append_guid(guid_text, "\xFF\x19\x96\x6F\x86\x8B\x11\xD0\xB4\x2D\0\xC0\x4F\xC9\x64\xFF"sv);
    EXPECT_EQ(guid_text, "6F9619FF-8B86-D011-B42D-00C04FC964FF");
}

} // namespace
