// What CREATE TABLE says about the values of a column.
#pragma once

#include "create/client_plan.hpp"
#include "rows/convert/client_code_page.hpp"

// Appends the column's constraints, each named by what a trigger would say, with the server's rules or without.
void client_append_col_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                   bool with_rules, client_code_pages &pages, std::string &sql);
