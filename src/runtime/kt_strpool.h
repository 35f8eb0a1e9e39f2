/* An arena of text copies that is freed as a whole. */
#ifndef KT_STRPOOL_H
#define KT_STRPOOL_H

#include "kt_context.h"

KT_BEGIN_DECLS

/** Makes an empty pool, owned; size_hint is the number of bytes that it first makes room for. */
KT_API void KT_strpool__alloc(KT_context *ctx, KT_strpool **pool, uint32_t size_hint) KT_NOEXCEPT;

/** Copies a string into the pool; the copy is borrowed and lives as long as the pool. */
KT_API void KT_strpool__add__sz(KT_context *ctx, KT_strpool *pool, const char *text, const char **copy) KT_NOEXCEPT;

/** Frees the pool with all its strings. Null does nothing. */
KT_API void KT_strpool__free(KT_context *ctx, KT_strpool *pool) KT_NOEXCEPT;

KT_END_DECLS

#endif
