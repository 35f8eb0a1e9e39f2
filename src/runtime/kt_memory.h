/*
 * The one door to memory. Every block that the runtime and what is built on it take comes through here, so an
 * embedder can bring an allocator of its own and a test can make the n-th allocation fail.
 */
#ifndef KT_MEMORY_H
#define KT_MEMORY_H

#include "kt_context.h"

KT_BEGIN_DECLS

/** A source of memory. Blocks must be aligned for any type (16 bytes). Calls may come from several threads. */
typedef struct KT_allocator {
    /** A block of at least size bytes (size is never 0), or null. */
    void *(*allocate)(void *data, size_t size);
    /**
     * Changes the size of a block and keeps its content, moving it where needed; null leaves the block as it was.
     * Optional: without it a new block is taken and the content copied.
     */
    void *(*resize)(void *data, void *block, size_t old_size, size_t new_size);
    /** Gives a block back (never null). */
    void (*release)(void *data, void *block);
    /** Handed to the calls above. */
    void *data;
} KT_allocator;

/**
 * Puts an allocator in the place of the C library's, for the whole process. Null restores the C library's.
 *
 * A block must be released by the allocator that made it: call this before the first use of the runtime, or while
 * nothing of it is alive. The structure is copied.
 */
KT_API void KT_memory__set_allocator(const KT_allocator *allocator) KT_NOEXCEPT;

/** Takes a block of size bytes, not cleared, owned; freed with _kt_free(). A size of 0 gives a block too. */
KT_API void _kt_malloc(KT_context *ctx, size_t size, void **block) KT_NOEXCEPT;

/** Gives a block back. Null does nothing. */
KT_API void _kt_free(KT_context *ctx, void *block) KT_NOEXCEPT;

/** Copies a string, owned; freed with _kt_free(). */
KT_API void KT_strdup(KT_context *ctx, const char *text, char **copy) KT_NOEXCEPT;

KT_END_DECLS

#endif
