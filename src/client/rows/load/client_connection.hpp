// The database that rows are loaded into: one connection, set up for many rows.
#pragma once

#include "kt_owned.hpp"
#include "kt_sqlite_functions.h"

#include <sqlite3.h>
#include <string>
#include <string_view>

// A statement that goes with its scope.
class client_statement_handle {
  public:
    client_statement_handle() = default;
    ~client_statement_handle()
    {
        reset();
    }
    client_statement_handle(const client_statement_handle &) = delete;
    client_statement_handle &operator=(const client_statement_handle &) = delete;
    void reset() noexcept
    {
        if (statement)
            functions->finalize(statement);
        statement = nullptr;
    }
    const KT_sqlite_functions *functions = nullptr;
    sqlite3_stmt *statement = nullptr;
};

struct client_connection {
    client_connection() = default;
    ~client_connection()
    {
        if (connection)
            functions->close(connection);
    }
    client_connection(const client_connection &) = delete;
    client_connection &operator=(const client_connection &) = delete;

    const KT_sqlite_functions *functions = nullptr;
    sqlite3 *connection = nullptr;
    bool runs_triggers = true;
};

// Opens a database that is there, for reading alone or for loading: references are not looked at row by row, because
// rows may come before those that they refer to.
void client_connection__open(KT_context *ctx, client_connection &database, const char *file_name,
                             bool read_only) noexcept;
void client_connection__run(KT_context *ctx, client_connection &database, const std::string &sql) noexcept;
void client_connection__prepare(KT_context *ctx, client_connection &database, const std::string &sql,
                                client_statement_handle &handle) noexcept;
// Runs a statement that gives one number, or 0 when it gives no row.
void client_connection__ask(KT_context *ctx, client_connection &database, const std::string &sql,
                            int64_t &number) noexcept;
// Steps a statement whose failure is nothing to go on after; has says whether there is a row.
void client_connection__step(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, bool &has) noexcept;

// Whether triggers run from now on.
void client_connection__run_triggers(client_connection &database, bool on) noexcept;

// The text of a column of the present row, with its length.
std::string_view client_column_text(const client_connection &database, sqlite3_stmt *statement, int column) noexcept;

#define CLIENT_FAIL_AT(database, code) \
    KT_FAIL(KT_ERR_SQLITE(code), "%s", (database).functions->message((database).connection))
