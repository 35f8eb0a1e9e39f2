// References are checked once, after the last row, because rows may come before those that they refer to.
//
// A row that refers to nothing is looked for in the files again, by the records of which rows of a file became which
// rows of the table, so that it is refused with its place like any other. Rows that were in the database before are
// left alone. Taking rows away can leave others without the row that they refer to, so this goes on until all hold.
#include "rows/load/client_loader.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_load_references"

namespace {
// What is needed to find the rows of one part again.
struct row_search {
    client_statement_handle runs;
    client_statement_handle orphan;
    client_statement_handle deletion;
    client_run run;
    size_t rowid_field = SIZE_MAX; // the field that is the integer primary key, if there is one
    int64_t found = 0;
};
} // namespace

static const char *my_rowid_name(const client_row_tbl &tbl) noexcept
{
    for (const char *name : {"rowid", "_rowid_", "oid"}) {
        if (client_find_row_col(tbl, name) == tbl.cols.size())
            return name;
    }
    return "rowid";
}

static std::string my_sql_text(const std::string &text)
{
    std::string quoted = "'";
    for (const char byte : text) {
        quoted.push_back(byte);
        if (byte == '\'')
            quoted.push_back(byte);
    }
    return quoted + "'";
}

// Collects the rows of a table that refer to nothing; says whether there are any.
static void my_collect_orphans(KT_context *ctx, tov_client_loader &loader, const client_row_tbl &tbl, bool &any)
{
    int64_t found = 0;
    KT_TRY(client_connection__run(ctx, loader.database, "DELETE FROM temp.tov_orphans"));
    KT_TRY(client_connection__run(ctx, loader.database,
                                  "INSERT OR IGNORE INTO temp.tov_orphans SELECT rowid, parent, fkid FROM "
                                  "pragma_foreign_key_check(" +
                                      my_sql_text(tbl.name) + ") WHERE rowid IS NOT NULL"));
    KT_TRY(client_connection__ask(ctx, loader.database, "SELECT EXISTS (SELECT 1 FROM temp.tov_orphans)", found));
    any = found != 0;
}

static void my_prepare_search(KT_context *ctx, tov_client_loader &loader, const client_load_part &part,
                              row_search &search)
{
    const client_row_tbl &tbl = part.target->tbl;
    client_connection &database = loader.database;
    KT_TRY(client_connection__prepare(ctx, database,
                                      "SELECT first_row, rows, first_rowid FROM \"" + loader.prefix +
                                          "load_runs\" WHERE load = ?1 ORDER BY first_row",
                                      search.runs));
    database.functions->bind_int64(search.runs.statement, 1, part.progress.id);
    KT_TRY(client_connection__prepare(ctx, database, "SELECT parent, fkid FROM temp.tov_orphans WHERE id = ?1",
                                      search.orphan));
    KT_TRY(client_connection__prepare(
        ctx, database, "DELETE FROM " + client_quoted(tbl.name) + " WHERE " + my_rowid_name(tbl) + " = ?1",
        search.deletion));
}

// Moves to the run that a row is in, or to the first after it; a run of no rows says that there is none.
static void my_find_run(KT_context *ctx, tov_client_loader &loader, int64_t number, row_search &search)
{
    bool has = true;
    while (has && search.run.first_row + search.run.count <= number) {
        KT_TRY(client_connection__step(ctx, loader.database, search.runs.statement, has));
        const KT_sqlite_functions *functions = loader.database.functions;
        search.run = {INT64_MAX / 2, 0, 0};
        if (has)
            search.run = {functions->column_int64(search.runs.statement, 0),
                          functions->column_int64(search.runs.statement, 1),
                          functions->column_int64(search.runs.statement, 2)};
    }
}

// The columns of a reference, and which of a row's fields is the first of them.
static void my_describe(KT_context *ctx, tov_client_loader &loader, const client_load_part &part, int64_t fk,
                        const std::string &parent, client_verdict &verdict)
{
    client_statement_handle handle;
    bool has = false;
    std::string names;
    KT_TRY(client_connection__prepare(ctx, loader.database,
                                      "SELECT \"from\" FROM pragma_foreign_key_list(" +
                                          my_sql_text(part.target->tbl.name) + ") WHERE id = ?1 ORDER BY seq",
                                      handle));
    loader.database.functions->bind_int64(handle.statement, 1, fk);
    KT_TRY(client_connection__step(ctx, loader.database, handle.statement, has));
    while (has) {
        const std::string name(client_column_text(loader.database, handle.statement, 0));
        if (verdict.col == SIZE_MAX)
            verdict.col = client_find_row_col(part.target->tbl, name);
        names += (names.empty() ? "" : ", ") + name;
        KT_TRY(client_connection__step(ctx, loader.database, handle.statement, has));
    }
    const std::vector<size_t> &cols = part.layout->cols;
    const auto field = std::find(cols.begin(), cols.end(), verdict.col);
    verdict.field = field == cols.end() ? SIZE_MAX : static_cast<size_t>(field - cols.begin());
    verdict.message = "no row of " + parent + " has this key (" + names + ")";
}

// The rowid of a row that was loaded: its own integer primary key, or what the run says.
static void my_get_rowid(tov_client_loader &loader, const client_load_part &part, const client_row &row,
                         const row_search &search, int64_t number, int64_t &rowid)
{
    rowid = search.run.first_rowid + number - search.run.first_row;
    if (search.rowid_field >= row.fields.size())
        return;
    client_value value;
    const client_row_tbl &tbl = part.target->tbl;
    const client_server_type &type = tbl.cols[part.layout->cols[search.rowid_field]].type;
    if (client_convert(loader.converter, type, row.fields[search.rowid_field], value) == client_reject::none)
        rowid = value.integer;
}

static void my_look_at_row(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                           client_input &input, const client_row &row, int64_t number, row_search &search)
{
    KT_TRY(my_find_run(ctx, loader, number, search));
    if (number < search.run.first_row || search.run.count == 0)
        return;
    int64_t rowid = 0;
    bool has = false;
    const KT_sqlite_functions *functions = loader.database.functions;
    my_get_rowid(loader, part, row, search, number, rowid);
    functions->reset(search.orphan.statement);
    functions->bind_int64(search.orphan.statement, 1, rowid);
    KT_TRY(client_connection__step(ctx, loader.database, search.orphan.statement, has));
    if (!has)
        return;
    client_verdict verdict;
    verdict.reject = client_reject::no_parent;
    const std::string parent(client_column_text(loader.database, search.orphan.statement, 0));
    const int64_t fk = functions->column_int64(search.orphan.statement, 1);
    KT_TRY(my_describe(ctx, loader, part, fk, parent, verdict));
    functions->reset(search.deletion.statement);
    functions->bind_int64(search.deletion.statement, 1, rowid);
    KT_TRY(client_connection__step(ctx, loader.database, search.deletion.statement, has));
    if (functions->changes(loader.database.connection) == 0)
        return; // gone already: refused in an earlier round
    search.found++;
    part.progress.loaded--;
    KT_TRY(client_loader__refuse(ctx, loader, job, part, input, row, verdict, number));
}

static void my_search_file(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                           int64_t &found)
{
    client_input input;
    row_search search;
    client_row row;
    KT_TRY(my_prepare_search(ctx, loader, part, search));
    KT_TRY(input.open(ctx, job.path.c_str(), loader.settings.encoding));
    for (size_t n = 0; n < part.layout->cols.size(); n++) {
        if (part.layout->cols[n] != client_no_col && part.target->tbl.cols[part.layout->cols[n]].rowid)
            search.rowid_field = n;
    }
    for (int64_t number = 1;;) {
        const client_step step = job.reader->read(input.data(), input.is_all(), row);
        if (step == client_step::end)
            break;
        if (step == client_step::more) {
            KT_TRY(input.fill(ctx));
            continue;
        }
        if (step == client_step::row)
            KT_TRY(my_look_at_row(ctx, loader, job, part, input, row, number++, search));
        input.take(row.size);
    }
    found += search.found;
}

// Rejects of files whose rows were loaded by an earlier, interrupted load go on where that one's end.
static void my_open_rejects(KT_context *ctx, tov_client_loader &loader, client_load_job &job)
{
    if (loader.settings.rejects.empty() || job.rejects.is_open())
        return;
    const client_progress &first = job.parts.front().progress;
    KT_TRY(job.rejects.open(ctx, loader.settings.rejects, job.shown, first.rows_size, first.lines_size));
}

static void my_check_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                          int64_t &found)
{
    bool any = false;
    if (!part.keeps_runs || part.progress.state == client_load_state::done)
        return;
    KT_TRY(my_collect_orphans(ctx, loader, part.target->tbl, any));
    if (!any)
        return;
    KT_TRY(my_open_rejects(ctx, loader, job));
    KT_TRY(my_search_file(ctx, loader, job, part, found));
    client_progress &first = job.parts.front().progress;
    KT_TRY(job.rejects.flush(ctx, &first.rows_size, &first.lines_size));
}

// No trigger runs for rows that are taken away: to the database they never were there.
void client_loader__check_references(KT_context *ctx, tov_client_loader &loader)
{
    KT_TRY(
        client_connection__run(ctx, loader.database,
                               "CREATE TEMP TABLE IF NOT EXISTS tov_orphans (id INTEGER PRIMARY KEY, parent TEXT, fkid "
                               "INTEGER)"));
    client_connection__run_triggers(loader.database, false);
    int64_t found = 0;
    do {
        found = 0;
        for (client_load_job &job : loader.jobs) {
            for (client_load_part &part : job.parts)
                KT_TRY(my_check_part(ctx, loader, job, part, found));
        }
    } while (found > 0);
    for (client_load_job &job : loader.jobs) {
        for (client_load_part &part : job.parts) {
            if (part.keeps_runs)
                KT_TRY(client_connection__run(ctx, loader.database,
                                              "DELETE FROM \"" + loader.prefix +
                                                  "load_runs\" WHERE load = " + std::to_string(part.progress.id)));
        }
    }
}
