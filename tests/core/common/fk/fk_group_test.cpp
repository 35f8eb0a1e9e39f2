#include "fk/fk_group.hpp"

#include "fk_test.hpp"

TEST_F(FkTest, PositionsAreSortedByRank)
{
    const uint32_t ranks[] = {2, 0, 3, 0, 2};
    fk_array<uint32_t> rank{ctx};
    fk_array<uint32_t> positions{ctx};
    for (const uint32_t r : ranks)
        fk_append(ctx, &rank, r);
    for (const uint32_t position : {4u, 3u, 2u, 1u, 0u})
        fk_append(ctx, &positions, position);
    fk_sort_by(ctx, rank, 3, &positions);
    EXPECT_OK(ctx);
    std::string text;
    for (uint32_t n = 0; n < positions.count; n++)
        text += std::to_string(positions[n]);
    EXPECT_EQ(text, "31402") << "those of one rank in the order in which they stood";
}

TEST_F(FkTest, ItemsAreGroupedByOwner)
{
    fk_array<uint32_t> owner{ctx};
    fk_array<char> items{ctx};
    fk_array<uint32_t> first{ctx};
    for (const uint32_t number : {1u, 0u, 2u, 1u, 0u, 1u})
        fk_append(ctx, &owner, number);
    for (const char item : {'a', 'b', 'c', 'd', 'e', 'f'})
        fk_append(ctx, &items, item);
    fk_group_by(ctx, owner, 3, &items, &first);
    EXPECT_OK(ctx);
    EXPECT_EQ(std::string(items.items.get(), items.count), "beadfc");
    std::string beginnings;
    for (uint32_t n = 0; n < first.count; n++)
        beginnings += std::to_string(first[n]);
    EXPECT_EQ(beginnings, "0256");
}
