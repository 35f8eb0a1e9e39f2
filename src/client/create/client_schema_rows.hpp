// Rows of SQLite's schema table, handled so that creating very many tables takes time in proportion to their number.
#pragma once

#include "create/client_database.hpp"

// Asks whether the schema table may be written to. Where it may not, and for a plan of fewer tables than make it worth
// it, the operations below do nothing.
void client_schema_rows__begin(KT_context *ctx, client_database &database, const client_plan &plan) noexcept;

// To be told of each table before it is created.
void client_schema_rows__begin_tbl(KT_context *ctx, client_database &database) noexcept;

// To be called once all tables are created, and before the transaction ends; does nothing when called again.
void client_schema_rows__end_tbls(KT_context *ctx, client_database &database) noexcept;

// Inserts the row that running the statement of a trigger or a view would write. The code is SQLite's.
int client_schema_rows__insert(client_database &database, const client_statement &statement) noexcept;
