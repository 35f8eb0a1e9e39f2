/* An ordered list of variants. It owns what it holds. */
#ifndef KT_VARRAY_H
#define KT_VARRAY_H

#include "kt_variant.h"

KT_BEGIN_DECLS

/** Makes an empty list, owned; freed with KT_varray__free(). */
KT_API void KT_varray__alloc(KT_context *ctx, KT_varray **list) KT_NOEXCEPT;

/**
 * Frees a list made by KT_varray__alloc() with all it holds. Null does nothing.
 * Fails with KT_ERR_BORROWED, and frees nothing, when the list belongs to a map.
 */
KT_API void KT_varray__free(KT_context *ctx, KT_varray *list) KT_NOEXCEPT;

/** The number of elements. */
KT_API void KT_varray__count(KT_context *ctx, const KT_varray *list, uint32_t *count) KT_NOEXCEPT;

/** Appends a copy of a string; a null string is stored as a null value. */
KT_API void KT_varray__append__string__sz(KT_context *ctx, KT_varray *list, const char *text) KT_NOEXCEPT;

/** Appends a truth value. */
KT_API void KT_varray__append__bool(KT_context *ctx, KT_varray *list, KT_bool value) KT_NOEXCEPT;

/** Appends an empty map and returns it, borrowed. */
KT_API void KT_varray__appendnew__vhash(KT_context *ctx, KT_varray *list, KT_vhash **child) KT_NOEXCEPT;

/** The i-th element, counted from 0, as a map, borrowed. KT_ERR_OUT_OF_RANGE or KT_ERR_WRONG_TYPE. */
KT_API void KT_varray__get__vhash(KT_context *ctx, const KT_varray *list, uint32_t i, KT_vhash **child) KT_NOEXCEPT;

/** The i-th element, counted from 0, as a string, borrowed. KT_ERR_OUT_OF_RANGE or KT_ERR_WRONG_TYPE. */
KT_API void KT_varray__get__sz(KT_context *ctx, const KT_varray *list, uint32_t i, const char **text) KT_NOEXCEPT;

/** The i-th element, counted from 0, whatever it is; borrowed until the list changes. KT_ERR_OUT_OF_RANGE. */
KT_API void KT_varray__get_nth(KT_context *ctx, const KT_varray *list, uint32_t i,
                               const KT_variant **value) KT_NOEXCEPT;

KT_END_DECLS

#endif
