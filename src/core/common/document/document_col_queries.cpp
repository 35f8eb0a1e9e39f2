// Questions about the columns of a table: how many, which, and by what name.
//
// Counts and n-th ids see the prepared columns only; unprepared ones are counted apart.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>

void tov_schema__count_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t *count) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl_cols(ctx, schema, tbl_id, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, count));
}

void tov_schema__get_nth_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                const char **col_id) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl_cols(ctx, schema, tbl_id, &cols));
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, col_id, nullptr));
}

void tov_schema__has_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                            KT_bool *has) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl_cols(ctx, schema, tbl_id, &cols));
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_TRY(KT_vhash__has(ctx, cols, key, has));
}

void tov_schema__get_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              const char **name) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__check__sz(ctx, col, "name", name));
}

static void my_is_col_named(KT_context *ctx, const KT_vhash *col, const char *name, bool *is_named) noexcept
{
    const char *stored = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, col, "name", &stored));
    *is_named = stored && strcmp(stored, name) == 0;
}

static void my_find_prepared_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                 const char **col_id) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(_tov_tbl__get_cols(ctx, tbl, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count && !*col_id; n++) {
        const char *nth_id = nullptr;
        KT_vhash *nth = nullptr;
        bool is_named = false;
        KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, schema, tbl, tbl_id, cols, n, &nth_id, &nth));
        KT_TRY(my_is_col_named(ctx, nth, name, &is_named));
        if (is_named)
            *col_id = nth_id;
    }
}

static void my_find_unprepared_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                   const char **col_id) noexcept
{
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, schema, tbl_id, &cols));
    if (cols)
        KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count && !*col_id; n++) {
        const char *nth_id = nullptr;
        KT_vhash *nth = nullptr;
        bool is_named = false;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, cols, n, &nth_id, &nth));
        KT_TRY(my_is_col_named(ctx, nth, name, &is_named));
        if (is_named)
            *col_id = nth_id;
    }
}

void tov_schema__find_col_by_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                  const char **col_id) noexcept
{
    const char *found = nullptr;
    KT_TRY(my_find_prepared_col(ctx, schema, tbl_id, name, &found));
    if (!found)
        KT_TRY(my_find_unprepared_col(ctx, schema, tbl_id, name, &found));
    *col_id = found;
}

void tov_schema__count_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       uint32_t *count) noexcept
{
    KT_vhash *cols = nullptr;
    uint32_t found = 0;
    KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, schema, tbl_id, &cols));
    if (cols)
        KT_TRY(KT_vhash__count(ctx, cols, &found));
    *count = found;
}

void tov_schema__get_nth_unprepared_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                           const char **col_id) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl_unprepared_cols(ctx, schema, tbl_id, &cols));
    KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, col_id, nullptr));
}
