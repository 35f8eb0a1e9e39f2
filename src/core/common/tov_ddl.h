/* SQLite text: column and constraint definitions, validation statements, column lists; host select lists. */
#ifndef TOV_DDL_H
#define TOV_DDL_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__get_textwidth(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       char **name, KT_bool *pIsText, KT_bool *pIsFixedWidth,
                                       int64_t *pWidth) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_vhash *reference_names, const char **defin) KT_NOEXCEPT;

TOV_API void tov_schema__get_pk_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char **defin) KT_NOEXCEPT;

TOV_API void tov_schema__get_unique_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          const char *unique_id, const char **defin) KT_NOEXCEPT;

TOV_API void tov_schema__get_foreignkey_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *fk_id, const char **defin) KT_NOEXCEPT;

TOV_API void tov_schema__get_check_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *check_id,
                                         const char **defin) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_names_as_vhash(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                KT_vhash **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_converted_col_names_as_vhash(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_bool include_unprepared, KT_vhash **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_pvh_col_names_comma_separated_and_qualified(
    KT_context *ctx, uint32_t mode, tov_schema *schema, const char *tbl_id, KT_vhash *cols, const char *skipped_name,
    const char *qualifier, KT_bool use_hash_values, KT_bool look_up_host_types, KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_validation_expression(KT_context *ctx, const char *abstract_type, int32_t width,
                                                   int32_t precision, int32_t scale, KT_bool notnull,
                                                   const char *col_name, KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_validation_expression(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                       const char *col_id, KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_ids_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                     KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_names_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                       KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_names_comma_separated_and_qualified(KT_context *ctx, tov_schema *schema,
                                                                     const char *tbl_id, const char *qualifier,
                                                                     KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_names_comma_separated_without_pk(KT_context *ctx, tov_schema *schema,
                                                                  const char *tbl_id, KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_pk_col_names_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_pk_col_names_comma_separated__no_fixed_width_cols(KT_context *ctx, tov_schema *schema,
                                                                               const char *tbl_id,
                                                                               KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_pk_col_names_comma_separated_and_prefixed(KT_context *ctx, tov_schema *schema,
                                                                       const char *tbl_id, const char *prefix,
                                                                       KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_pk_col_names_comma_separated_and_qualified(KT_context *ctx, tov_schema *schema,
                                                                        const char *tbl_id, const char *qualifier,
                                                                        KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_converted_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                const char *col_name, const char *qualifier,
                                                KT_string **result) KT_NOEXCEPT;

TOV_API void tov_schema__get_pk_col_names_converted(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                    const char *qualifier, KT_string **result) KT_NOEXCEPT;

KT_END_DECLS

#endif
