// The characters of UTF-8.
#pragma once

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The character at a position before the end, which moves on after it; negative for bytes that are no character.
inline UChar32 ext_next_character(std::string_view utf8, size_t &at) noexcept
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(utf8.data());
    UChar32 c = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // in ICU's macro
    U8_NEXT(bytes, at, utf8.size(), c);
#pragma GCC diagnostic pop
    return c;
}

// The same, with U+FFFD for bytes that are no character.
inline UChar32 ext_next_valid_character(std::string_view utf8, size_t &at) noexcept
{
    const UChar32 c = ext_next_character(utf8, at);
    return c < 0 ? 0xFFFD : c;
}

inline void ext_append_character(std::string &text, UChar32 c)
{
    uint8_t bytes[U8_MAX_LENGTH];
    size_t length = 0;
    const auto character = static_cast<uint32_t>(c);
    U8_APPEND_UNSAFE(bytes, length, character);
    text.append(reinterpret_cast<const char *>(bytes), length);
}
