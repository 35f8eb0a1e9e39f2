// One table of the server's type names: of several names for a type the first is the one written. Whatever is not in it
// is a CLR type, and travels as its bytes.
#include "rows/convert/client_server_type.hpp"

namespace {
struct named_base {
    std::string_view name;
    client_base base;
};
} // namespace

static constexpr named_base my_bases[] = {
    {"bit", client_base::bit},
    {"tinyint", client_base::tinyint},
    {"smallint", client_base::smallint},
    {"int", client_base::integer},
    {"bigint", client_base::bigint},
    {"decimal", client_base::decimal},
    {"numeric", client_base::decimal},
    {"money", client_base::money},
    {"smallmoney", client_base::smallmoney},
    {"real", client_base::real},
    {"float", client_base::floating},
    {"char", client_base::fixed_char},
    {"varchar", client_base::varchar},
    {"text", client_base::text},
    {"nchar", client_base::fixed_nchar},
    {"nvarchar", client_base::nvarchar},
    {"sysname", client_base::nvarchar},
    {"ntext", client_base::ntext},
    {"xml", client_base::xml},
    {"binary", client_base::binary},
    {"varbinary", client_base::varbinary},
    {"image", client_base::image},
    {"timestamp", client_base::rowversion},
    {"rowversion", client_base::rowversion},
    {"uniqueidentifier", client_base::guid},
    {"date", client_base::date},
    {"time", client_base::time},
    {"smalldatetime", client_base::smalldatetime},
    {"datetime", client_base::datetime},
    {"datetime2", client_base::datetime2},
    {"datetimeoffset", client_base::datetimeoffset},
    {"sql_variant", client_base::variant},
};

client_base client_find_base(std::string_view name) noexcept
{
    for (const named_base &known : my_bases) {
        if (known.name == name)
            return known.base;
    }
    return client_base::clr;
}

bool client_is_server_type(std::string_view name) noexcept
{
    return client_find_base(name) != client_base::clr || name == "geography" || name == "geometry" ||
           name == "hierarchyid";
}

const char *client_base_name(client_base base) noexcept
{
    for (const named_base &known : my_bases) {
        if (known.base == base)
            return known.name.data();
    }
    return "clr";
}

bool client_is_text(client_base base) noexcept
{
    return base >= client_base::fixed_char && base <= client_base::xml;
}

bool client_is_unicode(client_base base) noexcept
{
    return base >= client_base::fixed_nchar && base <= client_base::xml;
}

bool client_is_binary(client_base base) noexcept
{
    return (base >= client_base::binary && base <= client_base::rowversion) || base == client_base::clr;
}

bool client_is_number(client_base base) noexcept
{
    return base <= client_base::floating;
}

bool client_is_moment(client_base base) noexcept
{
    return base >= client_base::date && base <= client_base::datetimeoffset;
}

bool client_has_length(client_base base) noexcept
{
    return base == client_base::fixed_char || base == client_base::varchar || base == client_base::fixed_nchar ||
           base == client_base::nvarchar || base == client_base::binary || base == client_base::varbinary;
}
