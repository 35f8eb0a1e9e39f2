/*
 * Constraints of columns and tables: not null, default, checks, keys, references.
 *
 * Column ids inside keys, and the ids of constraints, foreign keys and checks, are kept and compared exactly as they
 * are passed. Expressions and actions ("NO ACTION", "CASCADE") are kept as they are and go into SQL text unchanged.
 */
#ifndef TOV_CONSTRAINTS_H
#define TOV_CONSTRAINTS_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * Records that a column is NOT NULL, or drops that when notnull is zero.
 * @param name  optional; the constraint's name.
 */
TOV_API void tov_schema__set_colcon_notnull(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            KT_bool notnull, const char *name) KT_NOEXCEPT;

/**
 * Whether a column is NOT NULL.
 * @param[out] name  optional; borrowed. Null when the constraint has no name; untouched when there is no constraint.
 */
TOV_API void tov_schema__get_colcon_notnull(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            KT_bool *notnull, const char **name) KT_NOEXCEPT;

/**
 * Records a column's default, or drops it when has is zero.
 *
 * @param name  optional; the constraint's name.
 * @param expr  SQLite's text, not the host's; see tov_schema__fix_mssql_defval(). Not read when has is zero.
 */
TOV_API void tov_schema__set_colcon_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool has, const char *name, const char *expr) KT_NOEXCEPT;

/**
 * Whether a column has a default, and which.
 *
 * @param[out] name  optional; borrowed. Null when there is none.
 * @param[out] expr  borrowed. Null when there is not a default.
 */
TOV_API void tov_schema__get_colcon_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool *has, const char **name, const char **expr) KT_NOEXCEPT;

/**
 * Adds a check to a column, after those that it has.
 *
 * @param name  optional; the constraint's name.
 * @param expr  with its parentheses, e.g. ([Price]>=0).
 */
TOV_API void tov_schema__add_colcon_check(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *name, const char *expr) KT_NOEXCEPT;

/** Counts a column's own checks. */
TOV_API void tov_schema__count_colcon_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, uint32_t *count) KT_NOEXCEPT;

/** Names a table's primary key. This begins the key: its columns are added afterwards. */
TOV_API void tov_schema__set_pk_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                     const char *name) KT_NOEXCEPT;

/**
 * Adds a column at the end of a table's primary key.
 * Fails with KT_ERR_KEY_NOT_FOUND before tov_schema__set_pk_name(), KT_ERR_DUPLICATE_KEY: the column is in it already.
 */
TOV_API void tov_schema__add_to_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                   const char *col_id) KT_NOEXCEPT;

/**
 * Adds a column at the end of a unique constraint, which begins with its first column.
 * Fails with KT_ERR_DUPLICATE_KEY: the column is in it already.
 */
TOV_API void tov_schema__add_to_unique_constraint(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                  const char *col_id, const char *unique_id) KT_NOEXCEPT;

/** Adds a check to a table, or replaces the expression of the one with this id. */
TOV_API void tov_schema__add_check_constraint(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *check_id, const char *expr) KT_NOEXCEPT;

/**
 * Begins a foreign key of a table; tov_schema__add_to_foreignkey() adds its columns. For a key that exists already
 * it replaces what is given and keeps the rest, columns included.
 *
 * @param name                 optional; the constraint's name.
 * @param ref_tbl_id           the referenced table; it need not exist yet.
 * @param deferred             whether the host checks the key only at commit.
 * @param on_delete            optional; the action in SQL's words.
 * @param on_update            optional; the action in SQL's words.
 * @param violation_on_insert  how the host program treats a violation on insert, a code of its own; 0 records nothing.
 */
TOV_API void tov_schema__create_foreignkey(KT_context *ctx, tov_schema *schema, const char *fk_id, const char *name,
                                           const char *tbl_id, const char *ref_tbl_id, KT_bool deferred,
                                           const char *on_delete, const char *on_update,
                                           int32_t violation_on_insert) KT_NOEXCEPT;

/**
 * Adds a pair of columns at the end of a foreign key, or replaces the referenced column of col_id.
 *
 * Fails with KT_ERR_KEY_NOT_FOUND when the table has no foreign keys, or no such one; in the second case an empty
 * record remains under fk_id.
 */
TOV_API void tov_schema__add_to_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                           const char *col_id, const char *ref_col_id) KT_NOEXCEPT;

/**
 * Drops a foreign key of a table, if it is there, and the violation rules recorded under its id: those of every
 * table, not only of this one.
 */
TOV_API void tov_schema__nevermind_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *fk_id) KT_NOEXCEPT;

/** Counts a foreign key's pairs of columns. Fails with KT_ERR_KEY_NOT_FOUND: no such key. */
TOV_API void tov_schema__count_foreignkey_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *fk_id, uint32_t *count) KT_NOEXCEPT;

/**
 * Gives a foreign key's n-th pair of columns, counted from 0: referencing and referenced column id, borrowed, each
 * optional. Fails with KT_ERR_KEY_NOT_FOUND: no such key; KT_ERR_OUT_OF_RANGE: no n-th pair.
 */
TOV_API void tov_schema__get_nth_foreignkey_col_ids(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                    const char *fk_id, uint32_t n, const char **col_id,
                                                    const char **ref_col_id) KT_NOEXCEPT;

/**
 * Records a column's own reference to a table, or drops it when has is zero.
 *
 * @param fk_id                the id under which the violation rule is kept; read only when there is one.
 * @param name                 optional; the constraint's name.
 * @param ref_tbl_id           the referenced table; it need not exist yet. Optional when has is zero.
 * @param ref_col_id           optional; without it the reference means that table's primary key.
 * @param deferred             whether the host checks the reference only at commit.
 * @param on_delete            optional; the action in SQL's words.
 * @param on_update            optional; the action in SQL's words.
 * @param violation_on_insert  as in tov_schema__create_foreignkey().
 *
 * Fails with KT_ERR_SCHEMA_NOT_SUPPORTED, whatever has says, when the table is to refer to itself and has an integer
 * primary key; nothing is changed then.
 */
TOV_API void tov_schema__set_colcon_fk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_bool has, const char *fk_id, const char *name, const char *ref_tbl_id,
                                       const char *ref_col_id, KT_bool deferred, const char *on_delete,
                                       const char *on_update, int32_t violation_on_insert) KT_NOEXCEPT;

/**
 * Whether a column has a reference of its own, and which. The strings are optional and borrowed; each is null when it
 * is not recorded.
 */
TOV_API void tov_schema__get_colcon_fk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_bool *has, const char **name, const char **ref_tbl_id,
                                       const char **ref_col_id, const char **on_delete,
                                       const char **on_update) KT_NOEXCEPT;

/**
 * Gives a table's violation rules: foreign-key id to {"violation-on-insert": code}. The table id matches exactly.
 * @param[out] rules  borrowed; null when none are recorded.
 */
TOV_API void tov_schema__get_fk_rules(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      KT_vhash **rules) KT_NOEXCEPT;

KT_END_DECLS

#endif
