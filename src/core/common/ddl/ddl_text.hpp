// Shared by the sources that generate text: appending many pieces at once, and what is in them.
#pragma once

#include "document/tov_parse_defin_private.hpp"

#include <cstring>
#include <initializer_list>

// Appends the pieces one after another; none may be null, and each is written as it is.
inline void ddl_append(KT_context *ctx, KT_string *text, std::initializer_list<KT_piece> pieces) noexcept
{
    KT_TRY(KT_string__append__pieces(ctx, text, pieces.begin(), pieces.size()));
}

// Type names are compared exactly. A record without one gives null, which is not a type.
inline bool ddl_is_type(const char *abstract_type, const char *name) noexcept
{
    return abstract_type && *abstract_type == *name && std::strcmp(abstract_type, name) == 0;
}

// The name of a column, which must be there: a document from outside may lack it, and no text can do without it.
inline void ddl_get_col_name(KT_context *ctx, const KT_vhash *col, const char **name) noexcept
{
    KT_TRY(KT_vhash__get__sz(ctx, col, "name", name));
}

// Keeps a finished text for as long as the schema lives.
inline void ddl_keep(KT_context *ctx, tov_schema *schema, const KT_string *text, const char **defin) noexcept
{
    KT_TRY(KT_strpool__add__sz(ctx, schema->strpool, KT_string__sz(text), defin));
}

// The type that the host casts binary values of any width to.
static constexpr char DDL_VARIABLE_BINARY[] = "VARBINARY(MAX)";

// Appends "qualifier"."name", inside a cast when there is a type to cast to.
inline void ddl_append_host_col(KT_context *ctx, KT_string *text, const char *qualifier, const char *name,
                                const char *cast_type) noexcept
{
    if (cast_type)
        KT_TRY(ddl_append(ctx, text, {"CAST(\"", qualifier, "\".\"", name, "\" AS ", cast_type, ")"}));
    else
        KT_TRY(ddl_append(ctx, text, {"\"", qualifier, "\".\"", name, "\""}));
}

// The two forms of the host for a value of an identity column: "S:" and the decimal value, or the integer alone.
enum ddl_identity_conversion : uint32_t {
    ddl_text_to_integer = 1,
    ddl_integer_to_text = 2,
};

// Appends a column in the other form; any other conversion appends the column as it is.
inline void ddl_append_converted_identity(KT_context *ctx, KT_string *text, uint32_t conversion, const char *qualifier,
                                          const char *name) noexcept
{
    if (conversion == ddl_text_to_integer)
        KT_TRY(ddl_append(ctx, text, {"(CAST(SUBSTRING(\"", qualifier, "\".\"", name, "\",3,25) AS bigint))"}));
    else if (conversion == ddl_integer_to_text)
        KT_TRY(ddl_append(ctx, text, {"('S:' + CAST(\"", qualifier, "\".\"", name, "\" AS varchar(25)))"}));
    else
        KT_TRY(ddl_append_host_col(ctx, text, qualifier, name, nullptr));
}
