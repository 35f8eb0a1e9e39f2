// Finding a key: a scan over a few packed keys, an index from key hash to slot for more.

#include "kt_tree.hpp"

static uint32_t my_scan_entries(const kt_private *layout, const kt_query &query) noexcept
{
    for (uint32_t slot = 0; slot < layout->used; slot++)
        if (kt_key_equals(kt_segment_at(layout->entries, slot)->key, query))
            return slot;
    return kt_no_slot;
}

static uint32_t my_find_in_private(const kt_private *layout, const kt_query &query) noexcept
{
    const kt_index &index = layout->index;
    if (!index.cells)
        return my_scan_entries(layout, query);
    const uint32_t hash = kt_hash(query, layout->arena->seed);
    for (uint32_t at = kt_index_start(index, hash);; at = (at + 1) & index.mask) {
        const kt_index_cell &cell = index.cells[at];
        if (cell.slot_plus_1 == 0)
            return kt_no_slot;
        if (cell.hash == hash && kt_key_equals(kt_segment_at(layout->entries, cell.slot_plus_1 - 1)->key, query))
            return cell.slot_plus_1 - 1;
    }
}

// The list may hold more keys than the shape sees; those count as absent.
static uint32_t my_find_in_shape_index(const kt_shape *shape, const kt_query &query) noexcept
{
    const kt_shape_keys *list = shape->keys;
    const uint32_t hash = kt_hash(query, shape->arena->seed);
    for (uint32_t at = kt_index_start(list->index, hash);; at = (at + 1) & list->index.mask) {
        const kt_index_cell &cell = list->index.cells[at];
        if (cell.slot_plus_1 == 0)
            return kt_no_slot;
        if (cell.hash == hash && kt_key_equals(list->keys[cell.slot_plus_1 - 1].packed, query))
            return cell.slot_plus_1 <= shape->count ? cell.slot_plus_1 - 1 : kt_no_slot;
    }
}

uint32_t kt_find_in_shape(const kt_shape *shape, const kt_query &query) noexcept
{
    if (shape->count > kt_scan_limit)
        return my_find_in_shape_index(shape, query);
    for (uint32_t slot = 0; slot < shape->count; slot++)
        if (kt_key_equals(shape->keys->keys[slot].packed, query))
            return slot;
    return kt_no_slot;
}

uint32_t kt_find(const KT_vhash *map, const kt_query &query) noexcept
{
    return map->layout->is_private ? my_find_in_private(kt_private_of(map), query)
                                   : kt_find_in_shape(kt_shape_of(map), query);
}

bool kt_index_reserve(kt_arena *arena, kt_index *index, uint32_t count) noexcept
{
    const uint32_t cells = index->cells ? index->mask + 1 : 0;
    if (count <= cells / 2)
        return true;
    const uint32_t wanted = std::bit_ceil(count * 2);
    auto *fresh = kt_new_block<kt_index_cell>(arena, wanted * sizeof(kt_index_cell));
    if (!fresh)
        return false;
    std::memset(fresh, 0, wanted * sizeof(kt_index_cell));

    kt_index grown{fresh, wanted - 1};
    for (uint32_t at = 0; at < cells; at++)
        if (index->cells[at].slot_plus_1)
            kt_index_put(&grown, index->cells[at].hash, index->cells[at].slot_plus_1 - 1);
    kt_index_release(arena, index);
    *index = grown;
    return true;
}

void kt_index_put(kt_index *index, uint32_t hash, uint32_t slot) noexcept
{
    uint32_t at = kt_index_start(*index, hash);
    while (index->cells[at].slot_plus_1)
        at = (at + 1) & index->mask;
    index->cells[at] = {hash, slot + 1};
}

// Closes the gap by moving back every later cell of the run that may stand there, so that no search stops short.
void kt_index_remove(kt_index *index, uint32_t hash, uint32_t slot) noexcept
{
    uint32_t gap = kt_index_start(*index, hash);
    while (index->cells[gap].slot_plus_1 != slot + 1)
        gap = (gap + 1) & index->mask;
    for (uint32_t at = (gap + 1) & index->mask; index->cells[at].slot_plus_1; at = (at + 1) & index->mask) {
        const uint32_t start = kt_index_start(*index, index->cells[at].hash);
        if (((at - start) & index->mask) >= ((at - gap) & index->mask)) {
            index->cells[gap] = index->cells[at];
            gap = at;
        }
    }
    index->cells[gap] = {0, 0};
}

void kt_index_release(kt_arena *arena, kt_index *index) noexcept
{
    if (index->cells)
        kt_pools_release(&arena->pools, index->cells, (index->mask + size_t{1}) * sizeof(kt_index_cell));
    *index = {};
}
