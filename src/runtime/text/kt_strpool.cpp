// An arena of text copies: chunks that are filled from front to back and freed as a whole.
//
// The pool and its first chunk are one block. Each further chunk is twice as large as the one before, up to a limit;
// a text that would take most of a chunk gets one of its own, and the chunk being filled stays in use.
#include "kt_strpool.h"
#include "kt_memory.h"
#include "kt_try.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#define KT_HERE "src/runtime/kt_strpool"

namespace {

constexpr size_t smallest_chunk = 256;
constexpr size_t largest_chunk = size_t{1} << 20;

struct chunk {
    chunk *before;
};

} // namespace

struct KT_strpool {
    chunk *last; // of the chunks after the first
    char *free;  // the rest of the chunk being filled
    size_t free_size;
    size_t next_size; // of the next chunk
};

void KT_strpool__alloc(KT_context *ctx, KT_strpool **pool, uint32_t size_hint) noexcept
{
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, sizeof(KT_strpool) + size_hint, &block));
    char *first = static_cast<char *>(block) + sizeof(KT_strpool);
    const size_t next_size = std::clamp(size_t{2} * size_hint, smallest_chunk, largest_chunk);
    *pool = new (block) KT_strpool{nullptr, first, size_hint, next_size};
}

static void my_add_chunk(KT_context *ctx, KT_strpool *pool, size_t size, char **place) noexcept
{
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, sizeof(chunk) + size, &block));
    pool->last = new (block) chunk{pool->last};
    *place = static_cast<char *>(block) + sizeof(chunk);
}

static void my_take_place(KT_context *ctx, KT_strpool *pool, size_t size, char **place) noexcept
{
    if (size > pool->free_size) {
        if (size > pool->next_size / 2) {
            KT_TRY(my_add_chunk(ctx, pool, size, place));
            return;
        }
        KT_TRY(my_add_chunk(ctx, pool, pool->next_size, &pool->free));
        pool->free_size = pool->next_size;
        pool->next_size = std::min(2 * pool->next_size, largest_chunk);
    }
    *place = pool->free;
    pool->free += size;
    pool->free_size -= size;
}

void KT_strpool__add__sz(KT_context *ctx, KT_strpool *pool, const char *text, const char **copy) noexcept
{
    const size_t size = std::strlen(text) + 1;
    char *place = nullptr;
    KT_TRY(my_take_place(ctx, pool, size, &place));
    std::memcpy(place, text, size);
    *copy = place;
}

void KT_strpool__free(KT_context *ctx, KT_strpool *pool) noexcept
{
    if (!pool)
        return;
    for (chunk *rest = pool->last; rest;)
        _kt_free(ctx, std::exchange(rest, rest->before));
    _kt_free(ctx, pool);
}
