// The index from key hash to slot.

#include "kt_test.hpp"
#include "tree/kt_tree.hpp"

#include <algorithm>
#include <random>
#include <vector>

namespace {

class IndexTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        arena = kt_arena_new(0);
        ASSERT_NE(arena, nullptr);
    }
    void TearDown() override
    {
        kt_index_release(arena, &index);
        kt_arena_destroy(arena);
    }
    bool has(uint32_t hash, uint32_t slot) const
    {
        for (uint32_t at = kt_index_start(index, hash); index.cells[at].slot_plus_1; at = (at + 1) & index.mask)
            if (index.cells[at].hash == hash && index.cells[at].slot_plus_1 == slot + 1)
                return true;
        return false;
    }

    kt_arena *arena = nullptr;
    kt_index index{};
};

// Few hashes, so that members push each other along, from the last cells round to the first ones too.
TEST_F(IndexTest, FindsEveryMemberAfterAnyRemoval)
{
    std::mt19937 random(3);
    ASSERT_TRUE(kt_index_reserve(arena, &index, 32));
    for (int round = 0; round < 200; round++) {
        std::vector<std::pair<uint32_t, uint32_t>> members;
        for (uint32_t slot = 0; slot < 32; slot++) {
            members.emplace_back(60 + random() % 8, slot);
            kt_index_put(&index, members.back().first, slot);
        }
        std::shuffle(members.begin(), members.end(), random);
        while (!members.empty()) {
            const auto [hash, slot] = members.back();
            members.pop_back();
            kt_index_remove(&index, hash, slot);
            EXPECT_FALSE(has(hash, slot));
            for (const auto &[other_hash, other_slot] : members)
                ASSERT_TRUE(has(other_hash, other_slot));
        }
    }
}

TEST_F(IndexTest, KeepsItsMembersWhenItGrows)
{
    for (uint32_t slot = 0; slot < 5000; slot++) {
        ASSERT_TRUE(kt_index_reserve(arena, &index, slot + 1));
        kt_index_put(&index, slot % 1000 * 7, slot);
        ASSERT_LE(2 * (slot + 1), index.mask + 1);
    }
    for (uint32_t slot = 0; slot < 5000; slot++)
        EXPECT_TRUE(has(slot % 1000 * 7, slot));
}

TEST_F(IndexTest, RefusesMoreMembersThanItCanHaveCellsFor)
{
    for (const uint32_t count : {(UINT32_C(1) << 30) + 1, UINT32_C(1) << 31, UINT32_MAX}) {
        EXPECT_FALSE(kt_index_reserve(arena, &index, count));
        EXPECT_EQ(index.cells, nullptr);
    }
}

} // namespace

// What lies after the cells is not taken for one of them.
TEST_F(IndexTest, GrowingTakesTheMembersAndNothingElse)
{
    ASSERT_TRUE(kt_index_reserve(arena, &index, 4));
    ASSERT_EQ(index.mask, 7u);
    constexpr size_t size = 8 * sizeof(kt_index_cell);
    void *next = kt_pools_alloc(&arena->pools, size);
    ASSERT_EQ(next, index.cells + 8);
    std::memset(next, 0xFF, size);
    for (uint32_t slot = 0; slot < 4; slot++)
        kt_index_put(&index, slot, slot);
    ASSERT_TRUE(kt_index_reserve(arena, &index, 5));
    uint32_t members = 0;
    for (uint32_t at = 0; at <= index.mask; at++)
        members += index.cells[at].slot_plus_1 != 0;
    EXPECT_EQ(members, 4u);
}
