// The script: what creating a database runs, as text.
#include "create/client_statements.hpp"

#define KT_HERE "src/client/create/client_script"

namespace {
struct my_taker {
    client_take take;
    void *data;
};
} // namespace

static void my_hand_out(KT_context *ctx, const my_taker &taker, const char *sql) noexcept
{
    KT_TRY(taker.take(ctx, taker.data, sql));
    KT_TRY(taker.take(ctx, taker.data, ";\n"));
}

static void my_hand_out_statement(KT_context *ctx, void *taker, const client_statement &statement) noexcept
{
    KT_TRY(my_hand_out(ctx, *static_cast<const my_taker *>(taker), statement.sql));
}

static void my_hand_out_piece(KT_context *ctx, void *taker, const char *piece) noexcept
{
    const my_taker &to = *static_cast<const my_taker *>(taker);
    KT_TRY(to.take(ctx, to.data, piece));
}

void tov_client__stream_script(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                               client_take take, void *data) noexcept
{
    my_taker taker{take, data};
    client_plan plan;
    KT_TRY(client_apply_options(ctx, options, plan));
    KT_TRY(client_make_plan(ctx, schema, plan));
    for (const char *setting : client_settings)
        KT_TRY(my_hand_out(ctx, taker, setting));
    KT_TRY(my_hand_out(ctx, taker, client_begin));
    KT_TRY(client_each_piece(ctx, schema, plan, my_hand_out_statement, my_hand_out_piece, &taker));
    KT_TRY(my_hand_out(ctx, taker, client_commit));
}

static void my_add_to_script(KT_context *ctx, void *script, const char *text) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, static_cast<KT_string *>(script), text));
}

void tov_client__write_script__with(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                                    KT_string **script) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(tov_client__stream_script(ctx, schema, options, my_add_to_script, text));
    text.move_to(script);
}

void tov_client__write_script(KT_context *ctx, tov_schema *schema, KT_string **script) noexcept
{
    KT_TRY(tov_client__write_script__with(ctx, schema, nullptr, script));
}
