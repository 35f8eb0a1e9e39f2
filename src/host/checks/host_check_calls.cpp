// The functions that a check may call, and CASE.
#include "checks/host_check_reader.hpp"

#include "steps/host_collation.hpp"
#include "steps/host_import.hpp"
#include "tsql/host_server_spelling.hpp"

#include <array>

using kind = host_value_kind;

namespace {

struct check_function {
    std::string_view name; // upper case
    size_t count;          // of arguments
    host_value (*apply)(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments);
};

} // namespace

static constexpr const char *not_text = "a function is used on something other than a text";

// A whole number that SQLite computes by an expression of its own.
static host_value my_number(host_check_reader &reader, std::string_view place, const std::string &expr)
{
    host_change(reader.reading.changes, place, expr);
    host_value value = host_integer_value();
    value.place = place;
    return value;
}

static host_value my_units(std::string_view place, const host_value &text, const std::string &expr, bool is_bytes)
{
    host_value value{kind::units, text.col};
    value.place = place;
    value.expr = expr;
    value.is_bytes = is_bytes;
    return value;
}

// Characters without the blanks at the end; of Unicode in units, unless the collation counts characters.
static host_value my_length(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments)
{
    const host_value &text = arguments[0];
    if (text.kind != kind::text)
        return host_check_refuse(reader, not_text, "LEN");
    const std::string trimmed = "rtrim(" + text.expr + ")";
    const bool counts_characters = host_read_collation(text.col->collation, text.col->comparison_style).sc;
    if (host_is_unicode(*text.col) && !counts_characters)
        return my_units(place, text, trimmed, false);
    if (text.col->code_page == host_utf_8_page && !counts_characters)
        return host_check_refuse(reader, "the length of a text in UTF-8 is used, which the server may count in units");
    return my_number(reader, place, "length(" + trimmed + ")");
}

static host_value my_data_length(host_check_reader &reader, std::string_view place,
                                 std::array<host_value, 2> &arguments)
{
    const host_value &value = arguments[0];
    const host_column *col = value.col;
    const bool is_utf_8 = col && col->code_page == host_utf_8_page;
    if (value.kind == kind::binary)
        return my_number(reader, place, "length(" + value.expr + ")");
    if (value.kind != kind::text || !col || (!host_is_unicode(*col) && !is_utf_8 && host_is_multibyte(col->code_page)))
        return host_check_refuse(reader, "DATALENGTH is used where SQLite counts other bytes");
    if (host_is_unicode(*col))
        return my_units(place, value, value.expr, true);
    return my_number(reader, place,
                     is_utf_8 ? "length(CAST(" + value.expr + " AS BLOB))" : "length(" + value.expr + ")");
}

template <host_case Letters>
static host_value my_fold(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments)
{
    host_value value = arguments[0];
    if (value.kind != kind::text || value.letters != host_case::as_is)
        return host_check_refuse(reader, not_text, "UPPER or LOWER");
    value.letters = Letters;
    value.place = place;
    return value;
}

template <const char *Name>
static host_value my_trim(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments)
{
    host_value value = arguments[0];
    if (value.kind != kind::text || value.letters != host_case::as_is)
        return host_check_refuse(reader, not_text, "TRIM");
    value.expr = std::string(Name) + "(" + value.expr + ")";
    value.place = place;
    host_change(reader.reading.changes, place, value.expr);
    return value;
}
static constexpr char ltrim_name[] = "ltrim";
static constexpr char rtrim_name[] = "rtrim";
static constexpr char trim_name[] = "trim";

// The server takes objects and arrays, SQLite other values too. Of NULL some versions of it make 0.
static host_value my_is_json(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments)
{
    const host_value &value = arguments[0];
    if (value.kind != kind::text)
        return host_check_refuse(reader, not_text, "ISJSON");
    return my_number(reader, place,
                     "(CASE WHEN " + value.expr + " IS NOT NULL THEN json_valid(" + value.expr + ") AND ltrim(" +
                         value.expr + ",char(9,10,13,32)) GLOB '[[{]*' END)");
}

// SQLite's abs() fails at the smallest integer, so it is for columns of less than 64 bits only.
static host_value my_absolute(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments)
{
    constexpr size_t longest = 2000; // the argument is written twice, and may hold another ABS
    host_value value = arguments[0];
    const bool is_small = value.col && value.kind == kind::integer;
    const std::string text = host_changed_text(reader.reading.changes, value.extent);
    if (value.kind != kind::scaled)
        value = host_check_as_whole_number(reader, value);
    if (text.size() > longest)
        return host_check_refuse(reader, "ABS is used with an expression that is too long");
    value.place = place;
    if (!is_small)
        host_change(reader.reading.changes, place, "max(" + text + ",-(" + text + "))");
    return value;
}

template <int First, int Count>
static host_value my_part(host_check_reader &reader, std::string_view place, std::array<host_value, 2> &arguments)
{
    const host_value &value = arguments[0];
    const bool has_day = value.kind == kind::date ||
                         (value.kind == kind::moment && std::string_view(host_type_name(*value.col)) != "time");
    if (!has_day || value.is_compared)
        return host_check_refuse(reader, "YEAR, MONTH or DAY is used on something other than a date");
    return my_number(reader, place,
                     "CAST(substr(" + value.expr + "," + std::to_string(First) + "," + std::to_string(Count) +
                         ") AS INTEGER)");
}

static host_value my_replace_null_text(host_check_reader &reader, std::string_view place, const host_value &value,
                                       const host_value &other)
{
    const std::string text = host_literal_text(other.literal);
    const int64_t units = value.col->max_length / (host_is_unicode(*value.col) ? 2 : 1);
    const bool fits = value.col->max_length < 0 || static_cast<int64_t>(text.size()) <= units;
    if (!host_is_plain_ascii(text) || !fits || host_is_fixed_width(*value.col))
        return host_check_refuse(reader, "ISNULL or COALESCE is used with a text that the server may change");
    host_value result = value;
    result.expr = "ifnull(" + value.expr + "," + host_quoted(text) + ")";
    result.place = place;
    host_change(reader.reading.changes, place, result.expr);
    return result;
}

// ISNULL has the type of its first argument, to which the second is converted.
static host_value my_replace_null(host_check_reader &reader, std::string_view place,
                                  std::array<host_value, 2> &arguments)
{
    const auto &[value, other] = arguments;
    const host_check_changes &changes = reader.reading.changes;
    if (value.kind == kind::text && value.letters == host_case::as_is && other.kind == kind::text_literal)
        return my_replace_null_text(reader, place, value, other);
    const bool is_bit = value.kind == kind::bit && !other.is_signed && (other.literal == "0" || other.literal == "1");
    const bool is_number = value.kind == kind::integer && (other.kind == kind::integer || other.kind == kind::tinyint ||
                                                           other.kind == kind::whole_literal);
    if (!is_number && !is_bit)
        return host_check_refuse(reader, "ISNULL or COALESCE is used with values that the server may convert");
    return my_number(reader, place,
                     "ifnull(" + host_changed_text(changes, value.extent) + "," +
                         host_changed_text(changes, other.extent) + ")");
}

static constexpr check_function known_functions[] = {
    {"ABS", 1, my_absolute},
    {"COALESCE", 2, my_replace_null},
    {"DATALENGTH", 1, my_data_length},
    {"DAY", 1, my_part<9, 2>},
    {"ISJSON", 1, my_is_json},
    {"ISNULL", 2, my_replace_null},
    {"LEN", 1, my_length},
    {"LOWER", 1, my_fold<host_case::lower>},
    {"LTRIM", 1, my_trim<ltrim_name>},
    {"MONTH", 1, my_part<6, 2>},
    {"RTRIM", 1, my_trim<rtrim_name>},
    {"TRIM", 1, my_trim<trim_name>},
    {"UPPER", 1, my_fold<host_case::upper>},
    {"YEAR", 1, my_part<1, 4>},
};

// After the name and the parenthesis.
static host_value my_read_function(host_check_reader &reader, const check_function &function, const char *begin)
{
    std::array<host_value, 2> arguments;
    for (size_t n = 0; n < function.count; n++) {
        if (n > 0 && !host_check_take(reader, host_token_kind::comma))
            return host_check_refuse_token(reader);
        arguments[n] = host_read_check_sum(reader);
        if (host_check_failed(arguments[n]))
            return {};
    }
    if (!host_check_take(reader, host_token_kind::right))
        return host_check_refuse_token(reader);
    return function.apply(reader, host_check_since(reader, begin), arguments);
}

static bool my_asks_for_time(const host_token &token)
{
    for (const std::string_view clock :
         {"GETDATE", "GETUTCDATE", "SYSDATETIME", "SYSUTCDATETIME", "SYSDATETIMEOFFSET", "CURRENT_TIMESTAMP"}) {
        if (host_is_word(token, clock))
            return true;
    }
    return false;
}

host_value host_read_check_call(host_check_reader &reader)
{
    const host_token name = reader.token;
    if (host_check_take(reader, "CASE"))
        return host_read_check_case(reader);
    if (my_asks_for_time(name))
        return host_check_refuse(reader, "it asks for the time, which SQLite does not tell a check", name.text);
    for (const check_function &function : known_functions) {
        if (!host_is_word(name, function.name))
            continue;
        host_check_advance(reader);
        if (!host_check_take(reader, host_token_kind::left))
            return host_check_refuse_token(reader);
        return my_read_function(reader, function, host_check_begin(name));
    }
    return host_check_refuse_token(reader);
}

// After CASE: WHEN condition THEN value ... [ELSE value] END.
host_value host_read_check_case(host_check_reader &reader)
{
    if (!host_is_word(reader.token, "WHEN"))
        return host_check_refuse_token(reader);
    while (host_check_take(reader, "WHEN")) {
        const host_value condition = host_read_check_condition(reader);
        if (!host_check_failed(condition) && condition.kind != kind::truth)
            return host_check_refuse(reader, "a value is used as a condition");
        if (host_check_failed(condition) || !host_check_take(reader, "THEN"))
            return host_check_refuse_token(reader);
        if (host_check_failed(host_check_as_whole_number(reader, host_read_check_sum(reader))))
            return {};
    }
    if (host_check_take(reader, "ELSE") &&
        host_check_failed(host_check_as_whole_number(reader, host_read_check_sum(reader))))
        return {};
    if (!host_check_take(reader, "END"))
        return host_check_refuse_token(reader);
    return host_integer_value();
}
