#include "defaults/host_second_default.hpp"

#include "defaults/host_clock.hpp"
#include "defaults/host_guid.hpp"
#include "defaults/host_plain_moment.hpp"
#include "steps/host_import.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>

using kind = host_constant_kind;

namespace {

enum class type_family { other, whole, exact, real, string, moment, guid, binary };

struct family_of_type {
    std::string_view name;
    type_family family;
};

} // namespace

static constexpr family_of_type families[] = {
    {"bit", type_family::whole},
    {"tinyint", type_family::whole},
    {"smallint", type_family::whole},
    {"int", type_family::whole},
    {"bigint", type_family::whole},
    {"decimal", type_family::exact},
    {"numeric", type_family::exact},
    {"money", type_family::exact},
    {"smallmoney", type_family::exact},
    {"real", type_family::real},
    {"float", type_family::real},
    {"char", type_family::string},
    {"varchar", type_family::string},
    {"nchar", type_family::string},
    {"nvarchar", type_family::string},
    {"date", type_family::moment},
    {"time", type_family::moment},
    {"datetime", type_family::moment},
    {"datetime2", type_family::moment},
    {"smalldatetime", type_family::moment},
    {"datetimeoffset", type_family::moment},
    {"uniqueidentifier", type_family::guid},
    {"binary", type_family::binary},
    {"varbinary", type_family::binary},
};

static type_family my_family(std::string_view type)
{
    for (const family_of_type &one : families) {
        if (one.name == type)
            return one.family;
    }
    return type_family::other;
}

static bool my_is_number(type_family family)
{
    return family == type_family::whole || family == type_family::exact || family == type_family::real;
}

static bool my_is_ascii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

// Whether a string that was converted to a type of strings is still the same, and nothing is added to its end.
static bool my_keeps_string(const host_constant &value, const host_column &col)
{
    const bool is_fixed = value.type == "char" || value.type == "nchar";
    const bool is_same_type = value.type == host_type_name(col);
    const int64_t width = value.type.starts_with('n') ? col.max_length / 2 : col.max_length;
    return my_is_ascii(value.text) && static_cast<int64_t>(value.text.size()) <= value.length &&
           (!is_fixed || (is_same_type && width == value.length));
}

// Whether the number has no more digits after the point than the type of a conversion.
static bool my_keeps_number(const host_constant &value)
{
    const size_t point = value.text.find('.');
    const size_t digits = point == std::string::npos ? 0 : value.text.size() - point - 1;
    const type_family family = my_family(value.type);
    if (value.text.find_first_of("eE$") != std::string::npos)
        return false;
    if (family == type_family::exact)
        return digits <= (value.type.ends_with("money") ? 4u : static_cast<size_t>(std::max<int64_t>(value.scale, 0)));
    return family == type_family::real || digits == 0;
}

static bool my_keeps_bytes(const host_constant &value, const host_column &col)
{
    const auto size = static_cast<int64_t>(value.text.size() - 2) / 2;
    return value.type == "varbinary" ? size <= value.length : value.length == col.max_length;
}

// A whole number in the range of a type of whole numbers, to which a number or string was converted.
static bool my_convert_whole(host_constant &value)
{
    static constexpr struct {
        std::string_view type;
        int64_t least, most;
    } ranges[] = {{"tinyint", 0, 255}, {"smallint", -32768, 32767}, {"int", INT32_MIN, INT32_MAX}};
    const std::string_view type = value.type;
    value.type = {};
    value.kind = kind::number;
    const std::optional<int64_t> number = host_whole_number(value);
    if (!number)
        return false;
    if (type == "bit")
        value.text = *number == 0 ? "0" : "1";
    return std::none_of(std::begin(ranges), std::end(ranges), [&](const auto &range) {
        return range.type == type && (*number < range.least || *number > range.most);
    });
}

// Makes of a value that was converted to a type one that was not. False when they may differ for the column.
static bool my_forget_type(host_constant &value, const host_column &col)
{
    const type_family family = my_family(value.type);
    const type_family wanted = my_family(host_type_name(col));
    const bool is_same_type = value.type == host_type_name(col) && (value.scale < 0 || value.scale >= col.scale);
    if (value.type.empty() || value.kind == kind::print)
        return true;
    if (family == type_family::whole && (value.kind == kind::number || value.kind == kind::text))
        return my_is_number(wanted) && my_convert_whole(value);
    if (value.kind == kind::number && my_is_number(family))
        return my_is_number(wanted) && (wanted == type_family::real || family != type_family::real) &&
               my_keeps_number(value);
    if (value.kind == kind::text && family == type_family::string)
        return wanted == type_family::string && my_keeps_string(value, col);
    if (family == type_family::guid)
        return is_same_type && (value.kind == kind::guid || value.kind == kind::text);
    if (value.kind == kind::guid)
        return family == type_family::string && value.length >= 36 && value.type.ends_with("varchar");
    if (value.kind == kind::binary)
        return is_same_type && my_keeps_bytes(value, col);
    return is_same_type && family == type_family::moment;
}

// A new guid as the server prints it.
static std::string my_guid_text(const host_column &col)
{
    const std::string_view type = host_type_name(col);
    const int64_t width = type.starts_with('n') ? col.max_length / 2 : col.max_length;
    const bool is_fixed = type == "char" || type == "nchar";
    if (is_fixed ? width != 36 : width < 36 && col.max_length != -1)
        return "";
    return "(hex(randomblob(4))||'-'||hex(randomblob(2))||'-'||hex(randomblob(2))||'-'||hex(randomblob(2))||'-'||"
           "hex(randomblob(6)))";
}

static std::string my_print(const host_constant &value, const host_column &col)
{
    const std::string_view type = host_type_name(col);
    const int64_t width = type.starts_with('n') ? col.max_length / 2 : col.max_length;
    const bool is_fixed = type == "char" || type == "nchar";
    const bool fits = col.max_length == -1 || (is_fixed ? width == value.length : width >= value.length);
    return fits ? "(substr(strftime('" + value.text + "','now'" + value.modifiers + "),1," +
                      std::to_string(value.length) + "))"
                : "";
}

// What SQLite computes for each row, in the form of the column's values; empty when the column takes no such value.
static std::string my_computed(const host_constant &value, const host_column &col)
{
    const std::string_view type = host_type_name(col);
    switch (my_family(type)) {
    case type_family::moment:
        return value.kind == kind::clock ? host_clock_expression(type, col.scale, value.modifiers, value.has_offset)
                                         : "";
    case type_family::string:
        if (value.kind == kind::guid)
            return my_guid_text(col);
        return value.kind == kind::print ? my_print(value, col) : "";
    case type_family::whole: {
        const bool fits =
            type == "int" || type == "bigint" || type == "smallint" || (type == "tinyint" && value.text != "%Y");
        return value.kind == kind::part && fits
                   ? "(CAST(strftime('" + value.text + "','now'" + value.modifiers + ") AS INTEGER))"
                   : "";
    }
    default:
        return "";
    }
}

// The constant as a default of the server.
static std::string my_host_text(const host_constant &value, const host_column &col)
{
    const std::string_view type = host_type_name(col);
    const bool is_moment = my_family(type) == type_family::moment;
    const std::string day = type == "datetime" || type == "smalldatetime" ? host_day_of_number(value.text) : "";
    switch (value.kind) {
    case kind::null:
        return "(NULL)";
    case kind::number:
        return day.empty() ? "((" + value.text + "))" : "('" + day + "')";
    case kind::text:
        return "(" + host_quoted(is_moment ? host_plain_moment(value.text) : value.text) + ")";
    case kind::binary:
        return "(" + value.text + ")";
    default:
        return "(newid())";
    }
}

host_second_default host_read_second_default(const host_column &col, std::string_view expression,
                                             const host_constant_options &options)
{
    std::optional<host_constant> value = host_read_constant(expression, options);
    if (!value || !my_forget_type(*value, col))
        return {};
    const bool is_guid = my_family(host_type_name(col)) == type_family::guid;
    if (is_guid && value->kind == kind::text)
        return {"", host_guid_literal(value->text)};
    if (value->kind < kind::guid || (value->kind == kind::guid && is_guid))
        return {my_host_text(*value, col)};
    return {"", my_computed(*value, col), value->is_local};
}

bool host_is_sequence_default(std::string_view expression, std::string_view &name)
{
    host_tsql_cursor cursor(expression);
    while (cursor.take('(')) {
    }
    if (!cursor.take(host_word::next) || !cursor.take(host_word::value) || !cursor.take(host_word::for_))
        return false;
    const host_tsql_token first = cursor.token;
    while (cursor.token.is_name() || cursor.token.is('.'))
        cursor.advance();
    name = cursor.text_since(first);
    return true;
}
