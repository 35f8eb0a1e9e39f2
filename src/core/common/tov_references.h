/*
 * Foreign-key analysis: who refers to whom, creation order, identity roots, actions left to triggers.
 *
 * A foreign key is recorded in one of two places: a column-level key in its column's record, a table-level key, of one
 * or more columns, in its table's. Every operation looks in both, column-level keys first, tables in schema order,
 * columns and keys in the order of their table. Which table or column a key names is compared exactly, letter case
 * included, where no operation says otherwise; ids in results are lower-case ids of tables and columns, or strings as
 * the keys hold them.
 *
 * Questions about who refers to a table or column keep an index in the schema until it changes, so asking about every
 * table costs little more than asking about one.
 *
 * A document from outside may hold a column-level key that names no table or no column. It refers to no table that is
 * asked for by id; where such a key itself is to be followed or listed the operation fails with KT_ERR_NOT_FOUND.
 */
#ifndef TOV_REFERENCES_H
#define TOV_REFERENCES_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * Finds the columns that refer to a table by column-level keys: {"referencing table":{"column":"referenced column"}}.
 *
 * @param tbl_id           is not looked up; an id that names no table is one that nobody refers to.
 * @param col_id           optional; only references to this column. Without it a key that names no column counts too,
 *                         with a null value.
 * @param[out] references  owned; null when there is none.
 */
TOV_API void tov_schema__find_singlecol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                      const char *col_id, KT_vhash **references) KT_NOEXCEPT;

/**
 * Finds the table-level keys that refer to a table, by their ids:
 * {"key":{"tbl":"referencing table","cols":{"column":"referenced column"}}}.
 *
 * @param tbl_id           is not looked up.
 * @param[out] references  owned; null when there is none.
 *
 * Fails with KT_ERR_DUPLICATE_KEY when two tables refer to it by keys of the same id.
 */
TOV_API void tov_schema__find_multicol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                     KT_vhash **references) KT_NOEXCEPT;

/**
 * Finds the columns that refer to a column by keys of both kinds:
 * {"referencing table":{"column":"referenced column"}}. Of a key that names the column in more than one place only
 * the first counts.
 *
 * @param tbl_id, col_id   are not looked up.
 * @param[out] references  owned; null when no key names the column and no table-level key names the table, an empty
 *                         map when only the latter does.
 *
 * Fails with KT_ERR_DUPLICATE_KEY when a column refers to this one by two keys, and as find_multicol_references_to.
 */
TOV_API void tov_schema__find_references_to_col(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                const char *col_id, KT_vhash **references) KT_NOEXCEPT;

/**
 * Whether a table holds a foreign key with a delete action other than "NO ACTION" (in any letter case).
 * Fails with KT_ERR_KEY_NOT_FOUND at a table-level key that lacks its delete action.
 */
TOV_API void tov_schema__does_tbl_have_fk_constraint_with_delete_action(KT_context *ctx, tov_schema *schema,
                                                                        const char *tbl_id, KT_bool *has) KT_NOEXCEPT;

/**
 * Finds the tables that refer to a table, itself included when it does.
 *
 * @param tbl_id        is not looked up.
 * @param[out] tbl_ids  owned; null when there is none. Tables with column-level keys come first.
 *
 * Fails as find_multicol_references_to.
 */
TOV_API void tov_schema__find_tbls_with_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                      KT_nullhash **tbl_ids) KT_NOEXCEPT;

/**
 * Lists the tables that a table refers to, by the ids that its keys hold. The table itself is left out where a key
 * names it by exactly the id given.
 * @param[out] tbl_ids  owned; null when there is none.
 */
TOV_API void tov_schema__list_tbls_referenced_by(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 KT_nullhash **tbl_ids) KT_NOEXCEPT;

/**
 * Lists all tables so that each comes after the tables that it refers to: the order to create and fill them in.
 *
 * The order is that of levels found by repeated passes in schema order. A table without foreign keys gets level 0 when
 * a pass first meets it, and any other one more than the highest level among those it refers to that have one; a
 * reference to itself (in any letter case) gives a table level 0 too, but is not a change, and the passes end after one
 * that changed nothing. Tables are listed by level, and within a level as they first got one: by pass, then in schema
 * order. Time is linear in the size of the schema.
 *
 *
 * @code{.c}
 * #include "tov_parse_defin.h"
 *
 * void print_names_in_order(KT_context *ctx, tov_schema *schema)
 * {
 *     KT_varray *cycles = NULL;
 *     KT_varray *tbl_ids = NULL;
 *     uint32_t count = 0;
 *     tov_schema__find_reference_cycles(ctx, schema, &cycles, NULL);
 *     if (!cycles && !KT_context__has_err(ctx)) {
 *         tov_schema__sort_by_references(ctx, schema, &tbl_ids);
 *         KT_varray__count(ctx, tbl_ids, &count);
 *     }
 *     for (uint32_t n = 0; n < count && !KT_context__has_err(ctx); n++) {
 *         const char *tbl_id = NULL;
 *         const char *name = NULL;
 *         KT_varray__get__sz(ctx, tbl_ids, n, &tbl_id);
 *         tov_schema__get_tbl_name(ctx, schema, tbl_id, &name);
 *         if (name)
 *             puts(name);
 *     }
 *     KT_varray__free(ctx, tbl_ids);
 *     KT_varray__free(ctx, cycles);
 * }
 * @endcode
 * @param[out] tbl_ids  owned; empty for a schema without tables.
 *
 * Fails with KT_ERR_SCHEMA_NOT_SUPPORTED when a table gets no level: it refers to nothing but tables in a cycle, or
 * to ids that are not a table's, or to a table before which the passes ended.
 * Does not return when tables that have levels form a cycle, which raises them in every pass:
 * tov_schema__find_reference_cycles() tells beforehand.
 */
TOV_API void tov_schema__sort_by_references(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) KT_NOEXCEPT;

/**
 * Finds reference cycles, on which tov_schema__sort_by_references() may fail or not return, and
 * tov_schema__find_ipk_root_column() does not return. Time is linear in the size of the schema.
 *
 * Here a reference that differs from an id only in letter case is a reference to it, and one that leads nowhere is no
 * error.
 *
 * @param[out] tbl_cycles  optional; owned; null when there is none. One record {"tbls":["id",...]} for each set of
 *                         two or more tables that all lead to each other, members in schema order. A table that refers
 *                         only to itself is none.
 * @param[out] col_cycles  optional; owned; null when there is none. One record {"cols":[{"tbl":"id","col":"id"},...]}
 *                         for each cycle in which a search for an identity root goes on without end: each member
 *                         refers to the next, the last to the first, which is the first in schema order. A column that
 *                         refers to itself is one.
 *
 * Records are in the order of their first members.
 *
 * Fails on a document in which a key lacks what every key has: with KT_ERR_NOT_FOUND where a column's reference names
 * no table, else with KT_ERR_KEY_NOT_FOUND or KT_ERR_WRONG_TYPE. There may be cycles of both kinds then.
 */
TOV_API void tov_schema__find_reference_cycles(KT_context *ctx, tov_schema *schema, KT_varray **tbl_cycles,
                                               KT_varray **col_cycles) KT_NOEXCEPT;

/**
 * Finds the identity column whose values a column carries: the column itself when its type is "identity", or the one
 * that its references lead to through columns of type "sint64", "sint32", "sint16" or "uint8".
 *
 * A column's column-level key is followed first, then the pairs of table-level keys in which it appears under exactly
 * the id given; the first root found is the answer.
 *
 * @param[out] root_tbl_id  the given id or a string of the document, borrowed; null when there is no root. Also null
 *                          when the call fails at a column that a reference leads to.
 * @param[out] root_col_id  optional; likewise.
 *
 * Fails with KT_ERR_NOT_FOUND when a reference on the way leads nowhere, with KT_ERR_KEY_NOT_FOUND when a column on
 * the way has no type. Does not return on a cycle of integer columns without a root before it:
 * tov_schema__find_reference_cycles() tells beforehand.
 */
TOV_API void tov_schema__find_ipk_root_column(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *col_id, const char **root_tbl_id,
                                              const char **root_col_id) KT_NOEXCEPT;

/**
 * Writes the host's condition that joins two aliases of a table on its primary key, for example
 * (CAST(SUBSTRING("a"."k1",3,25) AS bigint))="b"."k1" AND "a"."k2"="b"."k2".
 *
 * @param left_mode, right_mode  how each side writes the columns that have an identity root: 0 as they are; 1 for a
 *                               side that holds the text form ("S:" and the decimal value), converted to an integer;
 *                               2 for one that holds the integer, converted to the text form. Others act like 0.
 * @param[out] condition         owned; empty for a table without primary key.
 *
 * With a mode that is not 0 it searches each key column's root; see tov_schema__find_ipk_root_column().
 */
TOV_API void tov_schema__get_on_pk_col_names(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *left_alias, const char *right_alias, uint32_t left_mode,
                                             uint32_t right_mode, KT_string **condition) KT_NOEXCEPT;

/**
 * Lists the foreign keys that a table holds, columns by name:
 * {"name":"FK_1","on-delete":"SET DEFAULT","tbl":"parent","cols-from":["A"],"cols-to":["Id"],"defvals":["42"]}.
 *
 * "name" is null for an unnamed column-level key; "on-delete" is left out for no action; "tbl" is the id of the
 * referenced table. "defvals" is filled only with filter 1 and for "SET DEFAULT" (in any letter case): with each
 * referencing column's default expression, or the string "NULL".
 *
 * @param ref_tbl_id    optional; only keys that refer to this table.
 * @param filter        0 for all keys, 1 for those with a delete action other than "NO ACTION"; others for none.
 * @param[out] records  owned; null when there is none.
 *
 * Fails with KT_ERR_NOT_FOUND when a listed key names a column that does not exist, with KT_ERR_KEY_NOT_FOUND at a
 * table-level key of the table that lacks its delete action, or a listed one that lacks its name.
 */
TOV_API void tov_schema__list_fk_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *ref_tbl_id, uint32_t filter, KT_varray **records,
                                             uint32_t *count) KT_NOEXCEPT;

/**
 * Lists the foreign keys by which tables refer to a table, columns by name:
 * {"name":"FK_1","tbl":"child","on-up":false,"cols-from":["A"],"cols-to":["Id"]}.
 *
 * "name" is null for an unnamed column-level key; "tbl" is the id of the referencing table; "on-up" says whether the
 * key has an update action other than "NO ACTION".
 *
 * @param tbl_id        is looked up only where a key refers to it.
 * @param include_self  whether the table's own keys are looked at.
 * @param filter        as for tov_schema__list_fk_constraints().
 * @param[out] records  owned; null when there is none.
 *
 * Fails with KT_ERR_NOT_FOUND when a listed key names a column that does not exist, and with KT_ERR_KEY_NOT_FOUND at
 * any table-level key, listed or not, that lacks its delete or update action, or a listed one that lacks its name.
 */
TOV_API void tov_schema__find_references_to_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                KT_bool include_self, uint32_t filter, KT_varray **records,
                                                uint32_t *count) KT_NOEXCEPT;

KT_END_DECLS

#endif
