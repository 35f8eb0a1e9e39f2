// What unloading tables and unloading a query share.
#pragma once

#include "rows/load/client_connection.hpp"
#include "rows/load/client_dialect.hpp"
#include "rows/write/client_row_writer.hpp"
#include "rows/write/client_unload_file.hpp"

// How rows are written: said by the caller, or as a file was from which they were loaded.
struct client_unload_form {
    client_format format = client_format::bcp;
    client_text_ends ends;
    bool utf_16 = false;
    bool is_short = false;
};

struct client_unload_counts {
    int64_t rows = 0;
    int64_t unreadable = 0; // values that hold what ends a field or row
};

// A place for files, and what is written in it.
struct client_unload_run {
    client_connection &database;
    std::string folder;
    client_unload_form form;
    KT_varray *report = nullptr;
};

// What the file names of a form end with, the dot included.
const char *client_unload_ending(client_format format) noexcept;
std::unique_ptr<client_row_writer> client_make_row_writer(const client_unload_form &form, client_out_rows rows);

// Writes all rows of a statement that was prepared.
void client_write_rows(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, client_row_writer &writer,
                       client_unload_file &file, client_unload_counts &counts);

void client_unload__report(KT_context *ctx, const client_unload_run &run, const client_unload_form &form,
                           const std::string &tbl, const std::string &file, const client_unload_counts &counts);

// Writes the rows of a query; wanted has the tables that it is about, by which its columns get their types.
void client_unload__query(KT_context *ctx, const client_unload_run &run, const char *query,
                          const std::vector<client_row_tbl> &wanted, bool is_named);
