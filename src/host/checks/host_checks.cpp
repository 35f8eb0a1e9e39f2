// Checks: kept where they mean the same in SQLite and SQLite compiles them against the table as it will be created.
#include "steps/host_import.hpp"

#include "checks/host_check_grammar.hpp"
#include "kt_sqlite_owned.hpp"

#define KT_HERE "src/host/checks/host_checks"

// A connection to an empty database, on which statements are compiled and never run, and the beginning of the table's.
struct host_scratch {
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    kt_owned_connection connection{functions};
    std::string columns;
};

static constexpr int sqlite_error = 1;
static constexpr int sqlite_toobig = 18;
static constexpr int open_read_write_create = 6;

// Writes all of the table's columns, ready for a constraint to follow.
static void my_write_columns(KT_context *ctx, host_import &import, const host_table &table, std::string &columns)
{
    columns = "CREATE TABLE \"" + table.sqlite_name + "\" (";
    for (const host_column &col : table.cols) {
        if (!col.prepared)
            continue;
        const char *defin = nullptr;
        KT_TRY(tov_schema__get_col_defin(ctx, import.schema, table.id_text.c_str(), col.id_text, nullptr, &defin));
        columns += std::string(defin) + ", ";
    }
}

static void my_open(KT_context *ctx, host_import &import, const host_table &table, host_scratch &scratch)
{
    KT_TRY(my_write_columns(ctx, import, table, scratch.columns));
    const int rc = scratch.functions->open(":memory:", scratch.connection.out(), open_read_write_create);
    if (rc != 0)
        KT_FAIL(KT_ERR_SQLITE(rc), "%s", scratch.functions->errstr(rc));
}

// Compiles the table with a check; the message stays empty when SQLite takes it. Any other code than the one for what
// is wrong with a statement says that SQLite could not work.
static void my_compile(KT_context *ctx, const host_scratch &scratch, const char *definition, std::string &message)
{
    const KT_sqlite_functions *sqlite = scratch.functions;
    const std::string sql = scratch.columns + "CHECK (" + definition + "))";
    kt_owned_statement statement{sqlite};
    const int rc = sqlite->prepare(scratch.connection, sql.c_str(), statement.out());
    if (rc != 0 && rc != sqlite_error && rc != sqlite_toobig)
        KT_FAIL(KT_ERR_SQLITE(rc), "%s", sqlite->errstr(rc));
    if (rc != 0)
        message = std::string("SQLite does not compile the table with it: ") + sqlite->message(scratch.connection);
}

// Gives a check of one column to the column, which keeps its name, and any other to the table.
static void my_add_check(KT_context *ctx, host_import &import, host_table &table, const host_check &check,
                         const host_check_reading &reading)
{
    if (reading.cols.size() != 1) {
        const std::string id = host_constraint_id(table, check.name, "CK", reading.cols);
        KT_TRY(
            tov_schema__add_check_constraint(ctx, import.schema, table.id_text.c_str(), id.c_str(), check.definition));
        return;
    }
    const std::string enclosed = '(' + std::string(check.definition) + ')';
    KT_TRY(tov_schema__add_colcon_check(ctx, import.schema, table.id_text.c_str(), reading.cols.front()->id_text,
                                        check.name, reading.is_enclosed ? check.definition : enclosed.c_str()));
}

static void my_report(KT_context *ctx, host_import &import, const host_table &table, const host_check &check,
                      host_finding_code code, const std::string &reason)
{
    std::string host_text = check.name ? "CONSTRAINT [" + std::string(check.name) + ']' : "CHECK";
    if (check.definition)
        host_text += (check.name ? " CHECK " : " ") + std::string(check.definition);
    KT_TRY(import.findings.add(ctx, code, &table, check.col, host_text.c_str(), reason));
}

static std::string my_refusal_text(const host_check_reading &reading)
{
    const std::string detail = reading.detail.empty() ? "" : " (" + reading.detail + ')';
    return std::string("left out: ") + reading.refusal + detail;
}

static void my_add_or_report(KT_context *ctx, host_import &import, host_scratch &scratch, host_table &table,
                             const host_check &check)
{
    const host_check_reading reading = host_read_check(table, check.definition);
    if (reading.refusal) {
        const host_finding_code code =
            reading.unprepared ? host_finding_code("check-unprepared-column") : host_finding_code("check-left-out");
        KT_TRY(my_report(ctx, import, table, check, code, my_refusal_text(reading)));
        return;
    }
    std::string message;
    if (!scratch.connection)
        KT_TRY(my_open(ctx, import, table, scratch));
    KT_TRY(my_compile(ctx, scratch, check.definition, message));
    if (!message.empty()) {
        KT_TRY(my_report(ctx, import, table, check, "check-left-out", "left out: " + message));
        return;
    }
    KT_TRY(my_add_check(ctx, import, table, check, reading));
    if (check.is_not_trusted)
        KT_TRY(my_report(ctx, import, table, check, "check-untrusted",
                         "kept: the server has not checked the rows that are there, so some may break it"));
}

void host_add_checks(KT_context *ctx, host_import &import, host_table &table)
{
    host_scratch scratch;
    for (const host_check &check : table.checks) {
        if (check.is_disabled)
            KT_TRY(my_report(ctx, import, table, check, "check-disabled", "left out: it is disabled on the server"));
        else if (!check.definition)
            KT_TRY(
                my_report(ctx, import, table, check, "check-hidden", "left out: its text is hidden from this login"));
        else
            KT_TRY(my_add_or_report(ctx, import, scratch, table, check));
    }
}
