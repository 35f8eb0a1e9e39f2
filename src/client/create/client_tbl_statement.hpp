// The statement that creates a table.
#pragma once

#include "create/client_plan.hpp"

// Appends the statement that creates a table, with the server's rules or without.
void client_write_tbl(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules,
                      KT_string *sql) noexcept;
