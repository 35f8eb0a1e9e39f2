// The triggers that check values: the schema module's statements and the server's rules, and when they are asked.
#pragma once

#include "create/client_plan.hpp"
#include "rows/convert/client_code_page.hpp"

// Appends each column's statements, which raise an error or do nothing.
void client_write_checks(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules,
                         client_code_pages &pages, std::string &checks);

// When these statements are asked; both empty where no column has any.
struct client_doubt {
    std::string cols; // " OF ...", the columns of which a change is asked about
    std::string when; // "WHEN ...\n", false for a row whose values are good
};

void client_find_doubt(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules, bool is_update,
                       client_code_pages &pages, client_doubt &doubt);
