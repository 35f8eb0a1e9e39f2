// What CREATE TABLE says about the values of a column, and what triggers ask first.
#pragma once

#include "create/client_plan.hpp"
#include "rules/client_constraints.hpp"

// Reads what the document says of a column's abstract type, as far as its values are checked; not the server's.
void client_read_checked_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              client_checked_type &type) noexcept;

// Finds the conditions for a value of the column, an expression, with the server's rules or without.
void client_find_col_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                 const std::string &value, bool with_rules, client_code_pages &pages,
                                 std::vector<client_constraint> &constraints);

// Appends the column's constraints, each named by what a trigger would say, with the server's rules or without.
void client_append_col_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                   bool with_rules, client_code_pages &pages, std::string &sql);
