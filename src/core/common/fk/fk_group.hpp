// Sorting and grouping by small numbers, in linear time.
#pragma once

#include "fk/fk_array.hpp"

// Sorts positions by their rank, at most max_rank; those of one rank keep their order.
void fk_sort_by(KT_context *ctx, const fk_array<uint32_t> &rank, uint32_t max_rank,
                fk_array<uint32_t> *positions) noexcept;

// Puts the items of each owner side by side, in the order they had: those of owner n, by its number, then are from
// items[first[n]] up to items[first[n + 1]]. Each number below owner_count owns an item, and owner says whose each is.
template <class T>
void fk_group_by(KT_context *ctx, const fk_array<uint32_t> &owner, uint32_t owner_count, fk_array<T> *items,
                 fk_array<uint32_t> *first) noexcept
{
    fk_array<T> grouped{ctx};
    fk_array<uint32_t> order{ctx};
    KT_TRY(fk_reserve(ctx, &grouped, items->count));
    for (uint32_t n = 0; n < items->count; n++)
        KT_TRY(fk_append(ctx, &order, n));
    KT_TRY(fk_sort_by(ctx, owner, owner_count, &order));
    for (uint32_t n = 0; n < order.count; n++) {
        if (first->count <= owner[order[n]])
            KT_TRY(fk_append(ctx, first, n));
        KT_TRY(fk_append(ctx, &grouped, (*items)[order[n]]));
    }
    KT_TRY(fk_append(ctx, first, grouped.count));
    fk_move(&grouped, items);
}
