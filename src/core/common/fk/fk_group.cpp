// Sorting by small numbers; see the header.

#include "fk/fk_group.hpp"

void fk_sort_by(KT_context *ctx, const fk_array<uint32_t> &rank, uint32_t max_rank,
                fk_array<uint32_t> *positions) noexcept
{
    fk_array<uint32_t> first{ctx};
    fk_array<uint32_t> sorted{ctx};
    KT_TRY(fk_append_many(ctx, &first, max_rank + 2, 0));
    KT_TRY(fk_append_many(ctx, &sorted, positions->count, 0));
    for (uint32_t n = 0; n < positions->count; n++)
        first[rank[(*positions)[n]] + 1]++;
    for (uint32_t n = 1; n < first.count; n++)
        first[n] += first[n - 1];
    for (uint32_t n = 0; n < positions->count; n++)
        sorted[first[rank[(*positions)[n]]]++] = (*positions)[n];
    fk_move(&sorted, positions);
}
