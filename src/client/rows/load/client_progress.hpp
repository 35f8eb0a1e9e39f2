// What was loaded of which file, recorded in the database in the same transaction as the rows: a load that was
// interrupted goes on where the last transaction ended.
#pragma once

#include "rows/load/client_connection.hpp"
#include "rows/load/client_dialect.hpp"

struct client_run {
    int64_t first_row = 0; // of the file, counted from 1
    int64_t count = 0;     // rows that follow one another, all of them in the table
    int64_t first_rowid = 0;
};

enum class client_load_state : uint8_t { loading, loaded, done };

struct client_progress {
    int64_t id = 0; // of the record
    std::string file;
    std::string tbl;
    std::string fingerprint;
    client_load_state state = client_load_state::loading;
    int64_t position = 0;
    int64_t line = 1;
    int64_t read = 0;
    int64_t loaded = 0;
    int64_t rejected = 0;
    int64_t rows_size = 0; // of the files of rejects
    int64_t lines_size = 0;
    std::string shortened; // counts by column
    std::string dialect;   // of a bcp file, packed
    std::string rejects;   // the name of the file of rejects, in their directory
};

// Tells a file by its size and by its first and last bytes, and how it is read.
void client_fingerprint(KT_context *ctx, const char *path, const std::string &dialect, std::string &fingerprint);

// Makes the tables of the records where they are absent; their names begin as no table of the schema does.
void client_progress__prepare(KT_context *ctx, client_connection &database, const std::string &prefix);

// Looks for the record of a file and table with this fingerprint; the id stays 0 when there is none.
void client_progress__find(KT_context *ctx, client_connection &database, const std::string &prefix,
                           client_progress &progress);
// Begins a new record in the place of an earlier one.
void client_progress__begin(KT_context *ctx, client_connection &database, const std::string &prefix,
                            client_progress &progress);
void client_progress__save(KT_context *ctx, client_connection &database, const std::string &prefix,
                           const client_progress &progress);
void client_progress__add_run(KT_context *ctx, client_connection &database, const std::string &prefix,
                              const client_progress &progress, const client_run &run);
// The dialect of the bcp file from which a table was loaded last.
void client_progress__find_dialect(KT_context *ctx, client_connection &database, const std::string &prefix,
                                   const std::string &tbl, client_dialect &dialect, bool &found);
// The tables of which a file had rows.
void client_progress__list_tbls(KT_context *ctx, client_connection &database, const std::string &prefix,
                                const client_progress &progress, std::vector<std::string> &tbls);
