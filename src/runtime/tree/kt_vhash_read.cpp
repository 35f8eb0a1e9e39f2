// Maps: reading by key and by position.

#include "kt_try.hpp"
#include "kt_vhash.h"
#include "tree/kt_find.hpp"

#define KT_HERE "src/runtime/kt_vhash"

[[gnu::noinline]] static const KT_variant *my_look_up_any(const KT_vhash *map, const char *key, size_t length) noexcept
{
    const uint32_t slot = kt_find(map, kt_make_query(key, length));
    return slot == kt_no_slot ? nullptr : kt_value_at(map, slot);
}

// The value of a key, or null when the key is absent. What most lookups meet, a short key and a few shared ones, stands
// by itself, so that it saves no registers for the rest.
static inline const KT_variant *my_look_up(const KT_vhash *map, const char *key) noexcept
{
    const size_t length = std::strlen(key);
    if (length > kt_max_short_key || map->layout->is_private || map->layout->count > kt_scan_limit)
        return my_look_up_any(map, key, length);
    const uint32_t slot = kt_scan_shape(kt_shape_of(map), kt_make_query(key, length));
    return slot == kt_no_slot ? nullptr : kt_map_slot(map, slot);
}

// How each type is read out of a variant; false when it holds another.

static bool my_read(const KT_variant *value, KT_vhash **out) noexcept
{
    if (value->type != KT_VARIANT_VHASH)
        return false;
    *out = value->as.vhash;
    return true;
}

static bool my_read(const KT_variant *value, KT_varray **out) noexcept
{
    if (value->type != KT_VARIANT_VARRAY)
        return false;
    *out = value->as.varray;
    return true;
}

static bool my_read(const KT_variant *value, const char **out) noexcept
{
    if (value->type != KT_VARIANT_STRING)
        return false;
    *out = kt_variant_text(value);
    return true;
}

static bool my_read(const KT_variant *value, int64_t *out) noexcept
{
    if (value->type != KT_VARIANT_INT64)
        return false;
    *out = value->as.int64;
    return true;
}

static bool my_read(const KT_variant *value, uint64_t *out) noexcept
{
    if (value->type != KT_VARIANT_INT64 || value->as.int64 < 0)
        return false;
    *out = static_cast<uint64_t>(value->as.int64);
    return true;
}

// Widths are written as unsigned numbers and read as signed ones, with the same 32 bits.
static bool my_read(const KT_variant *value, int32_t *out) noexcept
{
    if (value->type != KT_VARIANT_INT64 || value->as.int64 < INT32_MIN || value->as.int64 > int64_t{UINT32_MAX})
        return false;
    *out = static_cast<int32_t>(static_cast<uint32_t>(value->as.int64));
    return true;
}

static bool my_read(const KT_variant *value, double *out) noexcept
{
    if (value->type == KT_VARIANT_INT64)
        *out = static_cast<double>(value->as.int64);
    else if (value->type == KT_VARIANT_DOUBLE)
        *out = value->as.real;
    else
        return false;
    return true;
}

static bool my_read_bool(const KT_variant *value, KT_bool *out) noexcept
{
    if (value->type != KT_VARIANT_BOOL)
        return false;
    *out = value->as.boolean;
    return true;
}

[[gnu::cold, gnu::noinline]] static void my_fail_get(KT_context *ctx, const char *key, bool is_absent,
                                                     const char *type) noexcept
{
    if (is_absent)
        KT_FAIL(KT_ERR_KEY_NOT_FOUND, "no key '%s'", key);
    KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not %s", key, type);
}

template <class T>
static inline void my_get_as(KT_context *ctx, const KT_vhash *map, const char *key, const char *type, T *out) noexcept
{
    KT_RETURN_IF_FAILED;
    const KT_variant *value = my_look_up(map, key);
    if (!value || !my_read(value, out)) [[unlikely]]
        my_fail_get(ctx, key, !value, type);
}

void KT_vhash__get__vhash(KT_context *ctx, const KT_vhash *map, const char *key, KT_vhash **value) noexcept
{
    my_get_as(ctx, map, key, "a map", value);
}

void KT_vhash__get__varray(KT_context *ctx, const KT_vhash *map, const char *key, KT_varray **value) noexcept
{
    my_get_as(ctx, map, key, "a list", value);
}

void KT_vhash__get__sz(KT_context *ctx, const KT_vhash *map, const char *key, const char **value) noexcept
{
    my_get_as(ctx, map, key, "a string", value);
}

void KT_vhash__get__int64(KT_context *ctx, const KT_vhash *map, const char *key, int64_t *value) noexcept
{
    my_get_as(ctx, map, key, "a 64-bit integer", value);
}

void KT_vhash__get__int32(KT_context *ctx, const KT_vhash *map, const char *key, int32_t *value) noexcept
{
    my_get_as(ctx, map, key, "a 32-bit integer", value);
}

void KT_vhash__get__double(KT_context *ctx, const KT_vhash *map, const char *key, double *value) noexcept
{
    my_get_as(ctx, map, key, "a number", value);
}

void KT_vhash__get__bool(KT_context *ctx, const KT_vhash *map, const char *key, KT_bool *value) noexcept
{
    KT_RETURN_IF_FAILED;
    const KT_variant *found = my_look_up(map, key);
    if (!found || !my_read_bool(found, value)) [[unlikely]]
        my_fail_get(ctx, key, !found, "a boolean");
}

// The value of a key, or null when the key is absent or holds null.
static const KT_variant *my_check(const KT_vhash *map, const char *key) noexcept
{
    const KT_variant *value = my_look_up(map, key);
    return value && value->type != KT_VARIANT_NULL ? value : nullptr;
}

template <class T>
static void my_check_pointer(KT_context *ctx, const KT_vhash *map, const char *key, const char *type, T **out) noexcept
{
    const KT_variant *value = my_check(map, key);
    if (!value)
        *out = nullptr;
    else if (!my_read(value, out))
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not %s", key, type);
}

void KT_vhash__check__vhash(KT_context *ctx, const KT_vhash *map, const char *key, KT_vhash **value) noexcept
{
    KT_TRY(my_check_pointer(ctx, map, key, "a map", value));
}

void KT_vhash__check__varray(KT_context *ctx, const KT_vhash *map, const char *key, KT_varray **value) noexcept
{
    KT_TRY(my_check_pointer(ctx, map, key, "a list", value));
}

void KT_vhash__check__sz(KT_context *ctx, const KT_vhash *map, const char *key, const char **value) noexcept
{
    KT_TRY(my_check_pointer(ctx, map, key, "a string", value));
}

void KT_vhash__check__int64(KT_context *ctx, const KT_vhash *map, const char *key, int64_t *value) noexcept
{
    KT_RETURN_IF_FAILED;
    const KT_variant *found = my_check(map, key);
    if (found && !my_read(found, value))
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not a 64-bit integer", key);
}

void KT_vhash__check__bool(KT_context *ctx, const KT_vhash *map, const char *key, KT_bool *value) noexcept
{
    KT_RETURN_IF_FAILED;
    const KT_variant *found = my_check(map, key);
    if (found && !my_read_bool(found, value))
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not a boolean", key);
}

// By position

static void my_find_nth(KT_context *ctx, const KT_vhash *map, uint32_t n, uint32_t *slot) noexcept
{
    if (n >= map->layout->count)
        KT_FAIL(KT_ERR_OUT_OF_RANGE, "no pair %u in a map of %u", n, map->layout->count);
    *slot = kt_slot_at_position(map, n);
}

[[gnu::noinline]] static void my_get_nth_pair(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                              const KT_variant **value) noexcept
{
    uint32_t slot = 0;
    KT_TRY(my_find_nth(ctx, map, n, &slot));
    if (key)
        *key = kt_key_at(map, slot);
    if (value)
        *value = kt_value_at(map, slot);
}

// Whole documents are walked by this. What most steps meet, a value in a small map's own slots, stands by itself, so
// that it saves no registers for the rest.
void KT_vhash__get_nth_pair(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                            const KT_variant **value) noexcept
{
    KT_RETURN_IF_FAILED;
    const kt_layout *layout = map->layout;
    if (layout->is_private || n >= layout->count || n >= kt_own_capacity(map)) {
        my_get_nth_pair(ctx, map, n, key, value);
        return;
    }
    if (key)
        *key = kt_shape_of(map)->keys->keys[n].text;
    if (value)
        *value = map->slots + n;
}

template <class T>
static void my_get_nth_as(KT_context *ctx, const KT_vhash *map, uint32_t n, const char *type, const char **key,
                          T *value) noexcept
{
    uint32_t slot = 0;
    KT_TRY(my_find_nth(ctx, map, n, &slot));
    T found{};
    if (!my_read(kt_value_at(map, slot), &found))
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not %s", kt_key_at(map, slot), type);
    if (key)
        *key = kt_key_at(map, slot);
    if (value)
        *value = found;
}

void KT_vhash__get_nth_pair__sz(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                const char **value) noexcept
{
    KT_TRY(my_get_nth_as(ctx, map, n, "a string", key, value));
}

void KT_vhash__get_nth_pair__vhash(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                   KT_vhash **value) noexcept
{
    KT_TRY(my_get_nth_as(ctx, map, n, "a map", key, value));
}

void KT_vhash__get_nth_pair__uint64(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                    uint64_t *value) noexcept
{
    KT_TRY(my_get_nth_as(ctx, map, n, "an unsigned 64-bit integer", key, value));
}

void KT_vhash__foreach(KT_context *ctx, KT_vhash *map,
                       void (*callback)(KT_context *ctx, void *data, const char *key, KT_variant *value),
                       void *data) noexcept
{
    for (uint32_t n = 0; n < map->layout->count; n++) {
        const uint32_t slot = kt_slot_at_position(map, n);
        KT_TRY(callback(ctx, data, kt_key_at(map, slot), kt_value_at(map, slot)));
    }
}
