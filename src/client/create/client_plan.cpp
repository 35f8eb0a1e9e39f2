// Checks come first: nothing is planned for a schema whose texts are not safe.
#include "create/client_plan.hpp"

#include "create/client_actions.hpp"
#include "create/client_indexes.hpp"
#include "create/client_views.hpp"

#define KT_HERE "src/client/create/client_plan"

void client_apply_options(KT_context *ctx, const tov_client_create_options *options, client_plan &plan) noexcept
{
    const tov_client_create_options wanted = options ? *options : tov_client_create_options{};
    if (wanted.rules < TOV_CLIENT_RULES_SERVER || wanted.rules > TOV_CLIENT_RULES_BASIC)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the option \"rules\" cannot be %d", static_cast<int>(wanted.rules));
    if (wanted.indexes < TOV_CLIENT_INDEXES_ALL || wanted.indexes > TOV_CLIENT_INDEXES_NONE)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the option \"indexes\" cannot be %d", static_cast<int>(wanted.indexes));
    if (wanted.collations < TOV_CLIENT_COLLATIONS_BUILTIN || wanted.collations > TOV_CLIENT_COLLATIONS_SERVER)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the option \"collations\" cannot be %d", static_cast<int>(wanted.collations));
    if (wanted.checks < TOV_CLIENT_CHECKS_CONSTRAINTS || wanted.checks > TOV_CLIENT_CHECKS_TRIGGERS)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the option \"checks\" cannot be %d", static_cast<int>(wanted.checks));
    plan.with_constraints = wanted.checks == TOV_CLIENT_CHECKS_CONSTRAINTS;
    plan.with_collations = wanted.collations == TOV_CLIENT_COLLATIONS_SERVER;
    plan.with_views = wanted.views;
    plan.with_rules = wanted.rules == TOV_CLIENT_RULES_SERVER;
    plan.with_record = !wanted.no_record;
    plan.indexes = wanted.indexes;
}

static void my_read_tbl(KT_context *ctx, tov_schema *schema, const char *id, bool with_collations,
                        client_tbl &tbl) noexcept
{
    KT_TRY(client_read_row_tbl(ctx, schema, id, tbl.rows));
    tbl.id = tbl.rows.id.c_str();
    KT_TRY(tov_schema__get_tbl_name(ctx, schema, id, &tbl.name));
    KT_TRY(kt_contain(ctx, [&] { tbl.versioned = client_find_version(tbl.rows); }));
    if (with_collations)
        KT_TRY(client_read_collations(ctx, tbl.rows, tbl.collations));
}

// The tables stay where they are from here on, since they lend out their ids.
static void my_add_tbls(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    kt_owned_varray ids{ctx};
    kt_owned_varray remarks{ctx};
    uint32_t count = 0;
    KT_TRY(tov_client__creation_order(ctx, schema, ids.out(), remarks.out()));
    KT_TRY(KT_varray__count(ctx, ids, &count));
    KT_TRY(kt_contain(ctx, [&] { plan.tbls.resize(count); }));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, ids, n, &id));
        KT_TRY(my_read_tbl(ctx, schema, id, plan.with_collations, plan.tbls[n]));
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

void client_make_plan(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    KT_TRY(tov_client__check_texts(ctx, schema));
    KT_TRY(my_add_tbls(ctx, schema, plan));
    KT_TRY(my_choose_trigger_prefix(ctx, plan));
    KT_TRY(client_add_delete_actions(ctx, schema, plan));
    KT_TRY(client_add_indexes(ctx, schema, plan));
    if (plan.with_views)
        KT_TRY(client_check_views(ctx, plan));
}
