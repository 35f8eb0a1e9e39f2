// Checks come first: nothing is planned for a schema whose texts are not safe.
#include "create/client_plan.hpp"

#include "create/client_actions.hpp"
#include "create/client_indexes.hpp"
#include "create/client_views.hpp"

#define KT_HERE "src/client/create/client_plan"

static void my_add_tbls(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    kt_owned_varray remarks{ctx};
    KT_TRY(tov_client__creation_order(ctx, schema, plan.tbl_ids.out(), remarks.out()));
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, plan.tbl_ids, &count));
    KT_TRY(kt_contain(ctx, [&] { plan.tbls.resize(count); }));
    for (uint32_t n = 0; n < count; n++) {
        client_tbl &tbl = plan.tbls[n];
        KT_TRY(KT_varray__get__sz(ctx, plan.tbl_ids, n, &tbl.id));
        KT_TRY(tov_schema__get_tbl_name(ctx, schema, tbl.id, &tbl.name));
    }
}

static bool my_is_prefix_of_tbl(const client_plan &plan) noexcept
{
    const auto length = static_cast<uint32_t>(plan.trigger_prefix.size());
    for (const client_tbl &tbl : plan.tbls) {
        if (KT_strnicmp(tbl.name, plan.trigger_prefix.c_str(), length) == 0)
            return true;
    }
    return false;
}

// Tables and triggers share their names' space in SQLite, so the triggers get a beginning that no table has: tov_, or
// tov2_, tov3_ ... As what follows it tells the kind of trigger and the table, no two triggers are named alike either.
static void my_choose_trigger_prefix(KT_context *ctx, client_plan &plan) noexcept
{
    kt_contain(ctx, [&] {
        plan.trigger_prefix = "tov_";
        for (int n = 2; my_is_prefix_of_tbl(plan); n++)
            plan.trigger_prefix = "tov" + std::to_string(n) + "_";
    });
}

static void my_find_versions(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    for (client_tbl &tbl : plan.tbls) {
        client_row_tbl row_tbl;
        KT_TRY(client_read_row_tbl(ctx, schema, tbl.id, row_tbl));
        KT_TRY(kt_contain(ctx, [&] { tbl.versioned = client_find_version(row_tbl); }));
    }
}

void client_make_plan(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    KT_TRY(tov_client__check_texts(ctx, schema));
    KT_TRY(my_add_tbls(ctx, schema, plan));
    KT_TRY(my_choose_trigger_prefix(ctx, plan));
    KT_TRY(client_add_delete_actions(ctx, schema, plan));
    KT_TRY(client_add_indexes(ctx, schema, plan));
    KT_TRY(my_find_versions(ctx, schema, plan));
    if (plan.with_views)
        KT_TRY(client_check_views(ctx, plan));
}
