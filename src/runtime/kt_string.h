/* Growable strings, formatted text, and small helpers on strings. Strings are bytes that end at NUL. */
#ifndef KT_STRING_H
#define KT_STRING_H

#include "kt_memory.h"
#include <stdarg.h>
#ifdef __cplusplus
#include <cstring>
#endif

KT_BEGIN_DECLS

/** A piece of text of so many bytes, borrowed. In C++ a string is one, and the compiler counts the bytes of literals.
 */
typedef struct KT_piece {
    const char *text;
    size_t length;
#ifdef __cplusplus
    KT_piece(const char *string) KT_NOEXCEPT : text(string), length(std::strlen(string))
    {
    }
#endif
} KT_piece;

/** Makes an empty string, owned; freed with KT_string__free(). */
KT_API void KT_string__alloc(KT_context *ctx, KT_string **string) KT_NOEXCEPT;

/** Makes a string that starts as a copy of the given one, owned. */
KT_API void KT_string__alloc__sz(KT_context *ctx, KT_string **string, const char *text) KT_NOEXCEPT;

/** Frees a string. Null does nothing. */
KT_API void KT_string__free(KT_context *ctx, KT_string *string) KT_NOEXCEPT;

/** Appends a string; it may be part of the string itself. */
KT_API void KT_string__append__sz(KT_context *ctx, KT_string *string, const char *text) KT_NOEXCEPT;

/** Appends so many pieces, one after another. None may be null, hold a NUL, or be part of the string itself. */
KT_API void KT_string__append__pieces(KT_context *ctx, KT_string *string, const KT_piece *pieces,
                                      size_t count) KT_NOEXCEPT;

/** Appends another string; the two may be the same. */
KT_API void KT_string__append__string(KT_context *ctx, KT_string *string, const KT_string *other) KT_NOEXCEPT;

/**
 * Appends a printf-style text. The arguments must not point into the string.
 *
 * Like vsnprintf in everything, but much faster for formats made of %s, %d, %i, %u (also with l, ll or z) and %%
 * alone. A string that vsnprintf refuses to make is KT_ERR_OUT_OF_MEMORY.
 */
KT_API void KT_string__append__format(KT_context *ctx, KT_string *string, const char *format, ...) KT_NOEXCEPT
    KT_PRINTF(3, 4);

/** Replaces the content by a printf-style text, made as above; the arguments must not point into the string. */
KT_API void KT_string__vsprintf(KT_context *ctx, KT_string *string, const char *format, va_list args) KT_NOEXCEPT
    KT_PRINTF(3, 0);

/** The current text: never null, borrowed until the string changes. */
KT_API const char *KT_string__sz(const KT_string *string) KT_NOEXCEPT;

/** A new printf-style text, owned and freed with _kt_free(), or null when it could not be made. */
KT_API char *KT_mprintf(const char *format, ...) KT_NOEXCEPT KT_PRINTF(1, 2);

/** Compares two strings like strcmp, ASCII letters without regard to case, whatever the locale. */
KT_API int KT_stricmp(const char *a, const char *b) KT_NOEXCEPT;

/** The same for at most n bytes of each. */
KT_API int KT_strnicmp(const char *a, const char *b, uint32_t n) KT_NOEXCEPT;

/**
 * Reads a whole string as a signed 64-bit decimal integer: an optional "-" or "+" and digits, nothing else.
 * Fails with KT_ERR_BAD_NUMBER for any other string and for a number that 64 bits do not hold.
 */
KT_API void KT_int64__parse__strict(KT_context *ctx, const char *text, int64_t *value) KT_NOEXCEPT;

/** Writes value in decimal into buffer, which must hold 21 bytes, and returns buffer. */
KT_API char *KT_int64_to_sz(int64_t value, char *buffer) KT_NOEXCEPT;

KT_END_DECLS

#endif
