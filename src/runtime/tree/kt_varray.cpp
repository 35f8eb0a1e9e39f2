// Lists: variants by position.

#include "tree/kt_segments.hpp"

#include "kt_try.hpp"
#include "kt_varray.h"

#define KT_HERE "src/runtime/kt_varray"

KT_varray *kt_list_new(kt_arena *arena, uint32_t capacity) noexcept
{
    auto *list = kt_new_block<KT_varray>(arena, sizeof(KT_varray));
    if (!list)
        return nullptr;
    *list = {};
    list->arena = arena;
    if (capacity && !kt_segments_reserve(arena, &list->elements, capacity)) {
        kt_pools_release(&arena->pools, list, sizeof(KT_varray));
        return nullptr;
    }
    return list;
}

bool kt_list_append(KT_varray *list, const KT_variant &value) noexcept
{
    static constexpr uint32_t first = 4;
    const uint32_t wanted = list->count ? list->count + 1 : first;
    if (list->count == list->elements.capacity && !kt_segments_reserve(list->arena, &list->elements, wanted))
        return false;
    *kt_segment_at(list->elements, list->count) = value;
    list->count++;
    return true;
}

void KT_varray__alloc(KT_context *ctx, KT_varray **list) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_arena *arena = kt_arena_new(0);
    if (!arena)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    // A new arena has room for it.
    KT_varray *made = kt_list_new(arena, 0);
    arena->root = made;
    *list = made;
}

void KT_varray__free(KT_context *ctx, KT_varray *list) noexcept
{
    if (!list)
        return;
    if (list->arena->root == list) {
        kt_arena_destroy(list->arena);
        return;
    }
    KT_RETURN_IF_FAILED;
    KT_FAIL(KT_ERR_BORROWED, "the list belongs to a map and is freed with it");
}

void KT_varray__count(KT_context *ctx, const KT_varray *list, uint32_t *count) noexcept
{
    KT_RETURN_IF_FAILED;
    *count = list->count;
}

void KT_varray__append__string__sz(KT_context *ctx, KT_varray *list, const char *text) noexcept
{
    KT_RETURN_IF_FAILED;
    KT_variant value{};
    if (text && !kt_value_text(list->arena, text, std::strlen(text), &value))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    if (!kt_list_append(list, value)) {
        kt_value_release(list->arena, &value);
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    }
}

void KT_varray__append__bool(KT_context *ctx, KT_varray *list, KT_bool value) noexcept
{
    KT_RETURN_IF_FAILED;
    KT_variant boolean{};
    boolean.type = KT_VARIANT_BOOL;
    boolean.as.boolean = value != 0;
    if (!kt_list_append(list, boolean))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

void KT_varray__appendnew__vhash(KT_context *ctx, KT_varray *list, KT_vhash **child) noexcept
{
    KT_RETURN_IF_FAILED;
    KT_variant value{};
    value.type = KT_VARIANT_VHASH;
    value.as.vhash = kt_map_new(list->arena, kt_first_capacity);
    if (!value.as.vhash)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    if (!kt_list_append(list, value)) {
        kt_value_release(list->arena, &value);
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    }
    *child = value.as.vhash;
}

void KT_varray__get_nth(KT_context *ctx, const KT_varray *list, uint32_t i, const KT_variant **value) noexcept
{
    KT_RETURN_IF_FAILED;
    if (i >= list->count)
        KT_FAIL(KT_ERR_OUT_OF_RANGE, "no element %u in a list of %u", i, list->count);
    *value = kt_segment_at(list->elements, i);
}

void KT_varray__get__vhash(KT_context *ctx, const KT_varray *list, uint32_t i, KT_vhash **child) noexcept
{
    const KT_variant *value = nullptr;
    KT_TRY(KT_varray__get_nth(ctx, list, i, &value));
    if (value->type != KT_VARIANT_VHASH)
        KT_FAIL(KT_ERR_WRONG_TYPE, "element %u of the list is not a map", i);
    *child = value->as.vhash;
}

void KT_varray__get__sz(KT_context *ctx, const KT_varray *list, uint32_t i, const char **text) noexcept
{
    const KT_variant *value = nullptr;
    KT_TRY(KT_varray__get_nth(ctx, list, i, &value));
    if (value->type != KT_VARIANT_STRING)
        KT_FAIL(KT_ERR_WRONG_TYPE, "element %u of the list is not a string", i);
    *text = kt_variant_text(value);
}
