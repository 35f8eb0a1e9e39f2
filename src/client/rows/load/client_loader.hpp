// A load in progress: the database, the tables that rows went into so far, and what was read of each file.
#pragma once

#include "rows/load/client_dialect.hpp"
#include "rows/load/client_progress.hpp"
#include "rows/load/client_rejects.hpp"
#include "rows/load/client_target.hpp"
#include "rows/read/client_input.hpp"

#include <chrono>
#include <deque>

// The rows of one file that go into one table.
struct client_load_part {
    client_target *target = nullptr; // null for what is recorded of a file with rows of several tables
    client_layout *layout = nullptr;
    client_progress progress;
    client_run run;
    bool keeps_runs = false;                  // the table has references, for which its rows may have to be found again
    bool was_loaded = false;                  // by an earlier load, which told of it
    std::string head;                         // the last statement of a script for this table, which the layout is for
    bool is_history = false;                  // rows that are counted and left out
    std::map<std::string, int64_t> shortened; // how many values, by column
};

// Row parts that come from a function of the caller's, which can be asked for them more than once.
struct client_part_source {
    std::string name;
    tov_client_read_parts read = nullptr;
    void *data = nullptr;
};

// A file while it is read, and after it.
struct client_load_job {
    std::string path;
    std::string shown; // in reports
    client_dialect dialect;
    std::unique_ptr<client_reader> reader;
    client_reject_files rejects;
    std::deque<client_load_part> parts;   // the first one's record says how far the file was read
    client_part_source *source = nullptr; // of a row part; null for files
    uint32_t number = 0;                  // of the row part in its source
    std::string unknown_tbl;              // of a row part: the table that the schema does not have
    int64_t unknown_bytes = 0;
    std::unique_ptr<client_input> input; // of a row part, while it is read
    int64_t skip_to = 0; // of a file that cannot be read from its middle: what comes before is read and not inserted
    double seconds = 0;
};

struct client_load_settings {
    std::string tbl;
    std::string encoding;
    std::string rejects;
    client_dialect_wish wish;
    int64_t max_rejects = 0; // 0 for any number
    int64_t batch = 10'000;
    bool all_or_nothing = false;
    bool again = false;
    bool skip_references = false;
    bool with_triggers = false;
    bool is_scratch = false;
    void (*progress)(void *data, const char *file, int64_t done, int64_t total) = nullptr;
    void *data = nullptr;
};

// A table by all its names.
struct client_tbl_names {
    std::string id;
    std::string name;          // in SQLite
    std::string server_schema; // dbo where the document does not say
    std::string server_name;
};

struct tov_client_loader {
    tov_schema *schema = nullptr;
    client_connection database;
    client_load_settings settings;
    client_converter converter;
    client_plan plan; // of a database that has all there may be
    client_versions versions;
    std::vector<client_tbl_names> names;          // of all tables
    std::map<std::string, client_target> targets; // by table id
    std::deque<client_load_job> jobs;
    std::deque<client_part_source> sources;
    std::vector<std::string> remarks; // the first rejects, for a person
    int64_t rejected = 0;
    int64_t in_batch = 0;       // rows since the last transaction ended
    int64_t schema_version = 0; // of the database, for which the targets' checks were looked at
    bool in_transaction = false;
};

// The target of a table, made when it is asked for first.
void client_loader__get_target(KT_context *ctx, tov_client_loader &loader, const char *tbl_id, client_target **target);

// The id of the table that a name means: the one in SQLite or on the server, with or without its schema. Empty when
// there is none.
void client_loader__find_tbl(const tov_client_loader &loader, std::string_view name, std::string &tbl_id);

// The same for a table of the server's, whose schema and name are known apart.
void client_loader__find_server_tbl(const tov_client_loader &loader, std::string_view schema_name,
                                    std::string_view tbl_name, std::string &tbl_id);

void client_loader__begin(KT_context *ctx, tov_client_loader &loader);
// Records how far a job is, and ends the transaction.
void client_loader__commit(KT_context *ctx, tov_client_loader &loader, client_load_job *job);

// After a failure: what was committed before it stays, the rows that were put in are good.
void client_loader__roll_back(KT_context *ctx, tov_client_loader &loader);

// Opens a part for a table, or takes up the one that an earlier load left.
void client_loader__begin_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_target *target,
                               const std::string &fingerprint, client_load_part **part);

// Makes a job ready to keep refused rows, where they are to be kept.
void client_loader__open_rejects(KT_context *ctx, tov_client_loader &loader, client_load_job &job);

// Tells of a refused row and keeps it aside.
void client_loader__refuse(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                           client_input &input, const client_row &row, const client_verdict &verdict, int64_t number);

// Reads and puts in the rows of an input, until it has no more or needs to be fed.
void client_loader__read_rows(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_input &input);

// Refuses, of the rows that were loaded, those that refer to rows that are not there.
void client_loader__check_references(KT_context *ctx, tov_client_loader &loader);

// Finds the rows that refer to nothing again, row by row; made for one part of a job.
class client_row_search {
  public:
    client_row_search(client_load_job &job, client_load_part &part) : job_(job), part_(part)
    {
    }
    void prepare(KT_context *ctx, tov_client_loader &loader);
    // Looks at all rows that the input has by now.
    void look(KT_context *ctx, tov_client_loader &loader, client_input &input);
    int64_t found() const noexcept
    {
        return found_;
    }

  private:
    void is_of_part(KT_context *ctx, tov_client_loader &loader, client_row &row, bool &is_wanted);
    void find_run(KT_context *ctx, tov_client_loader &loader);
    void look_at_row(KT_context *ctx, tov_client_loader &loader, client_input &input, const client_row &row);
    void refuse(KT_context *ctx, tov_client_loader &loader, client_input &input, const client_row &row, int64_t rowid);
    void describe(KT_context *ctx, tov_client_loader &loader, client_verdict &verdict);
    int64_t rowid_of(tov_client_loader &loader, const client_row &row) const;

    client_load_job &job_;
    client_load_part &part_;
    std::unique_ptr<client_reader> reader_;
    kt_owned_statement runs_{tov__get_sqlite_functions()};
    kt_owned_statement orphan_{tov__get_sqlite_functions()};
    kt_owned_statement deletion_{tov__get_sqlite_functions()};
    client_run run_;
    int64_t number_ = 0; // of the row
    int64_t found_ = 0;
};

// Counts by column, as the record of a load has them.
std::string client_pack_counts(const std::map<std::string, int64_t> &counts);
std::map<std::string, int64_t> client_unpack_counts(std::string_view packed);

// Takes all row parts of a source, and takes one of them again.
void client_loader__load_parts(KT_context *ctx, tov_client_loader &loader, client_part_source &source);
void client_loader__search_parts(KT_context *ctx, tov_client_loader &loader, client_part_source &source,
                                 client_load_job &job, client_load_part &part, int64_t &found);

// Begins a script: a record of how far it was read, and a part for each table that its statements name.
void client_loader__begin_script(KT_context *ctx, tov_client_loader &loader, client_load_job &job);
// The part and the layout for a row of a script. A row whose columns cannot be told is refused.
void client_loader__find_script_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_row &row,
                                     client_load_part **part);

// The encoding to open files with: none for native forms, whatever they begin with.
std::string client_loader_encoding(const tov_client_loader &loader);
