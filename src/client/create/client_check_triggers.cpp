// A statement of the module spells each check out, which takes its time. The conditions of constraints give the same
// verdicts in few words, so a trigger asks these first, and its statements only about a row that they refuse: what they
// say is the message. After an update they are asked about the columns that it changed.
//
// SQLite allows trees of 1000 levels, and tables of more columns than that: conditions are joined in groups.
#include "create/client_check_triggers.hpp"

#include "create/client_col_constraints.hpp"

#include <algorithm>

#define KT_HERE "src/client/create/client_check_triggers"

// What the server's rules for a column add to its own statement.
static std::string my_rules_text(const client_row_col &col, client_code_pages &pages)
{
    std::string text;
    for (const client_rule &rule : client_rules_of(col.type, "NEW." + client_quoted(col.name), pages))
        text += "WHEN (" + rule.refused + ") THEN RAISE(ABORT, '[" + col.name +
                "] constraint violation: " + rule.message + "')\n";
    return text.empty() ? text : "SELECT CASE\n" + text + "ELSE 1\nEND;\n";
}

void client_write_checks(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules,
                         client_code_pages &pages, std::string &checks)
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl.id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        kt_owned_string expression{ctx};
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl.id, n, &col_id));
        KT_TRY(tov_schema__get_col_validation_expression(ctx, schema, tbl.id, col_id, expression.out()));
        checks.append(KT_string__sz(expression)).append(";\n");
        const client_row_col *col =
            with_rules && tbl.rows.has_facts ? client_find_stored_col(tbl.rows, col_id) : nullptr;
        if (col && !col->rowid)
            checks += my_rules_text(*col, pages);
    }
}

static std::string my_joined(const std::vector<std::string> &conditions)
{
    std::string text;
    for (const std::string &condition : conditions)
        text += (text.empty() ? "" : " AND\n") + condition;
    return text;
}

static std::string my_all_of(std::vector<std::string> conditions)
{
    static constexpr size_t most = 32;
    while (conditions.size() > most) {
        std::vector<std::string> groups;
        for (size_t n = 0; n < conditions.size(); n += most) {
            const auto first = conditions.begin() + static_cast<std::ptrdiff_t>(n);
            const auto size = static_cast<std::ptrdiff_t>(std::min(most, conditions.size() - n));
            groups.push_back("(" + my_joined({first, first + size}) + ")");
        }
        conditions = std::move(groups);
    }
    return my_joined(conditions);
}

// That a column's value is good, or is the old one: to the byte, whatever the column takes for equal.
static std::string my_good(const std::string &name, const std::vector<client_constraint> &constraints, bool is_update)
{
    std::string text;
    for (const client_constraint &constraint : constraints)
        text += (text.empty() ? "(" : " AND (") + constraint.accepted + ")";
    if (is_update)
        return "(NEW." + name + " COLLATE BINARY IS OLD." + name + " OR " + text + ")";
    return text;
}

void client_find_doubt(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules, bool is_update,
                       client_code_pages &pages, client_doubt &doubt)
{
    std::vector<std::string> conditions;
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl.id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *col_name = nullptr;
        std::vector<client_constraint> constraints;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl.id, n, &col_id));
        KT_TRY(tov_schema__get_col_name(ctx, schema, tbl.id, col_id, &col_name));
        const std::string name = client_quoted(col_name);
        KT_TRY(client_find_col_constraints(ctx, schema, tbl, col_id, "NEW." + name, with_rules, pages, constraints));
        if (constraints.empty())
            continue;
        conditions.push_back(my_good(name, constraints, is_update));
        if (is_update)
            doubt.cols += (doubt.cols.empty() ? " OF " : ", ") + name;
    }
    if (!conditions.empty())
        doubt.when = "WHEN NOT (\n" + my_all_of(std::move(conditions)) + ")\n";
}
