/* Counts, n-th ids, membership, lookups by name, and what the primary key of a table is. */
#ifndef TOV_QUERIES_H
#define TOV_QUERIES_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__count_tbls(KT_context *ctx, tov_schema *schema, uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_tbl_id(KT_context *ctx, tov_schema *schema, uint32_t n,
                                        const char **tbl_id) KT_NOEXCEPT;

TOV_API void tov_schema__has_tbl_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool *has) KT_NOEXCEPT;

TOV_API void tov_schema__get_tbl_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char **name) KT_NOEXCEPT;

TOV_API void tov_schema__find_tbl_by_name(KT_context *ctx, tov_schema *schema, const char *name,
                                          const char **tbl_id) KT_NOEXCEPT;

TOV_API void tov_schema__get_tbl_names_vhash(KT_context *ctx, tov_schema *schema, KT_vhash **names) KT_NOEXCEPT;

TOV_API void tov_schema__count_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                    uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                        const char **col_id) KT_NOEXCEPT;

TOV_API void tov_schema__has_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    KT_bool *value) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char **name) KT_NOEXCEPT;

TOV_API void tov_schema__find_col_by_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                          const char **col_id) KT_NOEXCEPT;

TOV_API void tov_schema__count_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_unprepared_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                                   const char **col_id) KT_NOEXCEPT;

TOV_API void tov_schema__count_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                           uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_foreignkey_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                               const char **fk_id) KT_NOEXCEPT;

TOV_API void tov_schema__get_foreignkey_ref_tbl_id(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                   const char *fk_id, const char **ref_tbl_id) KT_NOEXCEPT;

TOV_API void tov_schema__get_foreignkey_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                             const char **name) KT_NOEXCEPT;

TOV_API void tov_schema__get_foreignkey_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                      const char *fk_id, const char **action) KT_NOEXCEPT;

TOV_API void tov_schema__count_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_unique_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                           const char **unique_id) KT_NOEXCEPT;

TOV_API void tov_schema__count_unique_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                           const char *unique_id, uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_unique_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *unique_id, uint32_t n, const char **col_id) KT_NOEXCEPT;

TOV_API void tov_schema__is_col_id_in_unique(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, KT_bool *value) KT_NOEXCEPT;

TOV_API void tov_schema__count_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_check_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                          const char **check_id) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_is_integer_primary_key(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                        const char *col_id, KT_bool *value,
                                                        const char **constraint_name) KT_NOEXCEPT;

TOV_API void tov_schema__has_integer_primary_key(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char **col_id) KT_NOEXCEPT;

TOV_API void tov_schema__count_pk_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema__get_nth_pk_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                        const char **col_id, const char **col_name) KT_NOEXCEPT;

TOV_API void tov_schema__is_col_id_in_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         KT_bool *value) KT_NOEXCEPT;

KT_END_DECLS

#endif
