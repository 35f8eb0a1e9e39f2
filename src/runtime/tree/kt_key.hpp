// Keys in the form in which they are compared: 16 bytes that hold a short key whole.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// A key of at most 14 bytes is {its length, its bytes, zeros}: equal keys are equal words, and its text, with the NUL
// behind it, can be handed out as it lies. A longer key starts with 0xFF; its text lies elsewhere.
inline constexpr uint32_t kt_max_short_key = 14;
inline constexpr uint8_t kt_long_key = 0xFF;

union kt_packed_key {
    uint64_t words[2];
    uint8_t bytes[16];
    struct {
        uint8_t tag;   // length of a short key, or kt_long_key
        uint8_t owned; // of a long key: whether its text is freed with the pair
        uint8_t unused[2];
        uint32_t length;
        const char *text;
    } outside;
};
static_assert(sizeof(kt_packed_key) == 16);

// A key to look for.
struct kt_query {
    const char *text;
    uint32_t length;
    bool is_short;
    kt_packed_key packed; // of a short key
};

// Up to 8 bytes as a number whose unused bytes are zero.
inline uint64_t kt_load_bytes(const char *text, uint32_t count) noexcept
{
    uint64_t word = 0;
    if constexpr (std::endian::native == std::endian::little) {
        if (count >= 8) {
            std::memcpy(&word, text, 8);
        } else if (count >= 4) {
            uint32_t low, high;
            std::memcpy(&low, text, 4);
            std::memcpy(&high, text + count - 4, 4);
            word = low | (static_cast<uint64_t>(high) << (8 * (count - 4)));
        } else if (count >= 2) {
            uint16_t low, high;
            std::memcpy(&low, text, 2);
            std::memcpy(&high, text + count - 2, 2);
            word = low | (static_cast<uint64_t>(high) << (8 * (count - 2)));
        } else if (count == 1) {
            word = static_cast<uint8_t>(text[0]);
        }
    } else {
        std::memcpy(&word, text, count < 8 ? count : 8);
    }
    return word;
}

inline void kt_pack_short_key(kt_packed_key *packed, const char *text, uint32_t length) noexcept
{
    if constexpr (std::endian::native == std::endian::little) {
        const uint64_t low = kt_load_bytes(text, length < 8 ? length : 8);
        const uint64_t high = length > 8 ? kt_load_bytes(text + 8, length - 8) : 0;
        packed->words[0] = length | (low << 8);
        packed->words[1] = (low >> 56) | (high << 8);
    } else {
        packed->words[0] = packed->words[1] = 0;
        packed->bytes[0] = static_cast<uint8_t>(length);
        std::memcpy(packed->bytes + 1, text, length);
    }
}

inline kt_query kt_make_query(const char *text, uint32_t length) noexcept
{
    kt_query query;
    query.text = text;
    query.length = length;
    query.is_short = length <= kt_max_short_key;
    if (query.is_short)
        kt_pack_short_key(&query.packed, text, length);
    return query;
}

inline kt_query kt_make_query(const char *text) noexcept
{
    return kt_make_query(text, static_cast<uint32_t>(std::strlen(text)));
}

inline const char *kt_key_text(const kt_packed_key &key) noexcept
{
    return key.bytes[0] == kt_long_key ? key.outside.text : reinterpret_cast<const char *>(key.bytes + 1);
}

inline uint32_t kt_key_length(const kt_packed_key &key) noexcept
{
    return key.bytes[0] == kt_long_key ? key.outside.length : key.bytes[0];
}

inline bool kt_key_equals(const kt_packed_key &key, const kt_query &query) noexcept
{
    if (query.is_short) [[likely]]
        return ((key.words[0] ^ query.packed.words[0]) | (key.words[1] ^ query.packed.words[1])) == 0;
    return key.bytes[0] == kt_long_key && key.outside.length == query.length &&
           std::memcmp(key.outside.text, query.text, query.length) == 0;
}

inline uint64_t kt_mix(uint64_t a, uint64_t b) noexcept
{
    __extension__ using wide = unsigned __int128;
    const wide product = static_cast<wide>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

// Seeded per tree, so that a document cannot be written to make its keys collide.
inline uint32_t kt_hash(const kt_query &query, uint64_t seed) noexcept
{
    constexpr uint64_t k0 = 0x9E3779B97F4A7C15, k1 = 0xD6E8FEB86659FD93;
    if (query.is_short) [[likely]]
        return static_cast<uint32_t>(kt_mix(query.packed.words[0] ^ seed, query.packed.words[1] ^ k0) >> 16);
    uint64_t hash = seed ^ query.length;
    uint32_t at = 0;
    for (; at + 8 < query.length; at += 8)
        hash = kt_mix(hash ^ kt_load_bytes(query.text + at, 8), k1);
    return static_cast<uint32_t>(kt_mix(hash ^ kt_load_bytes(query.text + at, query.length - at), k0) >> 16);
}
