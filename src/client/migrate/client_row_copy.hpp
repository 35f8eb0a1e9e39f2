// Rows copied from one table to another, with values that the loader's converters make.
#pragma once

#include "rows/load/client_connection.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <vector>

// A value of each row: the n-th column of the query, and the n-th parameter of the insertion.
struct client_copied_col {
    std::string name; // TABLE.COLUMN, for messages
    client_server_type old_type;
    client_server_type new_type;
    bool is_converted; // else it is copied as it is
};

struct client_row_copy {
    std::string query;
    std::string insert;
    std::vector<client_copied_col> cols;
    bool with_rules = false; // whether a code page's characters count
};

// Copies all rows. Fails at the first value that is not taken, and says which it is.
void client_copy_rows(KT_context *ctx, client_connection &database, const client_row_copy &copy);
