// A tree's beginning and end.

#include "tree/kt_tree.hpp"

#include "base/kt_memory_private.hpp"

#include <algorithm>
#include <chrono>
#include <random>

static constexpr size_t my_first_size = 1024; // holds the arena itself and a small map or two
static constexpr size_t my_largest_first_chunk = size_t{1} << 18;
static_assert(sizeof(kt_arena) < my_first_size / 2);

// Where the system has no random numbers to give, the time and a random address have to do.
static kt_seeds my_draw_seeds() noexcept
{
    kt_seeds seeds = {};
    seeds.first = kt_mix(static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()),
                         reinterpret_cast<uintptr_t>(&seeds));
    try {
        std::random_device source;
        const auto draw = [&source] { return (uint64_t{source()} << 32) | source(); };
        seeds.first ^= draw();
        seeds.second = draw();
    } catch (const std::exception &) {
        seeds.second = kt_mix(seeds.first, 0xD6E8FEB86659FD93);
    }
    return seeds;
}

// Drawn once in the life of a process and never changed: a tree costs a look at them, not a question to the system.
static const kt_seeds &my_process_seeds() noexcept
{
    static const kt_seeds seeds = my_draw_seeds();
    return seeds;
}

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
    arena->seeds = my_process_seeds();
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
