// Maps: reading by a key that may have capitals where the map has small letters.

#include "kt_chars.h"
#include "kt_owned.hpp"
#include "kt_vhash.h"
#include "tree/kt_find.hpp"

#define KT_HERE "src/runtime/kt_vhash"

static void my_check(KT_context *ctx, const KT_vhash *map, const kt_query &query, const char **folded,
                     KT_vhash **value) noexcept
{
    const uint32_t slot = kt_find(map, query);
    const KT_variant *found = slot == kt_no_slot ? nullptr : kt_value_at(map, slot);
    if (!found || found->type == KT_VARIANT_NULL) {
        *value = nullptr;
        return;
    }
    const char *key = kt_key_at(map, slot);
    if (found->type != KT_VARIANT_VHASH)
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not a map", key);
    *folded = key;
    *value = found->as.vhash;
}

static bool my_is_folded(const char *key, size_t length) noexcept
{
    for (; length >= 8; key += 8, length -= 8) {
        const uint64_t bytes = kt_load_bytes(key, 8);
        if (kt_fold_bytes(bytes) != bytes)
            return false;
    }
    const uint64_t bytes = kt_load_bytes(key, static_cast<uint32_t>(length));
    return kt_fold_bytes(bytes) == bytes;
}

static void my_check_long(KT_context *ctx, const KT_vhash *map, const kt_query &query, const char **folded,
                          KT_vhash **value) noexcept
{
    if (my_is_folded(query.text, query.length)) {
        KT_TRY(my_check(ctx, map, query, folded, value));
        return;
    }
    kt_owned_text copy{ctx};
    KT_TRY(KT_strdup__folded(ctx, query.text, copy.out()));
    KT_TRY(my_check(ctx, map, kt_make_query(copy, query.length), folded, value));
}

void KT_vhash__check_folded__vhash(KT_context *ctx, const KT_vhash *map, const char *key, const char **folded,
                                   KT_vhash **value) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_query query = kt_make_query(key);
    if (!query.is_short) {
        my_check_long(ctx, map, query, folded, value);
        return;
    }
    kt_fold_short_key(&query.packed);
    KT_TRY(my_check(ctx, map, query, folded, value));
}
