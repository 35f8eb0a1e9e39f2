// A set of texts is a map whose values are all null; the map keeps the order.
#include "kt_nullhash.h"
#include "kt_try.hpp"
#include "kt_vhash.h"

#define KT_HERE "src/runtime/kt_nullhash"

static KT_vhash *my_as_map(KT_nullhash *set)
{
    return reinterpret_cast<KT_vhash *>(set);
}

static const KT_vhash *my_as_map(const KT_nullhash *set)
{
    return reinterpret_cast<const KT_vhash *>(set);
}

void KT_nullhash__alloc(KT_context *ctx, KT_nullhash **set) noexcept
{
    KT_vhash *map = nullptr;
    KT_TRY(KT_vhash__alloc(ctx, &map));
    *set = reinterpret_cast<KT_nullhash *>(map);
}

void KT_nullhash__update(KT_context *ctx, KT_nullhash *set, const char *text) noexcept
{
    KT_TRY(KT_vhash__update__null(ctx, my_as_map(set), text));
}

void KT_nullhash__count(KT_context *ctx, const KT_nullhash *set, uint32_t *count) noexcept
{
    KT_TRY(KT_vhash__count(ctx, my_as_map(set), count));
}

void KT_nullhash__get_nth(KT_context *ctx, const KT_nullhash *set, uint32_t n, const char **text) noexcept
{
    KT_TRY(KT_vhash__get_nth_pair(ctx, my_as_map(set), n, text, nullptr));
}

void KT_nullhash__free(KT_context *ctx, KT_nullhash *set) noexcept
{
    KT_vhash__free(ctx, my_as_map(set));
}
