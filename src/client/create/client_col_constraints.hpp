// What CREATE TABLE says about the values of a column.
#pragma once

#include "create/client_plan.hpp"
#include "rows/convert/client_code_page.hpp"

// The column of a table that has an id of the document; null when SQLite's table has none.
const client_row_col *client_find_stored_col(const client_row_tbl &tbl, const char *col_id) noexcept;

// Appends the column's constraints, each named by what a trigger would say, with the server's rules or without.
void client_append_col_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                   bool with_rules, client_code_pages &pages, std::string &sql);
