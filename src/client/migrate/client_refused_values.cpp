// Short conditions, for people to run: strings count in the forms of docs/values.md, though loading takes others too.
#include "migrate/client_value_change.hpp"

#include "guide/client_guide.hpp"
#include "rules/client_rule_parts.hpp"
#include "rules/client_rules.hpp"

#include <algorithm>

// In the order of client_base, and of those that are kept as integers.
static constexpr const char *whole_ranges[] = {"0 AND 1", "0 AND 255", "-32768 AND 32767", "-2147483648 AND 2147483647",
                                               "-9223372036854775808 AND 9223372036854775807"};

static std::string my_range(const client_server_type &type)
{
    if (type.base <= client_base::bigint)
        return whole_ranges[static_cast<size_t>(type.base)];
    if (type.base == client_base::smallmoney)
        return whole_ranges[static_cast<size_t>(client_base::integer)];
    if (type.base != client_base::decimal || type.precision > 18)
        return whole_ranges[static_cast<size_t>(client_base::bigint)];
    const std::string most(type.precision, '9');
    return '-' + most + " AND " + most;
}

// A string that is a number through and through, as one; anything else as bytes.
static std::string my_number_of(const client_server_type &old_type, const std::string &value)
{
    const std::string shown =
        client_is_text(old_type.base) ? value : '(' + client_showing_expression(old_type, value) + ')';
    return client_about(shown, "CASE WHEN CAST(@ AS NUMERIC) = @ THEN CAST(@ AS NUMERIC) ELSE CAST(@ AS BLOB) END");
}

static std::string my_refused_number(const client_server_type &old_type, const client_server_type &new_type,
                                     const std::string &value)
{
    const bool is_text = client_is_text(old_type.base);
    if (!is_text && !client_is_number(old_type.base))
        return value + " IS NOT NULL";
    if (new_type.base == client_base::real || new_type.base == client_base::floating)
        return "typeof(" + (is_text ? my_number_of(old_type, value) : value) + ") NOT IN ('integer', 'real', 'null')";
    const client_value_change change = client_changed_value(old_type, new_type, value);
    std::string stored = change.sql;
    if (stored.empty() && new_type.base <= client_base::bigint)
        stored = my_number_of(old_type, value);
    else if (stored.empty())
        stored = client_storing_expression(
            new_type, is_text ? value : "CAST(" + client_showing_expression(old_type, value) + " AS TEXT)");
    return client_about(stored, "CASE typeof(@) WHEN 'integer' THEN @ NOT BETWEEN " + my_range(new_type) +
                                    " ELSE @ IS NOT NULL END");
}

// Digits that are cut off have to be zeros; a date takes no time of day.
static std::string my_refused_moment(const client_server_type &old_type, const client_server_type &new_type,
                                     const std::string &value)
{
    if (client_is_text(old_type.base))
        return value + " IS NOT NULL AND julianday(" + value + ") IS NULL";
    const bool is_time = old_type.base == client_base::time;
    if (!client_is_moment(old_type.base) || is_time != (new_type.base == client_base::time))
        return value + " IS NOT NULL";
    if (new_type.base == client_base::date)
        return "substr(" + value + ", 12, 16) GLOB '*[1-9]*'";
    if (new_type.base == client_base::datetime)
        return value + " < '1753'";
    if (new_type.base == client_base::smalldatetime)
        return value + " < '1900' OR " + value + " > '2079-06-06 23:59:29.999'";
    const int first = (is_time ? 10 : 21) + new_type.scale;
    return "substr(" + value + ", " + std::to_string(first) + ", " +
           std::to_string(std::max(old_type.scale - new_type.scale, 0)) + ") GLOB '*[1-9]*'";
}

static std::string my_refused_guid(const client_server_type &old_type, const std::string &value)
{
    if (!client_is_text(old_type.base))
        return "length(" + value + ") <> 16";
    std::string pattern;
    for (const int digits : {8, 4, 4, 4, 12}) {
        pattern += pattern.empty() ? "" : "-";
        for (int n = 0; n < digits; n++)
            pattern += "[0-9A-Fa-f]";
    }
    return client_about(value, "trim(@, '{}') NOT GLOB '" + pattern + "'");
}

static std::string my_refused_bytes(const client_server_type &old_type, const client_server_type &new_type,
                                    const std::string &value)
{
    const std::string width = std::to_string(new_type.length);
    if (!client_is_text(old_type.base))
        return "length(" + value + ") > " + width;
    const std::string most = new_type.length > 0 ? " OR length(@) > 2 + 2 * " + width : "";
    return client_about(value, "@ <> '' AND (@ NOT GLOB '0[xX]*' OR length(@) % 2 <> 0 OR "
                               "substr(@, 3) GLOB '*[^0-9A-Fa-f]*'" +
                                   most + ")");
}

static std::string my_refused_text(const client_server_type &old_type, const client_server_type &new_type,
                                   const std::string &value)
{
    const std::string shown =
        client_is_text(old_type.base) ? value : '(' + client_showing_expression(old_type, value) + ')';
    std::string refused;
    if (new_type.length > 0)
        refused = "length(" + shown + ") > " + std::to_string(new_type.length);
    if (!client_is_text(old_type.base))
        return refused.empty() ? "0" : refused;
    client_code_pages pages;
    client_server_type unfilled = new_type; // what is too short is filled up
    if (new_type.base == client_base::fixed_char)
        unfilled.base = client_base::varchar;
    if (new_type.base == client_base::fixed_nchar)
        unfilled.base = client_base::nvarchar;
    for (const client_rule &rule : client_rules_of(unfilled, shown, pages))
        refused += (refused.empty() ? "(" : " OR (") + rule.refused + ')';
    return refused.empty() ? "0" : refused;
}

std::string client_refused_values(const client_server_type &old_type, const client_server_type &new_type,
                                  const std::string &value)
{
    if (client_is_text(new_type.base))
        return my_refused_text(old_type, new_type, value);
    if (client_is_number(new_type.base))
        return my_refused_number(old_type, new_type, value);
    if (client_is_moment(new_type.base))
        return my_refused_moment(old_type, new_type, value);
    if (new_type.base == client_base::guid)
        return my_refused_guid(old_type, value);
    return my_refused_bytes(old_type, new_type, value);
}
