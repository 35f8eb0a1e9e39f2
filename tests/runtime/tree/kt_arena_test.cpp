// The memory of one tree.

#include "kt_test.hpp"
#include "tree/kt_arena.hpp"

TEST(ArenaTest, RefusesABlockThatNoAddressSpaceHolds)
{
    kt_pools pools;
    kt_pools_init(&pools, nullptr, nullptr, kt_smallest_chunk);
    for (const size_t size : {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX - sizeof(kt_large_block) + 1})
        EXPECT_EQ(kt_pools_alloc(&pools, size), nullptr);
    EXPECT_EQ(pools.large, nullptr);
    void *block = kt_pools_alloc(&pools, 16);
    EXPECT_NE(block, nullptr);
    kt_pools_destroy(&pools);
}

namespace {

// How many bytes of text and of memory a node takes, from the first to the last eighth of a text.
struct text_case {
    const char *name;
    size_t length;
    size_t bytes_of_text;
    size_t early_block;
    size_t late_block;
    double most_unused; // as a share of what is used
};

const text_case text_cases[] = {
    {"a small text", 3000, 30, 48, 48, 1.0},          {"a text of 100 KB", 100'000, 30, 48, 48, 0.1},
    {"a text of 4 MB", 4'000'000, 30, 48, 48, 0.05},  {"a text of 60 MB", 60'000'000, 30, 48, 48, 0.05},
    {"sparse at first", 4'000'000, 30, 16, 256, 0.2}, {"dense at first", 20'000'000, 4, 256, 16, 4.0},
};

} // namespace

TEST(ArenaTest, LittleStaysUnusedOfATreeThatIsReadFromAText)
{
    for (const text_case &c : text_cases) {
        SCOPED_TRACE(c.name);
        const std::string text(c.length, 'x');
        kt_progress progress = {text.data(), text.data(), text.data() + c.length};
        kt_pools pools;
        kt_pools_init(&pools, nullptr, nullptr, kt_smallest_chunk);
        pools.progress = &progress;
        size_t used = 0;
        for (size_t at = 0; at < c.length; at += c.bytes_of_text) {
            const size_t size = at < c.length / 8 ? c.early_block : c.late_block;
            progress.place = text.data() + at;
            ASSERT_NE(kt_pools_alloc(&pools, size), nullptr);
            used += size;
        }
        EXPECT_LE(static_cast<double>(pools.chunk_bytes - used), c.most_unused * static_cast<double>(used));
        kt_pools_destroy(&pools);
    }
}
