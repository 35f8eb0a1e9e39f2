/*
 * What values a column holds, and what the host says of it.
 *
 * A column's type is recorded whole: each set_col_type operation drops everything that an earlier one recorded.
 * Widths are in characters for text and in bytes for blobs; one that is not above 0 means no limit. Precision and scale
 * are numbers of digits.
 *
 * The get_col_type operations fail with KT_ERR_KEY_NOT_FOUND for a column whose type was never set.
 */
#ifndef TOV_COL_TYPES_H
#define TOV_COL_TYPES_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * Makes a column the table's identity column, "identity", which is its integer primary key whatever else is recorded.
 * @param constraint_name  optional; the name of the host's primary-key constraint.
 */
TOV_API void tov_schema__set_col_type_identity(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, const char *constraint_name) KT_NOEXCEPT;

/** Gives a column a type without further fields, such as "sint32", "guid" or "loose/text". Any name is taken. */
TOV_API void tov_schema__set_col_type_simple(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, const char *abstract_type) KT_NOEXCEPT;

/** Gives a column the type "decimal". */
TOV_API void tov_schema__set_col_type_decimal(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *col_id, uint8_t precision, uint8_t scale) KT_NOEXCEPT;

/**
 * Gives a column the type "blob".
 * @param fixed_width  true exactly when its low byte is 1.
 */
TOV_API void tov_schema__set_col_type_blob(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool fixed_width, uint32_t width) KT_NOEXCEPT;

/** Gives a column the type "time". */
TOV_API void tov_schema__set_col_type_time(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           uint8_t precision) KT_NOEXCEPT;

/**
 * Gives a column the type "datetime".
 * @param host_type  optional; unless it is exactly "datetime2" it is recorded like a host collation, which is where
 *                   the host side looks for it.
 */
TOV_API void tov_schema__set_col_type_datetime(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, uint8_t precision,
                                               const char *host_type) KT_NOEXCEPT;

/**
 * Gives a column the type "text".
 *
 * @param host_collation  optional; recorded as tov_schema__set_host_collation() does.
 * @param locale          optional.
 * @param binary          nonzero: values compare byte for byte, and the five flags that follow are not recorded.
 * @param noaccent        accents are ignored; true exactly when its low byte is 1.
 * @param nocase          case is ignored; true exactly when its low byte is 1.
 * @param ks              nonzero: the collation tells kana types apart ("_KS").
 * @param ws              nonzero: it tells widths apart ("_WS").
 * @param sc              nonzero: it knows supplementary characters ("_SC").
 * @param fixed_width     true exactly when its low byte is 1.
 * @param unicode         true exactly when its low byte is 1.
 */
TOV_API void tov_schema__set_col_type_text(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           const char *host_collation, const char *locale, KT_bool binary,
                                           KT_bool noaccent, KT_bool nocase, KT_bool ks, KT_bool ws, KT_bool sc,
                                           KT_bool fixed_width, KT_bool unicode, uint32_t width) KT_NOEXCEPT;

/** Records that a column's host type has no abstract type: "host", with the host's name for it. */
TOV_API void tov_schema__set_col_type_unsuported(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char *host_type) KT_NOEXCEPT;

/**
 * Records the host's own name for a column's type.
 * @param host_type  optional; null does nothing, not even look the column up.
 * Fails with KT_ERR_NULL_ARGUMENT: null schema, table id or column id.
 */
TOV_API void tov_schema__set_mssql_col_type_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char *host_type) KT_NOEXCEPT;

/**
 * Records a column's host collation. Both ids are kept as they are, and neither table nor column need exist.
 * @param collation  optional; null does nothing.
 */
TOV_API void tov_schema__set_host_collation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            const char *collation) KT_NOEXCEPT;

/**
 * Records a column's default as the host wrote it; otherwise like tov_schema__set_host_collation().
 * @param expr  optional; null does nothing.
 */
TOV_API void tov_schema__set_host_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char *expr) KT_NOEXCEPT;

/**
 * Gives a column's type.
 *
 * @param[out] abstract_type  optional; borrowed. Null when the type has no name.
 * @param[out] sqlite_typeof  optional; what SQLite's typeof() says of the values: a constant string, "" for an unknown
 *                            type, null when the type has no name.
 */
TOV_API void tov_schema__get_col_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char **abstract_type, const char **sqlite_typeof) KT_NOEXCEPT;

/**
 * Whether a column's values are Unicode.
 * @param[out] has    whether its type says so at all.
 * @param[out] value  left untouched when has is 0.
 */
TOV_API void tov_schema__get_col_type__unicode(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, KT_bool *has, KT_bool *value) KT_NOEXCEPT;

/** Whether a column's values all have its width; otherwise like tov_schema__get_col_type__unicode(). */
TOV_API void tov_schema__get_col_type__fixed_width(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                   const char *col_id, KT_bool *has, KT_bool *value) KT_NOEXCEPT;

/** Gives the scale of a column's type, -1 when it has none. */
TOV_API void tov_schema__get_col_type__scale(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, int32_t *scale) KT_NOEXCEPT;

/** Gives the precision of a column's type, -1 when it has none. */
TOV_API void tov_schema__get_col_type__precision(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, int32_t *precision) KT_NOEXCEPT;

/**
 * Gives the width of a column's type, -1 when it has none. A width of 2147483648 or more reads as the same 32 bits,
 * that is negative: 4294967295 gives -1 too.
 */
TOV_API void tov_schema__get_col_type__width(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, int32_t *width) KT_NOEXCEPT;

/** Gives the host's type name from tov_schema__set_col_type_unsuported(), borrowed; null for any other type. */
TOV_API void tov_schema__get_col_type__host_type(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char **host_type) KT_NOEXCEPT;

/**
 * Gives the host's own name for a column's type.
 * @param[out] host_type  optional, null does nothing; borrowed. Becomes null when the name or column does not exist.
 * Fails with KT_ERR_NULL_ARGUMENT: null schema, table id or column id; KT_ERR_KEY_NOT_FOUND: no name is recorded.
 */
TOV_API void tov_schema__get_mssql_col_type_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, const char **host_type) KT_NOEXCEPT;

/**
 * Gives a column's host collation. Both ids match exactly; neither table nor column need exist.
 * @param[out] collation  borrowed. Preset it to null: it is left untouched when nothing is recorded for the table,
 *                        and becomes null when something is, but not for this column.
 */
TOV_API void tov_schema__get_host_collation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            const char **collation) KT_NOEXCEPT;

/** Gives a column's default as the host wrote it; otherwise like tov_schema__get_host_collation(). */
TOV_API void tov_schema__get_host_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char **expr) KT_NOEXCEPT;

/** Whether a host type is one of "geography", "geometry", "hierarchyid", in any case. Null is none of them. */
TOV_API KT_bool tov_schema__is_mssql_spatial_col_type(const char *host_type) KT_NOEXCEPT;

KT_END_DECLS

#endif
