// Rows of SQLite's schema table, handled so that creating very many tables takes time in proportion to their number.
#pragma once

#include "create/client_database.hpp"

// Asks whether the schema table may be written to. Where it may not, and for a plan of fewer tables than make it worth
// it, rows are SQLite's affair, and the operations below do nothing.
void client_schema_rows__begin(KT_context *ctx, client_database &database, const client_plan &plan) noexcept;

// Whether rows are written here: tables may be created bare then, and triggers and views are compiled, but not run.
inline bool client_schema_rows__are_ours(const client_database &database) noexcept
{
    return database.shelve_row != nullptr;
}

// To be told of each table before it is created.
void client_schema_rows__begin_tbl(KT_context *ctx, client_database &database) noexcept;

// Keeps the text of a table that was created bare. The code is SQLite's.
int client_schema_rows__keep_text(client_database &database, const client_statement &statement) noexcept;

// To be called before a trigger or a view is compiled, once all tables are created.
void client_schema_rows__show_tbls(KT_context *ctx, client_database &database) noexcept;

// Adds the row that running the statement of a trigger or a view would write. The code is SQLite's.
int client_schema_rows__add(client_database &database, const client_statement &statement) noexcept;

// Writes all rows as they are to be. The connection knows the tables no longer, and its transaction is to end.
void client_schema_rows__finish(KT_context *ctx, client_database &database) noexcept;
