// What a cast rounds or fills up is rounded and filled up in the field, which then has the form of any other value.
#include "rows/convert/client_cast.hpp"

#include <charconv>

static bool my_is_moment(client_base base) noexcept
{
    return base >= client_base::date && base <= client_base::datetimeoffset;
}

static bool my_is_float(client_base base) noexcept
{
    return base == client_base::real || base == client_base::floating;
}

static bool my_is_money(client_base base) noexcept
{
    return base == client_base::money || base == client_base::smallmoney;
}

static bool my_is_number(client_base base) noexcept
{
    return base <= client_base::floating;
}

static bool my_has_length(client_base base) noexcept
{
    return base == client_base::fixed_char || base == client_base::varchar || base == client_base::fixed_nchar ||
           base == client_base::nvarchar || base == client_base::binary || base == client_base::varbinary;
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
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
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
    else if (my_is_number(type.base))
        make(client_form::number, my_scaled_text(value.integer, my_is_money(type.base) ? 4 : type.scale));
    else if (my_is_moment(type.base) && !value.shortened)
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
    if (!my_has_length(type.base))
        held.length = -1;
    if (type.base == client_base::variant || client_convert(converter, held, literal, value) != client_reject::none)
        return {client_form::server, {}};
    my_make(type, value, made, field);
    return field;
}

// A datetime is a number of 1/300 seconds. How many digits of these a type with more than three takes over depends on
// the database's compatibility level.
static bool my_is_datetime_decided(const client_field &field, const client_server_type &type) noexcept
{
    return type.base != client_base::datetime2 || type.scale <= 3 || field.bytes.ends_with('0');
}

static bool my_is_moment_decided(const client_field &field, const client_server_type &type) noexcept
{
    if (type.base == field.cast)
        return true;
    const auto is_with_date = [](client_base base) {
        return my_is_moment(base) && base != client_base::time && base != client_base::datetimeoffset;
    };
    if (!is_with_date(type.base) || !is_with_date(field.cast) || field.form != client_form::text)
        return false;
    return field.cast != client_base::datetime || my_is_datetime_decided(field, type);
}

bool client_is_decided(const client_field &field, const client_server_type &type) noexcept
{
    const client_base cast = field.cast;
    if (cast == client_base::variant || client_is_text(cast))
        return true;
    if (my_is_moment(cast))
        return my_is_moment_decided(field, type);
    if (my_is_number(cast)) // money and floating-point numbers become strings in ways of their own
        return my_is_number(type.base) || (client_is_text(type.base) && !my_is_money(cast) && !my_is_float(cast));
    if (cast == client_base::guid)
        return type.base == client_base::guid;
    return client_is_binary(type.base) || type.base == client_base::guid || type.base == cast;
}
