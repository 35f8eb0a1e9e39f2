// A tree's beginning and end.

#include "tree/kt_tree.hpp"

#include "base/kt_memory_private.hpp"

#include <algorithm>

static constexpr size_t my_first_size = 1024; // holds the arena itself and a small map or two
static constexpr size_t my_largest_first_chunk = size_t{1} << 20;
static_assert(sizeof(kt_arena) < my_first_size / 2);

kt_arena *kt_arena_new(size_t size_hint) noexcept
{
    auto *arena = static_cast<kt_arena *>(kt_allocate(my_first_size));
    if (!arena)
        return nullptr;
    *arena = {};
    const size_t used = (sizeof(kt_arena) + kt_granule - 1) & ~(kt_granule - 1);
    char *memory = reinterpret_cast<char *>(arena);
    kt_pools_init(&arena->pools, memory + used, memory + my_first_size,
                  std::clamp(size_hint, kt_smallest_chunk, my_largest_first_chunk));
    arena->empty_shape.arena = arena;
    arena->shape_credit = 4096;
    arena->seed = kt_mix(reinterpret_cast<uintptr_t>(arena) ^ 0xA0761D6478BD642F, 0xE7037ED1A0B428DB);
    return arena;
}

void kt_arena_destroy(kt_arena *arena) noexcept
{
    kt_pools_destroy(&arena->pools);
    kt_release(arena);
}

KT_vhash *kt_tree_copy(const KT_vhash *source) noexcept
{
    kt_arena *arena = kt_arena_new(0);
    if (!arena)
        return nullptr;
    KT_variant original{};
    original.type = KT_VARIANT_VHASH;
    original.as.vhash = const_cast<KT_vhash *>(source);
    KT_variant copy;
    if (!kt_value_copy(arena, original, &copy)) {
        kt_arena_destroy(arena);
        return nullptr;
    }
    arena->root = copy.as.vhash;
    return copy.as.vhash;
}
