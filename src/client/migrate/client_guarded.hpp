// A database that is changed under a guard: each statement is compiled by itself, and does what it is meant to do.
#pragma once

#include "check/client_guard.hpp"
#include "migrate/client_steps.hpp"
#include "rows/load/client_connection.hpp"

struct client_guarded : client_connection {
    client_guard guard;
};

// Puts the guard on an open connection. What is run otherwise than here is refused from then on.
void client_guarded__watch(KT_context *ctx, client_guarded &database);

// Runs a statement. The code of the second is SQLite's.
void client_guarded__run(KT_context *ctx, client_guarded &database, const client_migration_statement &statement);
int client_guarded__attempt(client_guarded &database, const client_migration_statement &statement);

// The statement of a table as a database has it; empty where it has none.
void client_read_statement(KT_context *ctx, client_guarded &database, const std::string &tbl, std::string &sql);
