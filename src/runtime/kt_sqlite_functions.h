/*
 * The table of SQLite entry points through which everything here calls SQLite, so that a program with a SQLite build
 * of its own shares it. Positions are fixed: entries are only ever added at the end.
 */
#ifndef KT_SQLITE_FUNCTIONS_H
#define KT_SQLITE_FUNCTIONS_H

#include "kt_context.h"

KT_BEGIN_DECLS

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_context;
struct sqlite3_value;

/**
 * Result codes are SQLite's: 0 success, 100 a row, 101 done. The position of each entry is written before it. Where
 * nothing else is said, an entry does what the operation of that name does in SQLite; strings and blobs that are bound
 * or given as a result are copied.
 */
typedef struct KT_sqlite_functions {
    /*  0 */ int (*bind_blob)(struct sqlite3_stmt *statement, int index, const void *bytes, int size);
    /*  1 */ int (*bind_double)(struct sqlite3_stmt *statement, int index, double value);
    /*  2 */ int (*bind_int64)(struct sqlite3_stmt *statement, int index, int64_t value);
    /*  3 */ int (*bind_null)(struct sqlite3_stmt *statement, int index);
    /*  4 */ int (*bind_parameter_count)(struct sqlite3_stmt *statement);
    /*  5 */ int (*bind_text)(struct sqlite3_stmt *statement, int index, const char *text, int size);
    /*  6 */ int (*changes)(struct sqlite3 *connection);
    /*  7 */ int (*clear_bindings)(struct sqlite3_stmt *statement);
    /*  8 */ int (*close)(struct sqlite3 *connection);
    /*  9 */ const void *(*column_blob)(struct sqlite3_stmt *statement, int column);
    /* 10 */ int (*column_bytes)(struct sqlite3_stmt *statement, int column);
    /* 11 */ int (*column_count)(struct sqlite3_stmt *statement);
    /* 12 */ double (*column_double)(struct sqlite3_stmt *statement, int column);
    /* 13 */ int64_t (*column_int64)(struct sqlite3_stmt *statement, int column);
    /* 14 */ const char *(*column_name)(struct sqlite3_stmt *statement, int column);
    /* 15 */ const char *(*column_text)(struct sqlite3_stmt *statement, int column);
    /* 16 */ int (*column_type)(struct sqlite3_stmt *statement, int column);
    /* 17 */ const char *(*message)(struct sqlite3 *connection);
    /* 18 */ const char *(*errstr)(int code);
    /* 19 */ int (*finalize)(struct sqlite3_stmt *statement);
    /* 20 */ int64_t (*last_insert_rowid)(struct sqlite3 *connection);
    /** Opens a database with flags (6 = read and write, create) and the default file system, and lets it reject
     *  impossible dates (kt_sqlite_dates.h). On failure the connection is null and nothing is left open. */
    /* 21 */ int (*open)(const char *file_name, struct sqlite3 **connection, int flags);
    /** Compiles one statement; what follows it in the text is ignored. */
    /* 22 */ int (*prepare)(struct sqlite3 *connection, const char *sql, struct sqlite3_stmt **statement);
    /* 23 */ int (*reset)(struct sqlite3_stmt *statement);
    /* 24 */ int (*step)(struct sqlite3_stmt *statement);
    /** The same as open, but leaves the connection as SQLite made it. */
    /* 25 */ int (*open_plain)(const char *file_name, struct sqlite3 **connection, int flags);
    /** Compiles the first statement of a string; rest is what follows it. Without one the statement is null. */
    /* 26 */ int (*prepare_next)(struct sqlite3 *connection, const char *sql, struct sqlite3_stmt **statement,
                                 const char **rest);
    /** Runs all statements of a string, without looking at rows. */
    /* 27 */ int (*exec)(struct sqlite3 *connection, const char *sql);
    /* 28 */ int (*bind_value)(struct sqlite3_stmt *statement, int index, const struct sqlite3_value *value);
    /* 29 */ struct sqlite3_value *(*column_value)(struct sqlite3_stmt *statement, int column);
    /* 30 */ int (*extended_errcode)(struct sqlite3 *connection);
    /* 31 */ int (*get_autocommit)(struct sqlite3 *connection);
    /* 32 */ int (*busy_timeout)(struct sqlite3 *connection, int milliseconds);
    /* 33 */ const char *(*libversion)(void);
    /* 34 */ int (*libversion_number)(void);
    /** Adds an SQL function. SQLite calls release with data when it drops the function, also when adding failed. */
    /* 35 */ int (*create_function)(struct sqlite3 *connection, const char *name, int argument_count, int flags,
                                    void *data,
                                    void (*function)(struct sqlite3_context *call, int count,
                                                     struct sqlite3_value **arguments),
                                    void (*release)(void *data));
    /* 36 */ void *(*user_data)(struct sqlite3_context *call);
    /* 37 */ int (*value_type)(struct sqlite3_value *value);
    /* 38 */ int (*value_bytes)(struct sqlite3_value *value);
    /* 39 */ const void *(*value_blob)(struct sqlite3_value *value);
    /* 40 */ const char *(*value_text)(struct sqlite3_value *value);
    /* 41 */ int64_t (*value_int64)(struct sqlite3_value *value);
    /* 42 */ double (*value_double)(struct sqlite3_value *value);
    /* 43 */ void (*result_null)(struct sqlite3_context *call);
    /* 44 */ void (*result_int64)(struct sqlite3_context *call, int64_t value);
    /* 45 */ void (*result_double)(struct sqlite3_context *call, double value);
    /* 46 */ void (*result_text)(struct sqlite3_context *call, const char *text, int size);
    /* 47 */ void (*result_value)(struct sqlite3_context *call, struct sqlite3_value *value);
    /* 48 */ void (*result_error)(struct sqlite3_context *call, const char *message);
    /* 49 */ void (*result_error_code)(struct sqlite3_context *call, int code);
    /** Memory of SQLite's own, for what belongs to a connection. */
    /* 50 */ void *(*allocate)(uint64_t size);
    /* 51 */ void (*release)(void *block);
    /** Asks a callback, while statements are compiled, about everything they would do; its answers are SQLite's. */
    /* 52 */ int (*set_authorizer)(struct sqlite3 *connection,
                                   int (*authorize)(void *data, int action, const char *first, const char *second,
                                                    const char *database, const char *trigger),
                                   void *data);
    /** Switches one of the connection's settings that take on or off (SQLITE_DBCONFIG_...). */
    /* 53 */ int (*configure)(struct sqlite3 *connection, int setting, int on);
    /** Bind bytes without copying them: they must stay as they are for as long as the statement runs with them. */
    /* 54 */ int (*bind_text_in_place)(struct sqlite3_stmt *statement, int index, const char *text, int size);
    /* 55 */ int (*bind_blob_in_place)(struct sqlite3_stmt *statement, int index, const void *bytes, int size);
} KT_sqlite_functions;

/** The table in force; lives as long as the process, never freed. */
KT_API const KT_sqlite_functions *tov__get_sqlite_functions(void) KT_NOEXCEPT;

/**
 * Puts a program's own table in the place of the one over the linked SQLite. Null restores that one.
 *
 * Call it before the first use of anything that opens a database. Every entry must be set. The table is not copied:
 * it must stay as it is for as long as it is in force.
 */
KT_API void tov__set_sqlite_functions(const KT_sqlite_functions *functions) KT_NOEXCEPT;

KT_END_DECLS

#endif
