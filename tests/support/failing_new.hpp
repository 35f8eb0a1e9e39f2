// Makes operator new fail: what the standard library's containers ask for, which the allocator of the runtime does not
// see. It replaces the operator of the whole program, so one source of it includes this.
#pragma once

#include "allocations_to_failure.hpp"

#include <cstdlib>
#include <new>

// The form that does not throw is std::stable_sort's, which sorts without a buffer when there is none.
void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    if (allocations_to_failure > 0 && --allocations_to_failure == 0)
        return nullptr;
    return std::malloc(size > 0 ? size : 1);
}

void *operator new(size_t size)
{
    if (void *block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, size_t) noexcept
{
    std::free(block);
}
