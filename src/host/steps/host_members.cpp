#include "steps/host_members.hpp"

#include "kt_try.hpp"

#define KT_HERE "src/host/steps/host_members"

void host_add_text(KT_context *ctx, KT_vhash *map, const char *key, const char *text) noexcept
{
    if (text)
        KT_TRY(KT_vhash__add__string__sz(ctx, map, key, text));
}

void host_add_flag(KT_context *ctx, KT_vhash *map, const char *key, bool flag) noexcept
{
    if (flag)
        KT_TRY(KT_vhash__add__bool(ctx, map, key, 1));
}
