#include "checks/host_condition.hpp"

#define KT_HERE "src/host/checks/host_condition"

static constexpr int sqlite_error = 1;
static constexpr int sqlite_toobig = 18;
static constexpr int open_read_write_create = 6;

std::string host_refusal_text(const host_check_reading &reading)
{
    const std::string detail = reading.detail.empty() ? "" : " (" + reading.detail + ')';
    return reading.refusal + detail;
}

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

static void my_open(KT_context *ctx, host_condition_trial &trial)
{
    const int rc = trial.functions->open(":memory:", trial.connection.out(), open_read_write_create);
    if (rc != 0)
        KT_FAIL(KT_ERR_SQLITE(rc), "%s", trial.functions->errstr(rc));
}

// Any other code than those for what is wrong with a statement says that SQLite could not work.
void host_try_condition(KT_context *ctx, host_import &import, const host_table &table, const std::string &condition,
                        std::string &message)
{
    host_condition_trial &trial = import.trial;
    if (!trial.connection)
        KT_TRY(my_open(ctx, trial));
    if (trial.table != &table)
        KT_TRY(my_write_columns(ctx, import, table, trial.columns));
    trial.table = &table;
    const std::string sql = trial.columns + "CHECK (" + condition + "))";
    kt_owned_statement statement{trial.functions};
    const int rc = trial.functions->prepare(trial.connection, sql.c_str(), statement.out());
    if (rc != 0 && rc != sqlite_error && rc != sqlite_toobig)
        KT_FAIL(KT_ERR_SQLITE(rc), "%s", trial.functions->errstr(rc));
    if (rc != 0)
        message =
            std::string("SQLite does not compile the table with it: ") + trial.functions->message(trial.connection);
}
