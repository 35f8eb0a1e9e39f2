// Walks over the columns of a table, or over those of its primary key, shared by the lists.
#pragma once

#include "document/tov_parse_defin_private.hpp"

// The columns that a list visits: count of them, each given by ddl_get_nth_col().
struct ddl_cols {
    tov_schema *schema;
    const char *tbl_id;
    KT_vhash *tbl = nullptr;
    KT_vhash *cols = nullptr; // null when the columns are those of the primary key
    uint32_t count = 0;
};

// All prepared columns, in table order.
inline void ddl_get_cols(KT_context *ctx, ddl_cols *walk) noexcept
{
    KT_TRY(_tov_schema__get_tbl(ctx, walk->schema, walk->tbl_id, &walk->tbl));
    KT_TRY(_tov_tbl__get_cols(ctx, walk->tbl, &walk->cols));
    KT_TRY(KT_vhash__count(ctx, walk->cols, &walk->count));
}

// The columns of the primary key, in key order: the identity column alone, when there is one.
inline void ddl_get_pk_cols(KT_context *ctx, ddl_cols *walk) noexcept
{
    KT_TRY(_tov_schema__get_tbl(ctx, walk->schema, walk->tbl_id, &walk->tbl));
    KT_TRY(_tov_tbl__count_pk_cols(ctx, walk->schema, walk->tbl, walk->tbl_id, &walk->count));
}

// The n-th column; col_id is optional.
inline void ddl_get_nth_col(KT_context *ctx, const ddl_cols &walk, uint32_t n, const char **col_id,
                            KT_vhash **col) noexcept
{
    if (walk.cols) {
        KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, walk.schema, walk.tbl, walk.tbl_id, walk.cols, n, col_id, col));
        return;
    }
    const char *pk_col_id = nullptr;
    KT_TRY(_tov_tbl__get_nth_pk_col(ctx, walk.schema, walk.tbl, walk.tbl_id, n, &pk_col_id, nullptr));
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, walk.schema, walk.tbl, walk.tbl_id, pk_col_id, col));
    if (col_id)
        *col_id = pk_col_id;
}
