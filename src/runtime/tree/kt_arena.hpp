// The memory of one tree: every map, list, text and key of it comes from here and goes with it.
//
// Small blocks are cut from chunks that grow with the tree, and go back to a free list of their size class, so that a
// single node can be freed and a whole tree costs a handful of calls. Large blocks are taken one by one and linked.
#pragma once

#include "kt_variant.h"

#include <cstddef>
#include <cstdint>

struct kt_shape;

inline constexpr size_t kt_granule = 16;      // every block is a multiple of it, and aligned to it
inline constexpr size_t kt_max_fine = 256;    // up to here a class for every granule
inline constexpr size_t kt_max_pooled = 4096; // up to here a class for every power of two
inline constexpr size_t kt_smallest_chunk = 1024;
inline constexpr size_t kt_fine_classes = kt_max_fine / kt_granule;
inline constexpr size_t kt_size_classes = kt_fine_classes + 4;

struct kt_free_block {
    kt_free_block *next;
};

struct alignas(kt_granule) kt_chunk {
    kt_chunk *next;
};

struct alignas(kt_granule) kt_large_block {
    kt_large_block *next;
    kt_large_block *previous;
};

// How much of a text has been read: what is to come takes as much memory for each byte as what came.
struct kt_progress {
    const char *text;
    const char *place;
    const char *end;
};

struct kt_pools {
    char *bump; // the free part of the newest chunk
    char *bump_end;
    kt_chunk *chunks;
    size_t next_chunk_size;
    size_t chunk_bytes;          // of all chunks
    const kt_progress *progress; // while the tree is read from a text
    kt_large_block *large;
    kt_free_block *free_blocks[kt_size_classes];
};

// The bytes that a block of this size really takes.
inline size_t kt_block_size(size_t size) noexcept
{
    if (size <= kt_max_fine)
        return (size + kt_granule - 1) & ~(kt_granule - 1);
    size_t rounded = 2 * kt_max_fine;
    while (rounded < size && rounded < kt_max_pooled)
        rounded *= 2;
    return rounded < size ? size : rounded;
}

inline size_t kt_size_class(size_t block_size) noexcept
{
    if (block_size <= kt_max_fine)
        return block_size / kt_granule - 1;
    size_t size_class = kt_fine_classes;
    for (size_t size = 2 * kt_max_fine; size < block_size; size *= 2)
        size_class++;
    return size_class;
}

void *kt_pools_alloc_slow(kt_pools *pools, size_t block_size) noexcept;
void kt_pools_release_large(kt_pools *pools, void *block) noexcept;

// A block of size bytes (not 0), or null when memory is short.
inline void *kt_pools_alloc(kt_pools *pools, size_t size) noexcept
{
    const size_t block_size = kt_block_size(size);
    if (block_size <= kt_max_pooled) [[likely]] {
        kt_free_block *&head = pools->free_blocks[kt_size_class(block_size)];
        if (head) {
            void *block = head;
            head = head->next;
            return block;
        }
        if (static_cast<size_t>(pools->bump_end - pools->bump) >= block_size) [[likely]] {
            void *block = pools->bump;
            pools->bump += block_size;
            return block;
        }
    }
    return kt_pools_alloc_slow(pools, block_size);
}

// Gives a block back; size is the one that it was taken with.
inline void kt_pools_release(kt_pools *pools, void *block, size_t size) noexcept
{
    const size_t block_size = kt_block_size(size);
    if (block_size > kt_max_pooled) {
        kt_pools_release_large(pools, block);
        return;
    }
    auto *freed = static_cast<kt_free_block *>(block);
    kt_free_block *&head = pools->free_blocks[kt_size_class(block_size)];
    freed->next = head;
    head = freed;
}

// Starts with the memory between first and end, which belongs to the caller.
void kt_pools_init(kt_pools *pools, void *first, void *end, size_t next_chunk_size) noexcept;
// Gives every chunk and large block back.
void kt_pools_destroy(kt_pools *pools) noexcept;
