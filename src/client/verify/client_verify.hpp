// A check while it runs: the database that is looked at, what it holds of the schema's tables, and the way of a
// violation to the caller.
//
// The database may be anybody's. Its names stand in statements only in quotes, its texts are never run, and a statement
// that SQLite refuses because of them is a violation of the table, not a failure of the check.
#pragma once

#include "check/client_guard.hpp"
#include "rows/convert/client_code_page.hpp"
#include "rows/load/client_connection.hpp"
#include "rows/table/client_row_tbl.hpp"
#include "verify/client_violation_kinds.hpp"

#include <map>

// What the database has under a table's name.
struct client_found_tbl {
    bool is_tbl = false; // else a view or a virtual table
    bool has_rowid = true;
    std::string rowid;             // the name by which rows are known; empty where columns have all of its names
    std::vector<std::string> cols; // in lower case
    std::vector<std::string> pk;   // of a table without rowid, as it is spelled
    std::string rowid_col;         // the column that is the rowid
};

// A column that the schema and the database both have.
struct client_verify_col {
    const client_row_col *row_col = nullptr;
    const char *type = nullptr; // the abstract type
    std::string raw;            // the value as it is stored, compared byte for byte
    std::string cast_to;        // the storage class that the created table would give it
    std::string collation;      // of the created table's column
    std::string key_collation;  // the server's own, where SQLite knows it and the server's rules are asked for
};

struct client_verify_tbl {
    client_row_tbl tbl;
    const client_found_tbl *found = nullptr;
    std::vector<client_verify_col> cols;
    std::vector<std::string> key_names; // of the row's key: the schema's primary key, or the database's own
    std::vector<std::string> key_values;
    std::string source; // the rows, in parentheses: raw values, and the columns as checks see them
};

struct client_verify {
    tov_schema *schema = nullptr;
    tov_client_check_options options = {};
    void (*take)(KT_context *ctx, void *data, const tov_client_violation *violation) = nullptr;
    void *data = nullptr;
    client_connection database;
    client_guard guard;
    client_code_pages pages;
    bool is_utf_8 = true;
    bool nulls_are_equal = false;                  // in unique keys
    std::map<std::string, bool> collations;        // of the server's that were met: whether SQLite has them
    std::map<std::string, client_found_tbl> found; // by names in lower case
    int64_t count = 0;                             // of violations
    bool is_whole = true;                          // not ended at the limit
};

// The function that counts the bytes of a text as UTF-8, whatever the database's encoding.
inline constexpr const char *client_utf8_size = "tov_utf8_size";

// The name of a table's rowid in its source. Names with a single quote are no column's of a schema.
inline constexpr const char *client_verify_rowid = "\"rowid'\"";

// Opens the database, begins the transaction, and lists what the database holds.
void client_verify__open(KT_context *ctx, client_verify &run, const char *file_name);

// Reads what the schema and the database say of a table. found is null where there is none of its name.
void client_verify__read_tbl(KT_context *ctx, client_verify &run, const char *tbl_id, client_verify_tbl &tbl);

// The column of an id; null where the database or the schema does not have it.
const client_verify_col *client_find_verify_col(const client_verify_tbl &tbl, const char *col_id) noexcept;

// What the database has under a name; null for nothing.
void client_verify__find_tbl(KT_context *ctx, client_verify &run, const std::string &name,
                             const client_found_tbl **found);

// Compiles a statement over the database's tables. ok is false where SQLite refuses it because of what they are; the
// table is reported then.
void client_verify__prepare(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, const std::string &sql,
                            kt_owned_statement &statement, bool &ok);
// Steps it likewise. has is false, too, when the check has reached its limit.
void client_verify__step(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, sqlite3_stmt *statement,
                         bool &has);

// The same without a report; the codes are SQLite's.
int client_verify__try(client_verify &run, const std::string &sql, kt_owned_statement &statement) noexcept;
int client_verify__step_raw(client_verify &run, sqlite3_stmt *statement) noexcept;
// Whether SQLite refused because of what a database or a schema holds, so that the rest can still be looked at.
bool client_is_refusal(int code) noexcept;
// Reports what SQLite said last of a table, or fails where nothing else can be looked at either.
void client_verify__report_refusal(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, int code);

// What a statement's results begin with: the rowid and the key's values, told from others by how many they are.
std::string client_row_results(const client_verify_tbl &tbl);
int client_count_row_results(const client_verify_tbl &tbl) noexcept;

// A value, cut to what is shown of it.
std::string client_short_value(const std::string &value);
// The literal of a result that was cut so.
std::string client_shown_result(const client_verify &run, sqlite3_stmt *statement, int column);

// What is wrong, for the report; the row is the statement's.
struct client_finding {
    const tov_client_violation_kind *kind;
    std::string message;
    std::string col;   // empty where none is to blame
    std::string value; // empty likewise
};
void client_verify__report_row(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                               sqlite3_stmt *statement, const client_finding &finding);
void client_verify__report_tbl(KT_context *ctx, client_verify &run, const char *tbl_name,
                               const client_finding &finding);

// The four kinds of looks at a table.
void client_verify__values(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl);
void client_verify__checks(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl);
void client_verify__keys(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl);
void client_verify__references(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl);
