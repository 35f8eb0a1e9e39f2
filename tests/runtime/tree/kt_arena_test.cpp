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
