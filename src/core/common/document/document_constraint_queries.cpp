// Questions about the unique constraints and checks of a table. Ids in them match exactly.

#include "document/tov_parse_defin_private.hpp"

static void my_check_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **uniques,
                             uint32_t *count) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_vhash *found = nullptr;
    uint32_t found_count = 0;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "uniques", &found));
    if (found)
        KT_TRY(KT_vhash__count(ctx, found, &found_count));
    *uniques = found;
    *count = found_count;
}

void tov_schema__count_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t *count) noexcept
{
    KT_vhash *uniques = nullptr;
    KT_TRY(my_check_uniques(ctx, schema, tbl_id, &uniques, count));
}

void tov_schema__get_nth_unique_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                   const char **unique_id) noexcept
{
    KT_vhash *uniques = nullptr;
    KT_TRY(_tov_schema__get_uniques(ctx, schema, tbl_id, &uniques));
    KT_TRY(KT_vhash__get_nth_pair(ctx, uniques, n, unique_id, nullptr));
}

static void my_get_unique_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *unique_id,
                               KT_vhash **cols) noexcept
{
    KT_vhash *uniques = nullptr;
    KT_TRY(_tov_schema__get_uniques(ctx, schema, tbl_id, &uniques));
    KT_TRY(KT_vhash__get__vhash(ctx, uniques, unique_id, cols));
}

void tov_schema__count_unique_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *unique_id,
                                   uint32_t *count) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_unique_cols(ctx, schema, tbl_id, unique_id, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, count));
}

void tov_schema__get_nth_unique_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *unique_id,
                                       uint32_t n, const char **col_id) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_unique_cols(ctx, schema, tbl_id, unique_id, &cols));
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, col_id, nullptr));
}

void tov_schema__is_col_id_in_unique(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                     KT_bool *is_in_unique) noexcept
{
    KT_vhash *uniques = nullptr;
    uint32_t count = 0;
    KT_bool listed = 0;
    KT_TRY(my_check_uniques(ctx, schema, tbl_id, &uniques, &count));
    for (uint32_t n = 0; n < count && !listed; n++) {
        KT_vhash *cols = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, uniques, n, nullptr, &cols));
        KT_TRY(KT_vhash__has(ctx, cols, col_id, &listed));
    }
    *is_in_unique = listed;
}

void tov_schema__count_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t *count) noexcept
{
    KT_vhash *checks = nullptr;
    KT_TRY(_tov_schema__get_checks(ctx, schema, tbl_id, &checks));
    KT_TRY(KT_vhash__count(ctx, checks, count));
}

void tov_schema__get_nth_check_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                  const char **check_id) noexcept
{
    KT_vhash *checks = nullptr;
    KT_TRY(_tov_schema__get_checks(ctx, schema, tbl_id, &checks));
    KT_TRY(KT_vhash__get_nth_pair(ctx, checks, n, check_id, nullptr));
}
