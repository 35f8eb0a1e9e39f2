// Memory without a context, for the runtime's own sources: null on failure, and the caller says what that means.
//
// The allocator in force is read once per call through one atomic pointer, so that threads may take memory at the
// same time. The pointer only changes while nothing of the runtime is alive (KT_memory__set_allocator).
#pragma once

#include "kt_memory.h"

#include <atomic>

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the one allocator of a process.
extern constinit std::atomic<const KT_allocator *> kt_allocator_in_force;

// A block of at least size bytes, or null; a size of 0 gives a block too.
[[nodiscard]] inline void *kt_allocate(size_t size) noexcept
{
    const KT_allocator *allocator = kt_allocator_in_force.load(std::memory_order_acquire);
    return allocator->allocate(allocator->data, size ? size : 1);
}

// Gives a block back. Null does nothing.
inline void kt_release(void *block) noexcept
{
    if (!block)
        return;
    const KT_allocator *allocator = kt_allocator_in_force.load(std::memory_order_acquire);
    allocator->release(allocator->data, block);
}

// The block with another size and its content, perhaps elsewhere; null leaves it as it was. A null block with an old
// size of 0 is taken anew.
[[nodiscard]] void *kt_resize(void *block, size_t old_size, size_t new_size) noexcept;
