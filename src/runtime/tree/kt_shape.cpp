// Shapes: which ordered list of keys follows another when a key is added.

#include "tree/kt_tree.hpp"
#include "json/kt_json_text.hpp"

#include <algorithm>

// A map is worth a shape only when others will have the same keys. Maps keyed by ids of their own (the tables of a
// schema, the columns of one foreign key) show that in their first key: one that no map has begun with before starts
// no shape. Beyond that, shapes that are made spend a credit which shapes that are met again earn back.
static constexpr uint32_t my_seen_cells = 256;
static constexpr uint32_t my_full_credit = 4096;

static bool my_reserve_first_keys(kt_arena *arena) noexcept
{
    if (arena->first_keys_seen)
        return true;
    arena->first_keys_seen = kt_new_block<uint32_t>(arena, my_seen_cells * sizeof(uint32_t));
    if (!arena->first_keys_seen)
        return false;
    std::memset(arena->first_keys_seen, 0, my_seen_cells * sizeof(uint32_t));
    return true;
}

static bool my_first_key_is_new(kt_arena *arena, uint32_t hash) noexcept
{
    uint32_t &cell = arena->first_keys_seen[hash % my_seen_cells];
    const bool is_new = cell != (hash | 1);
    cell = hash | 1;
    return is_new;
}

static uint32_t my_transition_start(const kt_transition_table &table, const kt_shape *parent, uint32_t hash) noexcept
{
    const auto address = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(parent) / kt_granule);
    return (hash ^ (address * UINT32_C(0x9E3779B1))) & table.mask;
}

static const kt_shape_key &my_last_key(const kt_shape *shape) noexcept
{
    return shape->keys->keys[shape->count - 1];
}

static kt_shape *my_find_transition(const kt_shape *parent, const kt_query &query, uint32_t hash) noexcept
{
    const kt_transition_table &table = parent->arena->transitions;
    if (!table.cells)
        return nullptr;
    for (uint32_t at = my_transition_start(table, parent, hash); table.cells[at]; at = (at + 1) & table.mask) {
        kt_shape *shape = table.cells[at];
        if (shape->parent == parent && kt_key_equals(my_last_key(shape).packed, query))
            return shape;
    }
    return nullptr;
}

static void my_put_transition(kt_transition_table *table, kt_shape *shape) noexcept
{
    uint32_t at = my_transition_start(*table, shape->parent, my_last_key(shape).hash);
    while (table->cells[at])
        at = (at + 1) & table->mask;
    table->cells[at] = shape;
    table->count++;
}

static bool my_reserve_transition(kt_arena *arena) noexcept
{
    kt_transition_table &table = arena->transitions;
    const uint32_t cells = table.cells ? table.mask + 1 : 0;
    if (table.count < cells / 2)
        return true;
    const uint32_t wanted = cells ? cells * 2 : 32;
    constexpr size_t cell_size = sizeof(kt_shape *); // NOLINT(bugprone-sizeof-expression): a cell is a pointer.
    auto **fresh = kt_new_block<kt_shape *>(arena, wanted * cell_size);
    if (!fresh)
        return false;
    std::memset(fresh, 0, wanted * cell_size);

    kt_transition_table grown{fresh, wanted - 1, 0};
    for (uint32_t at = 0; at < cells; at++)
        if (table.cells[at])
            my_put_transition(&grown, table.cells[at]);
    if (table.cells)
        kt_pools_release(&arena->pools, table.cells, cells * cell_size);
    table = grown;
    return true;
}

// Whether the text between JSON's quotes is the text itself.
static bool my_is_plain(const char *text, uint32_t length) noexcept
{
    return kt_json_skip_plain(text, text + length) == text + length;
}

// The key's text with its NUL, then its JSON form; a key that JSON writes otherwise has none, and is written slowly.
static bool my_make_key(kt_arena *arena, const kt_query &query, uint32_t hash, kt_shape_key *key) noexcept
{
    const auto length = static_cast<uint32_t>(query.length); // kt_map_append() takes no longer ones
    const bool has_json = my_is_plain(query.text, length);
    const size_t own_size = size_t{length} + 1;
    const size_t json_size = std::max<size_t>(own_size + 2, kt_json_key_room);
    char *text = kt_new_block<char>(arena, has_json ? own_size + json_size : own_size);
    if (!text)
        return false;
    std::memcpy(text, query.text, length);
    text[length] = '\0';
    if (has_json) {
        char *json = static_cast<char *>(std::memset(text + own_size, 0, json_size));
        json[0] = '"';
        std::memcpy(json + 1, query.text, length);
        json[length + 1] = '"';
        json[length + 2] = ':';
    }
    key->text = text;
    key->hash = hash;
    key->json_length = has_json ? length + 3 : 0;
    key->packed = query.packed;
    if (!query.is_short)
        key->packed.outside = {kt_long_key, 0, {}, length, text};
    return true;
}

// A list that starts with the shape's keys and has room for one more: the shape's own when it ends with them.
static kt_shape_keys *my_extensible_keys(kt_shape *shape) noexcept
{
    kt_arena *arena = shape->arena;
    if (shape->keys && shape->keys->count == shape->count)
        return shape->keys;
    auto *list = kt_new_block<kt_shape_keys>(arena, sizeof(kt_shape_keys));
    if (!list)
        return nullptr;
    const uint32_t capacity = std::bit_ceil(shape->count + 1);
    auto *keys = kt_new_block<kt_shape_key>(arena, capacity * sizeof(kt_shape_key));
    kt_index index{};
    if (!keys || (shape->count > kt_scan_limit && !kt_index_reserve(arena, &index, shape->count + 1)))
        return nullptr; // what was taken stays with the tree, whose memory is short anyway
    for (uint32_t slot = 0; slot < shape->count; slot++) {
        keys[slot] = shape->keys->keys[slot];
        if (index.cells)
            kt_index_put(&index, keys[slot].hash, slot);
    }
    *list = {keys, shape->count, capacity, index};
    return list;
}

static bool my_reserve_key(kt_arena *arena, kt_shape_keys *list) noexcept
{
    if (list->count == list->capacity) {
        const size_t size = list->capacity * sizeof(kt_shape_key);
        auto *keys = kt_new_block<kt_shape_key>(arena, 2 * size);
        if (!keys)
            return false;
        std::memcpy(keys, list->keys, size);
        kt_pools_release(&arena->pools, list->keys, size);
        list->keys = keys;
        list->capacity *= 2;
    }
    if (list->count < kt_scan_limit)
        return true;
    const bool is_first = !list->index.cells;
    if (!kt_index_reserve(arena, &list->index, list->count + 1))
        return false;
    for (uint32_t slot = 0; is_first && slot < list->count; slot++)
        kt_index_put(&list->index, list->keys[slot].hash, slot);
    return true;
}

static void my_remember_quoted(kt_shape *shape, const kt_shape_key &key) noexcept
{
    if (!key.json_length)
        return;
    // The key's own text and its NUL are followed by "key": in JSON.
    const char *quoted = key.text + key.json_length - 1;
    shape->quoted_length = key.json_length - 2;
    shape->long_quoted = quoted;
    if (shape->quoted_length <= sizeof(shape->quoted))
        std::memcpy(shape->quoted, quoted, shape->quoted_length);
}

static kt_shape *my_make_transition(kt_shape *shape, const kt_query &query, uint32_t hash) noexcept
{
    kt_arena *arena = shape->arena;
    kt_shape_key key;
    kt_shape_keys *list = nullptr;
    auto *next = kt_new_block<kt_shape>(arena, sizeof(kt_shape));
    if (!next || !my_reserve_transition(arena) || !my_make_key(arena, query, hash, &key) ||
        !(list = my_extensible_keys(shape)) || !my_reserve_key(arena, list))
        return nullptr;

    list->keys[list->count] = key;
    if (list->index.cells)
        kt_index_put(&list->index, hash, list->count);
    list->count++;

    *next = {};
    next->arena = arena;
    next->count = shape->count + 1;
    next->keys = list;
    next->parent = shape;
    my_remember_quoted(next, key);
    my_put_transition(&arena->transitions, next);
    return next;
}

kt_step kt_shape_next(kt_shape *shape, const kt_query &query, kt_shape **next) noexcept
{
    kt_arena *arena = shape->arena;
    if (shape->likely && kt_key_equals(my_last_key(shape->likely).packed, query)) [[likely]] {
        *next = shape->likely;
        return kt_step::shared;
    }
    const uint32_t hash = kt_hash(query, arena->seeds);
    kt_shape *found = my_find_transition(shape, query, hash);
    if (found) {
        if (arena->shape_credit < my_full_credit)
            arena->shape_credit++;
    } else {
        if (!my_reserve_first_keys(arena))
            return kt_step::out_of_memory;
        if (shape->count >= kt_max_shape || arena->shape_credit == 0 ||
            (shape->count == 0 && my_first_key_is_new(arena, hash)))
            return kt_step::go_private;
        found = my_make_transition(shape, query, hash);
        if (!found)
            return kt_step::out_of_memory;
        arena->shape_credit--;
    }
    shape->also_likely = shape->likely;
    shape->likely = found;
    *next = found;
    return kt_step::shared;
}
