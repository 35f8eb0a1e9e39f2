#include "rows/convert/client_cast_use.hpp"

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
        return client_is_moment(base) && base != client_base::time && base != client_base::datetimeoffset;
    };
    if (!is_with_date(type.base) || !is_with_date(field.cast) || field.form != client_form::text)
        return false;
    return field.cast != client_base::datetime || my_is_datetime_decided(field, type);
}

// Money and floating-point numbers become strings in ways of their own.
static bool my_is_number_decided(client_base cast, client_base base) noexcept
{
    const bool is_exact = cast <= client_base::decimal;
    return client_is_number(base) || (client_is_text(base) && is_exact);
}

bool client_is_decided(const client_field &field, const client_server_type &type) noexcept
{
    const client_base cast = field.cast;
    if (client_is_text(cast))
        return true;
    if (client_is_moment(cast))
        return my_is_moment_decided(field, type);
    if (client_is_number(cast))
        return my_is_number_decided(cast, type.base);
    if (cast == client_base::guid)
        return type.base == client_base::guid;
    return client_is_binary(type.base) || type.base == client_base::guid || type.base == cast;
}
