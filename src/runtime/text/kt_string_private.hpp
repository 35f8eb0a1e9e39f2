// The inside of KT_string, for writers that fill its room themselves.
//
//     if (!kt_string_reserve(string, 20))
//         ...                                       // out of memory; the string is as it was
//     char *end = write_digits(kt_string_end(string), value);
//     kt_string_set_end(string, end);               // writes the NUL
#pragma once

#include "kt_string.h"

#include <cstdarg>

struct KT_string {
    static constexpr size_t inline_room = 104;

    char *begin; // inside, or a block
    char *end;   // the NUL
    char *limit; // the last byte of the room, so end <= limit
    char inside[inline_room];
};

// Makes more room than there is; kt_string_reserve() is the door to it.
[[nodiscard]] bool kt_string_grow(KT_string *string, size_t more) noexcept;

// Makes place for `more` bytes after the text, its NUL not counted; false, with nothing changed, when memory is short.
[[nodiscard]] inline bool kt_string_reserve(KT_string *string, size_t more) noexcept
{
    return static_cast<size_t>(string->limit - string->end) >= more || kt_string_grow(string, more);
}

// The place after the text.
inline char *kt_string_end(KT_string *string) noexcept
{
    return string->end;
}

// Lets the text end here, inside the room that was reserved.
inline void kt_string_set_end(KT_string *string, char *end) noexcept
{
    *end = '\0';
    string->end = end;
}

inline size_t kt_string_length(const KT_string *string) noexcept
{
    return static_cast<size_t>(string->end - string->begin);
}

// An empty string in a place of the caller's, and the block that it may have taken given back.
void kt_string_init(KT_string *string) noexcept;
void kt_string_clear(KT_string *string) noexcept;

// Appends bytes, which may be part of the string itself; false, with nothing changed, when memory is short.
[[nodiscard]] bool kt_string_append_bytes(KT_string *string, const char *bytes, size_t count) noexcept;

// Appends a printf-style text; false, with nothing changed, when it could not be made.
[[nodiscard]] bool kt_string_append_va(KT_string *string, const char *format, va_list args) noexcept KT_PRINTF(2, 0);
