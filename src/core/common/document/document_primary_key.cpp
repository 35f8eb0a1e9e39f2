// What the primary key of a table is.
//
// A column of type "identity" is the table's integer primary key and alone is its primary key, whatever the
// "pk" record says; without one the "pk" record decides. Only prepared columns count, in column order.

#include "document/tov_parse_defin_private.hpp"

#include <cstring>

void _tov_col__is_integer_primary_key(KT_context *ctx, const KT_vhash *col, KT_bool *is_integer_pk,
                                      const char **constraint_name) noexcept
{
    KT_vhash *type = nullptr;
    const char *abstract_type = nullptr;
    const char *name = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__get__sz(ctx, type, "name", &abstract_type));
    const bool is_identity = strcmp(abstract_type, "identity") == 0;
    if (is_identity && constraint_name)
        KT_TRY(KT_vhash__check__sz(ctx, type, "constraint_name", &name));
    *is_integer_pk = is_identity;
    if (constraint_name)
        *constraint_name = name;
}

void tov_schema__get_col_is_integer_primary_key(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                const char *col_id, KT_bool *is_integer_pk,
                                                const char **constraint_name) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__is_integer_primary_key(ctx, col, is_integer_pk, constraint_name));
}

struct my_integer_pk {
    const char *col_id; // null when the table has none
    KT_vhash *col;
    // Whether a pair held no record of its own: what was found for it may depend on how the table's id was spelled.
    bool is_by_spelling;
};

static void my_look_at_nth_col(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                               const KT_vhash *cols, uint32_t n, my_integer_pk *found) noexcept
{
    const char *id = nullptr;
    const KT_variant *own = nullptr;
    KT_vhash *col = nullptr;
    KT_bool is_integer_pk = 0;
    KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, schema, tbl, tbl_id, cols, n, &id, &col));
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, nullptr, &own));
    KT_TRY(_tov_col__is_integer_primary_key(ctx, col, &is_integer_pk, nullptr));
    if (own->type != KT_VARIANT_VHASH || own->as.vhash != col)
        found->is_by_spelling = true;
    if (is_integer_pk) {
        found->col_id = id;
        found->col = col;
    }
}

static void my_search_integer_primary_key(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                          my_integer_pk *found) noexcept
{
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_tbl__get_cols(ctx, tbl, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count && !found->col; n++)
        KT_TRY(my_look_at_nth_col(ctx, schema, tbl, tbl_id, cols, n, found));
}

void _tov_tbl__find_integer_primary_key(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                        const char **col_id, KT_vhash **col) noexcept
{
    auto &known = schema->integer_pk;
    my_integer_pk found = {known.col_id, known.col, false};
    if (known.tbl != tbl || known.change_count != schema->change_count) {
        found = {};
        KT_TRY(my_search_integer_primary_key(ctx, schema, tbl, tbl_id, &found));
        known = {found.is_by_spelling ? nullptr : tbl, schema->change_count, found.col_id, found.col};
    }
    if (col_id)
        *col_id = found.col_id;
    if (col)
        *col = found.col;
}

void tov_schema__has_integer_primary_key(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                         const char **col_id) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__find_integer_primary_key(ctx, schema, tbl, tbl_id, col_id, nullptr));
}

// The columns that the "pk" record lists, created empty when it has none; null when the table has no such record.
static void my_check_pk_record_cols(KT_context *ctx, KT_vhash *tbl, KT_vhash **pk_cols) noexcept
{
    KT_vhash *pk = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "pk", &pk));
    if (pk)
        KT_TRY(KT_vhash__ensure__vhash(ctx, pk, "cols", &cols));
    *pk_cols = cols;
}

void _tov_tbl__count_pk_cols(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                             uint32_t *count) noexcept
{
    KT_vhash *integer_pk = nullptr;
    KT_TRY(_tov_tbl__find_integer_primary_key(ctx, schema, tbl, tbl_id, nullptr, &integer_pk));
    if (integer_pk) {
        *count = 1;
        return;
    }
    uint32_t found = 0;
    KT_vhash *pk_cols = nullptr;
    KT_TRY(my_check_pk_record_cols(ctx, tbl, &pk_cols));
    if (pk_cols)
        KT_TRY(KT_vhash__count(ctx, pk_cols, &found));
    *count = found;
}

void tov_schema__count_pk_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t *count) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__count_pk_cols(ctx, schema, tbl, tbl_id, count));
}

static void my_get_nth_pk_record_col_id(KT_context *ctx, KT_vhash *tbl, uint32_t n, const char **col_id) noexcept
{
    KT_vhash *pk = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "pk", &pk));
    KT_TRY(KT_vhash__ensure__vhash(ctx, pk, "cols", &cols));
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, col_id, nullptr));
}

void _tov_tbl__get_nth_pk_col(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id, uint32_t n,
                              const char **col_id, const char **col_name) noexcept
{
    const char *id = nullptr;
    KT_vhash *col = nullptr;
    const char *name = nullptr;
    // Past the first column the "pk" record is asked even when the table has an integer primary key.
    if (n == 0)
        KT_TRY(_tov_tbl__find_integer_primary_key(ctx, schema, tbl, tbl_id, &id, &col));
    if (!id)
        KT_TRY(my_get_nth_pk_record_col_id(ctx, tbl, n, &id));
    if (col_name) {
        if (!col)
            KT_TRY(_tov_schema__get_col_in_tbl(ctx, schema, tbl, tbl_id, id, &col));
        KT_TRY(KT_vhash__check__sz(ctx, col, "name", &name));
        *col_name = name;
    }
    if (col_id)
        *col_id = id;
}

void tov_schema__get_nth_pk_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                const char **col_id, const char **col_name) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__get_nth_pk_col(ctx, schema, tbl, tbl_id, n, col_id, col_name));
}

void _tov_tbl__is_col_id_in_pk(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                               const char *col_id, KT_bool *is_in_pk) noexcept
{
    const char *integer_pk_id = nullptr;
    KT_TRY(_tov_tbl__find_integer_primary_key(ctx, schema, tbl, tbl_id, &integer_pk_id, nullptr));
    if (integer_pk_id) {
        *is_in_pk = strcmp(col_id, integer_pk_id) == 0;
        return;
    }
    KT_bool listed = 0;
    KT_vhash *pk_cols = nullptr;
    KT_TRY(my_check_pk_record_cols(ctx, tbl, &pk_cols));
    if (pk_cols)
        KT_TRY(KT_vhash__has(ctx, pk_cols, col_id, &listed));
    *is_in_pk = listed;
}

void tov_schema__is_col_id_in_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                 KT_bool *is_in_pk) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__is_col_id_in_pk(ctx, schema, tbl, tbl_id, col_id, is_in_pk));
}
