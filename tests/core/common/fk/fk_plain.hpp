// The foreign-key analysis as its rules read, step by step through the public operations, with no thought of cost:
// what the module answers is compared with this.
#pragma once

#include "kt_test.hpp"
#include "tov_parse_defin.h"

// The order of tables by repeated passes; ended says whether the passes came to an end within the limit.
void plain_sort_by_references(KT_context *ctx, tov_schema *schema, int pass_limit, bool *ended,
                              KT_varray **tbl_ids) noexcept;
// The root of a column; ended says whether the search came to an end within a depth.
void plain_find_ipk_root_column(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                int depth_limit, bool *ended, const char **root_tbl_id,
                                const char **root_col_id) noexcept;

void plain_find_singlecol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                        KT_vhash **references) noexcept;
void plain_find_multicol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       KT_vhash **references) noexcept;
void plain_find_references_to_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                  KT_vhash **references) noexcept;
void plain_does_tbl_have_fk_constraint_with_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_bool *has) noexcept;
void plain_find_tbls_with_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                        KT_nullhash **tbl_ids) noexcept;
void plain_list_tbls_referenced_by(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                   KT_nullhash **tbl_ids) noexcept;
void plain_list_fk_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *ref_tbl_id,
                               uint32_t filter, KT_varray **records, uint32_t *count) noexcept;
void plain_find_references_to_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool include_self,
                                  uint32_t filter, KT_varray **records, uint32_t *count) noexcept;
