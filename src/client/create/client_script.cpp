// The script: what creating a database runs, as text.
#include "create/client_statements.hpp"

#define KT_HERE "src/client/create/client_script"

static void my_append_line(KT_context *ctx, KT_string *script, const char *sql) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, script, sql));
    KT_TRY(KT_string__append__sz(ctx, script, ";\n"));
}

static void my_append_statement(KT_context *ctx, void *script, const client_statement &statement) noexcept
{
    KT_TRY(my_append_line(ctx, static_cast<KT_string *>(script), statement.sql));
}

void tov_client__write_script__with(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                                    KT_string **script) noexcept
{
    client_plan plan;
    KT_TRY(client_apply_options(ctx, options, plan));
    KT_TRY(client_make_plan(ctx, schema, plan));
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    for (const char *setting : client_settings)
        KT_TRY(my_append_line(ctx, text, setting));
    KT_TRY(my_append_line(ctx, text, client_begin));
    KT_TRY(client_each_statement(ctx, schema, plan, my_append_statement, text));
    KT_TRY(my_append_line(ctx, text, client_commit));
    text.move_to(script);
}

void tov_client__write_script(KT_context *ctx, tov_schema *schema, KT_string **script) noexcept
{
    KT_TRY(tov_client__write_script__with(ctx, schema, nullptr, script));
}
