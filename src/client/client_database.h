// A database file while things are created in it: one connection, one transaction, one guard.
#pragma once

#include "client_guard.h"
#include "client_statements.h"

struct client_database {
    client_database() noexcept = default;
    ~client_database(); // closes it, which takes back what was not committed
    client_database(const client_database &) = delete;
    client_database &operator=(const client_database &) = delete;

    const char *file_name = nullptr;
    const KT_sqlite_functions *functions = nullptr;
    struct sqlite3 *connection = nullptr;
    struct sqlite3_stmt *trigger_row = nullptr; // inserts a trigger into the schema table; null where that is refused
    bool triggers_begun = false;
    client_guard guard;
};

// Opens the file with the settings under which the database works as it should, and begins the transaction.
void client_database__begin(KT_context *ctx, client_database &database, const char *file_name) noexcept;

// Refuses a database that has something under a name that the plan needs.
void client_database__check_names(KT_context *ctx, client_database &database, const client_plan &plan) noexcept;

// Creates one thing. Tables come first: from the first trigger on no table can be created.
void client_database__create(KT_context *ctx, client_database &database, const client_statement &statement) noexcept;

void client_database__commit(KT_context *ctx, client_database &database) noexcept;
