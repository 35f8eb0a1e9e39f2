#include "create/client_record.hpp"

#include "rows/table/client_row_tbl.hpp"

#include <algorithm>
#include <cstring>

#define KT_HERE "src/client/create/client_record"

std::string client_record_name(const client_plan &plan)
{
    return plan.trigger_prefix + "schema";
}

static void my_append_literal(std::string &sql, const char *text)
{
    sql += '\'';
    for (; *text; text++)
        sql.append(*text == '\'' ? 2 : 1, *text);
    sql += '\'';
}

// A large schema is a large literal, so there is one string for it and the statement around it, of its size at once.
void client_write_record(KT_context *ctx, tov_schema *schema, const client_plan &plan, std::string &sql)
{
    kt_owned_string json{ctx};
    KT_TRY(tov_schema__to_json(ctx, schema, json.out()));
    const char *document = KT_string__sz(json);
    const size_t length = std::strlen(document);
    sql.reserve(length + static_cast<size_t>(std::count(document, document + length, '\'')) + 512);
    sql.append("CREATE TABLE ").append(client_quoted(client_record_name(plan))).append(" AS SELECT 1 AS version, ");
    my_append_literal(sql, document);
    const std::pair<const char *, int32_t> options[] = {
        {" AS document, ", plan.with_rules ? TOV_CLIENT_RULES_SERVER : TOV_CLIENT_RULES_BASIC},
        {" AS rules, ", plan.indexes},
        {" AS indexes, ", plan.with_collations ? TOV_CLIENT_COLLATIONS_SERVER : TOV_CLIENT_COLLATIONS_BUILTIN},
        {" AS collations, ", plan.with_views},
        {" AS views, ", plan.with_constraints ? TOV_CLIENT_CHECKS_CONSTRAINTS : TOV_CLIENT_CHECKS_TRIGGERS},
    };
    for (const auto &[before, value] : options)
        sql.append(before).append(std::to_string(value));
    sql.append(" AS checks");
}
