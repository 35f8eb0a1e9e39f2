/*
 * The schema handle, its JSON form, tables, columns and the settings of a schema.
 *
 * A schema holds two trees. The document says what the tables are; it is what JSON text carries. The host internals
 * hold what only the host side uses (unprepared columns, dump numbers, collations, default texts, rules of foreign
 * keys) and are absent until something of the kind is recorded.
 *
 * A column is prepared when it is part of the synchronised table, or unprepared when it is only known to exist on the
 * host. Operations on a column find either, a prepared one first; counts and lists of a table's columns see the
 * prepared ones only.
 */
#ifndef TOV_DOCUMENT_H
#define TOV_DOCUMENT_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * Makes an empty schema, owned; freed with tov_schema__nullfree().
 *
 * @code{.c}
 * #include "tov_parse_defin.h"
 *
 * // A schema with one table of two columns, or null and an error in the context.
 * tov_schema *describe(KT_context *ctx)
 * {
 *     tov_schema *schema = NULL;
 *     tov_schema__new(ctx, 1, &schema);
 *     tov_schema__add_tbl(ctx, schema, "101", "Product", 1);
 *     tov_schema__add_col(ctx, schema, "101", "1", "ProductId", 1, 0, 0);
 *     tov_schema__set_col_type_identity(ctx, schema, "101", "1", NULL);
 *     tov_schema__add_col(ctx, schema, "101", "2", "Listed", 1, 0, 0);
 *     tov_schema__set_col_type_simple(ctx, schema, "101", "2", "date");
 *     if (KT_context__has_err(ctx)) // a call that follows a failed one does nothing, so this looks once
 *         tov_schema__nullfree(ctx, &schema);
 *     return schema;
 * }
 * @endcode
 * @param compat_level  the compatibility level that the schema is made for; kept in the document.
 */
TOV_API void tov_schema__new(KT_context *ctx, uint32_t compat_level, tov_schema **schema) KT_NOEXCEPT;

/**
 * Makes a schema from JSON text as tov_schema__to_json() writes it, owned. It has no host internals.
 *
 * The text must be a JSON object; what is in it is looked at by the operations that read it.
 * Fails with KT_ERR_BAD_JSON; the description says where and what was expected.
 */
TOV_API void tov_schema__from_json(KT_context *ctx, const char *json, tov_schema **schema) KT_NOEXCEPT;

/**
 * Makes a schema from two trees, owned. It takes both over and sets the caller's pointers to null; after a failure
 * they are still the caller's.
 *
 * From then on only the operations on the schema may change the trees: it remembers answers until one of them makes a
 * change. A caller that still holds a map inside one of them may read it, but must not write to it.
 *
 * @param document        an independent map. Of the map under "schema" that tov_schema__copy_into_vhash()
 *                        gave, for example, it is a copy made by KT_vhash__alloc__copy().
 * @param host_internals  the same for "host_internals"; optional, and may point to null.
 *
 * Fails with KT_ERR_BORROWED when a tree belongs to another map, or both are one map; with KT_ERR_NULL_ARGUMENT
 * without a document.
 */
TOV_API void tov_schema__alloc__vhash(KT_context *ctx, KT_vhash **document, KT_vhash **host_internals,
                                      tov_schema **schema) KT_NOEXCEPT;

/**
 * Writes the document as JSON text into a new string, owned. Host internals are left out.
 * Fails with KT_ERR_BAD_VALUE when an id, name or other text in it is not UTF-8.
 */
TOV_API void tov_schema__to_json(KT_context *ctx, tov_schema *schema, KT_string **json) KT_NOEXCEPT;

/**
 * Sets "schema" in destination to a copy of the document, in the place of an earlier one.
 *
 * @param include_host_internals  whether "host_internals" is set too: an earlier one is removed, and a copy is added
 *                                when the schema has host internals. When zero, an earlier one stays.
 */
TOV_API void tov_schema__copy_into_vhash(KT_context *ctx, tov_schema *schema, KT_vhash *destination,
                                         KT_bool include_host_internals) KT_NOEXCEPT;

/** Frees a schema with everything borrowed from it, and sets the pointer to null. A null schema does nothing. */
TOV_API void tov_schema__nullfree(KT_context *ctx, tov_schema **schema) KT_NOEXCEPT;

/**
 * Adds a table at the end.
 *
 * @param tbl_id  kept in lower case.
 * @param name    kept as it is.
 * @param txid    the transaction id that goes with the table's definition; any value.
 *
 * Fails with KT_ERR_DUPLICATE_KEY when the id is taken; the table that has it stays as it was.
 */
TOV_API void tov_schema__add_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                 int64_t txid) KT_NOEXCEPT;

/** Replaces a table's name. */
TOV_API void tov_schema__set_tbl_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char *name) KT_NOEXCEPT;

/** Gives a table's transaction id, 0 when none is recorded. */
TOV_API void tov_schema__check_tbl_txid(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                        int64_t *txid) KT_NOEXCEPT;

/**
 * Adds a column at the end of its table, or beside the table when it is not prepared.
 *
 * @param col_id           kept in lower case.
 * @param name             kept as it is. It goes to the column that the id finds afterwards, so an unprepared column
 *                         with the id of a prepared one renames that one and stays nameless.
 * @param prepared         whether the column is part of the synchronised table.
 * @param dump_txid        the dump transaction id of the column. When it is 0 or less, neither dump number is kept.
 * @param dump_generation  the dump generation that goes with it.
 *
 * Fails with KT_ERR_DUPLICATE_KEY when the id is taken among the columns of the same kind; that column stays as it
 * was. For an unprepared column of an unknown table it fails with KT_ERR_NOT_FOUND, but leaves a nameless column
 * record in the host internals.
 */
TOV_API void tov_schema__add_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                 const char *name, KT_bool prepared, int64_t dump_txid,
                                 int64_t dump_generation) KT_NOEXCEPT;

/** Replaces a column's name. */
TOV_API void tov_schema__set_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char *name) KT_NOEXCEPT;

/**
 * Whether a column is among the unprepared ones of a table. The table id matches exactly, as it was given when the
 * column was added; an unknown table or column is not a failure.
 */
TOV_API void tov_schema__is_col_unprepared(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool *unprepared) KT_NOEXCEPT;

/**
 * Gives a column's dump transaction id, 0 when none is recorded. Both ids match exactly, as they were given when the
 * column was added; an unknown table or column is not a failure.
 */
TOV_API void tov_schema__get_col_dump_txid(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           int64_t *dump_txid) KT_NOEXCEPT;

/** Gives a column's dump generation; otherwise like tov_schema__get_col_dump_txid(). */
TOV_API void tov_schema__get_col_dump_generation(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, int64_t *dump_generation) KT_NOEXCEPT;

/** Records the filter id that the host program attaches to a schema; the module only keeps it. */
TOV_API void tov_schema__set_filter_id(KT_context *ctx, tov_schema *schema, int64_t filter_id) KT_NOEXCEPT;

/** Gives the filter id, 0 when none is recorded. */
TOV_API void tov_schema__get_filter_id(KT_context *ctx, tov_schema *schema, int64_t *filter_id) KT_NOEXCEPT;

/** Records the name of the host server. */
TOV_API void tov_schema__set_backend_info__name(KT_context *ctx, tov_schema *schema, const char *name) KT_NOEXCEPT;

/** Records the interface through which the host server is reached. */
TOV_API void tov_schema__set_backend_info__api(KT_context *ctx, tov_schema *schema, const char *api) KT_NOEXCEPT;

/** Records whether NULLs count as equal, that is not distinct, in the host's unique constraints. */
TOV_API void tov_schema__set_backend_info__indistinct_unique_nulls(KT_context *ctx, tov_schema *schema,
                                                                   KT_bool flag) KT_NOEXCEPT;

/**
 * Whether NULLs count as equal in the host's unique constraints, 0 when nothing is recorded.
 * Creates an empty "backend" in the document when there is none.
 */
TOV_API void tov_schema__get_backend_info__indistinct_unique_nulls(KT_context *ctx, tov_schema *schema,
                                                                   KT_bool *flag) KT_NOEXCEPT;

/**
 * Gives the facts about the server that the document carries ("server"), borrowed, and creates an empty map when there
 * is none. The module keeps what is written there and reads none of it; docs/document.md describes the members.
 */
TOV_API void tov_schema__ensure_server(KT_context *ctx, tov_schema *schema, KT_vhash **server) KT_NOEXCEPT;

/** The same without creating anything: null when the document carries none. */
TOV_API void tov_schema__check_server(KT_context *ctx, tov_schema *schema, KT_vhash **server) KT_NOEXCEPT;

/** Gives the facts about a table that the server knows; otherwise like tov_schema__ensure_server(). */
TOV_API void tov_schema__ensure_tbl_server(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                           KT_vhash **server) KT_NOEXCEPT;

/** The same without creating anything: null when the table has none. */
TOV_API void tov_schema__check_tbl_server(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          KT_vhash **server) KT_NOEXCEPT;

KT_END_DECLS

#endif
