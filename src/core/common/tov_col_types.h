/* What values a column holds, and what the host says of it. */
#ifndef TOV_COL_TYPES_H
#define TOV_COL_TYPES_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__set_col_type_identity(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, const char *constraint_name) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_simple(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, const char *abstract_type) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_decimal(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *col_id, uint8_t precision, uint8_t scale) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_blob(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool fixed_width, uint32_t width) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_time(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           uint8_t precision) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_datetime(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, uint8_t precision,
                                               const char *host_type) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_text(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           const char *host_collation, const char *locale, KT_bool binary,
                                           KT_bool noaccent, KT_bool nocase, KT_bool ks, KT_bool ws, KT_bool sc,
                                           KT_bool fixed_width, KT_bool unicode, uint32_t width) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_type_unsuported(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char *host_type) KT_NOEXCEPT;

TOV_API void tov_schema__set_mssql_col_type_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char *host_type) KT_NOEXCEPT;

TOV_API void tov_schema__set_host_collation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            const char *collation) KT_NOEXCEPT;

TOV_API void tov_schema__set_host_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char *expr) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char **abstract_type, const char **sqlite_typeof) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type__unicode(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, KT_bool *has, KT_bool *value) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type__fixed_width(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                   const char *col_id, KT_bool *has, KT_bool *value) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type__scale(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, int32_t *value) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type__precision(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, int32_t *value) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type__width(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, int32_t *value) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_type__host_type(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char **host_type) KT_NOEXCEPT;

TOV_API void tov_schema__get_mssql_col_type_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char **host_type) KT_NOEXCEPT;

TOV_API void tov_schema__get_host_collation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            const char **collation) KT_NOEXCEPT;

TOV_API void tov_schema__get_host_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char **expr) KT_NOEXCEPT;

TOV_API KT_bool tov_schema__is_mssql_spatial_col_type(const char *host_type) KT_NOEXCEPT;

KT_END_DECLS

#endif
