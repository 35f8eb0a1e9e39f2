/*
 * Counts, n-th ids, membership, lookups by name, and what the primary key of a table is.
 *
 * Everything is walked as a count and the n-th ids below it, counted from 0, in the order in which it was added. Ids
 * and names that come out are borrowed. Ids of tables and columns are in lower case; those inside constraints, all
 * other ids and names are as they were stored. An n that is not below the count fails with KT_ERR_OUT_OF_RANGE. A read
 * may create an empty "tbls" in the document, and an empty "cols" or "check" in a table.
 */
#ifndef TOV_QUERIES_H
#define TOV_QUERIES_H

#include "tov_export.h"

KT_BEGIN_DECLS

/** Counts the tables. */
TOV_API void tov_schema__count_tbls(KT_context *ctx, tov_schema *schema, uint32_t *count) KT_NOEXCEPT;

/** Gives the n-th table's id. */
TOV_API void tov_schema__get_nth_tbl_id(KT_context *ctx, tov_schema *schema, uint32_t n,
                                        const char **tbl_id) KT_NOEXCEPT;

/** Whether there is a table with this id. */
TOV_API void tov_schema__has_tbl_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool *has) KT_NOEXCEPT;

/** Gives a table's name, null when it has none. */
TOV_API void tov_schema__get_tbl_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char **name) KT_NOEXCEPT;

/** Finds the first table with exactly this name; null when there is none. */
TOV_API void tov_schema__find_tbl_by_name(KT_context *ctx, tov_schema *schema, const char *name,
                                          const char **tbl_id) KT_NOEXCEPT;

/**
 * Lists the names of all tables as the keys of a new map with null values, owned. A name that several tables have is
 * there once; a table without a name is left out.
 */
TOV_API void tov_schema__get_tbl_names_vhash(KT_context *ctx, tov_schema *schema, KT_vhash **names) KT_NOEXCEPT;

/** Counts a table's prepared columns. */
TOV_API void tov_schema__count_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                    uint32_t *count) KT_NOEXCEPT;

/** Gives the id of a table's n-th prepared column. */
TOV_API void tov_schema__get_nth_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                        const char **col_id) KT_NOEXCEPT;

/** Whether a table has a prepared column with this id. */
TOV_API void tov_schema__has_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    KT_bool *has) KT_NOEXCEPT;

/** Gives a column's name, null when it has none. */
TOV_API void tov_schema__get_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char **name) KT_NOEXCEPT;

/** Finds the first column with exactly this name, among the prepared ones, then the unprepared; null for none. */
TOV_API void tov_schema__find_col_by_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                          const char **col_id) KT_NOEXCEPT;

/** Counts a table's unprepared columns. The table id matches exactly; an unknown table has none. */
TOV_API void tov_schema__count_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               uint32_t *count) KT_NOEXCEPT;

/**
 * Gives the id of a table's n-th unprepared column. The table id matches exactly, and the table need not exist.
 * Creates the host internals, and in them an empty entry for the table, when they are absent.
 */
TOV_API void tov_schema__get_nth_unprepared_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                                   const char **col_id) KT_NOEXCEPT;

/** Counts a table's foreign keys, those of single columns recorded with the column not included. */
TOV_API void tov_schema__count_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                           uint32_t *count) KT_NOEXCEPT;

/** Gives the id of a table's n-th foreign key. Fails with KT_ERR_KEY_NOT_FOUND when the table has none. */
TOV_API void tov_schema__get_nth_foreignkey_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                               const char **fk_id) KT_NOEXCEPT;

/** Gives the id of the table that a foreign key refers to, as it was recorded. KT_ERR_KEY_NOT_FOUND: no such key. */
TOV_API void tov_schema__get_foreignkey_ref_tbl_id(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                   const char *fk_id, const char **ref_tbl_id) KT_NOEXCEPT;

/** Gives a foreign key's name. KT_ERR_KEY_NOT_FOUND: no such key, or it has no name. */
TOV_API void tov_schema__get_foreignkey_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                             const char **name) KT_NOEXCEPT;

/** Gives a foreign key's delete action. KT_ERR_KEY_NOT_FOUND: no such key, or it has no delete action. */
TOV_API void tov_schema__get_foreignkey_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                      const char *fk_id, const char **action) KT_NOEXCEPT;

/** Kinds of keys, for tov_schema__list_keys(). Never renumbered. */
enum { TOV_KEYS_PRIMARY = 1, TOV_KEYS_UNIQUE = 2, TOV_KEYS_FOREIGN = 4 };

/**
 * Lists a table's keys: the primary key, unique constraints, foreign keys of its columns, and its own foreign keys:
 * {"kind":"primary","name":"PK","cols":["a","b"]}, {"kind":"unique","id":"u","cols":["a"]},
 * {"kind":"foreign","id":"f","name":"FK_1","cols":["a"],"ref-tbl":"p","ref-cols":["id"],"deferred":false,
 * "on-delete":"CASCADE","on-update":"SET NULL"}.
 *
 * Columns and the table referred to are ids as the keys hold them. What a key lacks is left out: its name, its id (a
 * primary key and a column's foreign key have none), an action, which "NO ACTION" is not. The "ref-cols" of a column's
 * foreign key are empty when it refers to a primary key without naming the column.
 *
 * @param kinds      which keys to list: a sum of TOV_KEYS_... values.
 * @param[out] keys  owned; null when there is none.
 *
 * The primary key fails with KT_ERR_KEY_NOT_FOUND at a column whose type was never set.
 */
TOV_API void tov_schema__list_keys(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t kinds,
                                   KT_varray **keys) KT_NOEXCEPT;

/** Counts a table's unique constraints. */
TOV_API void tov_schema__count_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       uint32_t *count) KT_NOEXCEPT;

/** Gives the id of a table's n-th unique constraint. Fails with KT_ERR_KEY_NOT_FOUND when the table has none. */
TOV_API void tov_schema__get_nth_unique_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                           const char **unique_id) KT_NOEXCEPT;

/** Counts the columns of a unique constraint. KT_ERR_KEY_NOT_FOUND: no such constraint. */
TOV_API void tov_schema__count_unique_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                           const char *unique_id, uint32_t *count) KT_NOEXCEPT;

/** Gives the n-th column id of a unique constraint. KT_ERR_KEY_NOT_FOUND: no such constraint. */
TOV_API void tov_schema__get_nth_unique_col_id(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *unique_id, uint32_t n, const char **col_id) KT_NOEXCEPT;

/** Whether any unique constraint of a table lists exactly this column id. */
TOV_API void tov_schema__is_col_id_in_unique(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, KT_bool *is_in_unique) KT_NOEXCEPT;

/** Counts a table's checks, those of its columns not included. */
TOV_API void tov_schema__count_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      uint32_t *count) KT_NOEXCEPT;

/** Gives the id of a table's n-th check. */
TOV_API void tov_schema__get_nth_check_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                          const char **check_id) KT_NOEXCEPT;

/**
 * Whether a column is an integer primary key, that is, of type "identity".
 *
 * @param[out] constraint_name  optional; null for any other column, and when none is recorded.
 *
 * Fails with KT_ERR_KEY_NOT_FOUND for a column whose type was never set.
 */
TOV_API void tov_schema__get_col_is_integer_primary_key(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                        const char *col_id, KT_bool *is_integer_pk,
                                                        const char **constraint_name) KT_NOEXCEPT;

/**
 * Finds a table's integer primary key: the first prepared column that is one; null when there is none.
 * Fails with KT_ERR_KEY_NOT_FOUND when it meets a column whose type was never set before that.
 */
TOV_API void tov_schema__has_integer_primary_key(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char **col_id) KT_NOEXCEPT;

/**
 * Counts the columns of a table's primary key: 1 when it has an integer primary key, else those that were added to
 * the key, 0 when none was named. Looks for the integer primary key first, and fails as that does. A key that was
 * named and has no columns yet gets an empty record of them.
 */
TOV_API void tov_schema__count_pk_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       uint32_t *count) KT_NOEXCEPT;

/**
 * Gives the n-th column of a table's primary key. The 0-th of a table with an integer primary key is that column;
 * every other n reads the columns that were added to the key, even in such a table. Creates an empty record of these
 * as tov_schema__count_pk_cols() does.
 *
 * @param[out] col_id    optional.
 * @param[out] col_name  optional; null when the column has no name.
 *
 * Fails with KT_ERR_KEY_NOT_FOUND when the table has no primary key.
 */
TOV_API void tov_schema__get_nth_pk_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                        const char **col_id, const char **col_name) KT_NOEXCEPT;

/**
 * Whether exactly this column id is in a table's primary key. In a table with an integer primary key that column's id,
 * in lower case, is the only one. Creates an empty record of columns as tov_schema__count_pk_cols() does.
 */
TOV_API void tov_schema__is_col_id_in_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         KT_bool *is_in_pk) KT_NOEXCEPT;

KT_END_DECLS

#endif
