// Elements that must not move while their number grows.

#include "kt_test.hpp"
#include "tree/kt_segments.hpp"

namespace {

class SegmentsTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        arena = kt_arena_new(0);
        ASSERT_NE(arena, nullptr);
    }
    void TearDown() override
    {
        kt_arena_destroy(arena);
    }

    kt_arena *arena = nullptr;
    kt_segments<uint64_t> segments{};
};

} // namespace

TEST_F(SegmentsTest, ElementsStayWhereTheyAre)
{
    for (const uint32_t first : {1u, 3u, 16u}) {
        SCOPED_TRACE(first);
        ASSERT_TRUE(kt_segments_reserve(arena, &segments, first));
        EXPECT_EQ(segments.capacity, first);
        const uint64_t *const first_place = kt_segment_at(segments, 0);
        for (uint32_t n = 0; n < 10000; n++) {
            ASSERT_TRUE(kt_segments_reserve(arena, &segments, n + 1));
            *kt_segment_at(segments, n) = n;
        }
        EXPECT_EQ(kt_segment_at(segments, 0), first_place);
        for (uint32_t n = 0; n < 10000; n++)
            EXPECT_EQ(*kt_segment_at(segments, n), n);
        kt_segments_release(arena, &segments);
        EXPECT_EQ(segments.capacity, 0u);
    }
}

TEST_F(SegmentsTest, ReleasedMemoryServesAgain)
{
    size_t chunk_bytes = 0;
    for (int round = 0; round < 3; round++) {
        ASSERT_TRUE(kt_segments_reserve(arena, &segments, 1));
        ASSERT_TRUE(kt_segments_reserve(arena, &segments, 500));
        if (round == 0)
            chunk_bytes = arena->pools.chunk_bytes;
        EXPECT_EQ(arena->pools.chunk_bytes, chunk_bytes);
        kt_segments_release(arena, &segments);
    }
    kt_segments_release(arena, &segments);
    EXPECT_EQ(segments.first, nullptr) << "releasing nothing is allowed";
}

TEST_F(SegmentsTest, RefusesMoreElementsThanCanBeCounted)
{
    segments.first_capacity = segments.capacity = UINT32_MAX / 2 + 1;
    EXPECT_FALSE(kt_segments_reserve(arena, &segments, UINT32_MAX));
    EXPECT_EQ(segments.capacity, UINT32_MAX / 2 + 1);
    EXPECT_EQ(segments.more, nullptr);
}
