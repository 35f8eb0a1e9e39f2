// The server's collations of a table's columns, as SQLite's definitions say them.
#pragma once

#include "rows/table/client_row_tbl.hpp"

// What is added to a column's definition, and to an expression that is to compare like the column.
struct client_collation {
    std::string col_id;
    std::string clause; // e.g.  COLLATE "Latin1_General_CI_AS", with a blank before it
};
using client_collations = std::vector<client_collation>;

// Lists the columns of which the server's collation is known. A name that could not be a collation's is refused.
void client_read_collations(KT_context *ctx, const client_row_tbl &tbl, client_collations &collations) noexcept;

// The clause of a column; empty for one that is not listed.
const char *client_find_collation(const client_collations &collations, const char *col_id) noexcept;
