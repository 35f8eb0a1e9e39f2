// Two schemas in one JSON object, for targets that set one beside the other.
#pragma once

#include "kt_owned.hpp"
#include "tov_document.h"

// The schema under a key; null, with the error in the context, where there is none.
inline tov_schema *schema_of(KT_context *ctx, const KT_vhash *both, const char *key)
{
    tov_schema *schema = nullptr;
    KT_vhash *child = nullptr;
    kt_owned_vhash copy{ctx};
    KT_vhash__get__vhash(ctx, both, key, &child);
    if (!kt_has_err(ctx))
        KT_vhash__alloc__copy(ctx, copy.out(), child);
    if (!kt_has_err(ctx))
        tov_schema__alloc__vhash(ctx, copy.out(), nullptr, &schema);
    return schema;
}
