/*
 * From a database that was created from one schema to one created from another, with its rows.
 *
 * The conventions are those of the schema module (tov_parse_defin.h). Afterwards the database has the tables, indexes,
 * triggers and views that it would have had it been created from the new schema, and the rows that it had. A value of a
 * column that gets another type becomes what loading it would make of it. Everything happens in one transaction: all of
 * it or nothing.
 */
#ifndef TOV_MIGRATE_H
#define TOV_MIGRATE_H

#include "tov_changes.h"
#include "tov_client.h"

KT_BEGIN_DECLS

/** How a database is migrated. All zero compares by name and loses nothing. */
typedef struct tov_client_migrate_options {
    /** What belongs together, and what was renamed. */
    tov_client_compare_options compare;
    /** Optional: how the database was created, and is to be from now on; null for the defaults, or for what the
     * database has recorded. */
    const tov_client_create_options *create;
    /**
     * What may be lost, each as TABLE or TABLE.COLUMN of the old schema, by the name on the server or in SQLite; a
     * TABLE allows for its columns as well.
     */
    const char *const *allowed_losses;
    uint32_t allowed_loss_count;
} tov_client_migrate_options;

/**
 * Plans the way from one schema to another.
 *
 *
 * @code{.c}
 * // What would be lost, each as options.allowed_losses has to name it.
 * void print_losses(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema)
 * {
 *     KT_varray *steps = NULL;
 *     uint32_t count = 0;
 *     tov_client__plan_migration(ctx, old_schema, new_schema, NULL, &steps);
 *     KT_varray__count(ctx, steps, &count);
 *     for (uint32_t n = 0; n < count && !KT_context__has_err(ctx); n++) {
 *         KT_vhash *step = NULL;
 *         const char *loss = NULL;
 *         KT_varray__get__vhash(ctx, steps, n, &step);
 *         KT_vhash__check__sz(ctx, step, "loss", &loss);
 *         if (loss)
 *             puts(loss);
 *     }
 *     KT_varray__free(ctx, steps);
 * }
 * @endcode
 * @param options     optional.
 * @param[out] steps  owned; a map for each step, in order; members that have nothing to say are left out:
 *                    - "description": what it does, for people; "table": the table's name in SQLite
 *                    - "class": "free" (no row is touched), "rebuilds" (a table is written anew), "may fail" (on rows
 *                      that the new schema does not take) or "loses data"
 *                    - "count": of those that may fail, a query for the old database that counts such rows;
 *                      of those that lose data, what is lost
 *                    - "loss": what tov_client_migrate_options.allowed_losses has to say so that it may be done
 *                    - "sql": the statements, a list of strings
 *                    - "only_apply", which is true, instead of "sql" where values have to be converted as
 *                      tov_client__migrate_database() does, which SQL cannot
 *
 * Fails as tov_client__check_texts() and tov_client__compare() do. Losses that are not allowed are no failure here.
 */
TOV_API void tov_client__plan_migration(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                        const tov_client_migrate_options *options, KT_varray **steps) KT_NOEXCEPT;

/**
 * Writes the script of a migration, with its transaction, for the sqlite3 shell (with -bail). It knows of nothing that
 * somebody has added to the database: indexes and triggers on a table that it rebuilds go with the old table.
 *
 * @param[out] script  owned.
 *
 * Fails with KT_ERR_SCHEMA_NOT_SUPPORTED at a loss that is not allowed, and where values have to be converted in ways
 * that SQL does not have; the description names all of them.
 */
TOV_API void tov_client__write_migration(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                         const tov_client_migrate_options *options, KT_string **script) KT_NOEXCEPT;

/**
 * Migrates a database from the schema that it has recorded. Views, indexes and triggers that somebody has added are
 * kept.
 *
 * Fails with KT_ERR_NOT_FOUND when the database has no record of its schema; with KT_ERR_SCHEMA_NOT_SUPPORTED at a loss
 * that is not allowed, and where a table is not what the record says; with KT_ERR_SQLITE(rc) where a row is not taken.
 * The database is then as it was.
 */
TOV_API void tov_client__migrate_database(KT_context *ctx, const char *file_name, tov_schema *new_schema,
                                          const tov_client_migrate_options *options) KT_NOEXCEPT;

KT_END_DECLS

#endif
