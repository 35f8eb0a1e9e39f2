// What a byte can be in SQL text, as tables of 256 that the compiler fills.
#pragma once

#include "kt_chars.h"

#include <cstddef>

// Bits of a byte's class.
enum tov_char_class : unsigned char {
    TOV_CHAR_SPACE = 0x01,
    TOV_CHAR_LETTER = 0x02,
    TOV_CHAR_DIGIT = 0x04,
    TOV_CHAR_HEX_DIGIT = 0x08,
    TOV_CHAR_LOWER = 0x20,
    TOV_CHAR_OTHER_ID = 0x40,
    TOV_CHAR_ID = TOV_CHAR_LETTER | TOV_CHAR_DIGIT | TOV_CHAR_OTHER_ID,
};

constexpr unsigned char tov_char_class_of(size_t byte) noexcept
{
    if (byte == ' ' || (byte >= '\t' && byte <= '\r'))
        return TOV_CHAR_SPACE;
    if (byte >= '0' && byte <= '9')
        return TOV_CHAR_DIGIT | TOV_CHAR_HEX_DIGIT;
    if (byte >= 'A' && byte <= 'Z')
        return byte <= 'F' ? TOV_CHAR_LETTER | TOV_CHAR_HEX_DIGIT : TOV_CHAR_LETTER;
    if (byte >= 'a' && byte <= 'z')
        return TOV_CHAR_LOWER | tov_char_class_of(byte - 'a' + 'A');
    return byte == '$' || byte == '_' || byte >= 0x80 ? TOV_CHAR_OTHER_ID : 0;
}

constexpr unsigned char tov_lower_of(size_t byte) noexcept
{
    return static_cast<unsigned char>(KT_char__folded(static_cast<int>(byte)));
}

// The values of a function for all bytes, separated by commas.
#define TOV_VALUES_4(of, b) of(b), of((b) + 1), of((b) + 2), of((b) + 3)
#define TOV_VALUES_16(of, b) \
    TOV_VALUES_4(of, b), TOV_VALUES_4(of, (b) + 4), TOV_VALUES_4(of, (b) + 8), TOV_VALUES_4(of, (b) + 12)
#define TOV_VALUES_64(of, b) \
    TOV_VALUES_16(of, b), TOV_VALUES_16(of, (b) + 16), TOV_VALUES_16(of, (b) + 32), TOV_VALUES_16(of, (b) + 48)
#define TOV_VALUES_256(of) \
    TOV_VALUES_64(of, 0U), TOV_VALUES_64(of, 64U), TOV_VALUES_64(of, 128U), TOV_VALUES_64(of, 192U)

inline constexpr unsigned char tov_char_classes[256] = {TOV_VALUES_256(tov_char_class_of)};
inline constexpr unsigned char tov_lower[256] = {TOV_VALUES_256(tov_lower_of)};

inline bool tov_is(char byte, tov_char_class kind) noexcept
{
    return (tov_char_classes[static_cast<unsigned char>(byte)] & kind) != 0;
}
