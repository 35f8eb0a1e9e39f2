#include "checks/host_check_values.hpp"

#include "steps/host_import.hpp"
#include "steps/host_moment_literal.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <charconv>

using kind = host_value_kind;

struct host_kind_of_type {
    std::string_view host_name;
    host_value_kind kind;
    int64_t digits = 0;
};

static constexpr host_kind_of_type kinds[] = {
    {"int", kind::integer, 10},
    {"smallint", kind::integer, 5},
    {"tinyint", kind::tinyint, 3},
    {"bigint", kind::bigint, 19},
    {"bit", kind::bit, 1},
    {"float", kind::real8},
    {"real", kind::real4},
    {"decimal", kind::scaled},
    {"numeric", kind::scaled},
    {"money", kind::scaled, 19},
    {"smallmoney", kind::scaled, 10},
    {"char", kind::text},
    {"varchar", kind::text},
    {"nchar", kind::text},
    {"nvarchar", kind::text},
    {"date", kind::date},
    {"time", kind::moment},
    {"datetime", kind::moment},
    {"datetime2", kind::moment},
    {"smalldatetime", kind::moment},
    {"uniqueidentifier", kind::guid},
    {"binary", kind::binary},
    {"varbinary", kind::binary},
};

host_value host_column_value(const host_column &col)
{
    const std::string_view name = host_type_name(col);
    host_value value{kind::opaque, &col};
    for (const host_kind_of_type &type : kinds) {
        if (type.host_name == name) {
            value.kind = type.kind;
            value.digits = type.digits;
        }
    }
    if (value.kind == kind::scaled) {
        const bool is_money = name.ends_with("money");
        value.scale = is_money ? 4 : col.scale;
        value.digits = is_money ? value.digits : col.precision;
    }
    if (value.kind == kind::moment)
        value.scale = host_fraction_digits(name, col.scale);
    if (value.kind == kind::date)
        value.scale = -1;
    return value;
}

size_t host_count_digits(std::string_view number)
{
    number.remove_prefix(std::min(number.find_first_not_of("0."), number.size()));
    return number.size() - static_cast<size_t>(std::count(number.begin(), number.end(), '.'));
}

host_value host_number_value(std::string_view number)
{
    const size_t digits = host_count_digits(number);
    const bool is_whole = number.find('.') == std::string_view::npos && digits < 10;
    host_value value{is_whole ? kind::whole_literal : kind::number_literal, nullptr, number, number};
    value.digits = static_cast<int64_t>(digits);
    return value;
}

host_value host_integer_value()
{
    host_value value{kind::integer};
    value.digits = 10;
    return value;
}

bool host_is_whole(kind of)
{
    return of == kind::integer || of == kind::tinyint || of == kind::bigint || of == kind::bit ||
           of == kind::whole_literal;
}

bool host_is_number_literal(kind of)
{
    return of == kind::whole_literal || of == kind::number_literal;
}

bool host_is_fixed_width(const host_column &col)
{
    const std::string_view name = host_type_name(col);
    return name == "char" || name == "nchar";
}

bool host_is_unicode(const host_column &col)
{
    return host_type_name(col)[0] == 'n';
}

bool host_is_plain_ascii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

std::string host_literal_text(std::string_view literal)
{
    return host_unquoted_literal(literal.substr(literal.starts_with('\'') ? 0 : 1));
}

int64_t host_small_number(const host_value &value)
{
    int64_t number = -1;
    const std::string_view literal = value.literal;
    if (value.kind == kind::whole_literal && !value.is_signed)
        std::from_chars(literal.data(), literal.data() + literal.size(), number);
    return number;
}
