// Hashes of keys: keys that were made to collide, and keys that are too long.

#include "kt_test.hpp"
#include "tree/kt_find.hpp"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr uint32_t key_count = 4000;

struct key_family {
    const char *name;
    std::string (*key)(uint32_t n);
};

// A number of this many hexadecimal digits, and an ending.
std::string numbered(int digits, uint32_t n, const char *ending)
{
    char text[64];
    std::snprintf(text, sizeof text, "%0*x%s", digits, n, ending);
    return text;
}

std::string with_bytes(uint32_t n, size_t at, size_t length)
{
    std::string key(length, 'x');
    for (size_t i = 0; i < 4; i++)
        key[at + i] = static_cast<char>(1 + ((n >> (4 * i)) & 0xF) * 0x11);
    return key;
}

const key_family families[] = {
    {"numbers", [](uint32_t n) { return std::to_string(n); }},
    {"an ending that is almost the inverse of the golden ratio",
     [](uint32_t n) {
         return numbered(7, n,
                         "\x15|J\x7f"
                         "9y7");
     }},
    {"an ending of zeros in the second factor",
     [](uint32_t n) { return numbered(7, n, "\x01\x01\x01\x01\x01\x01\x01"); }},
    {"differences in the first word's highest bytes", [](uint32_t n) { return with_bytes(n, 3, 14); }},
    {"differences in the second word's highest bytes", [](uint32_t n) { return with_bytes(n, 10, 14); }},
    {"long keys that differ in front", [](uint32_t n) { return with_bytes(n, 0, 40); }},
    {"long keys that differ in the middle", [](uint32_t n) { return with_bytes(n, 17, 40); }},
    {"long keys that differ at the end", [](uint32_t n) { return with_bytes(n, 36, 40); }},
    {"keys of fifteen bytes",
     [](uint32_t n) {
         return numbered(8, n,
                         "\x15|J\x7f"
                         "9y7");
     }},
};

// The numbers of cells that are looked at to find each key.
std::vector<uint32_t> probes(const key_family &family, const kt_seeds &seeds)
{
    kt_arena *arena = kt_arena_new(0);
    kt_index index{};
    EXPECT_TRUE(kt_index_reserve(arena, &index, key_count));
    std::vector<uint32_t> hashes;
    for (uint32_t n = 0; n < key_count; n++) {
        const std::string key = family.key(n);
        hashes.push_back(kt_hash(kt_make_query(key.c_str(), key.size()), seeds));
        kt_index_put(&index, hashes.back(), n);
    }
    std::vector<uint32_t> result;
    for (uint32_t n = 0; n < key_count; n++) {
        uint32_t count = 1;
        for (uint32_t at = kt_index_start(index, hashes[n]); index.cells[at].slot_plus_1 != n + 1;
             at = (at + 1) & index.mask)
            count++;
        result.push_back(count);
    }
    kt_index_release(arena, &index);
    kt_arena_destroy(arena);
    return result;
}

} // namespace

// An index is at most half full, so a key is found after 1.5 looks on average when hashes are spread evenly.
TEST(KeyTest, NoKeysCollideWhateverTheSeedIs)
{
    std::vector<kt_seeds> drawn = {{1, 2}, {0x00007F0000001000, 0x00007F0000002000}};
    std::mt19937_64 random(11);
    std::generate_n(std::back_inserter(drawn), 2, [&random] { return kt_seeds{random(), random()}; });
    for (const kt_seeds &seeds : drawn) {
        for (const key_family &family : families) {
            SCOPED_TRACE(family.name);
            const std::vector<uint32_t> counts = probes(family, seeds);
            uint64_t sum = 0;
            for (const uint32_t count : counts)
                sum += count;
            EXPECT_LT(static_cast<double>(sum) / key_count, 1.8);
            EXPECT_LT(*std::max_element(counts.begin(), counts.end()), 120u);
        }
    }
}

TEST(KeyTest, TreesOfAProcessShareSeedsThatWereDrawn)
{
    kt_arena *arenas[] = {kt_arena_new(0), kt_arena_new(5000)};
    EXPECT_EQ(arenas[0]->seeds.first, arenas[1]->seeds.first);
    EXPECT_EQ(arenas[0]->seeds.second, arenas[1]->seeds.second);
    EXPECT_NE(arenas[0]->seeds.first, 0u);
    EXPECT_NE(arenas[0]->seeds.second, 0u);
    kt_arena_destroy(arenas[0]);
    kt_arena_destroy(arenas[1]);
}

#if SIZE_MAX > UINT32_MAX

// The length alone refuses it, so the text need not be there.
TEST(KeyTest, AKeyOf4GiBIsRefusedAndNotCut)
{
    kt_arena *arena = kt_arena_new(0);
    KT_vhash *map = kt_map_new(arena, 2);
    ASSERT_TRUE(kt_map_append(map, kt_make_query("a", 1), kt_null_value()));
    const kt_query key = kt_make_query("a", (size_t{1} << 32) + 1);
    EXPECT_EQ(kt_find(map, key), kt_no_slot) << "its length cut to 32 bits is that of the key \"a\"";
    EXPECT_FALSE(kt_map_append(map, key, kt_null_value()));
    EXPECT_EQ(map->layout->count, 1u);
    kt_arena_destroy(arena);
}

#endif
