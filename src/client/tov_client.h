/*
 * From a schema to a working SQLite database: the statements that create its tables and triggers, and running them.
 *
 * The conventions are those of the schema module (tov_parse_defin.h): the context comes first and carries failures,
 * outputs are written on success only. A schema may come from anywhere: nothing of it reaches SQLite before
 * tov_client__check_texts() has looked at every text that becomes part of a statement.
 *
 * What fails with which code:
 * - KT_ERR_SCHEMA_NOT_SUPPORTED: a name, key or expression that is refused; the description names the place, e.g.
 *   table "Orders", column "Total", default: a ";" outside of quotes
 * - KT_ERR_UNEXPECTED_VALUE: an action or an abstract type that is none of the known ones; the place is named too.
 * - KT_ERR_SQLITE(rc): SQLite or the file system refused; the description names the table and gives SQLite's message.
 */
#ifndef TOV_CLIENT_H
#define TOV_CLIENT_H

#include "tov_parse_defin.h"

KT_BEGIN_DECLS

#include <stddef.h>

/**
 * Writes the whole script that tov_client__create_database() runs: settings, BEGIN, tables, indexes, triggers, COMMIT.
 * The sqlite3 shell accepts it (with -bail, so that it too creates everything or nothing).
 *
 * @param[out] script  owned.
 */
TOV_API void tov_client__write_script(KT_context *ctx, tov_schema *schema, KT_string **script) KT_NOEXCEPT;

/**
 * Creates all tables, indexes and triggers of a schema in a database file, in one transaction: all of them or none.
 *
 * The file is made when it is absent, and removed again when creating in it fails. In a database that already has a
 * table, view, index or trigger of a name that is needed nothing is done; the description names it.
 *
 *
 * @code{.c}
 * static void show(void *data, uint32_t done, uint32_t total)
 * {
 *     fprintf((FILE *)data, "\r%u of %u", (unsigned)done, (unsigned)total);
 * }
 *
 * void create(KT_context *ctx, tov_schema *schema)
 * {
 *     tov_client__create_database(ctx, schema, "shop.db", show, stderr);
 *     if (KT_context__has_err(ctx))
 *         fprintf(stderr, "shop.db: %s\n", KT_context__err_description(ctx));
 * }
 * @endcode
 * @param file_name the path of a file, always: names that mean something else to SQLite (:memory:) mean a file here.
 * @param progress  optional; called after each statement with the number done and their total.
 * @param data      handed to progress.
 */
TOV_API void tov_client__create_database(KT_context *ctx, tov_schema *schema, const char *file_name,
                                         void (*progress)(void *data, uint32_t done, uint32_t total),
                                         void *data) KT_NOEXCEPT;

/** Which values are refused. */
enum tov_client_rules {
    /**
     * What the server would refuse too, and every form of a value but the one of docs/values.md: for tables of which
     * the document says what the server says of their columns; basic rules for others.
     */
    TOV_CLIENT_RULES_SERVER = 0,
    /** What the schema module's own checks refuse. */
    TOV_CLIENT_RULES_BASIC = 1
};

/** Which indexes are created. Keys have theirs in any case. */
enum tov_client_indexes {
    /** Those of the server, as far as SQLite can have them, and one for every foreign key that no index begins with. */
    TOV_CLIENT_INDEXES_ALL = 0,
    /** Those for foreign keys only, without which deleting a row reads each table that refers to it from end to end. */
    TOV_CLIENT_INDEXES_REFERENCES = 1,
    TOV_CLIENT_INDEXES_NONE = 2
};

/** How strings compare: in keys and indexes, and wherever a query says nothing else. */
enum tov_client_collations {
    /** As SQLite can by itself: the case of ASCII is ignored where the server ignores case, all else counts. */
    TOV_CLIENT_COLLATIONS_BUILTIN = 0,
    /**
     * As the server does, for columns of which the document says the server's collation. Every connection to the
     * database needs the extension libtov_sqlite (tov_sqlite.h), those of these operations included: a program adds it
     * to all of them with sqlite3_auto_extension(). Creating fails without it: "no such collation sequence".
     */
    TOV_CLIENT_COLLATIONS_SERVER = 1
};

/** What holds values to their types and to the rules; docs/client.md says what each costs. */
enum tov_client_checks {
    /**
     * Constraints of the tables, in short words that give the same verdicts. A value that is refused fails with
     * SQLITE_CONSTRAINT_CHECK: "CHECK constraint failed: [Qty] constraint violation: out of range: sint16".
     */
    TOV_CLIENT_CHECKS_CONSTRAINTS = 0,
    /** Triggers with the schema module's own statements: "[Qty] constraint violation: out of range: sint16". */
    TOV_CLIENT_CHECKS_TRIGGERS = 1
};

/**
 * What is created besides tables and triggers. All zero is all indexes and no views, with the server's rules
 * and SQLite's collations, and values checked by constraints.
 * Numbers of rules, indexes, collations and checks that are not listed fail with KT_ERR_UNEXPECTED_VALUE.
 */
typedef struct tov_client_create_options {
    /**
     * Whether each table gets a view of its name after "v_", which shows decimals, money, guids and moments as the
     * server does. Creating fails with KT_ERR_SCHEMA_NOT_SUPPORTED when a table has the name of a view.
     */
    KT_bool views;
    /** Optional: called after each statement with the number done and their total. */
    void (*progress)(void *data, uint32_t done, uint32_t total);
    void *data;
    /** One of tov_client_rules. */
    int32_t rules;
    /** One of tov_client_indexes. Unique indexes that keep a rule of the server are created whatever it says. */
    int32_t indexes;
    /** One of tov_client_collations. */
    int32_t collations;
    /** Whether the database is left without the table that records its schema. */
    KT_bool no_record;
    /** One of tov_client_checks. */
    int32_t checks;
} tov_client_create_options;

/** tov_client__write_script() with options. */
TOV_API void tov_client__write_script__with(KT_context *ctx, tov_schema *schema,
                                            const tov_client_create_options *options, KT_string **script) KT_NOEXCEPT;

/**
 * The script of tov_client__write_script__with(), handed out a statement at a time and so without room for the whole.
 *
 * @param options  optional, as everywhere.
 * @param take     called with each part, borrowed until it returns; the parts one after another are the script. When it
 *                 leaves an error in the context, that ends the writing.
 * @param data     handed to take.
 */
TOV_API void tov_client__stream_script(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                                       void (*take)(KT_context *ctx, void *data, const char *text),
                                       void *data) KT_NOEXCEPT;

/** tov_client__create_database() with options. */
TOV_API void tov_client__create_database__with(KT_context *ctx, tov_schema *schema, const char *file_name,
                                               const tov_client_create_options *options) KT_NOEXCEPT;

/**
 * Reads the schema that a database was created from, as the database's own record has it.
 *
 * @param file_name     the path of a file, always.
 * @param[out] schema   owned; freed with tov_schema__nullfree().
 * @param[out] options  optional; what else was said when the database was created: views, rules, indexes,
 *                      collations and checks.
 *
 * Fails with KT_ERR_NOT_FOUND when the database has no such record.
 */
TOV_API void tov_client__read_record(KT_context *ctx, const char *file_name, tov_schema **schema,
                                     tov_client_create_options *options) KT_NOEXCEPT;

/**
 * Lists the ids of all tables in the order in which they are created: referenced tables before referencing ones.
 * Where that is impossible (tables that refer to each other in a cycle, an order that is refused) the ids are in
 * schema order, which SQLite allows too.
 *
 * @param[out] tbl_ids  owned strings.
 * @param[out] remarks  owned strings, null when there is nothing to say: one for each cycle, naming its tables, and one
 *                      for an order that was refused without a cycle.
 */
TOV_API void tov_client__creation_order(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids,
                                        KT_varray **remarks) KT_NOEXCEPT;

/**
 * Refuses a schema that holds anything not safe, or not fit, to appear in SQL text, and names the place:
 * - names of tables, columns and constraints that are empty, hold a quote, a control character or a character that
 *   changes the direction of writing, or are not UTF-8; tables named alike but for case, or sqlite_...; columns of a
 *   table named alike but for case;
 * - actions other than NO ACTION, CASCADE, SET NULL and SET DEFAULT; abstract types that are not known;
 * - members and facts about the server of another kind than docs/document.md says (KT_ERR_WRONG_TYPE), or missing
 *   (KT_ERR_KEY_NOT_FOUND);
 * - keys without columns, and keys that use a table that is absent or a column that is absent or unprepared;
 * - default and check expressions, and conditions of indexes, that are not one expression: each is split into tokens,
 *   must keep to its place, and is compiled in a scratch database where only harmless functions and the table's own
 *   columns are allowed.
 */
TOV_API void tov_client__check_texts(KT_context *ctx, tov_schema *schema) KT_NOEXCEPT;

/**
 * Describes how the values of tables are kept, for programs that read and write the database themselves.
 *
 * The guide is a map with a list "tables". Each table is a map: "table" and "server_table" (its names in SQLite and on
 * the server), "columns", and "insert": the INSERT that stores a row, the n-th parameter being the value of the n-th
 * column that is not left out. A column is a map of these members; those that have nothing to say are left out:
 * - "name", "server_type" (e.g. "decimal(9,2)"), "user_type" (the alias type that it was declared with)
 * - "storage" (INTEGER, REAL, TEXT or BLOB) and "form": what is stored, in words; "left_out": why the SQLite table does
 *   not have the column, and then nothing follows but "computed"
 * - "example" and "stored_example": a value as the server shows it, and the SQL expression of the same as it is stored
 * - "show": the expression that shows the column's value as the server does
 * - "store": the expression that makes the stored value of a parameter, ?1, and "bind": what the parameter takes;
 *   "store_text": the same of a text that "show" gives, where "store" takes bytes (from SQLite 3.41 on)
 * - "nullable", "required": whether NULL is allowed, and whether each INSERT must give the column a value: in a
 *   database with the server's rules, which numbers rowversions itself
 * - "default" and "server_default", "identity", "computed": the expressions; the seed and increment
 * - "primary_key": the column's position in the key, counted from 1; "unique": true where it is part of another key
 * - "references": a list of maps with "table" and "column"
 *
 * @param tbl_id      optional; the one table to describe, else all of them are, in schema order.
 * @param[out] guide  owned.
 */
TOV_API void tov_client__describe_columns(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          KT_vhash **guide) KT_NOEXCEPT;

/* Loading rows that the server's own tools wrote into a created database. */

/** How rows are loaded. All zero is a good beginning. */
typedef struct tov_client_load_options {
    /** Optional: the table that rows go into, by its name in SQLite or on the server; else a file's name says it. */
    const char *tbl;
    /** Optional: "bcp", "csv", "json" (an array, or an object a line), "native" or "insert"; null or "auto" finds out
     * from the first rows. */
    const char *format;
    /** Optional: the files' encoding, as iconv names it; else a mark at their beginning says it, or they are UTF-8. */
    const char *encoding;
    /** Optional: what ends fields and rows, with \\t, \\n, \\r, \\0, \\x1F for characters that are hard to type. In CSV
     * files fields end with what is said here, rows always at line ends. */
    const char *field_end;
    const char *row_end;
    /** Optional: what CSV files have for NULL, without quotes; "" says that it is nothing. If it is null the first rows
     * decide, and a later word NULL is refused where it might be either. */
    const char *null_word;
    /** Whether CSV files begin with a line of names: 1 yes, -1 no, 0 finds out. */
    int32_t header;
    /** Optional: the directory in which refused rows are kept; made when it is absent. */
    const char *rejects;
    /** The load fails when more rows than this are refused; 0 for any number. */
    int64_t max_rejects;
    /** Rows a transaction; 0 for 10,000. */
    int64_t batch;
    /** Whether a value that would have to be shortened (values that SQLite's time functions round) is refused. */
    KT_bool exact;
    /** Whether nothing is kept when any row is refused. */
    KT_bool all_or_nothing;
    /** Whether files that were loaded before are loaded once more. */
    KT_bool again;
    /** Whether references are left unchecked, because rows that are referred to come with a later load. */
    KT_bool skip_references;
    /** Whether triggers run and constraints are asked for every row, though converting a value decides what they would.
     */
    KT_bool with_triggers;
    /** Whether the database is of no use if the load fails: then nothing is done to survive a failing machine, which is
     * faster. */
    KT_bool is_scratch;
    /** Optional: called from time to time with the bytes of a file that are done. */
    void (*progress)(void *data, const char *file, int64_t done, int64_t total);
    void *data;
} tov_client_load_options;

typedef struct tov_client_loader tov_client_loader;

/**
 * Opens a created database for loading rows of a schema's tables. The verdict on a row is the database's own: a row is
 * loaded when inserting it would have succeeded, and refused otherwise.
 *
 * What was loaded of which file is recorded in the database (tables tov_load_progress and tov_load_runs) together with
 * the rows, so a load that was interrupted goes on where it was, and files that were loaded are not loaded again.
 *
 *
 * @code{.c}
 * // Loads one file, and prints what became of it: "Orders.csv: 998 loaded, 2 rejected".
 * void load(KT_context *ctx, tov_schema *schema, const char *path)
 * {
 *     tov_client_load_options options = {0};
 *     tov_client_loader *loader = NULL;
 *     KT_varray *report = NULL;
 *     KT_varray *remarks = NULL;
 *     KT_vhash *file = NULL;
 *     int64_t loaded = 0;
 *     int64_t rejected = 0;
 *     options.rejects = "rejects"; // a folder
 *     tov_client__open_loader(ctx, schema, "shop.db", &options, &loader);
 *     tov_client__load_file(ctx, loader, path);
 *     tov_client__finish_load(ctx, loader, &report, &remarks);
 *     KT_varray__get__vhash(ctx, report, 0, &file);
 *     KT_vhash__get__int64(ctx, file, "loaded", &loaded);
 *     KT_vhash__get__int64(ctx, file, "rejected", &rejected);
 *     if (!KT_context__has_err(ctx))
 *         printf("%s: %ld loaded, %ld rejected\n", path, (long)loaded, (long)rejected);
 *     KT_varray__free(ctx, remarks);
 *     KT_varray__free(ctx, report);
 *     tov_client__free_loader(ctx, loader);
 * }
 * @endcode
 * @param options      optional; copied.
 * @param[out] loader  owned; freed with tov_client__free_loader(). The schema must outlive it.
 */
TOV_API void tov_client__open_loader(KT_context *ctx, tov_schema *schema, const char *database,
                                     const tov_client_load_options *options, tov_client_loader **loader) KT_NOEXCEPT;

/** Loads the rows of a file; those that are refused are not a failure. After a failure the loader can only be freed. */
TOV_API void tov_client__load_file(KT_context *ctx, tov_client_loader *loader, const char *path) KT_NOEXCEPT;

/** Takes the next bytes of a row part; after its last ones it is called once more with a size of 0. */
typedef void (*tov_client_take_part)(KT_context *ctx, void *data, const char *schema_name, const char *tbl_name,
                                     uint32_t number, const char *bytes, size_t size);

/** Hands all row parts of a source to take, part by part. Called again when rows have to be found again. */
typedef void (*tov_client_read_parts)(KT_context *ctx, void *data, tov_client_take_part take, void *take_data);

/**
 * Loads the row parts of a package: rows in bcp's native form, without computed columns. Rows of a temporal table's
 * history are counted and left out.
 *
 * @param name  of the source, for the record of what was loaded.
 * @param data  handed to read; must stay until the load is finished.
 */
TOV_API void tov_client__load_parts(KT_context *ctx, tov_client_loader *loader, const char *name,
                                    tov_client_read_parts read, void *data) KT_NOEXCEPT;

/**
 * Ends a load: refuses rows that refer to rows that are not there, after all files, and tells what became of each file.
 *
 * @param[out] report   owned; for each file and table a map with "file", "table", "dialect", "read", "loaded",
 *                      "rejected", "shortened" (column to number of values), "seconds", "before" (loaded earlier),
 *                      "history" (the rows are left out), "part" (of a package) and "unknown" (the schema does not
 *                      have the table: its rows are left out uncounted, and "bytes" says how much they are).
 * @param[out] remarks  owned; strings about the first rows that were refused.
 */
TOV_API void tov_client__finish_load(KT_context *ctx, tov_client_loader *loader, KT_varray **report,
                                     KT_varray **remarks) KT_NOEXCEPT;

/** Frees a loader; null does nothing. What was not finished stays as the last transaction left it. */
TOV_API void tov_client__free_loader(KT_context *ctx, tov_client_loader *loader) KT_NOEXCEPT;

/** How rows are written. All zero writes bcp's character form: a table that was loaded from such a file as that file
 * was, any other in UTF-8, with fields that end with a tab and rows that end with a line end. */
typedef struct tov_client_unload_options {
    /** Optional: "bcp"; "csv" (a line of names first, quotes where they are needed, NULL empty, an empty string "");
     * "json" (an object a line, with values as FOR JSON writes them); "insert" (one script of all tables, rows.sql). */
    const char *format;
    /** Optional: "utf-8" or "utf-16le", which begins with a mark. */
    const char *encoding;
    /** Optional: what ends fields and rows, as in tov_client_load_options. */
    const char *field_end;
    const char *row_end;
    /** The tables, by their names in SQLite or on the server; all of them when tbl_count is 0. */
    const char *const *tbls;
    uint32_t tbl_count;
    /** Optional: a SELECT whose rows are written, into the file query.dat, .csv, .jsonl or .sql. A column has the form
     * of the tables' columns of its name, if all of them have the same type; for "insert" exactly one table is named,
     * which the rows are for. */
    const char *query;
} tov_client_unload_options;

/**
 * Writes the rows of a database's tables in the forms of the server's tools, each table into a file of its name in a
 * folder, which is made when it is absent: tables that are referred to come before those that refer to them.
 *
 * @param options      optional.
 * @param[out] report  owned; for each table (or the query, whose name is empty) a map with "table", "file", "dialect",
 *                     "rows" and "unreadable": how many values hold what ends a field or row of a bcp file.
 */
TOV_API void tov_client__unload(KT_context *ctx, tov_schema *schema, const char *database, const char *folder,
                                const tov_client_unload_options *options, KT_varray **report) KT_NOEXCEPT;

KT_END_DECLS

#endif
