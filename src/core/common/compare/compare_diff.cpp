// Comparing two schemas: which tables and columns only one of them has, and which tables have changed.
//
// Tables and columns are compared by id alone. Whether a table's definition has changed is told by its transaction
// id, and only when both sides carry one (0 stands for none). Each category is a list of ids, made when its first id
// is found, so that an empty category stays null; a list that exists already is appended to. What was appended
// before a failure stays.
#include "compare/tov_compare_private.hpp"
#include "document/document_ids.hpp"

// Appends to a list that may not be wanted (null address) or not be there yet (null list).
static void my_append_id(KT_context *ctx, KT_varray **list, const char *id) noexcept
{
    if (!list)
        return;
    if (*list) {
        KT_TRY(KT_varray__append__string__sz(ctx, *list, id));
        return;
    }
    kt_owned_varray fresh{ctx};
    KT_TRY(KT_varray__alloc(ctx, fresh.out()));
    KT_TRY(KT_varray__append__string__sz(ctx, fresh, id));
    fresh.move_to(list);
}

static void my_has_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool *has) noexcept
{
    *has = 0;
    if (schema)
        KT_TRY(tov_schema__has_tbl_id(ctx, schema, tbl_id, has));
}

static void my_is_tbl_changed(KT_context *ctx, tov_schema *x, tov_schema *y, const char *tbl_id, bool *changed) noexcept
{
    int64_t x_txid = 0;
    int64_t y_txid = 0;
    KT_TRY(tov_schema__check_tbl_txid(ctx, x, tbl_id, &x_txid));
    KT_TRY(tov_schema__check_tbl_txid(ctx, y, tbl_id, &y_txid));
    *changed = x_txid != 0 && y_txid != 0 && x_txid != y_txid;
}

void _tov_diff_loop_tbls(KT_context *ctx, tov_schema *x, tov_schema *y, KT_varray **missing, KT_varray **same,
                         KT_varray **changed) noexcept
{
    if (!x)
        return;
    uint32_t count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, x, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        KT_bool in_both = 0;
        bool is_changed = false;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, x, n, &tbl_id));
        KT_TRY(my_has_tbl(ctx, y, tbl_id, &in_both));
        if (in_both)
            KT_TRY(my_is_tbl_changed(ctx, x, y, tbl_id, &is_changed));
        KT_TRY(my_append_id(ctx, !in_both ? missing : is_changed ? changed : same, tbl_id));
    }
}

static void my_has_col(KT_context *ctx, const KT_vhash *cols, const char *col_id, KT_bool *has) noexcept
{
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_TRY(KT_vhash__has(ctx, cols, key, has));
}

void _tov_diff_loop_cols(KT_context *ctx, tov_schema *x, tov_schema *y, const char *tbl_id, KT_varray **missing,
                         KT_varray **both) noexcept
{
    KT_vhash *x_cols = nullptr;
    KT_vhash *y_cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_schema__get_tbl_cols(ctx, x, tbl_id, &x_cols));
    KT_TRY(KT_vhash__count(ctx, x_cols, &count));
    // Without a column to look for, y is not asked.
    if (count)
        KT_TRY(_tov_schema__get_tbl_cols(ctx, y, tbl_id, &y_cols));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_bool in_both = 0;
        KT_TRY(KT_vhash__get_nth_pair(ctx, x_cols, n, &col_id, nullptr));
        KT_TRY(my_has_col(ctx, y_cols, col_id, &in_both));
        KT_TRY(my_append_id(ctx, in_both ? both : missing, col_id));
    }
}

void tov_schema__list_tbls(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) noexcept
{
    KT_RETURN_IF_FAILED;
    if (!schema)
        return;
    if (!tbl_ids)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "tbl_ids is null");
    // Compared with nothing, every table is missing.
    KT_TRY(_tov_diff_loop_tbls(ctx, schema, nullptr, tbl_ids, nullptr, nullptr));
}

void tov_schema__diff_tbls(KT_context *ctx, tov_schema *a, tov_schema *b, KT_varray **only_in_a, KT_varray **only_in_b,
                           KT_varray **in_both_same, KT_varray **in_both_changed) noexcept
{
    KT_TRY(_tov_diff_loop_tbls(ctx, a, b, only_in_a, in_both_same, in_both_changed));
    KT_TRY(_tov_diff_loop_tbls(ctx, b, a, only_in_b, nullptr, nullptr));
}

void tov_schema__diff_cols(KT_context *ctx, tov_schema *a, tov_schema *b, const char *tbl_id, KT_varray **only_in_a,
                           KT_varray **only_in_b, KT_varray **in_both) noexcept
{
    KT_TRY(_tov_diff_loop_cols(ctx, a, b, tbl_id, only_in_a, in_both));
    KT_TRY(_tov_diff_loop_cols(ctx, b, a, tbl_id, only_in_b, nullptr));
}
