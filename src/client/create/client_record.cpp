#include "create/client_record.hpp"

#include "rows/table/client_row_tbl.hpp"

#include <cstring>

#define KT_HERE "src/client/create/client_record"

std::string client_record_name(const client_plan &plan)
{
    return plan.trigger_prefix + "schema";
}

static void my_append(KT_context *ctx, void *sql, const char *text) noexcept
{
    kt_contain(ctx, [&] { static_cast<std::string *>(sql)->append(text); });
}

static void my_count(KT_context *ctx, void *size, const char *text) noexcept
{
    static_cast<void>(ctx);
    *static_cast<size_t *>(size) += std::strlen(text);
}

// A large schema is a large literal, so it is written twice, the first time to know its size.
void client_write_record(KT_context *ctx, tov_schema *schema, const client_plan &plan, std::string &sql)
{
    size_t size = 0;
    KT_TRY(client_stream_record(ctx, schema, plan, my_count, &size));
    sql.reserve(size);
    KT_TRY(client_stream_record(ctx, schema, plan, my_append, &sql));
}
