// The rows of a table as text, in one of the forms of the server's tools.
#pragma once

#include "rows/table/client_row_tbl.hpp"
#include "rows/write/client_forms.hpp"

#include <memory>
#include <span>

struct client_out_col {
    std::string name;
    client_server_type type;
};

// What is written: a table's columns that are stored, or those of a query.
struct client_out_rows {
    std::string schema_name; // on the server
    std::string tbl_name;
    std::vector<client_out_col> cols;
    bool has_identity = false;
    bool checks_later = false; // rows may refer to rows that come after them
};

class client_row_writer {
  public:
    client_row_writer() = default;
    client_row_writer(const client_row_writer &) = delete;
    client_row_writer &operator=(const client_row_writer &) = delete;
    virtual ~client_row_writer() = default;

    // What is written before the first row and after the last; rows have a value for each column. May throw
    // std::bad_alloc.
    virtual void append_head(std::string &text) = 0;
    virtual void append_row(std::string &text, std::span<const client_value> values) = 0;
    virtual void append_tail(std::string &text) = 0;
    // How many values were written that hold what ends a field or row, so that they cannot be read again.
    virtual int64_t unreadable() const noexcept
    {
        return 0;
    }
};

struct client_text_ends {
    std::string field_end;
    std::string row_end;
};

std::unique_ptr<client_row_writer> client_make_bcp_writer(client_out_rows rows, client_text_ends ends, bool is_short);
std::unique_ptr<client_row_writer> client_make_csv_writer(client_out_rows rows, client_text_ends ends);
// An object a line, values as FOR JSON writes them.
std::unique_ptr<client_row_writer> client_make_json_writer(client_out_rows rows);
// Statements with batches of a hundred rows; rowversions are left to the server.
std::unique_ptr<client_row_writer> client_make_insert_writer(client_out_rows rows);
