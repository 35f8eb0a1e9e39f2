// Finding a key: a scan over a few packed keys, an index from key hash to slot for more. Every reading operation
// starts here, so it is inline.
#pragma once

#include "tree/kt_tree.hpp"

inline uint32_t kt_scan_entries(const kt_private *layout, const kt_query &query) noexcept
{
    for (uint32_t slot = 0; slot < layout->used; slot++)
        if (kt_key_equals(kt_segment_at(layout->entries, slot)->key, query))
            return slot;
    return kt_no_slot;
}

inline uint32_t kt_find_in_private_index(const kt_private *layout, const kt_query &query, uint32_t hash) noexcept
{
    const kt_index &index = layout->index;
    for (uint32_t at = kt_index_start(index, hash);; at = (at + 1) & index.mask) {
        const kt_index_cell &cell = index.cells[at];
        if (cell.slot_plus_1 == 0)
            return kt_no_slot;
        if (cell.hash == hash && kt_key_equals(kt_segment_at(layout->entries, cell.slot_plus_1 - 1)->key, query))
            return cell.slot_plus_1 - 1;
    }
}

inline uint32_t kt_find_in_private(const kt_private *layout, const kt_query &query) noexcept
{
    return layout->index.cells ? kt_find_in_private_index(layout, query, kt_hash(query, layout->arena->seeds))
                               : kt_scan_entries(layout, query);
}

// The list may hold more keys than the shape sees (M2); those count as absent.
inline uint32_t kt_find_in_shape_index(const kt_shape *shape, const kt_query &query) noexcept
{
    const kt_shape_keys *list = shape->keys;
    const uint32_t hash = kt_hash(query, shape->arena->seeds);
    for (uint32_t at = kt_index_start(list->index, hash);; at = (at + 1) & list->index.mask) {
        const kt_index_cell &cell = list->index.cells[at];
        if (cell.slot_plus_1 == 0)
            return kt_no_slot;
        if (cell.hash == hash && kt_key_equals(list->keys[cell.slot_plus_1 - 1].packed, query))
            return cell.slot_plus_1 <= shape->count ? cell.slot_plus_1 - 1 : kt_no_slot;
    }
}

inline uint32_t kt_scan_shape(const kt_shape *shape, const kt_query &query) noexcept
{
    const uint32_t count = shape->count;
    if (count == 0)
        return kt_no_slot;
    const kt_shape_key *keys = shape->keys->keys;
    for (uint32_t slot = 0; slot < count; slot++)
        if (kt_key_equals(keys[slot].packed, query))
            return slot;
    return kt_no_slot;
}

inline uint32_t kt_find_in_shape(const kt_shape *shape, const kt_query &query) noexcept
{
    return shape->count > kt_scan_limit ? kt_find_in_shape_index(shape, query) : kt_scan_shape(shape, query);
}

// The slot of a key, or kt_no_slot.
inline uint32_t kt_find(const KT_vhash *map, const kt_query &query) noexcept
{
    return map->layout->is_private ? kt_find_in_private(kt_private_of(map), query)
                                   : kt_find_in_shape(kt_shape_of(map), query);
}
