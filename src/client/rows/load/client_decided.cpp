#include "rows/load/client_decided.hpp"

#include <cstdint>

namespace {
struct integer_range {
    client_base base;
    int64_t low;
    int64_t high;
};
} // namespace

static constexpr integer_range integer_ranges[] = {
    {client_base::bit, 0, 1},
    {client_base::tinyint, 0, 255},
    {client_base::smallint, INT16_MIN, INT16_MAX},
    {client_base::integer, INT32_MIN, INT32_MAX},
    {client_base::bigint, INT64_MIN, INT64_MAX},
    {client_base::smallmoney, INT32_MIN, INT32_MAX},
    {client_base::money, INT64_MIN, INT64_MAX},
};

// The characters of a moment with its offset, the longest of them.
static constexpr int32_t offset_width = 34;

static bool my_is_in_range(const tov_abstract_type &type, client_base base) noexcept
{
    for (const integer_range &range : integer_ranges) {
        if (range.base == base)
            return range.low >= type.low && range.high <= type.high;
    }
    return false;
}

static int32_t my_most_units(const client_server_type &type) noexcept
{
    if (type.base == client_base::rowversion)
        return 8;
    return type.base == client_base::datetimeoffset ? offset_width : type.length;
}

// Whether what is no longer than the server's column is no longer than the abstract type: a character is a unit or
// more, and a byte or more.
static bool my_is_in_width(const client_checked_type &type, const client_server_type &server) noexcept
{
    const int32_t most = my_most_units(server);
    return type.width <= 0 || (most > 0 && most <= type.width);
}

bool client_conversion_decides(const client_checked_type &type, const client_row_col &col) noexcept
{
    const client_base base = col.type.base;
    if (!type.abstract)
        return false;
    switch (type.abstract->kind) {
    case TOV_KIND_IDENTITY: // held to the limits of the server's type alone
        return client_is_number(base) && base != client_base::real && base != client_base::floating;
    case TOV_KIND_INTEGER:
    case TOV_KIND_BIT:
    case TOV_KIND_MONEY:
        return my_is_in_range(*type.abstract, base);
    case TOV_KIND_REAL:
        return base == client_base::real || base == client_base::floating;
    case TOV_KIND_DECIMAL:
        return base == client_base::decimal && col.type.precision >= 1 && col.type.precision <= type.precision;
    case TOV_KIND_DATE:
        return base == client_base::date;
    case TOV_KIND_TIME:
        return base == client_base::time;
    case TOV_KIND_DATETIME:
        return base == client_base::smalldatetime || base == client_base::datetime || base == client_base::datetime2;
    case TOV_KIND_TEXT:
        return (client_is_text(base) || base == client_base::datetimeoffset) && my_is_in_width(type, col.type);
    case TOV_KIND_BLOB:
        return client_is_binary(base) && my_is_in_width(type, col.type);
    default:
        return type.abstract->kind == TOV_KIND_GUID && base == client_base::guid;
    }
}
