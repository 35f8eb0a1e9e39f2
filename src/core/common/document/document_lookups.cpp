// The lookups through which every operation reaches a table or a column, and the records that hang from a table.
//
// Ids are lower-cased on the way to "tbls" and to a map of columns. A lookup creates "tbls", "cols" and "check" where
// they are absent, nothing else. Walks over n-th records give the record that a lookup by the n-th id finds: a
// document from outside may hold an id in upper case, which no lookup reaches.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>

// Ids that the schema hands out are the very strings that its maps have for keys.
static inline bool my_is_same(const char *known_id, const char *id) noexcept
{
    return known_id == id || std::strcmp(known_id, id) == 0;
}

// The table or the column if it is the one that was found last, else null.
static inline KT_vhash *my_last_tbl(const tov_schema *schema, const char *tbl_id) noexcept
{
    const auto &last = schema->last_tbl;
    return last.tbl && my_is_same(last.id, tbl_id) ? last.tbl : nullptr;
}

static inline KT_vhash *my_last_col(const tov_schema *schema, const KT_vhash *tbl, const char *col_id) noexcept
{
    const auto &last = schema->last_col;
    return last.tbl == tbl && my_is_same(last.id, col_id) ? last.col : nullptr;
}

void _tov_schema__get_tbls(KT_context *ctx, tov_schema *schema, KT_vhash **tbls) noexcept
{
    if (!schema->tbls)
        KT_TRY(KT_vhash__ensure__vhash(ctx, schema->document, "tbls", &schema->tbls));
    *tbls = schema->tbls;
}

static void my_search_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **tbl) noexcept
{
    KT_vhash *tbls = nullptr;
    const char *id = nullptr;
    KT_vhash *found = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    KT_TRY(KT_vhash__check_folded__vhash(ctx, tbls, tbl_id, &id, &found));
    if (!found)
        KT_FAIL(KT_ERR_NOT_FOUND, "table id '%s' not found in schema", tbl_id);
    schema->last_tbl = {id, found, nullptr};
    *tbl = found;
}

void _tov_schema__get_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **tbl) noexcept
{
    KT_RETURN_IF_FAILED;
    if (KT_vhash *last = my_last_tbl(schema, tbl_id))
        *tbl = last;
    else
        my_search_tbl(ctx, schema, tbl_id, tbl);
}

void _tov_tbl__get_cols(KT_context *ctx, KT_vhash *tbl, KT_vhash **cols) noexcept
{
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "cols", cols));
}

// The columns of a table, known already if it is the one that was found last.
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

void _tov_schema__get_tbl_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **cols) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(my_get_cols(ctx, schema, tbl, cols));
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

static void my_search_col(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id, const char *col_id,
                          KT_vhash **col) noexcept
{
    KT_vhash *cols = nullptr;
    const char *id = nullptr;
    KT_vhash *found = nullptr;
    KT_TRY(my_get_cols(ctx, schema, tbl, &cols));
    KT_TRY(KT_vhash__check_folded__vhash(ctx, cols, col_id, &id, &found));
    if (found)
        schema->last_col = {tbl, id, found};
    else
        KT_TRY(my_check_unprepared_col(ctx, schema, tbl_id, col_id, &found));
    if (!found)
        KT_FAIL(KT_ERR_NOT_FOUND, "col id '%s' not found in tbl id '%s' in schema", col_id, tbl_id);
    *col = found;
}

void _tov_schema__get_col_in_tbl(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                 const char *col_id, KT_vhash **col) noexcept
{
    KT_RETURN_IF_FAILED;
    if (KT_vhash *last = my_last_col(schema, tbl, col_id))
        *col = last;
    else
        my_search_col(ctx, schema, tbl, tbl_id, col_id, col);
}

static void my_search_tbl_and_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                  KT_vhash **col) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, schema, tbl, tbl_id, col_id, col));
}

void _tov_schema__get_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                          KT_vhash **col) noexcept
{
    KT_RETURN_IF_FAILED;
    const KT_vhash *tbl = my_last_tbl(schema, tbl_id);
    KT_vhash *last = tbl ? my_last_col(schema, tbl, col_id) : nullptr;
    if (last)
        *col = last;
    else
        my_search_tbl_and_col(ctx, schema, tbl_id, col_id, col);
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
