// A database file while things are created in it: one connection, one transaction, one guard.
#pragma once

#include "check/client_guard.hpp"
#include "create/client_statements.hpp"
#include "kt_sqlite_owned.hpp"

struct client_database {
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    kt_owned_connection connection{functions};
    client_guard guard;
    // Of client_schema_rows.cpp.
    kt_owned_statement shelve_row{functions};  // null where rows are not written, or SQLite does not allow it
    kt_owned_statement shelve_text{functions}; // of a table that was created bare
    int64_t last_old_row = 0;                  // the last row of the schema table that was there before
    uint32_t new_tbls = 0;                     // whose rows are in the schema table
    bool has_all_tbls = false;                 // whether all rows of tables are in the schema table, for triggers
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
