// The schema's checks, all of a table in one statement.
//
// Evaluating a check may fail for a row, by an integer that overflows for instance, and SQLite then ends the statement.
// From the last row that was reported on, the rows are looked at one by one then, for each check by itself.
#include "verify/client_verify.hpp"

#include "kt_folded.hpp"

#define KT_HERE "src/client/verify/client_verify_checks"

// A number has room for a bit of each.
static constexpr size_t most_checks = 60;

namespace {

struct asked_check {
    std::string expression;                 // in parentheses
    std::string message;                    // names it
    const client_verify_col *col = nullptr; // whose own it is
};

// The checks that one statement is about.
struct check_work {
    const client_verify_tbl &tbl;
    std::vector<asked_check> checks;
    int64_t from = INT64_MIN; // the rowid after the last one that was reported on
};

} // namespace

static std::string my_message(const char *name, const char *expression)
{
    constexpr size_t longest = 120;
    std::string text = expression;
    if (text.size() > longest)
        text.resize(longest);
    return (name ? std::string("check \"") + name + "\": " : "check: ") + text +
           (text.size() < std::string_view(expression).size() ? "..." : "");
}

static void my_add_check(const char *name, const char *expression, const client_verify_col *col,
                         std::vector<asked_check> &checks)
{
    checks.push_back({std::string("(") + expression + "\n)", my_message(name, expression), col});
}

static void my_add_col_checks(KT_context *ctx, const client_verify_tbl &tbl, const KT_vhash *cols,
                              std::vector<asked_check> &checks)
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_vhash *col = nullptr;
        KT_varray *list = nullptr;
        uint32_t check_count = 0;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, cols, n, &col_id, &col));
        KT_TRY(KT_vhash__check__varray(ctx, col, "check", &list));
        if (list)
            KT_TRY(KT_varray__count(ctx, list, &check_count));
        for (uint32_t i = 0; i < check_count; i++) {
            const char *name = nullptr;
            const char *expression = nullptr;
            KT_vhash *check = nullptr;
            KT_TRY(KT_varray__get__vhash(ctx, list, i, &check));
            KT_TRY(KT_vhash__check__sz(ctx, check, "name", &name));
            KT_TRY(KT_vhash__get__sz(ctx, check, "expr", &expression));
            my_add_check(name, expression, client_find_verify_col(tbl, col_id), checks);
        }
    }
}

static void my_add_tbl_checks(KT_context *ctx, const KT_vhash *map, std::vector<asked_check> &checks)
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, map, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        const char *expression = nullptr;
        KT_vhash *check = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, map, n, &id, &check));
        KT_TRY(KT_vhash__get__sz(ctx, check, "expr", &expression));
        my_add_check(id, expression, nullptr, checks);
    }
}

static void my_list_checks(KT_context *ctx, const client_verify &run, const client_verify_tbl &tbl,
                           std::vector<asked_check> &checks)
{
    const KT_vhash *document = nullptr;
    KT_vhash *tbls = nullptr;
    KT_vhash *record = nullptr;
    KT_vhash *cols = nullptr;
    KT_vhash *map = nullptr;
    KT_TRY(tov_schema__get_document(ctx, run.schema, &document));
    KT_TRY(KT_vhash__get__vhash(ctx, document, "tbls", &tbls));
    KT_TRY(KT_vhash__get__vhash(ctx, tbls, kt_folded(tbl.tbl.id).c_str(), &record)); // ids are in lower case there
    KT_TRY(KT_vhash__check__vhash(ctx, record, "cols", &cols));
    KT_TRY(KT_vhash__check__vhash(ctx, record, "check", &map));
    if (cols)
        KT_TRY(my_add_col_checks(ctx, tbl, cols, checks));
    if (map)
        KT_TRY(my_add_tbl_checks(ctx, map, checks));
}

static std::string my_is_broken(const asked_check &check)
{
    return check.expression + " IS FALSE";
}

// The rows that break any.
static std::string my_statement(const check_work &work)
{
    std::string verdict;
    std::string any;
    std::string values;
    for (size_t n = 0; n < work.checks.size(); n++) {
        const asked_check &check = work.checks[n];
        const std::string broken = "(" + my_is_broken(check) + ")";
        verdict += (n ? "+" : "") + broken + "*" + std::to_string(int64_t{1} << n);
        any += (n ? " OR " : "") + broken;
        values += "," + (check.col ? client_short_value(check.col->raw) : "NULL");
    }
    return "SELECT " + client_row_results(work.tbl) + "," + verdict + values + " FROM " + work.tbl.source + " WHERE " +
           any + (work.tbl.found->rowid.empty() ? "" : std::string(" ORDER BY ") + client_verify_rowid);
}

static void my_report_checks(KT_context *ctx, client_verify &run, const check_work &work, sqlite3_stmt *statement)
{
    const int first = client_count_row_results(work.tbl);
    const int64_t verdict = run.database.functions->column_int64(statement, first);
    for (size_t n = 0; n < work.checks.size(); n++) {
        const asked_check &check = work.checks[n];
        if (!(verdict >> n & 1))
            continue;
        const int column = first + 1 + static_cast<int>(n);
        const std::string col = check.col ? check.col->row_col->name : "";
        KT_TRY(client_verify__report_row(ctx, run, work.tbl, statement,
                                         {client_violation_code("check").kind, check.message, col,
                                          check.col ? client_shown_result(run, statement, column) : ""}));
    }
}

// Says whether all rows were looked at.
static void my_look(KT_context *ctx, client_verify &run, check_work &work, bool &is_done)
{
    kt_owned_statement statement{run.database.functions};
    const bool has_rowid = !work.tbl.found->rowid.empty();
    is_done = true;
    int code = SQLITE_DONE;
    bool ok = false;
    KT_TRY(client_verify__prepare(ctx, run, work.tbl, my_statement(work), statement, ok));
    while (ok && run.is_whole && (code = client_verify__step_raw(run, statement)) == SQLITE_ROW) {
        KT_TRY(my_report_checks(ctx, run, work, statement));
        if (has_rowid)
            work.from = run.database.functions->column_int64(statement, 0) + 1;
    }
    if (code == SQLITE_ROW || code == SQLITE_DONE)
        return;
    is_done = !has_rowid || !client_is_refusal(code);
    if (is_done)
        KT_TRY(client_verify__report_refusal(ctx, run, work.tbl, code));
}

// What becomes of a check for one row; the rows' statement is at it.
static void my_look_at_row(KT_context *ctx, client_verify &run, const check_work &work, const asked_check &check,
                           sqlite3_stmt *row, sqlite3_stmt *verdict)
{
    const KT_sqlite_functions *functions = run.database.functions;
    functions->reset(verdict);
    KT_TRY(client_connection__bind_int64(ctx, run.database, verdict, 1, functions->column_int64(row, 0)));
    const int code = client_verify__step_raw(run, verdict);
    if (code == SQLITE_DONE || (code == SQLITE_ROW && functions->column_int64(verdict, 0) == 0))
        return;
    if (code != SQLITE_ROW && !client_is_refusal(code))
        CLIENT_FAIL_AT(run.database, code);
    client_finding finding{client_violation_code("check").kind, check.message, "", ""};
    if (code != SQLITE_ROW) {
        finding.kind = client_violation_code("check-fails").kind;
        finding.message += std::string(": ") + functions->message(run.database.connection);
    }
    if (check.col) {
        finding.col = check.col->row_col->name;
        finding.value = client_shown_result(run, row, client_count_row_results(work.tbl));
    }
    KT_TRY(client_verify__report_row(ctx, run, work.tbl, row, finding));
}

static void my_look_row_by_row(KT_context *ctx, client_verify &run, const check_work &work, const asked_check &check)
{
    const std::string rowid = client_verify_rowid;
    const std::string value = check.col ? client_short_value(check.col->raw) : "NULL";
    kt_owned_statement rows{run.database.functions};
    kt_owned_statement verdict{run.database.functions};
    bool ok = false;
    bool has = false;
    KT_TRY(client_verify__prepare(ctx, run, work.tbl,
                                  "SELECT " + client_row_results(work.tbl) + "," + value + " FROM " + work.tbl.source +
                                      " WHERE " + rowid + " >= ?1 ORDER BY " + rowid,
                                  rows, ok));
    if (ok)
        KT_TRY(client_verify__prepare(
            ctx, run, work.tbl,
            "SELECT " + my_is_broken(check) + " FROM " + work.tbl.source + " WHERE " + rowid + " = ?1", verdict, ok));
    if (!ok)
        return;
    KT_TRY(client_connection__bind_int64(ctx, run.database, rows, 1, work.from));
    KT_TRY(client_verify__step(ctx, run, work.tbl, rows, has));
    while (has) {
        KT_TRY(my_look_at_row(ctx, run, work, check, rows, verdict));
        KT_TRY(client_verify__step(ctx, run, work.tbl, rows, has));
    }
}

// Leaves out the checks that need a column which the database does not have.
static void my_leave_out(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                         std::vector<asked_check> &checks)
{
    std::vector<asked_check> kept;
    for (asked_check &check : checks) {
        kt_owned_statement statement{run.database.functions};
        const int code = client_verify__try(run, "SELECT " + check.expression + " FROM " + tbl.source, statement);
        if (code == SQLITE_OK) {
            kept.push_back(std::move(check));
            continue;
        }
        if (!client_is_refusal(code))
            CLIENT_FAIL_AT(run.database, code);
        const std::string reason = run.database.functions->message(run.database.connection);
        KT_TRY(client_verify__report_tbl(
            ctx, run, tbl.tbl.name.c_str(),
            {client_violation_code("not-checked").kind, check.message + ": " + reason, "", ""}));
    }
    checks = std::move(kept);
}

void client_verify__checks(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    std::vector<asked_check> all;
    KT_TRY(my_list_checks(ctx, run, tbl, all));
    KT_TRY(my_leave_out(ctx, run, tbl, all));
    for (size_t first = 0; first < all.size(); first += most_checks) {
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
        const auto end = all.begin() + static_cast<std::ptrdiff_t>(std::min(first + most_checks, all.size()));
        check_work work{tbl, {begin, end}};
        bool is_done = false;
        KT_TRY(my_look(ctx, run, work, is_done));
        for (const asked_check &check : work.checks) {
            if (!is_done)
                KT_TRY(my_look_row_by_row(ctx, run, work, check));
        }
    }
}
