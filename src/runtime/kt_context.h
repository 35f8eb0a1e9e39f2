/*
 * The error context that every operation takes first.
 *
 * A context holds a current level and, for each level, at most one error: a code, a description and the source
 * frames that the failure passed through. A call has failed exactly when KT_context__has_err() is true after it.
 * One thread at a time may use a context.
 *
 * Where nothing fails, a context takes no memory beyond its own. An error takes none either while errors are at
 * most 8 levels at once, its description has at most 255 bytes and its trace at most 32 frames, so running out of
 * memory can always be reported. Past that, and only when memory is short, a description is cut, further frames are
 * left out, and an error of a further level keeps its code and generic text only.
 *
 * Conventions of the whole runtime, not repeated at each operation:
 * - Results go through output pointers, and an output is written only when the call succeeds.
 * - A call made while the current level holds an error does nothing: it changes nothing, writes no output, and leaves
 *   the error with its trace as it is. Only the operations of this header and those that free do their work all the
 *   same. So a caller may make several calls and look once, after the last.
 * - "borrowed" means owned by the object it was read from; "owned" means that the caller frees it.
 * - Arguments must not be null unless the text says that they are optional.
 * - Any operation that takes memory may fail with KT_ERR_OUT_OF_MEMORY and then has changed nothing.
 */
#ifndef KT_CONTEXT_H
#define KT_CONTEXT_H

#include "kt_export.h"

KT_BEGIN_DECLS

/* Error codes: the upper 32 bits name a domain, the lower 32 bits a code within it. Never renumbered. */

/** A table id, column id or the like is not in the schema. */
#define KT_ERR_NOT_FOUND UINT64_C(0x100000001)
/** A required pointer argument is null; the description names it. */
#define KT_ERR_NULL_ARGUMENT UINT64_C(0x100000002)
/** Memory is short, or a formatted text could not be made. */
#define KT_ERR_OUT_OF_MEMORY UINT64_C(0x100000005)
/** The schema uses something that cannot be synchronised. */
#define KT_ERR_SCHEMA_NOT_SUPPORTED UINT64_C(0x100000138)
/** An enumerated argument has a value that is not known. */
#define KT_ERR_UNEXPECTED_VALUE UINT64_C(0x1000001F4)
/** SQLite answered with the non-zero result code rc. */
#ifdef __cplusplus
#define KT_ERR_SQLITE(rc) (UINT64_C(0x800000000) | static_cast<uint32_t>(rc))
#else
#define KT_ERR_SQLITE(rc) (UINT64_C(0x800000000) | (uint32_t)(rc))
#endif

/* The runtime's own domain. */

/** A get or remove named a key that the map lacks. */
#define KT_ERR_KEY_NOT_FOUND UINT64_C(0x200000001)
/** An add named a key that the map already has. */
#define KT_ERR_DUPLICATE_KEY UINT64_C(0x200000002)
/** A value is there but of another type, or a number does not fit the type asked for. */
#define KT_ERR_WRONG_TYPE UINT64_C(0x200000003)
/** A position is not below the count. */
#define KT_ERR_OUT_OF_RANGE UINT64_C(0x200000004)
/** A JSON text is malformed; the description says line, column and what was expected. */
#define KT_ERR_BAD_JSON UINT64_C(0x200000005)
/** A string is not exactly one number. */
#define KT_ERR_BAD_NUMBER UINT64_C(0x200000006)
/** A value cannot be written, such as a double that is not finite in JSON. */
#define KT_ERR_BAD_VALUE UINT64_C(0x200000007)
/** A map or list that belongs to another one was given where only a root will do. */
#define KT_ERR_BORROWED UINT64_C(0x200000008)

/** Makes a fresh context. Stores null when memory is short: there is no context yet to carry an error. */
KT_API void KT_context__alloc(KT_context **ctx) KT_NOEXCEPT;

/** Frees a context and every error it holds. Null does nothing. */
KT_API void KT_context__free(KT_context *ctx) KT_NOEXCEPT;

/**
 * Sets the current level's error, replacing an earlier one.
 *
 * @param code     not 0.
 * @param file     source file of the first frame; must outlive the context (a literal).
 * @param line     its line.
 * @param message  the description; copied. Null: the code's generic text.
 */
KT_API void KT_context__err(KT_context *ctx, uint64_t code, const char *file, int32_t line,
                            const char *message) KT_NOEXCEPT;

/** The same with the runtime's generic text for the code as description. */
KT_API void KT_context__err__generic(KT_context *ctx, uint64_t code, const char *file, int32_t line) KT_NOEXCEPT;

/**
 * Replaces the description of the current error by a printf-style text. Does nothing when there is not an error.
 * The arguments may point into the present description.
 */
KT_API void KT_context__err_set_description(KT_context *ctx, const char *format, ...) KT_NOEXCEPT KT_PRINTF(2, 3);

/**
 * Appends a frame to the current error's trace. Does nothing when there is not an error.
 * @param file  kept by its pointer, so it must outlive the context, as in KT_context__err().
 */
KT_API void KT_context__err_stackframe_add(KT_context *ctx, const char *file, int32_t line) KT_NOEXCEPT;

/** Whether the current level holds an error. */
KT_API KT_bool KT_context__has_err(const KT_context *ctx) KT_NOEXCEPT;

/** Clears the current level's error. */
KT_API void KT_context__err_reset(KT_context *ctx) KT_NOEXCEPT;

/**
 * Opens a nested level with no error, for clean-up or for a trial whose failure is expected. The error of the level
 * left stays as it is. Never fails; takes no memory.
 *
 * @code{.c}
 * #include "kt_vhash.h"
 *
 * // Whether a text is a JSON object. That it is not is no failure of the caller's.
 * KT_bool is_object(KT_context *ctx, const char *text)
 * {
 *     KT_vhash *map = NULL;
 *     KT_bool is_one;
 *     KT_context__push_level(ctx);
 *     KT_vhash__alloc__from_json__sz(ctx, &map, text);
 *     is_one = !KT_context__has_err(ctx);
 *     KT_vhash__free(ctx, map);
 *     KT_context__pop_level(ctx);
 *     return is_one;
 * }
 * @endcode
 */
KT_API void KT_context__push_level(KT_context *ctx) KT_NOEXCEPT;

/** Drops the current level with its error, and goes back to the one below. Every push needs its pop. */
KT_API void KT_context__pop_level(KT_context *ctx) KT_NOEXCEPT;

/** The current level's error code, 0 when there is none. */
KT_API uint64_t KT_context__err_code(const KT_context *ctx) KT_NOEXCEPT;

/** The current level's description: never null, empty when there is not an error; borrowed until the error changes. */
KT_API const char *KT_context__err_description(const KT_context *ctx) KT_NOEXCEPT;

/** The number of frames of the current error, the place where it was raised first. */
KT_API uint32_t KT_context__count_err_stackframes(const KT_context *ctx) KT_NOEXCEPT;

/** The n-th frame, counted from 0. An n that is not below the count gives an empty file and line 0. */
KT_API void KT_context__get_nth_err_stackframe(const KT_context *ctx, uint32_t n, const char **file,
                                               int32_t *line) KT_NOEXCEPT;

KT_END_DECLS

#endif
