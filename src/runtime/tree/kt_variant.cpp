// One value.

#include "kt_variant.h"

#include "kt_try.hpp"
#include "tree/kt_tree.hpp"

#define KT_HERE "src/runtime/kt_variant"

void KT_variant__get__sz(KT_context *ctx, const KT_variant *variant, const char **text) noexcept
{
    KT_RETURN_IF_FAILED;
    if (variant->type != KT_VARIANT_STRING)
        KT_FAIL(KT_ERR_WRONG_TYPE, "the value is not a string");
    *text = kt_variant_text(variant);
}
