/* An ordered set of strings. */
#ifndef KT_NULLHASH_H
#define KT_NULLHASH_H

#include "kt_context.h"

KT_BEGIN_DECLS

/** Makes an empty set, owned; freed with KT_nullhash__free(). */
KT_API void KT_nullhash__alloc(KT_context *ctx, KT_nullhash **set) KT_NOEXCEPT;

/** Adds a string unless the set has it already; a repeated string keeps its first place. */
KT_API void KT_nullhash__update(KT_context *ctx, KT_nullhash *set, const char *text) KT_NOEXCEPT;

/** The number of strings. */
KT_API void KT_nullhash__count(KT_context *ctx, const KT_nullhash *set, uint32_t *count) KT_NOEXCEPT;

/** The n-th string in order of first addition, counted from 0, borrowed. KT_ERR_OUT_OF_RANGE past the end. */
KT_API void KT_nullhash__get_nth(KT_context *ctx, const KT_nullhash *set, uint32_t n, const char **text) KT_NOEXCEPT;

/** Frees the set. Null does nothing. */
KT_API void KT_nullhash__free(KT_context *ctx, KT_nullhash *set) KT_NOEXCEPT;

KT_END_DECLS

#endif
