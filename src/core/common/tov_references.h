/* Foreign-key analysis: who refers to whom, creation order, identity roots, actions left to triggers. */
#ifndef TOV_REFERENCES_H
#define TOV_REFERENCES_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__find_singlecol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                      const char *col_id, KT_vhash **references) KT_NOEXCEPT;

TOV_API void tov_schema__find_multicol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                     KT_vhash **references) KT_NOEXCEPT;

TOV_API void tov_schema__find_references_to_col(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                const char *col_id, KT_vhash **references) KT_NOEXCEPT;

TOV_API void tov_schema__does_tbl_have_fk_constraint_with_delete_action(KT_context *ctx, tov_schema *schema,
                                                                        const char *tbl_id, KT_bool *has) KT_NOEXCEPT;

TOV_API void tov_schema__find_tbls_with_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                      KT_nullhash **tbl_ids) KT_NOEXCEPT;

TOV_API void tov_schema__list_tbls_referenced_by(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 KT_nullhash **tbl_ids) KT_NOEXCEPT;

TOV_API void tov_schema__sort_by_references(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) KT_NOEXCEPT;

TOV_API void tov_schema__find_ipk_root_column(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *col_id, const char **root_tbl_id,
                                              const char **root_col_id) KT_NOEXCEPT;

TOV_API void tov_schema__get_on_pk_col_names(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *left_alias, const char *right_alias, uint32_t left_mode,
                                             uint32_t right_mode, KT_string **condition) KT_NOEXCEPT;

TOV_API void tov_schema__list_fk_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *ref_tbl_id, uint32_t filter, KT_varray **records,
                                             uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__find_references_to_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                KT_bool include_self, uint32_t filter, KT_varray **records,
                                                uint32_t *count) KT_NOEXCEPT;

KT_END_DECLS

#endif
