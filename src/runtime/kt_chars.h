/*
 * Characters of UTF-8 as messages and SQL statements need them: read one at a time, told apart by what they do to a
 * terminal, and shown harmlessly.
 */
#ifndef KT_CHARS_H
#define KT_CHARS_H

#include "kt_string.h"

KT_BEGIN_DECLS

/** Reads the character at *at and moves on: its code point, or -1 (moved by one byte) where it is malformed. */
KT_API int32_t KT_char__next(const char **at) KT_NOEXCEPT;

/** Whether a character is a control character: C0, DEL, C1, or one of Unicode's line and paragraph separators. */
KT_API KT_bool KT_char__is_control(int32_t code_point) KT_NOEXCEPT;

/**
 * Whether a character changes the direction of writing, so that a string shows otherwise than it reads: marks,
 * embeddings, overrides and isolates.
 */
KT_API KT_bool KT_char__is_direction(int32_t code_point) KT_NOEXCEPT;

/**
 * Appends a string in double quotes for a message: characters that would disturb a terminal as <U+202E>, malformed
 * bytes as U+FFFD, and everything after the sixtieth character as "...".
 */
KT_API void KT_string__append__shown(KT_context *ctx, KT_string *message, const char *text) KT_NOEXCEPT;

/**
 * Appends a string to a line for people, without quotes and whole: line ends and tabs as blanks, other characters that
 * would disturb a terminal as <U+202E>, malformed bytes as U+FFFD.
 */
KT_API void KT_string__append__harmless(KT_context *ctx, KT_string *line, const char *text) KT_NOEXCEPT;

/**
 * An ASCII capital as the small letter, any other byte as it is. Unlike tolower() it is the same in every locale: under
 * one of single bytes that would change bytes of UTF-8 characters.
 */
KT_INLINE int KT_char__folded(int byte)
{
    return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

/** Copies a string with each byte folded (KT_char__folded()); owned, freed with _kt_free(). */
KT_API void KT_strdup__folded(KT_context *ctx, const char *text, char **folded) KT_NOEXCEPT;

KT_END_DECLS

#endif
