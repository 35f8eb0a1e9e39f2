// The database that rows are loaded into: one connection, set up for many rows.
#pragma once

#include "kt_owned.hpp"
#include "kt_sqlite_owned.hpp"

#include <sqlite3.h>
#include <string>
#include <string_view>

struct client_connection {
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    kt_owned_connection connection{functions};
    bool runs_triggers = true;
    bool asks_constraints = true;
    int times_set_aside = 0; // the constraints
};

// Opens a database that is there, for reading alone or for loading: references are not looked at row by row, because
// rows may come before those that they refer to.
void client_connection__open(KT_context *ctx, client_connection &database, const char *file_name, bool read_only);
// Switches off what a database's own texts could do, for one that may be anybody's.
void client_connection__distrust(KT_context *ctx, client_connection &database);
void client_connection__run(KT_context *ctx, client_connection &database, const std::string &sql) noexcept;
void client_connection__prepare(KT_context *ctx, client_connection &database, const std::string &sql,
                                kt_owned_statement &statement) noexcept;
// Runs a statement that gives one number, or 0 when it gives no row.
void client_connection__ask(KT_context *ctx, client_connection &database, const std::string &sql,
                            int64_t &number) noexcept;
// Steps a statement whose failure is nothing to go on after; has says whether there is a row.
void client_connection__step(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, bool &has) noexcept;

// Fails when a code of SQLite's is one of a failure.
void client_connection__check(KT_context *ctx, client_connection &database, int code) noexcept;
void client_connection__bind_int64(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, int index,
                                   int64_t number) noexcept;
void client_connection__bind_text(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, int index,
                                  std::string_view text) noexcept;

// Whether triggers run from now on.
void client_connection__run_triggers(KT_context *ctx, client_connection &database, bool on) noexcept;

// Whether SQLite asks the CHECK constraints of rows that are put in from now on. What is set aside very often stays,
// since statements are compiled anew each time.
void client_connection__ask_constraints(KT_context *ctx, client_connection &database, bool on) noexcept;

// The text of a column of the present row, with its length.
std::string_view client_column_text(const client_connection &database, sqlite3_stmt *statement, int column) noexcept;

#define CLIENT_FAIL_AT(database, code) \
    KT_FAIL(KT_ERR_SQLITE(code), "%s", (database).functions->message((database).connection))
