// A rowversion column of the database's own: a row that is given no version gets the next one, as on the server, and so
// does a row that is changed.
//
// The server numbers the versions of a whole database. A table of one row keeps the last number, also as the 8 bytes
// that are stored, and all bytes in their order, since SQLite before 3.41 has no function that makes bytes of numbers.
// A version that a program gives, because it comes from the server, is kept, and the next ones follow it.
#pragma once

#include "rows/table/client_row_tbl.hpp"

// What a column without a version has until its row is there.
inline constexpr const char *client_no_version = "x'0000000000000000'";

// A table's column that is filled in.
struct client_versioned {
    std::string col_id; // in the document; empty when the table has none
    std::string col;    // in quotes
    std::string rowid;  // the name by which a row is known
};
client_versioned client_find_version(const client_row_tbl &tbl);

// CREATE TABLE of the numbers, with its row.
std::string client_version_counter(const std::string &counter);

// The statements of the trigger after an insert, or after an update.
std::string client_version_body(const client_versioned &versioned, const std::string &tbl, const std::string &counter,
                                bool is_insert);
