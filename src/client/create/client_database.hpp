// A database file while things are created in it: one connection, one transaction, one guard.
#pragma once

#include "check/client_guard.hpp"
#include "create/client_statements.hpp"

struct client_database {
    client_database() noexcept = default;
    ~client_database(); // closes it
    client_database(const client_database &) = delete;
    client_database &operator=(const client_database &) = delete;

    const KT_sqlite_functions *functions = nullptr;
    struct sqlite3 *connection = nullptr;
    client_guard guard;
    // Of client_schema_rows.cpp.
    struct sqlite3_stmt *insert_row = nullptr; // null where SQLite does not allow it
    int64_t last_old_row = 0;                  // the last row of the schema table that was there before
    uint32_t new_tbls = 0;                     // whose rows stand in the schema table
    bool has_shelf = false;
};

// Opens a file that is there, with the settings under which the database works as it should.
void client_database__open(KT_context *ctx, client_database &database, const char *file_name) noexcept;

// Begins the transaction, and waits for the lock if another program has it. The code is SQLite's.
int client_database__begin(client_database &database) noexcept;

// Closes the file, which takes back what was not committed.
void client_database__close(client_database &database) noexcept;

// Refuses a database that has something under a name that the plan needs.
void client_database__check_names(KT_context *ctx, client_database &database, const client_plan &plan) noexcept;

// Creates one thing; tables come first.
void client_database__create(KT_context *ctx, client_database &database, const client_statement &statement) noexcept;

void client_database__commit(KT_context *ctx, client_database &database) noexcept;

// Runs one statement of our own: it holds no text of a schema, and gives no rows.
void client_database__run(KT_context *ctx, client_database &database, const char *sql) noexcept;

// Raises what SQLite says of its last failure, and returns.
#define CLIENT_FAIL_IN(database, code) \
    KT_FAIL(KT_ERR_SQLITE(code), "%s", (database).functions->message((database).connection))
