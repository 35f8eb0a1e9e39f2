// The lookups through which every operation reaches a table or a column, and the records that hang from a table.
//
// Ids are lower-cased on the way to "tbls" and to a map of columns. A lookup creates "tbls", "cols" and "check" where
// they are absent, nothing else. Walks over n-th records give the record that a lookup by the n-th id finds: a
// document from outside may hold an id in upper case, which no lookup reaches.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>

void _tov_schema__get_tbls(KT_context *ctx, tov_schema *schema, KT_vhash **tbls) noexcept
{
    if (!schema->tbls)
        KT_TRY(KT_vhash__ensure__vhash(ctx, schema->document, "tbls", &schema->tbls));
    *tbls = schema->tbls;
}

void _tov_schema__get_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **tbl) noexcept
{
    KT_RETURN_IF_FAILED;
    auto &last = schema->last_tbl;
    if (last.tbl && std::strcmp(last.id, tbl_id) == 0) {
        *tbl = last.tbl;
        return;
    }
    KT_vhash *tbls = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    const char *id = nullptr;
    KT_vhash *found = nullptr;
    KT_TRY(KT_vhash__check_folded__vhash(ctx, tbls, tbl_id, &id, &found));
    if (!found)
        KT_FAIL(KT_ERR_NOT_FOUND, "table id '%s' not found in schema", tbl_id);
    last = {id, found, nullptr};
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

// The columns of a table that _tov_schema__get_tbl() gave.
static void my_get_cols(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, KT_vhash **cols) noexcept
{
    auto &last = schema->last_tbl;
    if (last.tbl != tbl) {
        KT_TRY(_tov_tbl__get_cols(ctx, tbl, cols));
        return;
    }
    if (!last.cols)
        KT_TRY(_tov_tbl__get_cols(ctx, tbl, &last.cols));
    *cols = last.cols;
}

static void my_check_unprepared_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    KT_vhash **col) noexcept
{
    KT_vhash *cols = nullptr;
    const char *id = nullptr;
    KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, schema, tbl_id, &cols));
    if (cols)
        KT_TRY(KT_vhash__check_folded__vhash(ctx, cols, col_id, &id, col));
}

void _tov_schema__get_col_in_tbl(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                 const char *col_id, KT_vhash **col) noexcept
{
    KT_RETURN_IF_FAILED;
    auto &last = schema->last_col;
    if (last.tbl == tbl && std::strcmp(last.id, col_id) == 0) {
        *col = last.col;
        return;
    }
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_cols(ctx, schema, tbl, &cols));
    const char *id = nullptr;
    KT_vhash *found = nullptr;
    KT_TRY(KT_vhash__check_folded__vhash(ctx, cols, col_id, &id, &found));
    if (found)
        last = {tbl, id, found};
    else
        KT_TRY(my_check_unprepared_col(ctx, schema, tbl_id, col_id, &found));
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
