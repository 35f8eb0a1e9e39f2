// The lite schema: a short JSON summary of chosen tables, and the reading of one that has been parsed back, e.g.
// {"compat_level":1,"tbls":{"t1":{"txid":42,"cols":{"c1":{"name":"Id"},"c2":{"name":"Title"}}}}}.
//
// A table is kept under its id as the caller wrote it, a column under its id in the schema. The readers match both
// exactly: a lite document may have been stored and carries no rule about case.
#include "document/tov_parse_defin_private.hpp"

// The form of the lite document, not the level of the schema that it was made from.
static constexpr int64_t LITE_COMPAT_LEVEL = 1;

static void my_add_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash *lite_cols) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__get_cols(ctx, tbl, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *name = nullptr;
        KT_vhash *col = nullptr;
        KT_vhash *lite_col = nullptr;
        KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, schema, tbl, tbl_id, cols, n, &col_id, &col));
        KT_TRY(KT_vhash__addnew__vhash(ctx, lite_cols, col_id, &lite_col));
        KT_TRY(KT_vhash__check__sz(ctx, col, "name", &name));
        KT_TRY(KT_vhash__add__string__sz(ctx, lite_col, "name", name));
    }
}

static void my_add_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash *lite_tbls) noexcept
{
    int64_t txid = 0;
    KT_vhash *lite_tbl = nullptr;
    KT_vhash *lite_cols = nullptr;
    KT_TRY(tov_schema__check_tbl_txid(ctx, schema, tbl_id, &txid));
    KT_TRY(KT_vhash__addnew__vhash(ctx, lite_tbls, tbl_id, &lite_tbl));
    KT_TRY(KT_vhash__update__int64(ctx, lite_tbl, "txid", txid));
    KT_TRY(KT_vhash__addnew__vhash(ctx, lite_tbl, "cols", &lite_cols));
    KT_TRY(my_add_cols(ctx, schema, tbl_id, lite_cols));
}

static void my_add_tbls(KT_context *ctx, tov_schema *schema, const KT_nullhash *tbl_ids, KT_vhash *lite_tbls) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_nullhash__count(ctx, tbl_ids, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        KT_TRY(KT_nullhash__get_nth(ctx, tbl_ids, n, &tbl_id));
        KT_TRY(my_add_tbl(ctx, schema, tbl_id, lite_tbls));
    }
}

void tov_schema__lite(KT_context *ctx, tov_schema *schema, KT_nullhash *tbl_ids, KT_string **json) noexcept
{
    kt_owned_vhash root{ctx};
    kt_owned_string text{ctx};
    KT_vhash *tbls = nullptr;
    KT_TRY(KT_vhash__alloc(ctx, root.out()));
    KT_TRY(KT_vhash__add__int64(ctx, root, "compat_level", LITE_COMPAT_LEVEL));
    KT_TRY(KT_vhash__addnew__vhash(ctx, root, "tbls", &tbls));
    KT_TRY(my_add_tbls(ctx, schema, tbl_ids, tbls));
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(KT_vhash__to_json(ctx, root, text));
    text.move_to(json);
}

static void my_get_tbl(KT_context *ctx, KT_vhash *lite, const char *tbl_id, KT_vhash **tbl) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, lite, "tbls", &tbls));
    KT_TRY(KT_vhash__get__vhash(ctx, tbls, tbl_id, tbl));
}

static void my_get_cols(KT_context *ctx, KT_vhash *lite, const char *tbl_id, KT_vhash **cols) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(my_get_tbl(ctx, lite, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "cols", cols));
}

void tov_schema_lite__count_tbls(KT_context *ctx, KT_vhash *lite, uint32_t *count) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, lite, "tbls", &tbls));
    KT_TRY(KT_vhash__count(ctx, tbls, count));
}

void tov_schema_lite__get_nth_tbl_id(KT_context *ctx, KT_vhash *lite, uint32_t n, const char **tbl_id) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, lite, "tbls", &tbls));
    KT_TRY(KT_vhash__get_nth_pair(ctx, tbls, n, tbl_id, nullptr));
}

void tov_schema_lite__get_tbl_txid(KT_context *ctx, KT_vhash *lite, const char *tbl_id, int64_t *txid) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(my_get_tbl(ctx, lite, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__int64(ctx, tbl, "txid", txid));
}

void tov_schema_lite__count_cols(KT_context *ctx, KT_vhash *lite, const char *tbl_id, uint32_t *count) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_cols(ctx, lite, tbl_id, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, count));
}

void tov_schema_lite__get_nth_col_id(KT_context *ctx, KT_vhash *lite, const char *tbl_id, uint32_t n,
                                     const char **col_id) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_cols(ctx, lite, tbl_id, &cols));
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, col_id, nullptr));
}

void tov_schema_lite__get_col_name(KT_context *ctx, KT_vhash *lite, const char *tbl_id, const char *col_id,
                                   const char **name) noexcept
{
    KT_vhash *cols = nullptr;
    KT_vhash *col = nullptr;
    KT_TRY(my_get_cols(ctx, lite, tbl_id, &cols));
    KT_TRY(KT_vhash__get__vhash(ctx, cols, col_id, &col));
    KT_TRY(KT_vhash__get__sz(ctx, col, "name", name));
}
