// A table as files of its rows have it: all columns of the server's table, in the server's order.
#pragma once

#include "kt_owned.hpp"
#include "rows/convert/client_server_type.hpp"
#include "tov_client.h"

#include <string>
#include <vector>

struct client_row_col {
    std::string name;
    client_server_type type;         // of the values that SQLite's table takes
    client_server_type server_type;  // of the server's table, where NULL may be allowed though SQLite's key is not
    bool stored = false;             // whether the SQLite table has it
    bool computed = false;           // the server computes it: files may leave it out
    bool rowid = false;              // it is the integer primary key
    bool has_default = false;        // in SQLite
    bool has_server_default = false; // on the server, whether or not SQLite has one that means the same
    bool identity = false;
    std::string col_id;    // in the document; empty when the column is not stored
    std::string collation; // the server's, of strings; empty where the document does not say
};

struct client_row_tbl {
    std::string id;
    std::string name;          // in SQLite
    std::string server_schema; // empty where the document does not say
    std::string server_name;
    bool has_facts = false;  // the document says what the server says of it
    bool is_history = false; // of a temporal table: its rows are the server's own
    std::vector<client_row_col> cols;
};

// Reads a table of a schema: from the facts about the server where the document carries them, otherwise from the
// columns' abstract types, in the order of the document and without the columns that SQLite's table lacks.
void client_read_row_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, client_row_tbl &tbl) noexcept;

// The position of a column by name, ASCII case aside; the number of columns when there is none.
size_t client_find_row_col(const client_row_tbl &tbl, std::string_view name) noexcept;

// The column that has an id of the document, ASCII case aside; null when SQLite's table has none.
const client_row_col *client_find_stored_col(const client_row_tbl &tbl, const char *col_id) noexcept;

// A name in double quotes, safe in a statement, since names are checked.
std::string client_quoted(const std::string &name);
