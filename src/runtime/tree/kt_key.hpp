// Keys in the form in which they are compared: 16 bytes that hold a short key whole.
#pragma once

#include "base/kt_wide.hpp"

#include <bit>
#include <cstdint>
#include <cstring>

// A key of at most 14 bytes is {its length, its bytes, zeros}: equal keys are equal words, and its text, with the NUL
// after it, can be handed out as it lies. A longer key starts with 0xFF; its text lies elsewhere.
inline constexpr uint32_t kt_max_short_key = 14;
inline constexpr uint8_t kt_long_key = 0xFF;
inline constexpr size_t kt_max_key = UINT32_MAX - 1; // a longer one is not stored, so it is never found either

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
    size_t length;
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

inline kt_query kt_make_query(const char *text, size_t length) noexcept
{
    kt_query query;
    query.text = text;
    query.length = length;
    query.is_short = length <= kt_max_short_key;
    if (query.is_short)
        kt_pack_short_key(&query.packed, text, static_cast<uint32_t>(length));
    return query;
}

inline kt_query kt_make_query(const char *text) noexcept
{
    return kt_make_query(text, std::strlen(text));
}

// Capitals among 8 bytes as small letters, all other bytes as they are, as KT_char__folded() has it.
inline uint64_t kt_fold_bytes(uint64_t bytes) noexcept
{
    constexpr uint64_t each = 0x0101010101010101;
    const uint64_t low_bits = bytes & (each * 0x7F);
    const uint64_t from_a = low_bits + each * (0x80 - 'A'); // the top bit of each byte says whether
    const uint64_t after_z = low_bits + each * (0x7F - 'Z');
    return bytes | ((from_a & ~after_z & ~bytes & (each * 0x80)) >> 2);
}

// The folded form of a short key. Its length is not the number of a letter.
inline void kt_fold_short_key(kt_packed_key *packed) noexcept
{
    packed->words[0] = kt_fold_bytes(packed->words[0]);
    packed->words[1] = kt_fold_bytes(packed->words[1]);
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

// Hashes. What a process draws at random before its first tree goes into both factors of each multiplication, so that
// no document can be written to make one of them sparse, or its keys collide in any other way.

struct kt_seeds {
    uint64_t first;
    uint64_t second;
};

inline uint64_t kt_mix(uint64_t a, uint64_t b) noexcept
{
    const kt_wide product = kt_multiply(a, b);
    return product.high ^ product.low;
}

// Every bit of the product counts in every bit of the hash, of which an index takes the lowest ones.
inline uint32_t kt_finish_hash(uint64_t product) noexcept
{
    return static_cast<uint32_t>(kt_mix(product, 0x9E3779B97F4A7C15) >> 32);
}

// A key of at least 15 bytes: 16 at a time, and then the last 16, some of them again. Where there are 15 only, two
// words overlap in one byte.
inline uint64_t kt_hash_long(const char *text, size_t length, const kt_seeds &seeds) noexcept
{
    uint64_t hash = seeds.second ^ length;
    for (size_t at = 0; at + 16 < length; at += 16)
        hash = kt_mix(kt_load_bytes(text + at, 8) ^ seeds.first, kt_load_bytes(text + at + 8, 8) ^ hash);
    const char *last = text + (length < 16 ? 0 : length - 16);
    return kt_mix(kt_load_bytes(last, 8) ^ seeds.first, kt_load_bytes(text + length - 8, 8) ^ hash);
}

inline uint32_t kt_hash(const kt_query &query, const kt_seeds &seeds) noexcept
{
    if (query.is_short) [[likely]]
        return kt_finish_hash(kt_mix(query.packed.words[0] ^ seeds.first, query.packed.words[1] ^ seeds.second));
    return kt_finish_hash(kt_hash_long(query.text, query.length, seeds));
}
