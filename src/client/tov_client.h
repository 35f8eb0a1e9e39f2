// From a schema to a working SQLite database: the statements that create its tables and triggers, and running them.
//
// The conventions are those of the schema module (tov_parse_defin.h): the context comes first and carries failures,
// outputs are written on success only. A schema may come from anywhere: nothing of it reaches SQLite before
// tov_client__check_texts() has looked at every text that becomes part of a statement.
//
// What fails with which code:
// - KT_ERR_SCHEMA_NOT_SUPPORTED: a text, key or expression that is refused; the description names the place, e.g.
//   table "Orders", column "Total", default: a ";" outside of quotes
// - KT_ERR_UNEXPECTED_VALUE: an action or an abstract type that is none of the known ones; the place is named too.
// - KT_ERR_SQLITE(rc): SQLite or the file system refused; the description names the table and gives SQLite's message.
#pragma once

#include "tov_parse_defin.h"

/**
 * Writes the whole script that tov_client__create_database() runs: settings, BEGIN, tables, triggers, COMMIT. The
 * sqlite3 shell accepts it (with -bail, so that it too creates everything or nothing).
 *
 * @param[out] script  owned.
 */
void tov_client__write_script(KT_context *ctx, tov_schema *schema, KT_string **script) noexcept;

/**
 * Creates all tables and triggers of a schema in a database file, in one transaction: all of them or none.
 *
 * The file is made when it is absent, and removed again when creating in it fails. In a database that already has a
 * table, view, index or trigger of a name that is needed nothing is done; the description names it.
 *
 * @param file_name the path of a file, always: names that mean something else to SQLite (:memory:) mean a file here.
 * @param progress  optional; called after each statement with the number done and their total.
 * @param data      handed to progress.
 */
void tov_client__create_database(KT_context *ctx, tov_schema *schema, const char *file_name,
                                 void (*progress)(void *data, uint32_t done, uint32_t total), void *data) noexcept;

/**
 * Lists the ids of all tables in the order in which they are created: referenced tables before referencing ones.
 * Where that is impossible (tables that refer to each other in a cycle, an order that is refused) the ids stand in
 * schema order, which SQLite allows too.
 *
 * @param[out] tbl_ids  owned texts.
 * @param[out] remarks  owned texts, null when there is nothing to say: one for each cycle, naming its tables, and one
 *                      for an order that was refused without a cycle.
 */
void tov_client__creation_order(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids, KT_varray **remarks) noexcept;

/**
 * Refuses a schema that holds anything not safe, or not fit, to stand in SQL text, and names the place:
 * - names of tables, columns and constraints that are empty, hold a quote, a control character or a character that
 *   changes the direction of writing, or are not UTF-8; tables named alike but for case, or sqlite_...; columns of a
 *   table named alike but for case;
 * - actions other than NO ACTION, CASCADE, SET NULL and SET DEFAULT; abstract types that are not known;
 * - keys without columns, and keys that use a table that is absent or a column that is absent or unprepared;
 * - default and check expressions that are not one expression: each is split into tokens, must keep to its place, and
 *   is compiled in a scratch database where nothing but harmless functions and the table's own columns are allowed.
 */
void tov_client__check_texts(KT_context *ctx, tov_schema *schema) noexcept;
