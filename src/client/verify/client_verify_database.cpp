// Opening a database that may be anybody's, and what it holds.
//
// What is there is read from the schema table itself: it says which of its entries are tables with rows of their own,
// and asking it loads no view and no virtual table.
#include "verify/client_verify.hpp"

#include "kt_folded.hpp"

#define KT_HERE "src/client/verify/client_verify_database"

extern "C" {
static void my_utf8_size(sqlite3_context *call, int, sqlite3_value **arguments)
{
    const KT_sqlite_functions *sqlite = tov__get_sqlite_functions();
    sqlite->value_text(arguments[0]);
    sqlite->result_int64(call, sqlite->value_bytes(arguments[0]));
}
}

static void my_find_encoding(KT_context *ctx, client_verify &run)
{
    int64_t is_utf_8 = 0;
    KT_TRY(client_connection__ask(ctx, run.database, "SELECT encoding = 'UTF-8' FROM pragma_encoding", is_utf_8));
    run.is_utf_8 = is_utf_8 != 0;
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    KT_TRY(client_connection__check(ctx, run.database,
                                    run.database.functions->create_function(run.database.connection, client_utf8_size,
                                                                            1, flags, nullptr, my_utf8_size, nullptr)));
}

// The name in a row's first column.
static void my_read_name(KT_context *ctx, const client_verify &run, sqlite3_stmt *statement, std::string &name)
{
    const KT_sqlite_functions *functions = run.database.functions;
    const bool is_null = functions->column_type(statement, 0) == SQLITE_NULL;
    const char *text = functions->column_text(statement, 0);
    if (!text && !is_null)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    name = text ? text : "";
}

// A table with rows of its own has a page where they begin.
static void my_list_tbls(KT_context *ctx, client_verify &run)
{
    kt_owned_statement statement{run.database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(
        ctx, run.database,
        "SELECT name, type = 'table' AND rootpage > 0 FROM sqlite_schema WHERE type IN ('table', 'view')", statement));
    KT_TRY(client_connection__step(ctx, run.database, statement, has));
    while (has) {
        std::string name;
        KT_TRY(my_read_name(ctx, run, statement, name));
        run.found[kt_folded(name)].is_tbl = run.database.functions->column_int64(statement, 1) != 0;
        KT_TRY(client_connection__step(ctx, run.database, statement, has));
    }
}

void client_verify__open(KT_context *ctx, client_verify &run, const char *file_name)
{
    const KT_sqlite_functions *functions = run.database.functions;
    KT_TRY(client_connection__open(ctx, run.database, file_name, true));
    KT_TRY(client_connection__distrust(ctx, run.database));
    KT_TRY(client_connection__run(ctx, run.database, "BEGIN")); // all tables as they are at one moment
    KT_TRY(my_list_tbls(ctx, run));
    KT_TRY(my_find_encoding(ctx, run));
    const int code = client_guard__watch(functions, run.database.connection, &run.guard);
    KT_TRY(client_connection__check(ctx, run.database, code));
}

static void my_list_cols(KT_context *ctx, client_verify &run, const std::string &name, client_found_tbl &found,
                         std::vector<std::string> &pk)
{
    kt_owned_statement statement{run.database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, run.database, "SELECT name, pk FROM pragma_table_xinfo(?1) ORDER BY cid",
                                      statement));
    KT_TRY(client_connection__bind_text(ctx, run.database, statement, 1, name));
    KT_TRY(client_connection__step(ctx, run.database, statement, has));
    while (has) {
        std::string col;
        KT_TRY(my_read_name(ctx, run, statement, col));
        found.cols.push_back(kt_folded(col));
        if (run.database.functions->column_int64(statement, 1) > 0)
            pk.push_back(col);
        KT_TRY(client_connection__step(ctx, run.database, statement, has));
    }
}

// Only a table without rowid can be asked for its columns as if it were an index: those of its key.
static void my_list_pk(KT_context *ctx, client_verify &run, const std::string &name, client_found_tbl &found)
{
    kt_owned_statement statement{run.database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, run.database, "SELECT name FROM pragma_index_info(?1) ORDER BY seqno",
                                      statement));
    KT_TRY(client_connection__bind_text(ctx, run.database, statement, 1, name));
    KT_TRY(client_connection__step(ctx, run.database, statement, has));
    while (has) {
        KT_TRY(my_read_name(ctx, run, statement, found.pk.emplace_back()));
        KT_TRY(client_connection__step(ctx, run.database, statement, has));
    }
    found.has_rowid = found.pk.empty();
}

// A key that no index keeps is the rowid.
static void my_find_rowid_col(KT_context *ctx, client_verify &run, const std::string &name,
                              const std::vector<std::string> &pk, client_found_tbl &found)
{
    kt_owned_statement statement{run.database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, run.database, "SELECT 1 FROM pragma_index_list(?1) WHERE origin = 'pk'",
                                      statement));
    KT_TRY(client_connection__bind_text(ctx, run.database, statement, 1, name));
    KT_TRY(client_connection__step(ctx, run.database, statement, has));
    if (found.has_rowid && pk.size() == 1 && !has)
        found.rowid_col = pk[0];
}

static std::string my_rowid_name(const client_found_tbl &found)
{
    for (const char *name : {"rowid", "_rowid_", "oid"}) {
        if (found.has_rowid && std::find(found.cols.begin(), found.cols.end(), name) == found.cols.end())
            return name;
    }
    return "";
}

void client_verify__find_tbl(KT_context *ctx, client_verify &run, const std::string &name,
                             const client_found_tbl **found)
{
    const auto place = run.found.find(kt_folded(name));
    if (place == run.found.end())
        return;
    client_found_tbl &tbl = place->second;
    *found = &tbl;
    if (!tbl.is_tbl || !tbl.cols.empty())
        return;
    const client_on_duty duty(run.guard, {client_duty::own_statement});
    std::vector<std::string> pk;
    KT_TRY(my_list_cols(ctx, run, name, tbl, pk));
    KT_TRY(my_list_pk(ctx, run, name, tbl));
    KT_TRY(my_find_rowid_col(ctx, run, name, pk, tbl));
    tbl.rowid = my_rowid_name(tbl);
}

bool client_is_refusal(int code) noexcept
{
    return code == SQLITE_ERROR || code == SQLITE_AUTH || code == SQLITE_TOOBIG || code == SQLITE_MISMATCH;
}

void client_verify__report_refusal(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, int code)
{
    if (!client_is_refusal(code))
        CLIENT_FAIL_AT(run.database, code);
    const std::string message = run.database.functions->message(run.database.connection);
    KT_TRY(client_verify__report_tbl(ctx, run, tbl.tbl.name.c_str(),
                                     {client_violation_code("table-unreadable").kind, message, "", ""}));
}

int client_verify__try(client_verify &run, const std::string &sql, kt_owned_statement &statement) noexcept
{
    const client_on_duty duty(run.guard, {client_duty::reading});
    statement.close();
    return run.database.functions->prepare(run.database.connection, sql.c_str(), statement.out());
}

void client_verify__prepare(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, const std::string &sql,
                            kt_owned_statement &statement, bool &ok)
{
    const int code = client_verify__try(run, sql, statement);
    ok = code == SQLITE_OK;
    if (!ok)
        KT_TRY(client_verify__report_refusal(ctx, run, tbl, code));
}

// SQLite compiles a statement anew when it sees fit, and asks the guard again.
int client_verify__step_raw(client_verify &run, sqlite3_stmt *statement) noexcept
{
    const client_on_duty duty(run.guard, {client_duty::reading});
    return run.database.functions->step(statement);
}

void client_verify__step(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, sqlite3_stmt *statement,
                         bool &has)
{
    has = false;
    if (!run.is_whole)
        return;
    const int code = client_verify__step_raw(run, statement);
    has = code == SQLITE_ROW;
    if (!has && code != SQLITE_DONE)
        KT_TRY(client_verify__report_refusal(ctx, run, tbl, code));
}
