// The condition that joins two forms of a table on its key columns, and converts identity values between their two
// forms on the host.

#include "ddl/ddl_text.hpp"
#include "ddl/ddl_walk.hpp"

// One side of the condition. Only a column with an identity root has two forms to convert between.
static uint32_t my_get_conversion(uint32_t mode, const char *root_tbl_id) noexcept
{
    return root_tbl_id ? mode : 0;
}

void tov_schema__get_on_pk_col_names(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *left_alias,
                                     const char *right_alias, uint32_t left_mode, uint32_t right_mode,
                                     KT_string **condition) noexcept
{
    ddl_cols pk_cols = {schema, tbl_id};
    kt_owned_string text{ctx};
    KT_TRY(ddl_get_pk_cols(ctx, &pk_cols));
    KT_TRY(KT_string__alloc(ctx, text.out()));
    for (uint32_t n = 0; n < pk_cols.count; n++) {
        const char *col_id = nullptr;
        KT_vhash *col = nullptr;
        const char *name = nullptr;
        const char *root_tbl_id = nullptr;
        KT_TRY(ddl_get_nth_col(ctx, pk_cols, n, &col_id, &col));
        KT_TRY(ddl_get_col_name(ctx, col, &name));
        if (left_mode || right_mode)
            KT_TRY(tov_schema__find_ipk_root_column(ctx, schema, tbl_id, col_id, &root_tbl_id, nullptr));
        if (n)
            KT_TRY(KT_string__append__sz(ctx, text, " AND "));
        KT_TRY(ddl_append_converted_identity(ctx, text, my_get_conversion(left_mode, root_tbl_id), left_alias, name));
        KT_TRY(KT_string__append__sz(ctx, text, "="));
        KT_TRY(ddl_append_converted_identity(ctx, text, my_get_conversion(right_mode, root_tbl_id), right_alias, name));
    }
    text.move_to(condition);
}
