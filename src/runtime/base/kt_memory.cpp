// The one door to memory: the allocator in force, and blocks with an error context.
//
// Nothing here or elsewhere in the runtime calls the C library's allocator directly, so whoever brings an allocator
// sees every block.
#include "kt_memory.h"
#include "base/kt_memory_private.hpp"
#include "kt_try.hpp"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#define KT_HERE "src/runtime/kt_memory"

// Asks for huge pages inside a large block: the first touch of small ones costs a third of what filling them takes. A
// system that does not have them serves as well without.
static void *my_prepare_pages([[maybe_unused]] void *block, [[maybe_unused]] size_t size) noexcept
{
#if defined(MADV_HUGEPAGE)
    static constexpr uintptr_t small_page = 4096, huge_page = uintptr_t{1} << 21;
    if (block && size >= 2 * huge_page) {
        const uintptr_t first = (reinterpret_cast<uintptr_t>(block) + small_page - 1) & ~(small_page - 1);
        const uintptr_t end = (reinterpret_cast<uintptr_t>(block) + size) & ~(small_page - 1);
        (void)madvise(reinterpret_cast<void *>(first), end - first, MADV_HUGEPAGE);
    }
#endif
    return block;
}

static void *my_c_allocate(void *, size_t size)
{
    return my_prepare_pages(std::malloc(size), size);
}

static void *my_c_resize(void *, void *block, size_t, size_t new_size)
{
    return my_prepare_pages(std::realloc(block, new_size), new_size);
}

static void my_c_release(void *, void *block)
{
    std::free(block);
}

static constexpr KT_allocator c_library = {my_c_allocate, my_c_resize, my_c_release, nullptr};
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): the one allocator of a process; see the header.
static constinit KT_allocator brought_in = {};
constinit std::atomic<const KT_allocator *> kt_allocator_in_force{&c_library};
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

void KT_memory__set_allocator(const KT_allocator *allocator) noexcept
{
    if (!allocator) {
        kt_allocator_in_force.store(&c_library, std::memory_order_release);
        return;
    }
    assert(allocator->allocate && allocator->release);
    brought_in = *allocator;
    kt_allocator_in_force.store(&brought_in, std::memory_order_release);
}

void *kt_resize(void *block, size_t old_size, size_t new_size) noexcept
{
    if (!block)
        return kt_allocate(new_size);
    const KT_allocator *allocator = kt_allocator_in_force.load(std::memory_order_acquire);
    if (new_size == 0)
        new_size = 1;
    if (allocator->resize)
        return allocator->resize(allocator->data, block, old_size, new_size);
    void *moved = allocator->allocate(allocator->data, new_size);
    if (!moved)
        return nullptr;
    std::memcpy(moved, block, std::min(old_size, new_size));
    allocator->release(allocator->data, block);
    return moved;
}

void _kt_malloc(KT_context *ctx, size_t size, void **block) noexcept
{
    KT_RETURN_IF_FAILED;
    void *taken = kt_allocate(size);
    if (!taken)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    *block = taken;
}

void _kt_free(KT_context *, void *block) noexcept
{
    kt_release(block);
}

void KT_strdup(KT_context *ctx, const char *text, char **copy) noexcept
{
    const size_t size = std::strlen(text) + 1;
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, size, &block));
    std::memcpy(block, text, size);
    *copy = static_cast<char *>(block);
}
