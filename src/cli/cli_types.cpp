#include "cli_types.hpp"

#include "cli.hpp"
#include "kt_string.h"
#include "tov_host_types.h"

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

// Where values are not checked, a number may be any literal.
static cli_type my_of_abstract_type(const tov_abstract_type *type)
{
    const bool is_loose_number = !type->is_checked && (type->kind == TOV_KIND_INTEGER || type->kind == TOV_KIND_REAL);
    return {type, carries_over[is_loose_number ? tov_type_kind{TOV_KIND_TEXT} : type->kind]};
}

static cli_type my_of_server_type(const tov_host_type &type)
{
    if (type.is_row_version)
        return {nullptr, "the server writes the values of the column itself"};
    if (!type.abstract_type)
        return {nullptr, "a column of this type is left out of its table"};
    return my_of_abstract_type(tov_find_abstract_type(type.abstract_type));
}

std::optional<cli_type> cli_find_type(const std::string &declared, uint32_t *scale)
{
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++)
        if (KT_stricmp(type->name, declared.c_str()) == 0)
            return my_of_abstract_type(type);
    const cli_context context;
    tov_host_type type{};
    KT_bool is_known = 0;
    tov_host__find_type(context.ctx, declared.c_str(), &type, &is_known);
    cli_check(context.ctx, declared);
    if (!is_known)
        return std::nullopt;
    if (type.scale > 0)
        *scale = type.scale;
    return my_of_server_type(type);
}

std::vector<std::string> cli_type_names()
{
    std::vector<std::string> names;
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++)
        names.emplace_back(type->name);
    for (uint32_t n = 0; const char *name = tov_host__get_nth_type_name(n); n++)
        names.emplace_back(name);
    return names;
}
