// What reading and writing of JSON texts share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Whether a byte of a text stands for itself in JSON: ASCII from blank on, but no quote and no backslash.
inline bool kt_json_is_plain(char byte) noexcept
{
    const auto code = static_cast<uint8_t>(byte);
    return code >= 0x20 && code < 0x80 && code != '"' && code != '\\';
}

// A bit for each of the 16 bytes at text that is not plain, the first byte's lowest.
inline uint32_t kt_json_special_16(const char *text) noexcept
{
#if defined(__SSE2__)
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text));
    // As signed numbers control characters and everything beyond ASCII are less than blank.
    const __m128i special = _mm_or_si128(
        _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)),
        _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))));
    return static_cast<uint32_t>(_mm_movemask_epi8(special));
#else
    uint32_t special = 0;
    for (uint32_t i = 0; i < 16; i++)
        special |= static_cast<uint32_t>(!kt_json_is_plain(text[i])) << i;
    return special;
#endif
}

// How many of the 16 bytes at text come before the first that is not plain.
inline uint32_t kt_json_plain_run_16(const char *text) noexcept
{
    return static_cast<uint32_t>(__builtin_ctz(kt_json_special_16(text) | 0x10000U));
}

// The first byte from text on that is not plain, or end.
inline const char *kt_json_skip_plain(const char *text, const char *end) noexcept
{
    while (end - text >= 16) {
        const uint32_t run = kt_json_plain_run_16(text);
        text += run;
        if (run < 16)
            return text;
    }
    while (text < end && kt_json_is_plain(*text))
        text++;
    return text;
}

// The bytes of the UTF-8 sequence that starts at text with a byte beyond ASCII, or 0 when it is malformed, overlong, a
// surrogate or too large.
inline uint32_t kt_utf8_sequence(const char *text, const char *end) noexcept
{
    const auto byte = [&](ptrdiff_t i) { return static_cast<uint8_t>(text[i]); };
    const auto follows = [&](ptrdiff_t i) { return text + i < end && (byte(i) & 0xC0) == 0x80; };
    const uint8_t lead = byte(0);
    if (lead >= 0xC2 && lead <= 0xDF)
        return follows(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (!follows(1) || !follows(2) || (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F))
            return 0;
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (!follows(1) || !follows(2) || !follows(3) || (lead == 0xF0 && byte(1) < 0x90) ||
            (lead == 0xF4 && byte(1) > 0x8F))
            return 0;
        return 4;
    }
    return 0;
}
