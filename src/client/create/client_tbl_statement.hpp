// The statement that creates a table.
#pragma once

#include "create/client_col_constraints.hpp"

// How the values of a table are held to its types and to the server's rules.
struct client_tbl_form {
    bool with_rules;
    bool with_constraints; // else triggers do it
    client_code_pages &pages;
};

// Appends the statement that creates a table.
void client_write_tbl(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_tbl_form &form,
                      KT_string *sql) noexcept;

// Appends what that statement says of one column.
void client_write_col(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                      const client_tbl_form &form, KT_string *sql) noexcept;
