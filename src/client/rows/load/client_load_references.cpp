// References are checked once, after the last row, because rows may come before those that they refer to.
//
// A row that refers to nothing is looked for in the files again, by the records of which rows of a file became which
// rows of the table, so that it is refused with its place like any other. Rows that were in the database before are
// left alone. Taking rows away can leave others without the row that they refer to, so this goes on until all hold.
#include "rows/load/client_loader.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_load_references"

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

void client_row_search::prepare(KT_context *ctx, tov_client_loader &loader)
{
    const client_row_tbl &tbl = part_.target->tbl;
    client_connection &database = loader.database;
    KT_TRY(client_connection__prepare(ctx, database,
                                      "SELECT first_row, rows, first_rowid FROM \"" + loader.plan.trigger_prefix +
                                          "load_runs\" WHERE load = ?1 ORDER BY first_row",
                                      runs_));
    KT_TRY(client_connection__bind_int64(ctx, database, runs_, 1, part_.progress.id));
    KT_TRY(
        client_connection__prepare(ctx, database, "SELECT parent, fkid FROM temp.tov_orphans WHERE id = ?1", orphan_));
    KT_TRY(client_connection__prepare(
        ctx, database, "DELETE FROM " + client_quoted(tbl.name) + " WHERE " + my_rowid_name(tbl) + " = ?1", deletion_));
    reader_ = client_make_reader(tbl, job_.dialect, true);
}

// Moves to the run that the row is in, or to the first after it; a run of no rows says that there is none.
void client_row_search::find_run(KT_context *ctx, tov_client_loader &loader)
{
    bool has = true;
    while (has && run_.first_row + run_.count <= number_) {
        KT_TRY(client_connection__step(ctx, loader.database, runs_, has));
        const KT_sqlite_functions *functions = loader.database.functions;
        run_ = {INT64_MAX / 2, 0, 0};
        if (has)
            run_ = {functions->column_int64(runs_, 0), functions->column_int64(runs_, 1),
                    functions->column_int64(runs_, 2)};
    }
}

// The columns of a reference, and which of a row's fields is the first of them.
void client_row_search::describe(KT_context *ctx, tov_client_loader &loader, client_verdict &verdict)
{
    const client_connection &database = loader.database;
    const std::string parent(client_column_text(database, orphan_, 0));
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    std::string names;
    KT_TRY(client_connection__prepare(ctx, loader.database,
                                      "SELECT \"from\" FROM pragma_foreign_key_list(" +
                                          my_sql_text(part_.target->tbl.name) + ") WHERE id = ?1 ORDER BY seq",
                                      handle));
    const int64_t fk_id = database.functions->column_int64(orphan_, 1);
    KT_TRY(client_connection__bind_int64(ctx, loader.database, handle, 1, fk_id));
    KT_TRY(client_connection__step(ctx, loader.database, handle, has));
    while (has) {
        const std::string name(client_column_text(database, handle, 0));
        if (verdict.col == SIZE_MAX)
            verdict.col = client_find_row_col(part_.target->tbl, name);
        names += (names.empty() ? "" : ", ") + name;
        KT_TRY(client_connection__step(ctx, loader.database, handle, has));
    }
    const std::vector<size_t> &cols = part_.layout->cols;
    const auto field = std::find(cols.begin(), cols.end(), verdict.col);
    verdict.field = field == cols.end() ? SIZE_MAX : static_cast<size_t>(field - cols.begin());
    verdict.message = "no row of " + parent + " has this key (" + names + ")";
}

// The rowid of a row that was loaded: its own integer primary key, or what the run says.
int64_t client_row_search::rowid_of(tov_client_loader &loader, const client_row &row) const
{
    const client_row_tbl &tbl = part_.target->tbl;
    for (size_t n = 0; n < part_.layout->cols.size(); n++) {
        const size_t col = part_.layout->cols[n];
        if (col == client_no_col || !tbl.cols[col].rowid || row.fields[n].form == client_form::absent)
            continue;
        client_value value;
        if (client_convert(loader.converter, tbl.cols[col].type, row.fields[n], value) == client_reject::none)
            return value.integer;
    }
    return run_.first_rowid + number_ - run_.first_row;
}

void client_row_search::refuse(KT_context *ctx, tov_client_loader &loader, client_input &input, const client_row &row,
                               int64_t rowid)
{
    const KT_sqlite_functions *functions = loader.database.functions;
    client_verdict verdict;
    bool has = false;
    verdict.reject = client_reject::no_parent;
    functions->reset(deletion_);
    KT_TRY(client_connection__bind_int64(ctx, loader.database, deletion_, 1, rowid));
    KT_TRY(client_connection__step(ctx, loader.database, deletion_, has));
    if (functions->changes(loader.database.connection) == 0)
        return; // gone already: refused in an earlier round
    KT_TRY(describe(ctx, loader, verdict));
    found_++;
    part_.progress.loaded--;
    KT_TRY(client_loader__refuse(ctx, loader, job_, part_, input, row, verdict, number_));
}

void client_row_search::look_at_row(KT_context *ctx, tov_client_loader &loader, client_input &input,
                                    const client_row &row)
{
    const KT_sqlite_functions *functions = loader.database.functions;
    number_++;
    KT_TRY(find_run(ctx, loader));
    if (number_ < run_.first_row || run_.count == 0)
        return;
    bool has = false;
    const int64_t rowid = rowid_of(loader, row);
    functions->reset(orphan_);
    KT_TRY(client_connection__bind_int64(ctx, loader.database, orphan_, 1, rowid));
    KT_TRY(client_connection__step(ctx, loader.database, orphan_, has));
    if (has)
        KT_TRY(refuse(ctx, loader, input, row, rowid));
}

// Whether a row of a script is for the table; then the layout is that of its statement.
void client_row_search::is_of_part(KT_context *ctx, tov_client_loader &loader, client_row &row, bool &is_wanted)
{
    client_load_part *part = nullptr;
    KT_TRY(client_loader__find_script_part(ctx, loader, job_, row, &part));
    is_wanted = part == &part_;
}

void client_row_search::look(KT_context *ctx, tov_client_loader &loader, client_input &input)
{
    client_row row;
    while (true) {
        const client_step step = reader_->read(input.data(), input.is_all(), row);
        if (step == client_step::end || (step == client_step::more && input.is_fed()))
            return;
        if (step == client_step::more) {
            KT_TRY(input.fill(ctx));
            continue;
        }
        bool is_wanted = step == client_step::row;
        if (is_wanted && row.head)
            KT_TRY(is_of_part(ctx, loader, row, is_wanted));
        if (is_wanted)
            KT_TRY(look_at_row(ctx, loader, input, row));
        input.take(row.size);
    }
}

static void my_search_file(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                           int64_t &found)
{
    client_input input;
    client_row_search search(job, part);
    KT_TRY(search.prepare(ctx, loader));
    KT_TRY(input.open(ctx, job.path.c_str(), client_loader_encoding(loader)));
    KT_TRY(search.look(ctx, loader, input));
    found += search.found();
}

// Whether rows of a part refer to nothing.
static void my_has_orphans(KT_context *ctx, tov_client_loader &loader, client_load_job &job,
                           const client_load_part &part, bool &any)
{
    any = false;
    if (!part.keeps_runs || part.progress.state == client_load_state::done)
        return;
    KT_TRY(my_collect_orphans(ctx, loader, part.target->tbl, any));
    if (any)
        KT_TRY(client_loader__open_rejects(ctx, loader, job));
}

static void my_flush(KT_context *ctx, client_load_job &job)
{
    client_progress &first = job.parts.front().progress;
    KT_TRY(job.rejects.flush(ctx, &first.rows_size, &first.lines_size));
}

static void my_check_round(KT_context *ctx, tov_client_loader &loader, int64_t &found)
{
    for (client_load_job &job : loader.jobs) {
        for (client_load_part &part : job.parts) {
            bool any = false;
            KT_TRY(my_has_orphans(ctx, loader, job, part, any));
            if (!any)
                continue;
            if (job.source)
                KT_TRY(client_loader__search_parts(ctx, loader, *job.source, job, part, found));
            else
                KT_TRY(my_search_file(ctx, loader, job, part, found));
            KT_TRY(my_flush(ctx, job));
        }
    }
}

// No trigger runs for rows that are taken away: to the database they never were there.
void client_loader__check_references(KT_context *ctx, tov_client_loader &loader)
{
    KT_TRY(
        client_connection__run(ctx, loader.database,
                               "CREATE TEMP TABLE IF NOT EXISTS tov_orphans (id INTEGER PRIMARY KEY, parent TEXT, fkid "
                               "INTEGER)"));
    KT_TRY(client_connection__run_triggers(ctx, loader.database, false));
    int64_t found = 0;
    do {
        found = 0;
        KT_TRY(my_check_round(ctx, loader, found));
    } while (found > 0);
    for (client_load_job &job : loader.jobs) {
        for (client_load_part &part : job.parts) {
            if (part.keeps_runs)
                KT_TRY(client_connection__run(ctx, loader.database,
                                              "DELETE FROM \"" + loader.plan.trigger_prefix +
                                                  "load_runs\" WHERE load = " + std::to_string(part.progress.id)));
        }
    }
}
