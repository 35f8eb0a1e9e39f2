// The index from key hash to slot: open addressing, at most half full.

#include "tree/kt_tree.hpp"

static constexpr uint32_t my_most_members = UINT32_C(1) << 30; // the number of cells has to fit 32 bits

bool kt_index_reserve(kt_arena *arena, kt_index *index, uint32_t count) noexcept
{
    const uint32_t cells = index->cells ? index->mask + 1 : 0;
    if (count <= cells / 2)
        return true;
    if (count > my_most_members)
        return false;
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

// Closes the gap by moving back every later cell of the run whose search begins at or before it, so that no search
// stops short. The pair must be there.
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
