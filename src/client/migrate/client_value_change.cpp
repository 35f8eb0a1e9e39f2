// The old type shows the value as the server does, and the new one stores what is shown: docs/values.md says how.
#include "migrate/client_value_change.hpp"

#include "guide/client_guide.hpp"

#include <algorithm>
#include <cstdlib>

// The most places by which an integer of 64 bits can be moved.
static constexpr int most_divisible = 18;

static bool my_is_moment(const client_server_type &type) noexcept
{
    return type.base >= client_base::date && type.base <= client_base::datetimeoffset;
}

static bool my_is_whole(const client_server_type &type) noexcept
{
    return type.base <= client_base::bigint;
}

static bool my_is_float(const client_server_type &type) noexcept
{
    return type.base == client_base::real || type.base == client_base::floating;
}

// Bytes, whose text form SQLite cannot read before version 3.41.
static bool my_is_bytes(const client_server_type &type) noexcept
{
    return client_is_binary(type.base) || type.base == client_base::guid;
}

// The digits of a second's fraction that are kept.
static int my_digits(const client_server_type &type) noexcept
{
    switch (type.base) {
    case client_base::datetime:
        return 3;
    case client_base::date:
    case client_base::smalldatetime:
        return 0;
    case client_base::time:
        return type.scale;
    default:
        return type.scale == 0 ? 0 : std::max<int>(type.scale, 3);
    }
}

static std::string my_zeros(int count)
{
    return std::string(static_cast<size_t>(count), '0');
}

// A fraction with more digits, or with fewer where those that go are zeros.
static std::string my_refractioned(int old_digits, int new_digits, const std::string &value)
{
    if (old_digits == new_digits)
        return value;
    if (new_digits > old_digits)
        return value + " || '" + (old_digits ? "" : ".") + my_zeros(new_digits - old_digits) + "'";
    const std::string cut = std::to_string(old_digits - new_digits + (new_digits ? 0 : 1));
    const std::string zeros = (new_digits ? "" : ".") + my_zeros(old_digits - new_digits);
    return "CASE WHEN substr(" + value + ", -" + cut + ") = '" + zeros + "' THEN substr(" + value + ", 1, length(" +
           value + ") - " + cut + ") ELSE " + value + " END";
}

static std::string my_changed_moment(const client_server_type &old_type, const client_server_type &new_type,
                                     const std::string &value)
{
    const bool has_same_parts = (old_type.base == client_base::time) == (new_type.base == client_base::time) &&
                                old_type.base != client_base::datetimeoffset &&
                                new_type.base != client_base::datetimeoffset && new_type.base != client_base::date;
    if (!has_same_parts)
        return value;
    const int digits = my_digits(new_type);
    if (old_type.base == client_base::date)
        return value + " || ' 00:00:00" + (digits ? "." + my_zeros(digits) : "") + "'";
    return my_refractioned(my_digits(old_type), digits, value);
}

static bool my_is_kept_as(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    if (my_is_moment(old_type) || my_is_moment(new_type))
        return old_type.base == new_type.base && my_digits(old_type) == my_digits(new_type);
    if (my_is_whole(old_type) && my_is_whole(new_type))
        return true;
    const bool has_same_width = old_type.length == new_type.length;
    switch (new_type.base) {
    case client_base::decimal:
        return old_type.base == client_base::decimal && old_type.scale == new_type.scale;
    case client_base::money:
    case client_base::smallmoney:
        return old_type.base == client_base::money || old_type.base == client_base::smallmoney;
    case client_base::floating:
        return my_is_float(old_type);
    case client_base::fixed_char:
    case client_base::fixed_nchar:
    case client_base::binary:
        return old_type.base == new_type.base && has_same_width;
    case client_base::guid:
    case client_base::clr:
    case client_base::real:
        return old_type.base == new_type.base;
    default:
        return (client_is_text(old_type.base) && client_is_text(new_type.base)) ||
               (client_is_binary(old_type.base) && client_is_binary(new_type.base));
    }
}

// The places after the point of a number that is kept as an integer; -1 for what is not.
static int my_scale(const client_server_type &type) noexcept
{
    if (type.base == client_base::money || type.base == client_base::smallmoney)
        return 4;
    if (type.base == client_base::decimal)
        return type.scale;
    return my_is_whole(type) ? 0 : -1;
}

// Digits that would be lost are not: the value stays what the column does not take. So does one that grows too large,
// which SQLite makes a real.
static std::string my_rescaled(int old_scale, int new_scale, const std::string &value)
{
    const int digits = std::abs(new_scale - old_scale);
    const std::string power = "1" + my_zeros(digits);
    if (new_scale >= old_scale)
        return value + " * " + power;
    return "CASE WHEN " + value + " % " + power + " = 0 THEN " + value + " / " + power + " ELSE CAST(" + value +
           " AS BLOB) END";
}

std::string client_changed_value(const client_server_type &old_type, const client_server_type &new_type,
                                 const std::string &value)
{
    if (my_is_kept_as(old_type, new_type))
        return value;
    if (my_is_moment(old_type) && my_is_moment(new_type))
        return my_changed_moment(old_type, new_type, value);
    const int old_scale = my_scale(old_type);
    const int new_scale = my_scale(new_type);
    if (old_scale >= 0 && new_scale >= 0 && std::abs(new_scale - old_scale) <= most_divisible)
        return my_rescaled(old_scale, new_scale, value);
    if (client_is_binary(old_type.base) && client_is_binary(new_type.base))
        return client_storing_expression(new_type, value);
    if (my_is_bytes(new_type) || old_type.base == client_base::clr || new_type.base == client_base::clr)
        return "";
    const bool is_text = client_is_text(old_type.base);
    const std::string shown = is_text ? value : '(' + client_showing_expression(old_type, value) + ')';
    return client_storing_expression(new_type, shown);
}

bool client_may_round(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    return new_type.base == client_base::real && old_type.base != client_base::real;
}

bool client_takes_all(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    const bool is_wide = new_type.length < 0 || (old_type.length >= 0 && old_type.length <= new_type.length);
    if (old_type.base == new_type.base)
        return is_wide && old_type.scale <= new_type.scale && old_type.code_page == new_type.code_page &&
               old_type.precision - old_type.scale <= new_type.precision - new_type.scale;
    if (my_is_whole(old_type) && my_is_whole(new_type))
        return old_type.base <= new_type.base;
    return old_type.base == client_base::varchar && new_type.base == client_base::nvarchar && is_wide;
}
