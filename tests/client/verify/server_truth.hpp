// What SQL Server takes, type by type, as its documentation says, and nothing of how our rules say it: a value that is
// stored as docs/values.md describes is judged by arithmetic on that form.
//
// Each line of the tables names the limits of a type. Where the server would round a value instead of refusing it, the
// form of docs/values.md is what counts, since equal values are equal strings only so.
#pragma once

#include "guide/declared_types.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// A value as a table holds it.
struct stored_value {
    enum class storage { null, integer, real, text, blob } storage = storage::null;
    int64_t integer = 0;
    double real = 0;
    std::string bytes;
};

// A type, whether it takes a value, and literals at its edges.
struct server_truth {
    client_declared_type type;
    std::function<bool(const stored_value &)> takes;
    std::vector<std::string> edges;
};

using truth_base = client_base;
using truth_storage = enum stored_value::storage;

struct integer_truth {
    client_declared_type type;
    int64_t low;
    int64_t high;
};

// Decimals are counted in units of their last digit, money in ten-thousandths.
inline const integer_truth integer_truths[] = {
    {declared(truth_base::bit), 0, 1},
    {declared(truth_base::tinyint), 0, 255},
    {declared(truth_base::smallint), -32768, 32767},
    {declared(truth_base::integer), -2147483647 - 1, 2147483647},
    {declared(truth_base::bigint), INT64_MIN, INT64_MAX},
    {declared(truth_base::smallmoney), -2147483647 - 1, 2147483647}, // -214,748.3648 to 214,748.3647
    {declared(truth_base::money), INT64_MIN, INT64_MAX},             // -922,337,203,685,477.5808 to ...5807
    {declared(truth_base::decimal, 1, 0), -9, 9},
    {declared(truth_base::decimal, 9, 2), -999'999'999, 999'999'999},
    {declared(truth_base::decimal, 18, 18), -999'999'999'999'999'999, 999'999'999'999'999'999},
    // 19 digits and more than 63 bits have: all that fits but the least integer, whose opposite does not.
    {declared(truth_base::decimal, 19, 4), -INT64_MAX, INT64_MAX},
    {declared(truth_base::decimal, 38, 10), -INT64_MAX, INT64_MAX},
};

struct real_truth {
    client_declared_type type;
    double beyond; // the least number that is rounded to infinity
};

// Numbers too small for the type become zero, which is no error.
inline const real_truth real_truths[] = {
    {declared(truth_base::real, 24), 0x1.ffffffp127}, // 3.40E+38: half a step after the greatest number of 32 bits
    {declared(truth_base::floating, 53), HUGE_VAL},   // 1.79E+308
};

struct bytes_truth {
    client_declared_type type;
    size_t least;
    size_t most;
};

inline const bytes_truth bytes_truths[] = {
    {declared(truth_base::binary, 0, 0, 4), 4, 4},    {declared(truth_base::binary, 0, 0, 8000), 8000, 8000},
    {declared(truth_base::varbinary, 0, 0, 4), 0, 4}, {declared(truth_base::varbinary, 0, 0, 8000), 0, 8000},
    {declared(truth_base::varbinary), 0, SIZE_MAX},   {declared(truth_base::image), 0, SIZE_MAX},
    {declared(truth_base::rowversion), 8, 8},         {declared(truth_base::guid), 16, 16},
};

// A character, with what it takes in each of the server's units; 0 where a code page lacks it.
struct truth_char {
    const char *utf8;
    unsigned units; // of UTF-16
    unsigned in_1252;
    unsigned in_1251;
    unsigned in_932;
};

inline const truth_char truth_chars[] = {
    {"a", 1, 1, 1, 1},  {" ", 1, 1, 1, 1}, {"~", 1, 1, 1, 1}, {"\n", 1, 1, 1, 1}, {"ä", 1, 1, 0, 2},
    {"é", 1, 1, 0, 2},  {"€", 1, 1, 1, 2}, {"ž", 1, 1, 0, 2}, {"Ł", 1, 0, 0, 2},  {"Я", 1, 0, 1, 2},
    {"日", 1, 0, 0, 2}, {"ｱ", 1, 0, 0, 1}, {"😀", 2, 0, 0, 2},
};

// A char or nchar has its trailing blanks. Of a double-byte page only the bytes are counted: a character that it lacks
// counts as two.
struct text_truth {
    client_declared_type type;
    size_t least;
    size_t most;
    unsigned (*size_of)(const truth_char &); // in the unit of the width; 0 where the column cannot have the character
};

inline client_declared_type truth_text(client_base base, int32_t length, uint16_t page)
{
    return {{base, true, 0, 0, page, length}, ""};
}

inline unsigned truth_units(const truth_char &c)
{
    return c.units;
}

inline unsigned truth_1252(const truth_char &c)
{
    return c.in_1252;
}

inline unsigned truth_1251(const truth_char &c)
{
    return c.in_1251;
}

inline unsigned truth_932(const truth_char &c)
{
    return c.in_932;
}

inline unsigned truth_utf8(const truth_char &c)
{
    return static_cast<unsigned>(std::string_view(c.utf8).size());
}

inline const text_truth text_truths[] = {
    {truth_text(truth_base::fixed_nchar, 5, 0), 5, 5, truth_units},
    {truth_text(truth_base::nvarchar, 1, 0), 0, 1, truth_units},
    {truth_text(truth_base::nvarchar, 6, 0), 0, 6, truth_units},
    {truth_text(truth_base::nvarchar, 4000, 0), 0, 4000, truth_units},
    {truth_text(truth_base::nvarchar, -1, 0), 0, SIZE_MAX, truth_units},
    {truth_text(truth_base::ntext, -1, 0), 0, SIZE_MAX, truth_units},
    {truth_text(truth_base::fixed_char, 5, 1252), 5, 5, truth_1252},
    {truth_text(truth_base::varchar, 6, 1252), 0, 6, truth_1252},
    {truth_text(truth_base::varchar, 8000, 1252), 0, 8000, truth_1252},
    {truth_text(truth_base::text, -1, 1252), 0, SIZE_MAX, truth_1252},
    {truth_text(truth_base::varchar, 6, 1251), 0, 6, truth_1251},
    {truth_text(truth_base::fixed_char, 5, 65001), 5, 5, truth_utf8},
    {truth_text(truth_base::varchar, 6, 65001), 0, 6, truth_utf8},
    {truth_text(truth_base::fixed_char, 6, 932), 6, 6, truth_932},
    {truth_text(truth_base::varchar, 6, 932), 0, 6, truth_932},
};

struct moment_truth {
    client_declared_type type;
    const char *first; // the first and the last moment in the form of the type, without an offset
    const char *last;
};

inline const moment_truth moment_truths[] = {
    {declared(truth_base::date), "0001-01-01", "9999-12-31"},
    {declared(truth_base::time, 0, 0), "00:00:00", "23:59:59"},
    {declared(truth_base::time, 0, 1), "00:00:00.0", "23:59:59.9"},
    {declared(truth_base::time, 0, 3), "00:00:00.000", "23:59:59.999"},
    {declared(truth_base::time, 0, 7), "00:00:00.0000000", "23:59:59.9999999"},
    {declared(truth_base::smalldatetime), "1900-01-01 00:00:00", "2079-06-06 23:59:00"},
    {declared(truth_base::datetime), "1753-01-01 00:00:00.000", "9999-12-31 23:59:59.997"},
    {declared(truth_base::datetime2, 0, 0), "0001-01-01 00:00:00", "9999-12-31 23:59:59"},
    {declared(truth_base::datetime2, 0, 1), "0001-01-01 00:00:00.000", "9999-12-31 23:59:59.900"},
    {declared(truth_base::datetime2, 0, 2), "0001-01-01 00:00:00.000", "9999-12-31 23:59:59.990"},
    {declared(truth_base::datetime2, 0, 3), "0001-01-01 00:00:00.000", "9999-12-31 23:59:59.999"},
    {declared(truth_base::datetime2, 0, 5), "0001-01-01 00:00:00.00000", "9999-12-31 23:59:59.99999"},
    {declared(truth_base::datetime2, 0, 7), "0001-01-01 00:00:00.0000000", "9999-12-31 23:59:59.9999999"},
    {declared(truth_base::datetimeoffset, 0, 0), "0001-01-01 00:00:00", "9999-12-31 23:59:59"},
    {declared(truth_base::datetimeoffset, 0, 7), "0001-01-01 00:00:00.0000000", "9999-12-31 23:59:59.9999999"},
};

inline bool truth_has_pattern(std::string_view text, std::string_view pattern)
{
    return text.size() == pattern.size() &&
           std::equal(text.begin(), text.end(), pattern.begin(), [](char c, char wanted) {
               return wanted == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == wanted;
           });
}

inline int truth_number(std::string_view text, size_t at, size_t count)
{
    return std::stoi(std::string(text.substr(at, count)));
}

inline bool truth_is_day(std::string_view text)
{
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (!truth_has_pattern(text, "0000-00-00"))
        return false;
    const int year = truth_number(text, 0, 4), month = truth_number(text, 5, 2), day = truth_number(text, 8, 2);
    const bool is_leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month >= 1 && month <= 12 && day >= 1 && day <= days[month - 1] + (month == 2 && is_leap ? 1 : 0);
}

inline bool truth_is_time(std::string_view text, size_t fraction)
{
    const std::string pattern = "00:00:00" + (fraction ? "." + std::string(fraction, '0') : "");
    return truth_has_pattern(text, pattern) && truth_number(text, 0, 2) <= 23 && truth_number(text, 3, 2) <= 59 &&
           truth_number(text, 6, 2) <= 59;
}

// The digits of the seconds' fraction in the form of a type.
inline size_t truth_fraction(const client_server_type &type)
{
    if (type.base == truth_base::datetime)
        return 3;
    if (type.base == truth_base::smalldatetime || type.scale == 0)
        return 0;
    return type.base != truth_base::time && type.scale < 3 ? 3 : type.scale;
}

// The last digits that the type does not have.
inline bool truth_has_steps(const client_server_type &type, std::string_view text)
{
    if (type.base == truth_base::datetime) // 1/300 seconds
        return std::string_view("037").find(text.back()) != std::string_view::npos;
    if (type.base == truth_base::smalldatetime)
        return text.ends_with(":00");
    const bool is_filled = type.base != truth_base::time && (type.scale == 1 || type.scale == 2);
    return !is_filled || text.substr(text.size() - 3 + type.scale).find_first_not_of('0') == std::string_view::npos;
}

// Offsets have one form, to 14 hours on either side.
inline bool truth_takes_offset(std::string_view offset)
{
    const bool is_east = truth_has_pattern(offset, " +00:00");
    if (!is_east && !truth_has_pattern(offset, " -00:00"))
        return false;
    const int hours = truth_number(offset, 2, 2), minutes = truth_number(offset, 5, 2);
    return minutes <= 59 && hours * 60 + minutes <= 14 * 60 && (is_east || hours + minutes > 0);
}

// What the server keeps of a moment with an offset is its UTC, which its days must have too.
inline bool truth_has_utc(std::string_view moment, std::string_view offset)
{
    const int minute = truth_number(moment, 11, 2) * 60 + truth_number(moment, 14, 2);
    const int away = truth_number(offset, 2, 2) * 60 + truth_number(offset, 5, 2);
    if (offset[1] == '+')
        return !moment.starts_with("0001-01-01") || minute >= away;
    return !moment.starts_with("9999-12-31") || minute + away < 24 * 60;
}

// The form with three digits in which values are kept that SQLite's time functions would round.
inline bool truth_is_shortened(const client_server_type &type, std::string_view text)
{
    if (type.scale < 4)
        return false;
    if (type.base == truth_base::time)
        return truth_is_time(text, 3);
    return type.base == truth_base::datetime2 && text.size() == 23 && truth_is_day(text.substr(0, 10)) &&
           text.substr(10) == " 23:59:59.999";
}

inline bool truth_takes_moment(const moment_truth &truth, std::string text)
{
    const client_server_type &type = truth.type.type;
    std::string offset;
    if (type.base == truth_base::datetimeoffset) {
        if (text.size() < 7 || !truth_takes_offset(std::string_view(text).substr(text.size() - 7)))
            return false;
        offset = text.substr(text.size() - 7);
        text.resize(text.size() - 7);
    }
    const bool is_shortened = truth_is_shortened(type, text);
    if (type.base == truth_base::date)
        return truth_is_day(text) && text >= truth.first;
    if (type.base == truth_base::time)
        return is_shortened || truth_is_time(text, truth_fraction(type));
    if (text.size() < 19 || text[10] != ' ' || !truth_is_day(text.substr(0, 10)))
        return false;
    if (!is_shortened && !(truth_is_time(text.substr(11), truth_fraction(type)) && truth_has_steps(type, text)))
        return false;
    if (!offset.empty() && !truth_has_utc(text, offset))
        return false;
    return text >= truth.first && (is_shortened || text <= truth.last);
}

// Whether SQLite's time functions, which a created database asks, round the value to another second or more.
inline bool truth_is_rounded_by_sqlite(const client_server_type &type, const stored_value &value)
{
    const std::string &text = value.bytes;
    if (type.scale < 4 || (type.base != truth_base::time && type.base != truth_base::datetime2))
        return false;
    const size_t point = text.find('.');
    if (point == std::string::npos || text.size() < point + 5)
        return false;
    if (type.base == truth_base::time)
        return text[point + 4] >= '5';
    return text.find("23:59:59.999") != std::string::npos && text[point + 4] >= '5';
}

inline bool truth_takes_text(const text_truth &truth, std::string_view text)
{
    size_t size = 0;
    while (!text.empty()) {
        if (static_cast<unsigned char>(text[0]) < 0x80) { // ASCII is in every page, and one of every unit
            size++;
            text.remove_prefix(1);
            continue;
        }
        const auto is_next = [&](const truth_char &c) { return text.starts_with(c.utf8); };
        const auto next = std::find_if(std::begin(truth_chars), std::end(truth_chars), is_next);
        if (next == std::end(truth_chars) || truth.size_of(*next) == 0)
            return false;
        size += truth.size_of(*next);
        text.remove_prefix(std::string_view(next->utf8).size());
    }
    return size >= truth.least && size <= truth.most;
}

inline std::string truth_quoted(const std::string &text)
{
    std::string literal = "'";
    for (const char c : text)
        literal += c == '\'' ? std::string("''") : std::string(1, c);
    return literal + "'";
}

inline std::string truth_blob(size_t size)
{
    return "zeroblob(" + std::to_string(size) + ")";
}

// All types with their truths; NULL is taken by each that is nullable.
inline std::vector<server_truth> server_truths()
{
    std::vector<server_truth> all;
    for (const integer_truth &t : integer_truths) {
        const auto takes = [&t](const stored_value &v) {
            return v.storage == truth_storage::integer && v.integer >= t.low && v.integer <= t.high;
        };
        std::vector<std::string> edges = {"0", "1", "-1", std::to_string(t.low), std::to_string(t.high), "0.5", "2.0"};
        if (t.low > INT64_MIN)
            edges.push_back(std::to_string(t.low - 1));
        if (t.high < INT64_MAX)
            edges.push_back(std::to_string(t.high + 1));
        all.push_back({t.type, takes, edges});
    }
    for (const real_truth &t : real_truths) {
        const auto takes = [&t](const stored_value &v) {
            return v.storage == truth_storage::real && std::abs(v.real) < t.beyond;
        };
        all.push_back({t.type,
                       takes,
                       {"0", "-0.0", "1.5", "3.4028234663852886e38", "3.4028235677973362e38", "3.4028235677973366e38",
                        "-3.4028235677973366e38", "3.5e38", "1.79e308", "-1.7976931348623157e308", "9e999", "-9e999",
                        "1e-300", "0.1"}});
    }
    for (const bytes_truth &t : bytes_truths) {
        const auto takes = [&t](const stored_value &v) {
            return v.storage == truth_storage::blob && v.bytes.size() >= t.least && v.bytes.size() <= t.most;
        };
        std::vector<std::string> edges = {truth_blob(0), truth_blob(1), truth_blob(t.least), truth_blob(t.least + 1)};
        if (t.least > 0)
            edges.push_back(truth_blob(t.least - 1));
        if (t.most < SIZE_MAX)
            edges.insert(edges.end(), {truth_blob(t.most), truth_blob(t.most + 1)});
        all.push_back({t.type, takes, edges});
    }
    for (const text_truth &t : text_truths) {
        const auto takes = [&t](const stored_value &v) {
            return v.storage == truth_storage::text && truth_takes_text(t, v.bytes);
        };
        std::vector<std::string> edges = {"''", "' '"};
        for (const truth_char &c : truth_chars) {
            for (size_t count : {t.least, t.most, t.most / 2, t.most / 3}) {
                for (size_t more = 0; more < 3 && count < 10'000 && count + more > 0; more++)
                    edges.push_back("replace(hex(zeroblob(" + std::to_string(count + more - 1) + ")),'00'," +
                                    truth_quoted(c.utf8) + ")");
            }
        }
        all.push_back({t.type, takes, edges});
    }
    for (const moment_truth &t : moment_truths) {
        const auto takes = [&t](const stored_value &v) {
            return v.storage == truth_storage::text && truth_takes_moment(t, v.bytes);
        };
        std::vector<std::string> edges;
        for (const char *offset : {"", " +00:00", " -00:00", " +14:00", " -14:00", " +14:01", " -13:60", "Z"}) {
            edges.push_back(truth_quoted(t.first + std::string(offset)));
            edges.push_back(truth_quoted(t.last + std::string(offset)));
        }
        all.push_back({t.type, takes, edges});
    }
    return all;
}
