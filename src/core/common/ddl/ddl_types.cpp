// Abstract types in SQLite's words: what a column is declared as, what typeof() says of a value it may hold, and how
// wide a text column is.
//
// The declared type decides SQLite's affinity and, for "identity", makes the column the rowid. Fixed-point values
// (decimal, money) are scaled integers, dates and times are text, so none of them is declared as what it looks like.

#include "ddl/ddl_text.hpp"

namespace {

struct my_abstract_type {
    const char *name;
    const char *sqlite_decl;
};

constexpr my_abstract_type my_abstract_types[] = {
    {"identity", "integer primary key"},
    {"sint64", "int"},
    {"sint32", "int"},
    {"sint16", "int"},
    {"uint8", "int"},
    {"uint1", "int"},
    {"loose/int", "int"},
    {"real8", "real"},
    {"real4", "real"},
    {"loose/real", "real"},
    {"decimal", "int"},
    {"date", "text"},
    {"time", "text"},
    {"datetime", "text"},
    {"money8", "int"},
    {"money4", "int"},
    {"text", "text"},
    {"loose/text", "text"},
    {"blob", "blob"},
    {"loose/blob", "blob"},
    {"guid", "blob"},
};

} // namespace

const char *tov_abstract_type_to_sqlite_decl(const char *abstract_type) noexcept
{
    for (const my_abstract_type &type : my_abstract_types)
        if (ddl_is_type(abstract_type, type.name))
            return type.sqlite_decl;
    return "";
}

// An integer column is declared "int", but SQLite calls its values "integer".
const char *tov_abstract_type_to_sqlite_typeof(const char *abstract_type) noexcept
{
    if (ddl_is_type(abstract_type, "identity"))
        return "integer";
    const char *decl = tov_abstract_type_to_sqlite_decl(abstract_type);
    return std::strcmp(decl, "int") == 0 ? "integer" : decl;
}

void tov_schema__get_textwidth(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id, char **name,
                               KT_bool *pIsText, KT_bool *pIsFixedWidth, int64_t *pWidth) noexcept
{
    if (!pIsText)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "pIsText is null");
    if (!pIsFixedWidth)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "pIsFixedWidth is null");
    if (!pWidth)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "pWidth is null");
    *pIsText = 0;
    *pIsFixedWidth = 0;

    KT_vhash *col = nullptr;
    const char *col_name = nullptr;
    KT_vhash *type = nullptr;
    const char *abstract_type = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__check__sz(ctx, col, "name", &col_name));
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__check__sz(ctx, type, "name", &abstract_type));
    if (!ddl_is_type(abstract_type, "text"))
        return;

    KT_bool nocase = 0; // no part of the answer, but a record whose flag is not a flag is refused
    KT_bool fixed_width = 0;
    int64_t width = 0;
    KT_TRY(KT_vhash__check__bool(ctx, type, "nocase", &nocase));
    KT_TRY(KT_vhash__check__bool(ctx, type, "fixed_width", &fixed_width));
    KT_TRY(KT_vhash__get__int64(ctx, type, "width", &width));
    if (name && col_name)
        KT_TRY(KT_strdup(ctx, col_name, name));
    else if (name)
        *name = nullptr;
    *pIsText = 1;
    *pIsFixedWidth = fixed_width;
    *pWidth = width;
}
