/*
 * What has changed between two schemas: their content compared, whatever their ids, transaction ids and sources are.
 *
 * The conventions are those of the schema module (tov_parse_defin.h). tov_compare.h compares by ids and transaction
 * ids alone, which is quick and enough for copies of one origin that keep these; here everything is looked at that a
 * document says of its tables, what it says of the server included.
 */
#ifndef TOV_CHANGES_H
#define TOV_CHANGES_H

#include "tov_parse_defin.h"

KT_BEGIN_DECLS

/** How schemas are compared. All zero compares by name and guesses at renames. */
typedef struct tov_client_compare_options {
    /**
     * Whether tables and columns with one id are the same one: for schemas of one origin. Otherwise names decide,
     * whose letter case does not count, and ids are evidence at most.
     */
    KT_bool by_id;
    /**
     * What was renamed, each as OLD=NEW. OLD is a table or TABLE.COLUMN of the old schema, with the name that the
     * table has on the server (SCHEMA.TABLE) or in SQLite; NEW is the new name in the same form, or the last part of
     * it. With nothing after the = the thing was removed, and not renamed to what looks like it.
     */
    const char *const *renames;
    uint32_t rename_count;
} tov_client_compare_options;

/**
 * Compares two schemas by their content.
 *
 * Names of the server are compared as it does by default: a name that changes its letter case only is the same one,
 * and the change is told. Expressions are compared by meaning: letter case of words, blanks, comments, brackets around
 * names and parentheses that change nothing do not count. Names that a server or an import made up do not count
 * either. What only one of the documents can say is not compared: where one of them has no facts about the server, the
 * tables are compared as SQLite has them.
 *
 * The answer is a map with two lists that are empty when nothing differs:
 * - "changes": of the schema as a whole;
 * - "tables": a map for each table that differs, in the order of their names: "name"; "change" ("added", "removed",
 *   "renamed" or "changed"); of one that was renamed "old_name", and "guess", which is true unless an option or an id
 *   says so; "old_id" and "new_id"; and "changes", where the parts of a table that was added or removed are listed too.
 *
 * A change is a map with these members; those that have nothing to say are left out:
 * - "kind": what it is about: "schema", "sequence", "table", "column", "primary key", "unique key", "foreign key",
 *   "check" or "index"; "name": its name, which keys and checks need not have
 * - "change": "added", "removed", "renamed" or "changed"; "old_name" and "guess" as above
 * - "member": what has changed of it, e.g. "type"
 * - "old", "new": what it was and is, as text for people: of the member, or of what was removed or added as a whole
 *
 * @code{.c}
 * void print_changed_tables(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema)
 * {
 *     KT_vhash *changes = NULL;
 *     KT_varray *tables = NULL;
 *     uint32_t count = 0;
 *     tov_client__compare(ctx, old_schema, new_schema, NULL, &changes);
 *     KT_vhash__get__varray(ctx, changes, "tables", &tables);
 *     KT_varray__count(ctx, tables, &count);
 *     for (uint32_t n = 0; n < count && !KT_context__has_err(ctx); n++) {
 *         KT_vhash *table = NULL;
 *         const char *name = NULL;
 *         KT_varray__get__vhash(ctx, tables, n, &table);
 *         KT_vhash__get__sz(ctx, table, "name", &name);
 *         if (name)
 *             puts(name);
 *     }
 *     KT_vhash__free(ctx, changes);
 * }
 * @endcode
 *
 * @param options       optional.
 * @param[out] changes  owned.
 *
 * Fails with KT_ERR_NOT_FOUND when an option names what is not there, with KT_ERR_UNEXPECTED_VALUE when it is not
 * OLD=NEW, and with KT_ERR_KEY_NOT_FOUND or KT_ERR_WRONG_TYPE at a document that is not of the shape of one.
 */
TOV_API void tov_client__compare(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                 const tov_client_compare_options *options, KT_vhash **changes) KT_NOEXCEPT;

KT_END_DECLS

#endif
