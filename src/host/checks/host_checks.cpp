// Checks: kept where they mean the same in SQLite and SQLite compiles them against the table as it will be created.
#include "checks/host_condition.hpp"

#define KT_HERE "src/host/checks/host_checks"

// Gives a check of one column to the column, which keeps its name, and any other to the table.
static void my_add_check(KT_context *ctx, host_import &import, host_table &table, const host_check &check,
                         const host_check_reading &reading)
{
    if (reading.cols.size() != 1) {
        const std::string id = host_constraint_id(table, check.name, "CK", reading.cols);
        KT_TRY(tov_schema__add_check_constraint(ctx, import.schema, table.id_text.c_str(), id.c_str(),
                                                reading.condition.c_str()));
        return;
    }
    const std::string enclosed = reading.is_enclosed ? reading.condition : '(' + reading.condition + ')';
    KT_TRY(tov_schema__add_colcon_check(ctx, import.schema, table.id_text.c_str(), reading.cols.front()->id_text,
                                        check.name, enclosed.c_str()));
}

static void my_report(KT_context *ctx, host_import &import, const host_table &table, const host_check &check,
                      host_finding_code code, const std::string &reason)
{
    std::string host_text = check.name ? "CONSTRAINT [" + std::string(check.name) + ']' : "CHECK";
    if (check.definition)
        host_text += (check.name ? " CHECK " : " ") + std::string(check.definition);
    KT_TRY(import.findings.add(ctx, code, &table, check.col, host_text.c_str(), reason));
}

static void my_add_or_report(KT_context *ctx, host_import &import, host_table &table, const host_check &check)
{
    const host_check_reading reading = host_read_check(table, check.definition);
    if (reading.refusal) {
        const host_finding_code code =
            reading.unprepared ? host_finding_code("check-unprepared-column") : host_finding_code("check-left-out");
        KT_TRY(my_report(ctx, import, table, check, code, "left out: " + host_refusal_text(reading)));
        return;
    }
    std::string message;
    KT_TRY(host_try_condition(ctx, import, table, reading.condition, message));
    if (!message.empty()) {
        KT_TRY(my_report(ctx, import, table, check, "check-left-out", "left out: " + message));
        return;
    }
    KT_TRY(my_add_check(ctx, import, table, check, reading));
    import.compared_in_checks.insert(reading.compared.begin(), reading.compared.end());
    if (check.is_not_trusted)
        KT_TRY(my_report(ctx, import, table, check, "check-untrusted",
                         "kept: the server has not checked the rows that are there, so some may break it"));
}

void host_add_checks(KT_context *ctx, host_import &import, host_table &table)
{
    for (const host_check &check : table.checks) {
        if (check.is_disabled)
            KT_TRY(my_report(ctx, import, table, check, "check-disabled", "left out: it is disabled on the server"));
        else if (!check.definition)
            KT_TRY(
                my_report(ctx, import, table, check, "check-hidden", "left out: its text is hidden from this login"));
        else
            KT_TRY(my_add_or_report(ctx, import, table, check));
    }
}
