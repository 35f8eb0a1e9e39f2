// Hashes of keys: keys that were made to collide, and keys that are too long.

#include "kt_test.hpp"
#include "tree/kt_tree.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr uint32_t key_count = 20000;

struct key_family {
    const char *name;
    std::string (*key)(uint32_t n);
};

std::string numbered(const char *format, uint32_t n)
{
    char text[64];
    std::snprintf(text, sizeof text, format, n);
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
         return numbered("%07x\x15|J\x7f"
                         "9y7",
                         n);
     }},
    {"an ending of zeros in the second factor",
     [](uint32_t n) { return numbered("%07x\x01\x01\x01\x01\x01\x01\x01", n); }},
    {"differences in the first word's highest bytes", [](uint32_t n) { return with_bytes(n, 3, 14); }},
    {"differences in the second word's highest bytes", [](uint32_t n) { return with_bytes(n, 10, 14); }},
    {"long keys that differ in front", [](uint32_t n) { return with_bytes(n, 0, 40); }},
    {"long keys that differ in the middle", [](uint32_t n) { return with_bytes(n, 17, 40); }},
    {"long keys that differ at the end", [](uint32_t n) { return with_bytes(n, 36, 40); }},
    {"keys of fifteen bytes",
     [](uint32_t n) {
         return numbered("%08x\x15|J\x7f"
                         "9y7",
                         n);
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
    std::generate_n(std::back_inserter(drawn), 4, [&random] { return kt_seeds{random(), random()}; });
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

namespace {

// A text of 4 GiB and one byte in little memory: the same pages over and over.
class huge_text {
  public:
    huge_text()
    {
        const int file = memfd_create("huge", 0);
        const std::string bytes(piece, 'a');
        void *place = mmap(nullptr, total, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        made_ = write(file, bytes.data(), piece) == static_cast<ssize_t>(piece) && place != MAP_FAILED;
        text_ = static_cast<char *>(place);
        for (size_t at = 0; made_ && at + piece < total; at += piece)
            made_ = mmap(text_ + at, piece, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0) != MAP_FAILED;
        // The last piece stays the process's own: one more character, and the zeros that new memory is made of.
        char *last = text_ + total - piece;
        made_ = made_ && mprotect(last, piece, PROT_READ | PROT_WRITE) == 0;
        if (made_)
            *last = 'a';
        close(file);
    }
    ~huge_text()
    {
        munmap(text_, total);
    }
    huge_text(const huge_text &) = delete;
    huge_text &operator=(const huge_text &) = delete;
    const char *get() const
    {
        return made_ ? text_ : nullptr;
    }

  private:
    static constexpr size_t piece = size_t{1} << 24;
    static constexpr size_t total = (size_t{1} << 32) + piece;
    bool made_ = false;
    char *text_ = nullptr;
};

} // namespace

using KeyOfMapTest = ContextTest;

TEST_F(KeyOfMapTest, AKeyOf4GiBIsRefusedAndNotCut)
{
    const huge_text key;
    ASSERT_NE(key.get(), nullptr);
    KT_vhash *map = nullptr;
    KT_vhash__alloc(ctx, &map);
    KT_vhash__add__int64(ctx, map, "a", 1);
    KT_bool has = 77;
    KT_vhash__has(ctx, map, key.get(), &has);
    EXPECT_OK(ctx);
    EXPECT_EQ(has, 0) << "its length cut to 32 bits is that of the key \"a\"";
    KT_vhash__update__int64(ctx, map, key.get(), 2);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
    reset();
    EXPECT_EQ(json_of(ctx, map), R"({"a":1})");
    KT_vhash__free(ctx, map);
}

#endif
