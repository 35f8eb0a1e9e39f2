// Values against their types: one statement for the columns of a table, which gives the rows that hold something wrong.
//
// Its condition stops at the first thing wrong in a row. Only of such rows each column is looked at again, and a number
// is made of what is wrong with it, a bit for each condition.
#include "verify/client_value_conditions.hpp"

#define KT_HERE "src/client/verify/client_verify_values"

// SQLite limits the results of a statement, and how deep an expression is nested.
static constexpr size_t most_cols = 200;

namespace {

// A column with its conditions. Bit 0 stands for NULL, and each other one for the condition before it.
struct asked_col {
    const client_verify_col *col;
    bool refuses_null;
    std::vector<client_condition> conditions;
};

} // namespace

// Whether anything is wrong.
static std::string my_is_refused(const asked_col &asked)
{
    std::string text = "CASE WHEN " + asked.col->raw + " IS NULL THEN " + (asked.refuses_null ? "1" : "0");
    for (const client_condition &condition : asked.conditions)
        text += "\nWHEN " + condition.refused + " THEN 1";
    return text + "\nELSE 0 END";
}

// What is wrong.
static std::string my_verdict(const asked_col &asked)
{
    std::string text = "CASE WHEN " + asked.col->raw + " IS NULL THEN " + (asked.refuses_null ? "1" : "0");
    std::string others;
    for (size_t n = 0; n < asked.conditions.size(); n++) {
        const client_condition &condition = asked.conditions[n];
        const std::string bit = std::to_string(int64_t{2} << n);
        if (condition.is_last)
            text += "\nWHEN " + condition.refused + " THEN " + bit;
        else
            others += (others.empty() ? "((" : "+((") + condition.refused + ") IS TRUE)*" + bit;
    }
    return text + "\nELSE " + (others.empty() ? "0" : others) + " END";
}

static std::string my_statement(const client_verify_tbl &tbl, const std::vector<asked_col> &all, size_t first,
                                size_t end)
{
    std::string results = client_row_results(tbl);
    std::string where;
    for (size_t n = first; n < end; n++) {
        results += ",\n" + my_verdict(all[n]) + "," + client_short_value(all[n].col->raw);
        where += (where.empty() ? "" : "\nOR ") + my_is_refused(all[n]);
    }
    return "SELECT " + results + "\nFROM " + tbl.source + "\nWHERE " + where;
}

// The module's width and the server's may both be exceeded.
static bool my_is_told(const asked_col &asked, int64_t verdict, size_t n)
{
    for (size_t before = 0; before < n; before++) {
        if ((verdict >> (before + 1) & 1) && asked.conditions[before].kind == asked.conditions[n].kind)
            return true;
    }
    return false;
}

static void my_report_col(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, sqlite3_stmt *statement,
                          const asked_col &asked, int column)
{
    const int64_t verdict = run.database.functions->column_int64(statement, column);
    const std::string &name = asked.col->row_col->name;
    if (verdict == 0)
        return;
    const std::string value = client_shown_result(run, statement, column + 1);
    if (verdict == 1)
        KT_TRY(client_verify__report_row(ctx, run, tbl, statement,
                                         {client_violation_code("null").kind, "must not be NULL", name, value}));
    for (size_t n = 0; n < asked.conditions.size(); n++) {
        const client_condition &condition = asked.conditions[n];
        if ((verdict >> (n + 1) & 1) && !my_is_told(asked, verdict, n))
            KT_TRY(
                client_verify__report_row(ctx, run, tbl, statement, {condition.kind, condition.message, name, value}));
    }
}

static void my_look(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                    const std::vector<asked_col> &all, size_t first, size_t end)
{
    kt_owned_statement statement{run.database.functions};
    bool ok = false;
    bool has = false;
    KT_TRY(client_verify__prepare(ctx, run, tbl, my_statement(tbl, all, first, end), statement, ok));
    if (!ok)
        return;
    KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
    while (has) {
        int column = client_count_row_results(tbl);
        for (size_t n = first; n < end; n++, column += 2)
            KT_TRY(my_report_col(ctx, run, tbl, statement, all[n], column));
        KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
    }
}

void client_verify__values(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    std::vector<asked_col> asked;
    for (const client_verify_col &col : tbl.cols) {
        asked_col one{&col, !col.row_col->type.nullable, {}};
        KT_TRY(one.conditions = client_value_conditions(ctx, run, tbl, col));
        if (one.refuses_null || !one.conditions.empty())
            asked.push_back(std::move(one));
    }
    for (size_t first = 0; first < asked.size(); first += most_cols)
        KT_TRY(my_look(ctx, run, tbl, asked, first, std::min(first + most_cols, asked.size())));
}
