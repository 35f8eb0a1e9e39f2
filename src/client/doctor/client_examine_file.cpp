// What does not depend on the schema: the SQLite at hand, the file, references and the indexes that they need.
#include "doctor/client_examination.hpp"
#include "kt_folded.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <algorithm>

#define KT_HERE "src/client/doctor/client_examine_file"

// The oldest version under which everything passes that a database's own checks promise.
static constexpr int oldest_version = 3038000;

namespace {

struct connection_setting {
    const char *question;
    client_diagnosis_code code;
    const char *when_on;
    const char *when_off;
};

// The columns of a key or an index, in small letters.
using col_names = std::vector<std::string>;

struct reference {
    std::string tbl; // that it refers to
    col_names cols;
    std::vector<std::string> names; // of the columns, as they are written
};

} // namespace

static constexpr connection_setting connection_settings[] = {
    {"PRAGMA foreign_keys", "setting-foreign-keys", "each connection enforces references",
     "a connection does not enforce references unless it asks for that"},
    {"PRAGMA recursive_triggers", "setting-recursive-triggers", "each connection follows delete actions to their end",
     "a connection does not follow delete actions to their end unless it asks for that"},
};

// What a new connection has is a matter of how SQLite was built.
static void my_look_at_settings(KT_context *ctx, client_examination &examination, client_connection &plain)
{
    for (const connection_setting &setting : connection_settings) {
        int64_t is_on = 0;
        KT_TRY(client_connection__ask(ctx, plain, setting.question, is_on));
        if (is_on)
            KT_TRY(client_examination__pass(ctx, examination, setting.code, setting.when_on));
        else
            KT_TRY(client_examination__add(ctx, examination, setting.code, setting.when_off));
    }
}

static void my_open_plain(KT_context *ctx, client_connection &plain)
{
    const int code =
        plain.functions->open_plain(":memory:", plain.connection.out(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    KT_TRY(client_connection__check(ctx, plain, code));
}

void client_examination__library(KT_context *ctx, client_examination &examination)
{
    const KT_sqlite_functions *functions = examination.database.functions;
    client_connection plain;
    const std::string version = std::string("SQLite ") + functions->libversion();
    if (functions->libversion_number() < oldest_version)
        KT_TRY(client_examination__add(ctx, examination, "sqlite-version", version + " is too old"));
    else
        KT_TRY(client_examination__pass(ctx, examination, "sqlite-version", version));
    KT_TRY(my_open_plain(ctx, plain));
    KT_TRY(my_look_at_settings(ctx, examination, plain));
}

// The basic checks rely on SQLite moving an impossible date into the next month.
void client_examination__dates(KT_context *ctx, client_examination &examination)
{
    client_connection plain;
    int64_t is_moved = 0;
    KT_TRY(my_open_plain(ctx, plain));
    KT_TRY(client_connection__ask(ctx, plain, "SELECT date('2024-02-30') = '2024-03-01'", is_moved));
    const client_plan &plan = examination.wanted.plan;
    const bool has_rules =
        examination.recorded.schema && plan.with_rules &&
        std::all_of(plan.tbls.begin(), plan.tbls.end(), [](const client_tbl &tbl) { return tbl.rows.has_facts; });
    if (is_moved || has_rules)
        KT_TRY(client_examination__pass(ctx, examination, "impossible-dates", "the checks refuse impossible dates"));
    else
        KT_TRY(client_examination__add(ctx, examination, "impossible-dates",
                                       "with this SQLite basic checks take impossible dates, such as 2024-02-30"));
}

void client_examination__file(KT_context *ctx, client_examination &examination)
{
    client_result rows;
    KT_TRY(client_examination__ask(ctx, examination, "PRAGMA integrity_check", "", rows));
    for (const std::vector<std::string> &row : rows) {
        if (row[0] == "ok")
            KT_TRY(client_examination__pass(ctx, examination, "integrity", "the file is sound"));
        else
            KT_TRY(client_examination__add(ctx, examination, "integrity", row[0]));
    }
}

static void my_look_at_references_of(KT_context *ctx, client_examination &examination, const std::string &tbl,
                                     bool &all_hold)
{
    client_result rows;
    KT_TRY(client_examination__ask(ctx, examination,
                                   "SELECT c.parent, count(*), (SELECT group_concat(f.\"from\", ', ') "
                                   "FROM pragma_foreign_key_list(?1) AS f WHERE f.id = c.fkid) "
                                   "FROM pragma_foreign_key_check(?1) AS c GROUP BY c.fkid ORDER BY c.fkid",
                                   tbl, rows));
    for (const std::vector<std::string> &row : rows) {
        const bool is_one = row[1] == "1";
        KT_TRY(client_examination__add(ctx, examination, "reference-broken",
                                       row[1] + (is_one ? " row of " : " rows of ") + client_quoted(tbl) +
                                           (is_one ? " refers" : " refer") + " to no row of " + client_quoted(row[0]) +
                                           " (" + row[2] + ")"));
        all_hold = false;
    }
}

void client_examination__references(KT_context *ctx, client_examination &examination)
{
    std::vector<std::string> tbls;
    bool all_hold = true;
    KT_TRY(client_examination__list_tbls(ctx, examination, tbls));
    for (const std::string &tbl : tbls)
        KT_TRY(my_look_at_references_of(ctx, examination, tbl, all_hold));
    if (all_hold)
        KT_TRY(client_examination__pass(ctx, examination, "reference-broken", "all references lead to a row"));
}

static void my_list_references(KT_context *ctx, client_examination &examination, const std::string &tbl,
                               std::vector<reference> &references)
{
    client_result rows;
    std::string last_id;
    KT_TRY(client_examination__ask(ctx, examination,
                                   "SELECT id, \"table\", \"from\" FROM pragma_foreign_key_list(?1) ORDER BY id, seq",
                                   tbl, rows));
    for (const std::vector<std::string> &row : rows) {
        if (references.empty() || row[0] != last_id)
            references.push_back({row[1], {}, {}});
        references.back().cols.push_back(kt_folded(row[2]));
        references.back().names.push_back(row[2]);
        last_id = row[0];
    }
}

// Those of all rows, the rowid being one too.
static void my_list_indexes(KT_context *ctx, client_examination &examination, const std::string &tbl,
                            std::vector<col_names> &indexes)
{
    client_result rows;
    client_result rowid;
    std::string last_name;
    KT_TRY(client_examination__ask(ctx, examination,
                                   "SELECT l.name, i.name FROM pragma_index_list(?1) AS l, pragma_index_info(l.name) "
                                   "AS i WHERE NOT l.partial ORDER BY l.seq, i.seqno",
                                   tbl, rows));
    for (const std::vector<std::string> &row : rows) {
        if (indexes.empty() || row[0] != last_name)
            indexes.emplace_back();
        indexes.back().push_back(kt_folded(row[1]));
        last_name = row[0];
    }
    KT_TRY(client_examination__ask(ctx, examination,
                                   "SELECT name FROM pragma_table_info(?1) WHERE pk > 0 AND 1 = (SELECT count(*) FROM "
                                   "pragma_table_info(?1) WHERE pk > 0) AND NOT EXISTS (SELECT 1 FROM "
                                   "pragma_index_list(?1) WHERE origin = 'pk')",
                                   tbl, rowid));
    for (const std::vector<std::string> &row : rowid)
        indexes.push_back({kt_folded(row[0])});
}

// An index helps when it begins with the columns, in whatever order.
static bool my_begins_with(const col_names &index, const col_names &cols)
{
    if (index.size() < cols.size())
        return false;
    const auto end = index.begin() + static_cast<std::ptrdiff_t>(cols.size());
    return std::is_permutation(index.begin(), end, cols.begin(), cols.end());
}

static std::string my_index_statement(const std::string &tbl, const reference &reference)
{
    std::string name = "ix_" + tbl;
    std::string cols;
    for (const std::string &col : reference.names) {
        name += "_" + col;
        cols += (cols.empty() ? "" : ", ") + client_quoted(col);
    }
    return "CREATE INDEX " + client_quoted(name) + " ON " + client_quoted(tbl) + " (" + cols + ")";
}

static void my_look_at_indexes_of(KT_context *ctx, client_examination &examination, const std::string &tbl,
                                  bool &all_have_one)
{
    std::vector<reference> references;
    std::vector<col_names> indexes;
    KT_TRY(my_list_references(ctx, examination, tbl, references));
    KT_TRY(my_list_indexes(ctx, examination, tbl, indexes));
    for (const reference &reference : references) {
        const bool has_one = std::any_of(indexes.begin(), indexes.end(),
                                         [&](const col_names &index) { return my_begins_with(index, reference.cols); });
        if (has_one)
            continue;
        const std::string sql = my_index_statement(tbl, reference);
        KT_TRY(client_examination__add(ctx, examination, "reference-without-index",
                                       "deleting a row of " + client_quoted(reference.tbl) + " reads all of " +
                                           client_quoted(tbl) + ": no index begins with the reference's columns",
                                       sql));
        indexes.push_back(reference.cols);
        all_have_one = false;
    }
}

// A table whose own indexes are missing gets them back by other diagnoses.
void client_examination__indexes(KT_context *ctx, client_examination &examination)
{
    std::vector<std::string> tbls;
    bool all_have_one = examination.tbls_without_their_indexes.empty();
    KT_TRY(client_examination__list_tbls(ctx, examination, tbls));
    for (const std::string &tbl : tbls) {
        if (!examination.tbls_without_their_indexes.count(kt_folded(tbl)))
            KT_TRY(my_look_at_indexes_of(ctx, examination, tbl, all_have_one));
    }
    if (all_have_one)
        KT_TRY(client_examination__pass(ctx, examination, "reference-without-index", "all references have an index"));
}
