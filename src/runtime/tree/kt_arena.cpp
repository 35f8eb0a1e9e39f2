// The parts of the pools that are needed now and then: new chunks, large blocks, the end.

#include "tree/kt_arena.hpp"

#include "base/kt_memory_private.hpp"

#include <algorithm>

static constexpr size_t my_largest_chunk = size_t{1} << 20;
// Where a text tells what is to come, chunks may be larger, since huge pages are the better filled.
static constexpr size_t my_largest_foreseen_chunk = size_t{32} << 20;
static constexpr size_t my_small_rest = size_t{1} << 18;

void kt_pools_init(kt_pools *pools, void *first, void *end, size_t next_chunk_size) noexcept
{
    *pools = kt_pools{};
    pools->bump = static_cast<char *>(first);
    pools->bump_end = static_cast<char *>(end);
    pools->next_chunk_size = next_chunk_size;
}

static void *my_alloc_large(kt_pools *pools, size_t size) noexcept
{
    if (size > SIZE_MAX - sizeof(kt_large_block))
        return nullptr;
    auto *block = static_cast<kt_large_block *>(kt_allocate(sizeof(kt_large_block) + size));
    if (!block)
        return nullptr;
    block->previous = nullptr;
    block->next = pools->large;
    if (block->next)
        block->next->previous = block;
    pools->large = block;
    return block + 1;
}

// The part of what the rest of the text will take that is sure to be needed, or the whole where little is left; 0 where
// nothing can be foreseen. The nearer the end, the better the estimate, so that little is left unused; and a text that
// begins densely and goes on sparsely gets no more than a few times what it has taken so far.
static size_t my_foreseen_size(const kt_pools &pools) noexcept
{
    if (!pools.progress || pools.progress->place == pools.progress->text || pools.chunk_bytes == 0)
        return 0;
    const auto read = static_cast<double>(pools.progress->place - pools.progress->text);
    const auto left = static_cast<double>(pools.progress->end - pools.progress->place);
    const double rest = static_cast<double>(pools.chunk_bytes) * left / read;
    const size_t most = std::clamp(4 * pools.chunk_bytes, my_largest_chunk, my_largest_foreseen_chunk);
    if (rest <= my_small_rest)
        return static_cast<size_t>(rest) + kt_smallest_chunk;
    return static_cast<size_t>(std::min(static_cast<double>(most), rest * 7 / 8));
}

void *kt_pools_alloc_slow(kt_pools *pools, size_t block_size) noexcept
{
    if (block_size > kt_max_pooled)
        return my_alloc_large(pools, block_size);

    const size_t foreseen = my_foreseen_size(*pools);
    const size_t size = std::max(foreseen ? foreseen : pools->next_chunk_size, sizeof(kt_chunk) + block_size);
    auto *chunk = static_cast<kt_chunk *>(kt_allocate(size));
    if (!chunk)
        return nullptr;
    chunk->next = pools->chunks;
    pools->chunks = chunk;
    // A quarter of all so far: the part of the last chunk that stays unused is a small share of the whole.
    pools->chunk_bytes += size;
    pools->next_chunk_size = std::clamp(pools->chunk_bytes / 4, kt_smallest_chunk, my_largest_chunk);

    char *block = reinterpret_cast<char *>(chunk + 1);
    pools->bump = block + block_size;
    pools->bump_end = reinterpret_cast<char *>(chunk) + size;
    return block;
}

void kt_pools_release_large(kt_pools *pools, void *block) noexcept
{
    kt_large_block *large = static_cast<kt_large_block *>(block) - 1;
    (large->previous ? large->previous->next : pools->large) = large->next;
    if (large->next)
        large->next->previous = large->previous;
    kt_release(large);
}

void kt_pools_destroy(kt_pools *pools) noexcept
{
    for (kt_chunk *chunk = pools->chunks; chunk;) {
        kt_chunk *next = chunk->next;
        kt_release(chunk);
        chunk = next;
    }
    for (kt_large_block *block = pools->large; block;) {
        kt_large_block *next = block->next;
        kt_release(block);
        block = next;
    }
}
