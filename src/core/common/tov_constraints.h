/* Constraints of columns and tables: not null, default, checks, keys, references. */
#ifndef TOV_CONSTRAINTS_H
#define TOV_CONSTRAINTS_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__set_colcon_notnull(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            KT_bool notnull, const char *name) KT_NOEXCEPT;

TOV_API void tov_schema__get_colcon_notnull(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            KT_bool *value, const char **name) KT_NOEXCEPT;

TOV_API void tov_schema__set_colcon_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool has, const char *name, const char *expr) KT_NOEXCEPT;

TOV_API void tov_schema__get_colcon_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool *value, const char **name, const char **expr) KT_NOEXCEPT;

TOV_API void tov_schema__add_colcon_check(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *name, const char *expr) KT_NOEXCEPT;

TOV_API void tov_schema__count_colcon_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__set_pk_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                     const char *name) KT_NOEXCEPT;

TOV_API void tov_schema__add_to_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                   const char *col_id) KT_NOEXCEPT;

TOV_API void tov_schema__add_to_unique_constraint(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                  const char *col_id, const char *unique_id) KT_NOEXCEPT;

TOV_API void tov_schema__add_check_constraint(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *check_id, const char *expr) KT_NOEXCEPT;

TOV_API void tov_schema__create_foreignkey(KT_context *ctx, tov_schema *schema, const char *fk_id, const char *name,
                                           const char *tbl_id, const char *ref_tbl_id, KT_bool deferred,
                                           const char *on_delete, const char *on_update,
                                           int32_t violation_on_insert) KT_NOEXCEPT;

TOV_API void tov_schema__add_to_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                           const char *col_id, const char *ref_col_id) KT_NOEXCEPT;

TOV_API void tov_schema__nevermind_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *fk_id) KT_NOEXCEPT;

TOV_API void tov_schema__count_foreignkey_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *fk_id, uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_foreignkey_col_ids(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                    const char *fk_id, uint32_t n, const char **col_id,
                                                    const char **ref_col_id) KT_NOEXCEPT;

TOV_API void tov_schema__set_colcon_fk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_bool has, const char *fk_id, const char *name, const char *ref_tbl_id,
                                       const char *ref_col_id, KT_bool deferred, const char *on_delete,
                                       const char *on_update, int32_t violation_on_insert) KT_NOEXCEPT;

TOV_API void tov_schema__get_colcon_fk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_bool *value, const char **name, const char **ref_tbl_id,
                                       const char **ref_col_id, const char **on_delete,
                                       const char **on_update) KT_NOEXCEPT;

TOV_API void tov_schema__get_fk_rules(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      KT_vhash **rules) KT_NOEXCEPT;

KT_END_DECLS

#endif
