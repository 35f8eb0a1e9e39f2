// Adding and removing pairs: shared layouts as long as they serve, private ones from then on.

#include "tree/kt_segments.hpp"

static constexpr uint32_t my_first_entries = 4;

KT_vhash *kt_map_new(kt_arena *arena, uint32_t own_capacity) noexcept
{
    auto *map = kt_new_block<KT_vhash>(arena, kt_map_header + own_capacity * sizeof(KT_variant));
    if (!map)
        return nullptr;
    map->layout = &arena->empty_shape;
    map->capacity_or_block = 2 * uintptr_t{own_capacity} + 1;
    return map;
}

kt_private *kt_private_new(kt_arena *arena, uint32_t capacity) noexcept
{
    auto *layout = kt_new_block<kt_private>(arena, sizeof(kt_private));
    if (!layout)
        return nullptr;
    *layout = {};
    layout->arena = arena;
    layout->is_private = true;
    layout->first_free = kt_no_slot;
    if (!kt_segments_reserve(arena, &layout->entries, capacity) ||
        (capacity > kt_scan_limit && !kt_index_reserve(arena, &layout->index, capacity))) {
        kt_segments_release(arena, &layout->entries);
        kt_pools_release(&arena->pools, layout, sizeof(kt_private));
        return nullptr;
    }
    return layout;
}

bool kt_key_store(kt_arena *arena, const kt_query &query, kt_packed_key *key) noexcept
{
    if (query.is_short) {
        *key = query.packed;
        return true;
    }
    char *text = kt_new_block<char>(arena, query.length + 1);
    if (!text)
        return false;
    std::memcpy(text, query.text, query.length);
    text[query.length] = '\0';
    key->outside = {kt_long_key, 1, {}, static_cast<uint32_t>(query.length), text};
    return true;
}

// Shared layouts

KT_variant *kt_further_slot(const KT_vhash *map, uint32_t slot) noexcept
{
    auto *block = reinterpret_cast<kt_block *>(map->capacity_or_block);
    for (slot -= block->own_capacity; slot >= block->capacity; block = block->next)
        slot -= block->capacity;
    return block->slots + slot;
}

// Makes sure that the slot exists; it is at most one beyond those that do.
static bool my_reserve_slot(KT_vhash *map, uint32_t slot) noexcept
{
    const uint32_t own_capacity = kt_own_capacity(map);
    uint32_t capacity = own_capacity;
    kt_block *last = nullptr;
    if (!(map->capacity_or_block & 1)) {
        for (auto *block = reinterpret_cast<kt_block *>(map->capacity_or_block); block; block = block->next) {
            capacity += block->capacity;
            last = block;
        }
    }
    if (slot < capacity)
        return true;
    const uint32_t more = capacity < 2 ? 2 : capacity;
    auto *block = kt_new_block<kt_block>(map->layout->arena, kt_block_header + more * sizeof(KT_variant));
    if (!block)
        return false;
    block->next = nullptr;
    block->capacity = more;
    block->own_capacity = own_capacity;
    if (last)
        last->next = block;
    else
        map->capacity_or_block = reinterpret_cast<uintptr_t>(block);
    return true;
}

// Gives the map a private layout with the pairs that it has; their values stay where they are (M1, P4).
static bool my_make_private(KT_vhash *map) noexcept
{
    const kt_shape *shape = kt_shape_of(map);
    kt_private *layout = kt_private_new(shape->arena, std::max(shape->count + 1, my_first_entries));
    if (!layout)
        return false;
    for (uint32_t slot = 0; slot < shape->count; slot++) {
        const kt_shape_key &key = shape->keys->keys[slot];
        kt_segment_at(layout->entries, slot)->key = key.packed;
        if (layout->index.cells)
            kt_index_put(&layout->index, key.hash, slot);
    }
    layout->count = layout->used = layout->own_slots = shape->count;
    map->layout = layout;
    return true;
}

// Private layouts

static bool my_reserve_index(kt_private *layout) noexcept
{
    const bool is_first = !layout->index.cells;
    if (is_first && layout->count < kt_scan_limit)
        return true;
    if (!kt_index_reserve(layout->arena, &layout->index, layout->count + 1))
        return false;
    for (uint32_t n = 0; is_first && n < layout->count; n++) {
        const uint32_t slot = layout->order ? layout->order[n] : n;
        const kt_packed_key &key = kt_segment_at(layout->entries, slot)->key;
        const kt_query query = kt_make_query(kt_key_text(key), kt_key_length(key));
        kt_index_put(&layout->index, kt_hash(query, layout->arena->seeds), slot);
    }
    return true;
}

static bool my_reserve_order(kt_private *layout, uint32_t count) noexcept
{
    if (count <= layout->order_capacity)
        return true;
    const uint32_t capacity = std::bit_ceil(count < 8 ? 8 : count);
    auto *order = kt_new_block<uint32_t>(layout->arena, capacity * sizeof(uint32_t));
    if (!order)
        return false;
    for (uint32_t n = 0; n < layout->count; n++)
        order[n] = layout->order ? layout->order[n] : n;
    if (layout->order)
        kt_pools_release(&layout->arena->pools, layout->order, layout->order_capacity * sizeof(uint32_t));
    layout->order = order;
    layout->order_capacity = capacity;
    return true;
}

static bool my_private_append(KT_vhash *map, const kt_query &query, const KT_variant &value) noexcept
{
    kt_private *layout = kt_private_of(map);
    kt_arena *arena = layout->arena;
    const bool reuses = layout->first_free != kt_no_slot;
    const uint32_t slot = reuses ? layout->first_free : layout->used;
    kt_packed_key key;
    if ((!reuses && !kt_segments_reserve(arena, &layout->entries, slot + 1)) || !my_reserve_index(layout) ||
        (layout->order && !my_reserve_order(layout, layout->count + 1)) || !kt_key_store(arena, query, &key))
        return false;

    // Nothing fails from here on.
    KT_variant *place = kt_private_value(map, layout, slot);
    if (reuses) // the next free slot (P1)
        layout->first_free = place->text_length;
    else
        layout->used++;
    kt_segment_at(layout->entries, slot)->key = key;
    *place = value;
    if (layout->index.cells)
        kt_index_put(&layout->index, kt_hash(query, arena->seeds), slot);
    if (layout->order)
        layout->order[layout->count] = slot;
    layout->count++;
    return true;
}

bool kt_map_append(KT_vhash *map, const kt_query &query, const KT_variant &value) noexcept
{
    if (query.length > kt_max_key)
        return false;
    if (!map->layout->is_private) {
        kt_shape *shape = kt_shape_of(map);
        kt_shape *next = nullptr;
        // The outermost map has a list of keys of its own (M4).
        const kt_step step = map == shape->arena->root ? kt_step::go_private : kt_shape_next(shape, query, &next);
        if (step == kt_step::out_of_memory)
            return false;
        if (step == kt_step::shared) {
            if (!my_reserve_slot(map, shape->count))
                return false;
            *kt_map_slot(map, shape->count) = value;
            map->layout = next;
            return true;
        }
        if (!my_make_private(map))
            return false;
    }
    return my_private_append(map, query, value);
}

static uint32_t my_position_of_slot(const kt_private *layout, uint32_t slot) noexcept
{
    if (!layout->order)
        return slot;
    uint32_t n = 0;
    while (layout->order[n] != slot)
        n++;
    return n;
}

static void my_release_key(kt_arena *arena, kt_packed_key *key) noexcept
{
    if (key->bytes[0] == kt_long_key && key->outside.owned)
        kt_pools_release(&arena->pools, const_cast<char *>(key->outside.text), size_t{key->outside.length} + 1);
    *key = {};
    key->bytes[0] = kt_free_slot; // equals no key that can be looked for (P1)
}

static bool my_private_remove(KT_vhash *map, uint32_t slot) noexcept
{
    kt_private *layout = kt_private_of(map);
    kt_arena *arena = layout->arena;
    const uint32_t position = my_position_of_slot(layout, slot);
    const bool is_last = position + 1 == layout->count;
    if (!layout->order && !is_last && !my_reserve_order(layout, layout->count)) // a hole needs an order (P2)
        return false;

    kt_entry *entry = kt_segment_at(layout->entries, slot);
    if (layout->index.cells) {
        const kt_query query = kt_make_query(kt_key_text(entry->key), kt_key_length(entry->key));
        kt_index_remove(&layout->index, kt_hash(query, arena->seeds), slot);
    }
    my_release_key(arena, &entry->key);
    KT_variant *value = kt_private_value(map, layout, slot);
    kt_value_release(arena, value);
    *value = kt_null_value();
    layout->count--;
    if (!layout->order) {
        layout->used--;
        return true;
    }
    std::memmove(layout->order + position, layout->order + position + 1, (layout->count - position) * sizeof(uint32_t));
    value->type = kt_free_slot;
    value->text_length = layout->first_free;
    layout->first_free = slot;
    return true;
}

bool kt_map_remove(KT_vhash *map, uint32_t slot) noexcept
{
    if (!map->layout->is_private) {
        kt_shape *shape = kt_shape_of(map);
        if (slot + 1 == shape->count) {
            kt_value_release(shape->arena, kt_map_slot(map, slot));
            map->layout = shape->parent;
            return true;
        }
        if (!my_make_private(map))
            return false;
    }
    return my_private_remove(map, slot);
}
