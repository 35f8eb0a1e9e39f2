// The two walks behind the comparison of schemas. Not exported; the static library's users (tests) can link them.
#pragma once

#include "document/tov_parse_defin_private.hpp"

extern "C" {

// Sorts the ids of x's tables into those that y lacks, those it has unchanged and those it has changed, in x's order.
// A null x has no tables and a null y lacks all. The address of a list is optional: null means not wanted.
void _tov_diff_loop_tbls(KT_context *ctx, tov_schema *x, tov_schema *y, KT_varray **missing, KT_varray **same,
                         KT_varray **changed) noexcept;

// Sorts the ids of the table's columns in x into those that y's table lacks and those it has, in x's order.
void _tov_diff_loop_cols(KT_context *ctx, tov_schema *x, tov_schema *y, const char *tbl_id, KT_varray **missing,
                         KT_varray **both) noexcept;

} // extern "C"
