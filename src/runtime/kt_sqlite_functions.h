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

/** Result codes are SQLite's: 0 success, 100 a row, 101 done. The position of each entry stands before it. */
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
    /** Opens a database with flags (6 = read and write, create) and the default file system. On failure the
     *  connection is null and nothing is left open. */
    /* 21 */ int (*open)(const char *file_name, struct sqlite3 **connection, int flags);
    /** Compiles one statement; what follows it in the text is ignored. */
    /* 22 */ int (*prepare)(struct sqlite3 *connection, const char *sql, struct sqlite3_stmt **statement);
    /* 23 */ int (*reset)(struct sqlite3_stmt *statement);
    /* 24 */ int (*step)(struct sqlite3_stmt *statement);
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
