// Abstract types in SQLite's words: what a column is declared as, what typeof() says of a value it may hold, and how
// wide a text column is.

#include "ddl/ddl_text.hpp"

const char *tov_abstract_type_to_sqlite_decl(const char *abstract_type) noexcept
{
    const tov_abstract_type *type = tov_find_abstract_type(abstract_type);
    return type ? type->sqlite_decl : "";
}

const char *tov_abstract_type_to_sqlite_typeof(const char *abstract_type) noexcept
{
    const tov_abstract_type *type = tov_find_abstract_type(abstract_type);
    return type ? type->sqlite_typeof : "";
}

void tov_schema__get_textwidth(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id, char **name,
                               KT_bool *pIsText, KT_bool *pIsFixedWidth, int64_t *pWidth) noexcept
{
    KT_RETURN_IF_FAILED;
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
