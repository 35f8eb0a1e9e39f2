#include "create/client_record.hpp"

#include "rows/table/client_row_tbl.hpp"

#define KT_HERE "src/client/create/client_record"

std::string client_record_name(const client_plan &plan)
{
    return plan.trigger_prefix + "schema";
}

static std::string my_literal(std::string_view text)
{
    std::string literal = "'";
    for (const char c : text)
        literal.append(c == '\'' ? 2 : 1, c);
    return literal + "'";
}

void client_write_record(KT_context *ctx, tov_schema *schema, const client_plan &plan, std::string &sql)
{
    kt_owned_string json{ctx};
    KT_TRY(tov_schema__to_json(ctx, schema, json.out()));
    sql = "CREATE TABLE " + client_quoted(client_record_name(plan)) + " AS SELECT 1 AS version, " +
          my_literal(KT_string__sz(json)) + " AS document, " +
          std::to_string(plan.with_rules ? TOV_CLIENT_RULES_SERVER : TOV_CLIENT_RULES_BASIC) + " AS rules, " +
          std::to_string(plan.indexes) + " AS indexes, " +
          std::to_string(plan.with_collations ? TOV_CLIENT_COLLATIONS_SERVER : TOV_CLIENT_COLLATIONS_BUILTIN) +
          " AS collations, " + std::to_string(plan.with_views) + " AS views, " +
          std::to_string(plan.with_constraints ? TOV_CLIENT_CHECKS_CONSTRAINTS : TOV_CLIENT_CHECKS_TRIGGERS) +
          " AS checks";
}
