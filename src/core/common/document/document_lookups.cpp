// The lookups through which every operation reaches a table or a column, and the records that hang from a table.
//
// Ids are lower-cased on the way to "tbls" and to a map of columns. A lookup creates "tbls", "cols" and "check" where
// they are absent, nothing else. Walks over n-th records give the record that a lookup by the n-th id finds: a
// document from outside may hold an id in upper case, which no lookup reaches.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

void _tov_schema__get_tbls(KT_context *ctx, tov_schema *schema, KT_vhash **tbls) noexcept
{
    if (!schema->tbls)
        KT_TRY(KT_vhash__ensure__vhash(ctx, schema->document, "tbls", &schema->tbls));
    *tbls = schema->tbls;
}

void _tov_schema__get_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **tbl) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, tbl_id, &room, &key));
    KT_vhash *found = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, tbls, key, &found));
    if (!found)
        KT_FAIL(KT_ERR_NOT_FOUND, "table id '%s' not found in schema", tbl_id);
    *tbl = found;
}

void _tov_tbl__get_cols(KT_context *ctx, KT_vhash *tbl, KT_vhash **cols) noexcept
{
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "cols", cols));
}

void _tov_schema__get_tbl_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **cols) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__get_cols(ctx, tbl, cols));
}

static void my_check_unprepared_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *key,
                                    KT_vhash **col) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, schema, tbl_id, &cols));
    if (cols)
        KT_TRY(KT_vhash__check__vhash(ctx, cols, key, col));
}

void _tov_schema__get_col_in_tbl(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                 const char *col_id, KT_vhash **col) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_tbl__get_cols(ctx, tbl, &cols));
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_vhash *found = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, cols, key, &found));
    if (!found)
        KT_TRY(my_check_unprepared_col(ctx, schema, tbl_id, key, &found));
    if (!found)
        KT_FAIL(KT_ERR_NOT_FOUND, "col id '%s' not found in tbl id '%s' in schema", col_id, tbl_id);
    *col = found;
}

void _tov_schema__get_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                          KT_vhash **col) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, schema, tbl, tbl_id, col_id, col));
}

// Whether a lookup by the id of a pair finds the pair itself.
static bool my_is_its_own_record(const char *id, const KT_variant *value) noexcept
{
    return value->type == KT_VARIANT_VHASH && tov_is_lower_id(id);
}

void _tov_schema__get_nth_tbl(KT_context *ctx, tov_schema *schema, uint32_t n, const char **tbl_id,
                              KT_vhash **tbl) noexcept
{
    KT_vhash *tbls = nullptr;
    const char *id = nullptr;
    const KT_variant *value = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    KT_TRY(KT_vhash__get_nth_pair(ctx, tbls, n, &id, &value));
    if (my_is_its_own_record(id, value))
        *tbl = value->as.vhash;
    else
        KT_TRY(_tov_schema__get_tbl(ctx, schema, id, tbl));
    if (tbl_id)
        *tbl_id = id;
}

void _tov_schema__get_nth_col_in_tbl(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                     const KT_vhash *cols, uint32_t n, const char **col_id, KT_vhash **col) noexcept
{
    const char *id = nullptr;
    const KT_variant *value = nullptr;
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &id, &value));
    if (my_is_its_own_record(id, value))
        *col = value->as.vhash;
    else
        KT_TRY(_tov_schema__get_col_in_tbl(ctx, schema, tbl, tbl_id, id, col));
    if (col_id)
        *col_id = id;
}

void _tov_schema__get_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **pk) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "pk", pk));
}

void _tov_schema__get_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **uniques) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "uniques", uniques));
}

void _tov_schema__get_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                  KT_vhash **foreignkeys) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "foreignkeys", foreignkeys));
}

void _tov_schema__check_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **pk) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "pk", pk));
}

void _tov_schema__check_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                    KT_vhash **foreignkeys) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "foreignkeys", foreignkeys));
}

void _tov_schema__get_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **checks) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "check", checks));
}
