// Maps: making, freeing, adding, replacing, removing.

#include "kt_vhash.h"

#include "kt_try.hpp"
#include "tree/kt_find.hpp"

#define KT_HERE "src/runtime/kt_vhash"

void KT_vhash__alloc(KT_context *ctx, KT_vhash **map) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_arena *arena = kt_arena_new(0);
    if (!arena)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    // A new arena has room for it.
    KT_vhash *made = kt_map_new(arena, 0);
    arena->root = made;
    *map = made;
}

void KT_vhash__alloc__copy(KT_context *ctx, KT_vhash **map, const KT_vhash *source) noexcept
{
    KT_RETURN_IF_FAILED;
    KT_vhash *copy = kt_tree_copy(source);
    if (!copy)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    *map = copy;
}

static bool my_is_root(const KT_vhash *map) noexcept
{
    return map->layout->arena->root == map;
}

void KT_vhash__free(KT_context *ctx, KT_vhash *map) noexcept
{
    if (!map)
        return;
    if (my_is_root(map)) {
        kt_arena_destroy(map->layout->arena);
        return;
    }
    KT_RETURN_IF_FAILED;
    KT_FAIL(KT_ERR_BORROWED, "the map belongs to another map or list and is freed with it");
}

void KT_vhash__is_root(KT_context *ctx, const KT_vhash *map, KT_bool *is_root) noexcept
{
    KT_RETURN_IF_FAILED;
    *is_root = my_is_root(map);
}

void KT_vhash__count(KT_context *ctx, const KT_vhash *map, uint32_t *count) noexcept
{
    KT_RETURN_IF_FAILED;
    *count = map->layout->count;
}

void KT_vhash__has(KT_context *ctx, const KT_vhash *map, const char *key, KT_bool *has) noexcept
{
    KT_RETURN_IF_FAILED;
    *has = kt_find(map, kt_make_query(key)) != kt_no_slot;
}

// Adding and replacing. A value that could not be put in its place is released again.

static void my_append(KT_context *ctx, KT_vhash *map, const kt_query &query, KT_variant *value) noexcept
{
    if (!kt_map_append(map, query, *value)) {
        kt_value_release(map->layout->arena, value);
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    }
}

static void my_require_absent(KT_context *ctx, const KT_vhash *map, const kt_query &query) noexcept
{
    if (kt_find(map, query) != kt_no_slot)
        KT_FAIL(KT_ERR_DUPLICATE_KEY, "key '%s' is already there", query.text);
}

static void my_add(KT_context *ctx, KT_vhash *map, const char *key, KT_variant value) noexcept
{
    const kt_query query = kt_make_query(key);
    KT_TRY(my_require_absent(ctx, map, query));
    KT_TRY(my_append(ctx, map, query, &value));
}

static void my_update(KT_context *ctx, KT_vhash *map, const char *key, KT_variant value) noexcept
{
    const kt_query query = kt_make_query(key);
    const uint32_t slot = kt_find(map, query);
    if (slot == kt_no_slot) {
        KT_TRY(my_append(ctx, map, query, &value));
        return;
    }
    KT_variant *place = kt_value_at(map, slot);
    kt_value_release(map->layout->arena, place);
    *place = value;
}

static void my_make_text(KT_context *ctx, KT_vhash *map, const char *text, KT_variant *value) noexcept
{
    *value = kt_null_value();
    if (text && !kt_value_text(map->layout->arena, text, std::strlen(text), value))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

static KT_variant my_int64(int64_t number) noexcept
{
    KT_variant value{};
    value.type = KT_VARIANT_INT64;
    value.as.int64 = number;
    return value;
}

static KT_variant my_double(double number) noexcept
{
    KT_variant value{};
    value.type = KT_VARIANT_DOUBLE;
    value.as.real = number;
    return value;
}

static KT_variant my_bool(KT_bool flag) noexcept
{
    KT_variant value{};
    value.type = KT_VARIANT_BOOL;
    value.as.boolean = flag != 0;
    return value;
}

void KT_vhash__add__int64(KT_context *ctx, KT_vhash *map, const char *key, int64_t value) noexcept
{
    KT_TRY(my_add(ctx, map, key, my_int64(value)));
}

void KT_vhash__add__double(KT_context *ctx, KT_vhash *map, const char *key, double value) noexcept
{
    KT_TRY(my_add(ctx, map, key, my_double(value)));
}

void KT_vhash__add__bool(KT_context *ctx, KT_vhash *map, const char *key, KT_bool value) noexcept
{
    KT_TRY(my_add(ctx, map, key, my_bool(value)));
}

void KT_vhash__add__null(KT_context *ctx, KT_vhash *map, const char *key) noexcept
{
    KT_TRY(my_add(ctx, map, key, kt_null_value()));
}

void KT_vhash__add__string__sz(KT_context *ctx, KT_vhash *map, const char *key, const char *value) noexcept
{
    const kt_query query = kt_make_query(key);
    KT_variant text;
    KT_TRY(my_require_absent(ctx, map, query));
    KT_TRY(my_make_text(ctx, map, value, &text));
    KT_TRY(my_append(ctx, map, query, &text));
}

void KT_vhash__update__int64(KT_context *ctx, KT_vhash *map, const char *key, int64_t value) noexcept
{
    KT_TRY(my_update(ctx, map, key, my_int64(value)));
}

void KT_vhash__update__double(KT_context *ctx, KT_vhash *map, const char *key, double value) noexcept
{
    KT_TRY(my_update(ctx, map, key, my_double(value)));
}

void KT_vhash__update__bool(KT_context *ctx, KT_vhash *map, const char *key, KT_bool value) noexcept
{
    KT_TRY(my_update(ctx, map, key, my_bool(value)));
}

void KT_vhash__update__null(KT_context *ctx, KT_vhash *map, const char *key) noexcept
{
    KT_TRY(my_update(ctx, map, key, kt_null_value()));
}

// The text may be the very one that is replaced: it is copied before that is freed.
void KT_vhash__update__string__sz(KT_context *ctx, KT_vhash *map, const char *key, const char *value) noexcept
{
    KT_variant text;
    KT_TRY(my_make_text(ctx, map, value, &text));
    KT_TRY(my_update(ctx, map, key, text));
}

// Children

static void my_append_child(KT_context *ctx, KT_vhash *map, const kt_query &query, KT_vhash **child) noexcept
{
    KT_variant value{};
    value.type = KT_VARIANT_VHASH;
    value.as.vhash = kt_map_new(map->layout->arena, kt_first_capacity);
    if (!value.as.vhash)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    KT_TRY(my_append(ctx, map, query, &value));
    *child = value.as.vhash;
}

static void my_append_child(KT_context *ctx, KT_vhash *map, const kt_query &query, KT_varray **child) noexcept
{
    KT_variant value{};
    value.type = KT_VARIANT_VARRAY;
    value.as.varray = kt_list_new(map->layout->arena, 0);
    if (!value.as.varray)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    KT_TRY(my_append(ctx, map, query, &value));
    *child = value.as.varray;
}

template <class Child> static void my_addnew(KT_context *ctx, KT_vhash *map, const char *key, Child **child) noexcept
{
    const kt_query query = kt_make_query(key);
    KT_TRY(my_require_absent(ctx, map, query));
    KT_TRY(my_append_child(ctx, map, query, child));
}

void KT_vhash__addnew__vhash(KT_context *ctx, KT_vhash *map, const char *key, KT_vhash **child) noexcept
{
    KT_TRY(my_addnew(ctx, map, key, child));
}

void KT_vhash__addnew__varray(KT_context *ctx, KT_vhash *map, const char *key, KT_varray **child) noexcept
{
    KT_TRY(my_addnew(ctx, map, key, child));
}

// The copy is whole before it is added, so that a map can be copied into itself.
void KT_vhash__addcopy__vhash(KT_context *ctx, KT_vhash *map, const char *key, const KT_vhash *source) noexcept
{
    const kt_query query = kt_make_query(key);
    KT_TRY(my_require_absent(ctx, map, query));
    KT_variant original{};
    original.type = KT_VARIANT_VHASH;
    original.as.vhash = const_cast<KT_vhash *>(source);
    KT_variant copy;
    if (!kt_value_copy(map->layout->arena, original, &copy))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    KT_TRY(my_append(ctx, map, query, &copy));
}

void KT_vhash__ensure__vhash(KT_context *ctx, KT_vhash *map, const char *key, KT_vhash **child) noexcept
{
    KT_RETURN_IF_FAILED;
    const kt_query query = kt_make_query(key);
    const uint32_t slot = kt_find(map, query);
    if (slot == kt_no_slot) {
        KT_TRY(my_append_child(ctx, map, query, child));
        return;
    }
    const KT_variant *value = kt_value_at(map, slot);
    if (value->type != KT_VARIANT_VHASH)
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not a map", key);
    *child = value->as.vhash;
}

void KT_vhash__ensure__varray(KT_context *ctx, KT_vhash *map, const char *key, KT_varray **child) noexcept
{
    KT_RETURN_IF_FAILED;
    const kt_query query = kt_make_query(key);
    const uint32_t slot = kt_find(map, query);
    if (slot == kt_no_slot) {
        KT_TRY(my_append_child(ctx, map, query, child));
        return;
    }
    const KT_variant *value = kt_value_at(map, slot);
    if (value->type != KT_VARIANT_VARRAY)
        KT_FAIL(KT_ERR_WRONG_TYPE, "key '%s' is not a list", key);
    *child = value->as.varray;
}

// Removing

void KT_vhash__remove(KT_context *ctx, KT_vhash *map, const char *key) noexcept
{
    KT_RETURN_IF_FAILED;
    const uint32_t slot = kt_find(map, kt_make_query(key));
    if (slot == kt_no_slot)
        KT_FAIL(KT_ERR_KEY_NOT_FOUND, "no key '%s'", key);
    if (!kt_map_remove(map, slot))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

void KT_vhash__remove_if_present(KT_context *ctx, KT_vhash *map, const char *key, KT_bool *removed) noexcept
{
    KT_RETURN_IF_FAILED;
    const uint32_t slot = kt_find(map, kt_make_query(key));
    if (slot != kt_no_slot && !kt_map_remove(map, slot))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    if (removed)
        *removed = slot != kt_no_slot;
}
