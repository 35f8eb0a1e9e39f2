// What a cast rounds or fills up is rounded and filled up in the field, which then has the form of any other value.
#include "rows/convert/client_cast.hpp"

#include "rows/convert/client_bytes.hpp"

#include <charconv>

static bool my_is_float(client_base base) noexcept
{
    return base == client_base::real || base == client_base::floating;
}

static bool my_is_money(client_base base) noexcept
{
    return base == client_base::money || base == client_base::smallmoney;
}

// An integer with so many of its digits after the point.
static std::string my_scaled_text(int64_t integer, size_t scale)
{
    const bool negative = integer < 0;
    std::string digits = std::to_string(integer).substr(negative ? 1 : 0);
    if (digits.size() <= scale)
        digits.insert(0, scale + 1 - digits.size(), '0');
    if (scale > 0)
        digits.insert(digits.size() - scale, 1, '.');
    return (negative ? "-" : "") + digits;
}

// The fewest digits that mean the double.
static std::string my_float_text(double real)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, real).ptr};
}

static std::string my_hex_text(std::string_view bytes)
{
    std::string text;
    client_append_hex(text, bytes);
    return text;
}

// The field of a value that a literal was converted to; what the type leaves as it is stays the literal's.
static void my_make(const client_server_type &type, const client_value &value, std::deque<std::string> &made,
                    client_field &field)
{
    const auto make = [&](client_form form, std::string text) {
        field.form = form;
        field.bytes = made.emplace_back(std::move(text));
    };
    if (my_is_float(type.base))
        make(client_form::number, my_float_text(value.real));
    else if (client_is_number(type.base))
        make(client_form::number, my_scaled_text(value.integer, my_is_money(type.base) ? 4 : type.scale));
    else if (client_is_moment(type.base) && !value.shortened)
        make(client_form::text, std::string(value.bytes));
    else if (client_is_text(type.base) && value.bytes.size() > field.bytes.size())
        make(client_form::literal, std::string(value.bytes));
    else if (type.base == client_base::binary)
        make(client_form::hex, my_hex_text(value.bytes));
}

client_field client_cast(client_converter &converter, const client_server_type &type, const client_field &literal,
                         std::deque<std::string> &made)
{
    client_field field = literal;
    client_server_type held = type;
    client_value value;
    field.cast = type.base;
    if (type.base == client_base::clr || literal.form == client_form::null)
        return field;
    if (!client_has_length(type.base))
        held.length = -1;
    if (type.base == client_base::variant || client_convert(converter, held, literal, value) != client_reject::none)
        return {client_form::server, {}};
    my_make(type, value, made, field);
    return field;
}
