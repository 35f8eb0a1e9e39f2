// The conditions of indexes. They are no part of the shape that is walked, but come into statements all the same.
#include "check/client_expressions.hpp"
#include "check/client_strings.hpp"

#define KT_HERE "src/client/check/client_conditions"

// It is compiled together with the table's checks, of which it may hold the same things.
static void my_check_condition(KT_context *ctx, const client_walk &w, const KT_vhash *index) noexcept
{
    const char *name = nullptr;
    const char *where = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, index, "name", &name));
    KT_TRY(KT_vhash__check__sz(ctx, index, "where", &where));
    if (!where)
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
