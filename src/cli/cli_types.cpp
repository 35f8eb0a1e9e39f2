#include "cli_types.hpp"

#include "kt_string.h"

#include <charconv>
#include <iterator>

// What a default of a type may be, by the type's kind.
static constexpr const char *carries_over[] = {
    /* identity */ "an identity column has no default",
    /* integer */ "an integer within the type's range carries over, an expression does not",
    /* bit */ "an integer within the type's range carries over, an expression does not",
    /* real */ "a single number carries over, an expression does not",
    /* decimal */ "a single number carries over, an expression does not",
    /* money */ "a single number carries over, an expression does not",
    /* date */ "a literal, getutcdate() and sysutcdatetime() carry over, nothing else",
    /* time */ "a literal, getutcdate() and sysutcdatetime() carry over, nothing else",
    /* datetime */ "a literal, getutcdate() and sysutcdatetime() carry over, nothing else",
    /* text */ "a single literal carries over, an expression does not",
    /* blob */ "a constant 0x... of whole bytes carries over, nothing else",
    /* guid */ "newid() and newsequentialid() carry over, nothing else",
};
static_assert(std::size(carries_over) == TOV_KIND_GUID + 1);

static constexpr const char *written = "the server writes the values of the column itself";
static constexpr const char *left_out = "a column of this type is left out of its table";

namespace {
struct server_type {
    const char *name;
    const char *abstract_type;            // null where no column of the schema holds a default of this type,
    const char *why_no_default = nullptr; // and then why
};
} // namespace

static constexpr server_type server_types[] = {
    {"bigint", "sint64"},
    {"int", "sint32"},
    {"smallint", "sint16"},
    {"tinyint", "uint8"},
    {"bit", "uint1"},
    {"float", "real8"},
    {"real", "real4"},
    {"numeric", "decimal"},
    {"money", "money8"},
    {"smallmoney", "money4"},
    {"datetime2", "datetime"},
    {"smalldatetime", "datetime"},
    {"char", "text"},
    {"varchar", "text"},
    {"nchar", "text"},
    {"nvarchar", "text"},
    {"sysname", "text"},
    {"xml", "text"},
    {"ntext", "text"},
    {"binary", "blob"},
    {"varbinary", "blob"},
    {"image", "blob"},
    {"geography", "blob"},
    {"geometry", "blob"},
    {"hierarchyid", "blob"},
    {"uniqueidentifier", "guid"},
    {"timestamp", nullptr, written},
    {"rowversion", nullptr, written},
    {"datetimeoffset", nullptr, left_out},
    {"sql_variant", nullptr, left_out},
    {"json", nullptr, left_out},
    {"vector", nullptr, left_out},
    {"integer", "sint32"},
    {"dec", "decimal"},
    {"double precision", "real8"},
    {"character", "text"},
    {"char varying", "text"},
    {"character varying", "text"},
    {"binary varying", "blob"},
    {"national char", "text"},
    {"national character", "text"},
    {"national char varying", "text"},
    {"national character varying", "text"},
    {"national text", "text"},
};

// The second number between parentheses, as in decimal(9, 2).
static void my_read_scale(const std::string &declared, uint32_t *scale)
{
    const size_t comma = declared.find(',');
    if (comma == std::string::npos)
        return;
    const size_t digits = declared.find_first_not_of(' ', comma + 1);
    if (digits != std::string::npos)
        std::from_chars(declared.data() + digits, declared.data() + declared.size(), *scale);
}

std::string cli_type_name(const std::string &declared)
{
    std::string name = declared.substr(0, declared.find('('));
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        name = name.substr(1, name.size() - 2);
    return name;
}

// Where values are not checked, a number may be any literal.
static cli_type my_of_abstract_type(const tov_abstract_type *type)
{
    const bool is_loose_number = !type->is_checked && (type->kind == TOV_KIND_INTEGER || type->kind == TOV_KIND_REAL);
    return {type, carries_over[is_loose_number ? tov_type_kind{TOV_KIND_TEXT} : type->kind]};
}

static std::optional<cli_type> my_find_by_name(const char *name)
{
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++)
        if (KT_stricmp(type->name, name) == 0)
            return my_of_abstract_type(type);
    for (const server_type &type : server_types) {
        if (KT_stricmp(type.name, name) != 0)
            continue;
        if (!type.abstract_type)
            return cli_type{nullptr, type.why_no_default};
        return my_of_abstract_type(tov_find_abstract_type(type.abstract_type));
    }
    return std::nullopt;
}

std::optional<cli_type> cli_find_type(const std::string &declared, uint32_t *scale)
{
    const std::optional<cli_type> type = my_find_by_name(cli_type_name(declared).c_str());
    if (type)
        my_read_scale(declared, scale);
    return type;
}

std::vector<std::string> cli_type_names()
{
    std::vector<std::string> names;
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++)
        names.emplace_back(type->name);
    for (const server_type &type : server_types)
        names.emplace_back(type.name);
    return names;
}
