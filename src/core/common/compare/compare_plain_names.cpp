// The walks of the comparison under their plain names; defval_plain_names.cpp says what for.

#include "compare/tov_compare_private.hpp"
#include "document/tov_plain_name.hpp"

extern "C" {

TOV_PLAIN_NAME void my_diff_loop_tbls(KT_context *ctx, tov_schema *x, tov_schema *y, KT_varray **missing,
                                      KT_varray **same, KT_varray **changed) noexcept;
TOV_PLAIN_NAME void my_diff_loop_cols(KT_context *ctx, tov_schema *x, tov_schema *y, const char *tbl_id,
                                      KT_varray **missing, KT_varray **both) noexcept;

void my_diff_loop_tbls(KT_context *ctx, tov_schema *x, tov_schema *y, KT_varray **missing, KT_varray **same,
                       KT_varray **changed) noexcept
{
    _tov_diff_loop_tbls(ctx, x, y, missing, same, changed);
}

void my_diff_loop_cols(KT_context *ctx, tov_schema *x, tov_schema *y, const char *tbl_id, KT_varray **missing,
                       KT_varray **both) noexcept
{
    _tov_diff_loop_cols(ctx, x, y, tbl_id, missing, both);
}

} // extern "C"
