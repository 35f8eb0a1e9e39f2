// The keywords of SQLite's dialect and the tables through which they are found, all computed by the compiler.
//
// The keywords lie in one text in which they overlap: each is laid down in the order of the list, unless it already
// is somewhere in the text, and shares as many of its first characters as it can with the text's end. The order
// of the list therefore decides how short the text gets. Chains run from the last keyword of a bucket to the first.
#pragma once

#include "defval/defval_chars.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

struct tov_keyword {
    std::string_view word;
    uint8_t code;
};

inline constexpr tov_keyword tov_keywords[] = {
    {"REINDEX", 64},      {"INDEXED", 27},     {"INDEX", 138},     {"DESC", 41},
    {"ESCAPE", 81},       {"EACH", 43},        {"CHECK", 101},     {"KEY", 52},
    {"BEFORE", 34},       {"FOREIGN", 110},    {"FOR", 45},        {"IGNORE", 46},
    {"REGEXP", 49},       {"EXPLAIN", 2},      {"INSTEAD", 48},    {"ADD", 140},
    {"DATABASE", 40},     {"AS", 24},          {"SELECT", 116},    {"TABLE", 16},
    {"LEFT", 95},         {"THEN", 136},       {"END", 11},        {"DEFERRABLE", 109},
    {"ELSE", 137},        {"EXCEPT", 114},     {"TRANSACTION", 6}, {"ACTION", 29},
    {"ON", 104},          {"NATURAL", 95},     {"ALTER", 139},     {"RAISE", 56},
    {"EXCLUSIVE", 9},     {"EXISTS", 20},      {"SAVEPOINT", 13},  {"INTERSECT", 115},
    {"TRIGGER", 60},      {"REFERENCES", 102}, {"CONSTRAINT", 96}, {"INTO", 127},
    {"OFFSET", 54},       {"OF", 53},          {"SET", 108},       {"TEMPORARY", 21},
    {"TEMP", 21},         {"OR", 68},          {"UNIQUE", 100},    {"QUERY", 3},
    {"ATTACH", 33},       {"HAVING", 124},     {"GROUP", 123},     {"UPDATE", 107},
    {"BEGIN", 5},         {"INNER", 95},       {"RELEASE", 14},    {"BETWEEN", 71},
    {"NOTNULL", 74},      {"NOT", 19},         {"NO", 51},         {"NULL", 98},
    {"LIKE", 49},         {"CASCADE", 36},     {"ASC", 32},        {"DELETE", 106},
    {"CASE", 134},        {"COLLATE", 92},     {"CREATE", 17},     {"CURRENT_DATE", 66},
    {"DETACH", 42},       {"IMMEDIATE", 8},    {"JOIN", 120},      {"INSERT", 105},
    {"MATCH", 50},        {"PLAN", 4},         {"ANALYZE", 31},    {"PRAGMA", 55},
    {"ABORT", 28},        {"VALUES", 128},     {"VIRTUAL", 63},    {"LIMIT", 125},
    {"WHEN", 135},        {"WHERE", 126},      {"RENAME", 65},     {"AFTER", 30},
    {"REPLACE", 57},      {"AND", 69},         {"DEFAULT", 97},    {"AUTOINCREMENT", 103},
    {"TO", 15},           {"IN", 72},          {"CAST", 37},       {"COLUMN", 38},
    {"COMMIT", 10},       {"CONFLICT", 39},    {"CROSS", 95},      {"CURRENT_TIMESTAMP", 66},
    {"CURRENT_TIME", 66}, {"PRIMARY", 99},     {"DEFERRED", 7},    {"DISTINCT", 117},
    {"IS", 70},           {"DROP", 111},       {"FAIL", 44},       {"FROM", 119},
    {"FULL", 95},         {"GLOB", 49},        {"BY", 35},         {"IF", 18},
    {"ISNULL", 73},       {"ORDER", 122},      {"RESTRICT", 58},   {"OUTER", 95},
    {"RIGHT", 95},        {"ROLLBACK", 12},    {"ROW", 59},        {"UNION", 112},
    {"USING", 121},       {"VACUUM", 61},      {"VIEW", 62},       {"INITIALLY", 47},
    {"ALL", 113},
};

inline constexpr size_t tov_keyword_count = std::size(tov_keywords);
inline constexpr size_t tov_keyword_text_length = 540;
inline constexpr size_t tov_keyword_bucket_count = 127;
inline constexpr size_t tov_keyword_max_length =
    std::ranges::max(tov_keywords, {}, [](const tov_keyword &keyword) { return keyword.word.size(); }).word.size();

struct tov_keyword_tables {
    std::array<char, tov_keyword_text_length> text;
    std::array<uint16_t, tov_keyword_count> offsets;
    std::array<uint8_t, tov_keyword_count> lengths;
    std::array<uint8_t, tov_keyword_count> codes;
    // Positions in the lists are counted from 1; 0 is an empty bucket or the end of a chain.
    std::array<uint8_t, tov_keyword_bucket_count> buckets;
    std::array<uint8_t, tov_keyword_count> chains;
};

// The bucket of a word of that length that starts and ends with these letters, both in lower case.
constexpr uint32_t tov_keyword_hash(uint32_t first, uint32_t last, uint32_t length) noexcept
{
    return static_cast<uint32_t>(((first * 4) ^ (last * 3) ^ length) % tov_keyword_bucket_count);
}

// How many of the word's first characters the text ends with.
consteval size_t tov_keyword_overlap(std::string_view text, std::string_view word)
{
    for (size_t shared = word.size() < text.size() ? word.size() : text.size(); shared > 0; shared--)
        if (text.ends_with(word.substr(0, shared)))
            return shared;
    return 0;
}

consteval tov_keyword_tables tov_make_keyword_tables()
{
    tov_keyword_tables tables{};
    size_t length = 0;
    for (size_t k = 0; k < tov_keyword_count; k++) {
        const auto [word, code] = tov_keywords[k];
        const std::string_view text{tables.text.data(), length};
        size_t offset = text.find(word);
        if (offset == std::string_view::npos) {
            offset = length - tov_keyword_overlap(text, word);
            for (size_t i = 0; i < word.size(); i++)
                tables.text[offset + i] = word[i];
            length = offset + word.size();
        }
        tables.offsets[k] = static_cast<uint16_t>(offset);
        tables.lengths[k] = static_cast<uint8_t>(word.size());
        tables.codes[k] = code;

        const uint32_t first = tov_lower_of(static_cast<unsigned char>(word.front()));
        const uint32_t last = tov_lower_of(static_cast<unsigned char>(word.back()));
        uint8_t &bucket = tables.buckets[tov_keyword_hash(first, last, static_cast<uint32_t>(word.size()))];
        tables.chains[k] = bucket;
        bucket = static_cast<uint8_t>(k + 1);
    }
    return tables;
}

inline constexpr tov_keyword_tables tov_keyword_data = tov_make_keyword_tables();

static_assert(tov_keyword_count == 121);
// A text that came out shorter would end in NULs; a longer one does not compile.
static_assert(tov_keyword_data.text.back() != '\0');
