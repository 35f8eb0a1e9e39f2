/*
 * Comparing two schemas, and the lite schema.
 *
 * The lists that the comparing operations fill hold table ids or column ids as strings, in the order of the schema
 * that is walked. Each is passed as the address of a list pointer: a null pointer becomes a new list, owned, with the
 * first id found and stays null when there is none; a list that exists already is appended to. Lists keep what was
 * appended before a failure.
 */
#ifndef TOV_COMPARE_H
#define TOV_COMPARE_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * Lists the ids of all tables of a schema.
 *
 * @param schema        optional; a null schema has no tables.
 * @param[out] tbl_ids  a list as described above.
 */
TOV_API void tov_schema__list_tbls(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) KT_NOEXCEPT;

/**
 * Compares the tables of two schemas by id and transaction id.
 *
 * A table of both has changed when both transaction ids are other than 0 and differ, and is the same otherwise; what
 * the tables hold is not compared.
 *
 *
 * @code{.c}
 * #include "tov_parse_defin.h"
 *
 * // How many tables were added or have changed.
 * uint32_t count_news(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema)
 * {
 *     KT_varray *news = NULL; // one list for both: what is found is appended
 *     uint32_t count = 0;
 *     tov_schema__diff_tbls(ctx, old_schema, new_schema, NULL, &news, NULL, &news);
 *     if (news)
 *         KT_varray__count(ctx, news, &count);
 *     KT_varray__free(ctx, news);
 *     return count;
 * }
 * @endcode
 * @param a, b  optional; a null schema has no tables.
 * @param[out] only_in_a, in_both_same, in_both_changed  lists as described above, in the order of a; each address is
 *              optional, null when the category is not wanted.
 * @param[out] only_in_b  likewise, in the order of b.
 */
TOV_API void tov_schema__diff_tbls(KT_context *ctx, tov_schema *a, tov_schema *b, KT_varray **only_in_a,
                                   KT_varray **only_in_b, KT_varray **in_both_same,
                                   KT_varray **in_both_changed) KT_NOEXCEPT;

/**
 * Compares a table's columns in two schemas by id; their types are not compared, and unprepared columns not seen.
 *
 * @param[out] only_in_a, in_both  lists as described above, in the order of a; each address is optional.
 * @param[out] only_in_b           likewise, in the order of b.
 *
 * Fails with KT_ERR_NOT_FOUND unless both schemas have the table.
 */
TOV_API void tov_schema__diff_cols(KT_context *ctx, tov_schema *a, tov_schema *b, const char *tbl_id,
                                   KT_varray **only_in_a, KT_varray **only_in_b, KT_varray **in_both) KT_NOEXCEPT;

/**
 * Builds the lite schema of a set of tables: for each its transaction id (0 when it has none) and the names of its
 * prepared columns, enough to tell whether a copy of the table is current. As JSON text, e.g.
 * {"compat_level":1,"tbls":{"t1":{"txid":42,"cols":{"c1":{"name":"Id"},"c2":{"name":"Title"}}}}}.
 *
 * @param tbl_ids    the tables, in the order wanted; each appears in the result under its id as written here.
 * @param[out] json  owned; freed with KT_string__free().
 */
TOV_API void tov_schema__lite(KT_context *ctx, tov_schema *schema, KT_nullhash *tbl_ids, KT_string **json) KT_NOEXCEPT;

/*
 * Readers of a lite schema that has been parsed with KT_vhash__alloc__from_json__sz(). Ids are matched exactly, as
 * they are in the document. Strings are borrowed from the document. An id that it lacks is KT_ERR_KEY_NOT_FOUND, a
 * position beyond the end KT_ERR_OUT_OF_RANGE, and a value of another type than expected KT_ERR_WRONG_TYPE.
 */

/** The number of tables. */
TOV_API void tov_schema_lite__count_tbls(KT_context *ctx, KT_vhash *lite, uint32_t *count) KT_NOEXCEPT;

/** The id of the n-th table, counted from 0. */
TOV_API void tov_schema_lite__get_nth_tbl_id(KT_context *ctx, KT_vhash *lite, uint32_t n,
                                             const char **tbl_id) KT_NOEXCEPT;

/** The transaction id of a table, 0 when it had none. */
TOV_API void tov_schema_lite__get_tbl_txid(KT_context *ctx, KT_vhash *lite, const char *tbl_id,
                                           int64_t *txid) KT_NOEXCEPT;

/** The number of columns of a table. */
TOV_API void tov_schema_lite__count_cols(KT_context *ctx, KT_vhash *lite, const char *tbl_id,
                                         uint32_t *count) KT_NOEXCEPT;

/** The id of the n-th column of a table, counted from 0. */
TOV_API void tov_schema_lite__get_nth_col_id(KT_context *ctx, KT_vhash *lite, const char *tbl_id, uint32_t n,
                                             const char **col_id) KT_NOEXCEPT;

/** The name of a column. */
TOV_API void tov_schema_lite__get_col_name(KT_context *ctx, KT_vhash *lite, const char *tbl_id, const char *col_id,
                                           const char **name) KT_NOEXCEPT;

KT_END_DECLS

#endif
