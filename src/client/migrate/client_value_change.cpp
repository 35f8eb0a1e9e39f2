// Which way a value goes is decided by the types alone: docs/values.md says how they keep it.
#include "migrate/client_value_change.hpp"

#include "guide/client_guide.hpp"

#include <algorithm>
#include <cstdlib>

// The most places by which an integer of 64 bits can be moved.
static constexpr int most_divisible = 18;

// The most digits that a float has for certain.
static constexpr int float_digits = 15;

static bool my_is_whole(const client_server_type &type) noexcept
{
    return type.base <= client_base::bigint;
}

static bool my_is_float(const client_server_type &type) noexcept
{
    return type.base == client_base::real || type.base == client_base::floating;
}

static bool my_is_money(const client_server_type &type) noexcept
{
    return type.base == client_base::money || type.base == client_base::smallmoney;
}

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

// Zeros come after the fraction. Values of more than three digits may have been shortened, and have no place for them.
static bool my_is_widened(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    const auto has_date = [](const client_server_type &type) {
        return type.base != client_base::time && type.base != client_base::datetimeoffset;
    };
    const bool is_alike = (old_type.base == client_base::time && new_type.base == client_base::time) ||
                          (has_date(old_type) && has_date(new_type));
    const bool rounds = new_type.base == client_base::datetime && old_type.base == client_base::datetime2;
    const int old_digits = my_digits(old_type);
    return is_alike && !rounds && new_type.base != client_base::date && old_digits <= 3 &&
           old_digits <= my_digits(new_type);
}

static std::string my_widened(const client_server_type &old_type, const client_server_type &new_type,
                              const std::string &value)
{
    const int old_digits = my_digits(old_type);
    const int digits = my_digits(new_type);
    std::string added = old_type.base == client_base::date ? " 00:00:00" : "";
    if (digits > old_digits)
        added += (old_digits ? "" : ".") + my_zeros(digits - old_digits);
    return added.empty() ? value : value + " || '" + added + "'";
}

static bool my_is_kept_as_bytes(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    const bool is_filled = new_type.base == client_base::binary;
    return my_is_bytes(old_type) && my_is_bytes(new_type) &&
           (!is_filled || (old_type.base == client_base::binary && old_type.length == new_type.length));
}

static bool my_is_kept_as_text(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    const client_base base = new_type.base;
    if (!client_is_text(old_type.base) || !client_is_text(base))
        return false;
    if (base == client_base::fixed_char || base == client_base::fixed_nchar)
        return old_type.base == base && old_type.length == new_type.length;
    return base != client_base::xml || old_type.base == client_base::xml;
}

static bool my_is_kept(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    if (client_is_moment(old_type.base) || client_is_moment(new_type.base))
        return old_type.base == new_type.base && old_type.scale == new_type.scale;
    if (my_is_whole(old_type) && my_is_whole(new_type))
        return true;
    if (old_type.base == client_base::decimal && new_type.base == client_base::decimal)
        return old_type.scale == new_type.scale;
    return (my_is_money(old_type) && my_is_money(new_type)) || my_is_kept_as_bytes(old_type, new_type) ||
           my_is_kept_as_text(old_type, new_type) ||
           (my_is_float(old_type) && (new_type.base == client_base::floating || old_type.base == new_type.base));
}

// The places after the point of a number that is kept as an integer; -1 for what is not.
static int my_scale(const client_server_type &type) noexcept
{
    if (my_is_money(type))
        return 4;
    if (type.base == client_base::decimal)
        return type.scale;
    return my_is_whole(type) ? 0 : -1;
}

static bool my_is_rescaled(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    return my_scale(old_type) >= 0 && my_scale(new_type) >= 0 &&
           std::abs(my_scale(new_type) - my_scale(old_type)) <= most_divisible;
}

// Digits that would be lost are not: the value becomes what the column does not take. So does one that grows too large,
// which SQLite makes a real.
static std::string my_rescaled(int old_scale, int new_scale, const std::string &value)
{
    const std::string power = "1" + my_zeros(std::abs(new_scale - old_scale));
    if (new_scale == old_scale)
        return value;
    if (new_scale > old_scale)
        return value + " * " + power;
    return "CASE WHEN " + value + " % " + power + " = 0 THEN " + value + " / " + power + " ELSE CAST(" + value +
           " AS BLOB) END";
}

// What is shown in ASCII, where the digits do not depend on SQLite's version.
static bool my_is_shown_in_sql(const client_server_type &type) noexcept
{
    return !my_is_float(type) && !client_is_text(type.base);
}

client_value_change client_changed_value(const client_server_type &old_type, const client_server_type &new_type,
                                         const std::string &value)
{
    if (my_is_kept(old_type, new_type))
        return {client_carrying::kept, value};
    if (old_type.base == client_base::variant || new_type.base == client_base::variant)
        return {client_carrying::impossible};
    const bool are_moments = client_is_moment(old_type.base) && client_is_moment(new_type.base);
    if (are_moments && my_is_widened(old_type, new_type))
        return {client_carrying::computed, my_widened(old_type, new_type, value)};
    if (my_is_rescaled(old_type, new_type))
        return {client_carrying::computed, my_rescaled(my_scale(old_type), my_scale(new_type), value)};
    if (my_is_bytes(old_type) && new_type.base == client_base::binary)
        return {client_carrying::computed, client_storing_expression(new_type, value)};
    if (client_is_text(new_type.base) && my_is_shown_in_sql(old_type))
        return {client_carrying::computed,
                client_storing_expression(new_type, '(' + client_showing_expression(old_type, value) + ')')};
    return {client_carrying::converted};
}

const char *client_rounding(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    if (old_type.base == new_type.base || client_is_text(old_type.base))
        return nullptr;
    const bool is_exact = !my_is_float(old_type) && client_is_number(old_type.base);
    const bool is_long = old_type.base == client_base::bigint || old_type.base == client_base::money ||
                         (old_type.base == client_base::decimal && old_type.precision > float_digits);
    if (new_type.base == client_base::real)
        return "is rounded to 32 bits";
    if (new_type.base == client_base::floating && is_exact && is_long)
        return "is rounded to 64 bits";
    if (!client_is_moment(old_type.base) || old_type.base == client_base::date)
        return nullptr;
    if (new_type.base == client_base::smalldatetime)
        return "is rounded to minutes";
    return new_type.base == client_base::datetime && old_type.base != client_base::smalldatetime
               ? "is rounded to 1/300 seconds"
               : nullptr;
}

// The digits before the point of a number that is kept as an integer.
static int my_whole_digits(const client_server_type &type) noexcept
{
    static constexpr int of_whole[] = {1, 3, 5, 10, 19};
    if (my_is_whole(type))
        return of_whole[static_cast<size_t>(type.base)];
    if (my_is_money(type))
        return type.base == client_base::money ? 15 : 6;
    return type.precision - type.scale;
}

static bool my_takes_number(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    if (my_is_whole(old_type) && my_is_whole(new_type))
        return old_type.base <= new_type.base;
    if (new_type.base != client_base::decimal)
        return old_type.base == new_type.base;
    return my_scale(old_type) <= new_type.scale && my_whole_digits(old_type) <= my_whole_digits(new_type) &&
           (old_type.scale == new_type.scale || new_type.precision <= most_divisible);
}

bool client_takes_all(const client_server_type &old_type, const client_server_type &new_type) noexcept
{
    const bool is_wide = new_type.length < 0 || (old_type.length >= 0 && old_type.length <= new_type.length);
    if (my_scale(old_type) >= 0 && my_scale(new_type) >= 0)
        return my_takes_number(old_type, new_type);
    if (old_type.base == new_type.base)
        return is_wide && old_type.scale <= new_type.scale && old_type.code_page == new_type.code_page;
    if (old_type.base == client_base::date || old_type.base == client_base::smalldatetime)
        return new_type.base == client_base::datetime2;
    return old_type.base == client_base::varchar && new_type.base == client_base::nvarchar && is_wide;
}
