// The conditions of indexes. They are not part of the shape that is walked, but come into statements all the same.
// Those of indexes that SQLite does not get stay what they are.
#include "check/client_expressions.hpp"
#include "check/client_strings.hpp"
#include "create/client_index_parts.hpp"

#define KT_HERE "src/client/check/client_conditions"

// It is compiled together with the table's checks, of which it may hold the same things.
static void my_check_condition(KT_context *ctx, const client_walk &w, const KT_vhash *facts) noexcept
{
    client_server_index index;
    const char *name = nullptr;
    const char *where = nullptr;
    KT_TRY(client_read_server_index(ctx, w.check.schema, w.tbl.id, facts, index));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "name", &name));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "where", &where));
    if (!where || index.cols.empty())
        return;
    const client_place place{w.tbl.name, "index", name ? name : "", "condition"};
    if (const char *flaw = client_find_expression_flaw(where, client_shape::inner))
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", flaw);
    KT_TRY(kt_contain(ctx, [&] { w.tbl.checks.push_back({place, where}); }));
}

void client_check_conditions(KT_context *ctx, const client_walk &w, const KT_vhash *record) noexcept
{
    KT_vhash *server = nullptr;
    KT_varray *indexes = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__vhash(ctx, record, "server", &server));
    if (server)
        KT_TRY(KT_vhash__check__varray(ctx, server, "indexes", &indexes));
    if (indexes)
        KT_TRY(KT_varray__count(ctx, indexes, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *index = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, indexes, n, &index));
        KT_TRY(my_check_condition(ctx, w, index));
    }
}
