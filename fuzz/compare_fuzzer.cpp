// Two schema documents in one JSON text, {"old":...,"new":...}: they are compared or refused in order, a schema is the
// same as itself, and what is different from one side is different from the other.
#include "schema_pair.hpp"
#include "tov_changes.h"

#include <cstdio>
#include <cstdlib>
#include <string>

static void my_check(bool holds, const char *why)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", why);
    std::abort();
}

static bool my_is_empty(KT_context *ctx, const KT_vhash *changes, const char *key)
{
    KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_vhash__get__varray(ctx, changes, key, &list);
    KT_varray__count(ctx, list, &count);
    return count == 0;
}

enum class answer { refused, same, different };

static answer my_compare(KT_context *ctx, tov_schema *a, tov_schema *b, const tov_client_compare_options &options)
{
    KT_vhash *changes = nullptr;
    tov_client__compare(ctx, a, b, &options, &changes);
    my_check(kt_has_err(ctx) == !changes, "a failure has no answer, and no answer is a failure");
    KT_context__err_reset(ctx);
    if (!changes)
        return answer::refused;
    const bool is_same = my_is_empty(ctx, changes, "changes") && my_is_empty(ctx, changes, "tables");
    KT_vhash__free(ctx, changes);
    return is_same ? answer::same : answer::different;
}

static void my_try(KT_context *ctx, tov_schema *a, tov_schema *b, const tov_client_compare_options &options)
{
    const answer there = my_compare(ctx, a, b, options);
    my_check(there == my_compare(ctx, b, a, options), "the answer depends on the side");
    my_check(my_compare(ctx, a, a, options) != answer::different, "a schema differs from itself");
}

static void my_try_both(KT_context *ctx, const schema_pair &pair)
{
    if (!pair.is_whole())
        return;
    my_try(ctx, pair.old_schema, pair.new_schema, {});
    my_try(ctx, pair.old_schema, pair.new_schema, {1, nullptr, 0});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    my_try_both(ctx, schema_pair(ctx, data, size));
    KT_context__free(ctx);
    return 0;
}
