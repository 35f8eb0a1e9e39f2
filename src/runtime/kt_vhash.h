/*
 * An ordered map from string keys to variants.
 *
 * Keys are compared byte for byte. Pairs keep the order in which they were added: a new value for an old key keeps
 * its place, and removing a pair keeps the order of the others. Reading by key or by position takes constant time
 * at any size, adding amortised constant time, removing at worst time linear in the number of pairs.
 *
 * A key of 4 GiB or more is never there, and adding it is KT_ERR_OUT_OF_MEMORY. Which keys collide inside is drawn at
 * random for each process, so a document cannot be written to make these times worse.
 *
 * A map owns what it holds. Keys, strings, child maps and child lists that are handed out are borrowed; they stay
 * where they are until that pair is removed or replaced or the map is freed, whatever else is added or removed.
 * Variants that are handed out are borrowed until the map changes.
 *
 * What absence means is part of the name:
 * - get: the key must be there (KT_ERR_KEY_NOT_FOUND) and hold that type (KT_ERR_WRONG_TYPE; a null is not a type).
 * - check: an absent key, or a null value, is not a failure: a pointer output becomes null, any other output is left
 *   as it was. A value of another type is KT_ERR_WRONG_TYPE.
 * - ensure: an absent key gets an empty child at the end. A value of another type, null too, is KT_ERR_WRONG_TYPE.
 */
#ifndef KT_VHASH_H
#define KT_VHASH_H

#include "kt_string.h"
#include "kt_varray.h"

KT_BEGIN_DECLS

/** The deepest nesting that the JSON reader accepts: maps and lists inside one another, the outermost included. */
#define KT_JSON_MAX_DEPTH 1024

/** Makes an empty map, owned; freed with KT_vhash__free(). */
KT_API void KT_vhash__alloc(KT_context *ctx, KT_vhash **map) KT_NOEXCEPT;

/**
 * Reads a JSON object into a new map, owned, pairs in the order of the text.
 *
 * Strict: UTF-8 (a byte-order mark is skipped), one object and nothing after it but white space, no repeated key in
 * an object, no NUL and no lone surrogate in a string, integers within 64 bits, nesting up to KT_JSON_MAX_DEPTH.
 * A number with a fraction or an exponent becomes a double, correctly rounded (to zero where it is too small for
 * one); a number too large for one is refused.
 *
 * Fails with KT_ERR_BAD_JSON; the description says where and what was expected, e.g.
 * "JSON text, line 3, column 14: expected ',' or '}'". A string of 8 GiB or more is KT_ERR_OUT_OF_MEMORY.
 */
KT_API void KT_vhash__alloc__from_json__sz(KT_context *ctx, KT_vhash **map, const char *text) KT_NOEXCEPT;

/**
 * Makes a copy of a map with all it holds, owned. The source may be a part of another map or list; the copy stands by
 * itself, so it can be freed alone and given to whoever takes maps over.
 */
KT_API void KT_vhash__alloc__copy(KT_context *ctx, KT_vhash **map, const KT_vhash *source) KT_NOEXCEPT;

/**
 * Appends the JSON text of a map to a string, without blanks, pairs in order. Reading it gives the same map, unless
 * that is nested deeper than KT_JSON_MAX_DEPTH.
 * Doubles are written in the shortest form that reads back to the same value and always as doubles (1.0, 1e300).
 * Fails with KT_ERR_BAD_VALUE at a double that is not finite and at a key or text that is not UTF-8, and leaves the
 * string as it was.
 */
KT_API void KT_vhash__to_json(KT_context *ctx, const KT_vhash *map, KT_string *json) KT_NOEXCEPT;

/**
 * Frees a map made by an alloc operation with all it holds. Null does nothing.
 * Fails with KT_ERR_BORROWED, and frees nothing, when the map belongs to another map or list.
 */
KT_API void KT_vhash__free(KT_context *ctx, KT_vhash *map) KT_NOEXCEPT;

/** Whether a map is independent, as those made by an alloc operation are, and does not belong to a map or list. */
KT_API void KT_vhash__is_root(KT_context *ctx, const KT_vhash *map, KT_bool *is_root) KT_NOEXCEPT;

/** The number of pairs. */
KT_API void KT_vhash__count(KT_context *ctx, const KT_vhash *map, uint32_t *count) KT_NOEXCEPT;

/** Whether a key exists, whatever its value. */
KT_API void KT_vhash__has(KT_context *ctx, const KT_vhash *map, const char *key, KT_bool *has) KT_NOEXCEPT;

/*
 * Add: a new pair at the end. Fails with KT_ERR_DUPLICATE_KEY when the key exists already.
 * Keys and strings are copied; a null string is stored as a null value.
 */
KT_API void KT_vhash__add__int64(KT_context *ctx, KT_vhash *map, const char *key, int64_t value) KT_NOEXCEPT;
KT_API void KT_vhash__add__double(KT_context *ctx, KT_vhash *map, const char *key, double value) KT_NOEXCEPT;
KT_API void KT_vhash__add__string__sz(KT_context *ctx, KT_vhash *map, const char *key, const char *value) KT_NOEXCEPT;
KT_API void KT_vhash__add__bool(KT_context *ctx, KT_vhash *map, const char *key, KT_bool value) KT_NOEXCEPT;
KT_API void KT_vhash__add__null(KT_context *ctx, KT_vhash *map, const char *key) KT_NOEXCEPT;

/* Update: sets a pair. A key that is there keeps its place, a new one goes to the end. Otherwise as add. */
KT_API void KT_vhash__update__int64(KT_context *ctx, KT_vhash *map, const char *key, int64_t value) KT_NOEXCEPT;
KT_API void KT_vhash__update__double(KT_context *ctx, KT_vhash *map, const char *key, double value) KT_NOEXCEPT;
KT_API void KT_vhash__update__string__sz(KT_context *ctx, KT_vhash *map, const char *key,
                                         const char *value) KT_NOEXCEPT;
KT_API void KT_vhash__update__bool(KT_context *ctx, KT_vhash *map, const char *key, KT_bool value) KT_NOEXCEPT;
KT_API void KT_vhash__update__null(KT_context *ctx, KT_vhash *map, const char *key) KT_NOEXCEPT;

/* Addnew: adds an empty child and returns it, borrowed. Fails with KT_ERR_DUPLICATE_KEY. */
KT_API void KT_vhash__addnew__vhash(KT_context *ctx, KT_vhash *map, const char *key, KT_vhash **child) KT_NOEXCEPT;
KT_API void KT_vhash__addnew__varray(KT_context *ctx, KT_vhash *map, const char *key, KT_varray **child) KT_NOEXCEPT;

/** Adds a deep copy of source, which may be the map itself or a part of it. Fails with KT_ERR_DUPLICATE_KEY. */
KT_API void KT_vhash__addcopy__vhash(KT_context *ctx, KT_vhash *map, const char *key,
                                     const KT_vhash *source) KT_NOEXCEPT;

/*
 * Get: the value of a key that must be there. int32 takes a number that fits 32 bits, signed or unsigned; an
 * unsigned one comes back as the same 32 bits (4294967295 reads as -1). Others are KT_ERR_WRONG_TYPE.
 * double takes an integer too.
 */
KT_API void KT_vhash__get__vhash(KT_context *ctx, const KT_vhash *map, const char *key, KT_vhash **value) KT_NOEXCEPT;
KT_API void KT_vhash__get__varray(KT_context *ctx, const KT_vhash *map, const char *key, KT_varray **value) KT_NOEXCEPT;
KT_API void KT_vhash__get__sz(KT_context *ctx, const KT_vhash *map, const char *key, const char **value) KT_NOEXCEPT;
KT_API void KT_vhash__get__int64(KT_context *ctx, const KT_vhash *map, const char *key, int64_t *value) KT_NOEXCEPT;
KT_API void KT_vhash__get__int32(KT_context *ctx, const KT_vhash *map, const char *key, int32_t *value) KT_NOEXCEPT;
KT_API void KT_vhash__get__bool(KT_context *ctx, const KT_vhash *map, const char *key, KT_bool *value) KT_NOEXCEPT;
KT_API void KT_vhash__get__double(KT_context *ctx, const KT_vhash *map, const char *key, double *value) KT_NOEXCEPT;

/* Check: the value of a key that may be absent. */
KT_API void KT_vhash__check__vhash(KT_context *ctx, const KT_vhash *map, const char *key, KT_vhash **value) KT_NOEXCEPT;
KT_API void KT_vhash__check__varray(KT_context *ctx, const KT_vhash *map, const char *key,
                                    KT_varray **value) KT_NOEXCEPT;
KT_API void KT_vhash__check__sz(KT_context *ctx, const KT_vhash *map, const char *key, const char **value) KT_NOEXCEPT;
KT_API void KT_vhash__check__int64(KT_context *ctx, const KT_vhash *map, const char *key, int64_t *value) KT_NOEXCEPT;
KT_API void KT_vhash__check__bool(KT_context *ctx, const KT_vhash *map, const char *key, KT_bool *value) KT_NOEXCEPT;

/**
 * The child map under the folded form of a key (KT_char__folded()), as KT_vhash__check__vhash() finds it.
 * @param[out] folded  the key as the map has it, borrowed; left as it was when the child is absent.
 */
KT_API void KT_vhash__check_folded__vhash(KT_context *ctx, const KT_vhash *map, const char *key, const char **folded,
                                          KT_vhash **value) KT_NOEXCEPT;

/* Ensure: the child under a key, added empty at the end when the key is absent. Borrowed. */
KT_API void KT_vhash__ensure__vhash(KT_context *ctx, KT_vhash *map, const char *key, KT_vhash **child) KT_NOEXCEPT;
KT_API void KT_vhash__ensure__varray(KT_context *ctx, KT_vhash *map, const char *key, KT_varray **child) KT_NOEXCEPT;

/** Removes a pair; the key must be there (KT_ERR_KEY_NOT_FOUND). */
KT_API void KT_vhash__remove(KT_context *ctx, KT_vhash *map, const char *key) KT_NOEXCEPT;

/** Removes a pair if it is there; removed is optional and says whether it was. */
KT_API void KT_vhash__remove_if_present(KT_context *ctx, KT_vhash *map, const char *key, KT_bool *removed) KT_NOEXCEPT;

/*
 * The n-th pair in order, counted from 0; both outputs are optional. KT_ERR_OUT_OF_RANGE when n is not below the
 * count, KT_ERR_WRONG_TYPE when the value is not of the type in the name.
 *
 * @code{.c}
 * // Prints {"a":"1","b":"2"} as two lines.
 * void print_pairs(KT_context *ctx, const KT_vhash *map)
 * {
 *     uint32_t count = 0;
 *     KT_vhash__count(ctx, map, &count);
 *     for (uint32_t n = 0; n < count && !KT_context__has_err(ctx); n++) {
 *         const char *key = NULL;
 *         const char *value = NULL;
 *         KT_vhash__get_nth_pair__sz(ctx, map, n, &key, &value);
 *         if (!KT_context__has_err(ctx))
 *             printf("%s: %s\n", key, value);
 *     }
 * }
 * @endcode
 */
KT_API void KT_vhash__get_nth_pair(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                   const KT_variant **value) KT_NOEXCEPT;
KT_API void KT_vhash__get_nth_pair__sz(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                       const char **value) KT_NOEXCEPT;
KT_API void KT_vhash__get_nth_pair__vhash(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                          KT_vhash **value) KT_NOEXCEPT;
KT_API void KT_vhash__get_nth_pair__uint64(KT_context *ctx, const KT_vhash *map, uint32_t n, const char **key,
                                           uint64_t *value) KT_NOEXCEPT;

/**
 * Calls callback for each pair in order, and stops at the first call after which ctx holds an error; the operation
 * then fails with it. The callback may change what the value it is given holds (a child map, say), not map itself.
 * @param data  handed to the callback; may be null.
 */
KT_API void KT_vhash__foreach(KT_context *ctx, KT_vhash *map,
                              void (*callback)(KT_context *ctx, void *data, const char *key, KT_variant *value),
                              void *data) KT_NOEXCEPT;

KT_END_DECLS

#endif
