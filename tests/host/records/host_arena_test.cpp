// The arena that the records of large databases are in.
#include "records/host_arena.hpp"

#include <cstring>
#include <gtest/gtest.h>

// Every piece is written whole: the sanitizers see one that is too short or lies over another.
TEST(HostArena, PiecesAreAlignedAndApart)
{
    host_arena arena;
    std::vector<std::pair<unsigned char *, size_t>> pieces;
    constexpr size_t sizes[] = {1, 7, 64, 5000, 20000, size_t{3} << 20, 1, 8, size_t{4} << 20, 300};
    for (size_t n = 0; n < 2000; n++) {
        const size_t size = n < 20 ? sizes[n % 10] : 1 + n;
        const size_t alignment = size_t{1} << (n % 5);
        auto *piece = static_cast<unsigned char *>(arena.take(size, alignment));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(piece) % alignment, 0u);
        std::memset(piece, static_cast<int>(n & 0xFF), size);
        pieces.emplace_back(piece, size);
    }
    for (size_t n = 0; n < pieces.size(); n++) {
        EXPECT_EQ(pieces[n].first[0], n & 0xFF);
        EXPECT_EQ(pieces[n].first[pieces[n].second - 1], n & 0xFF);
    }
}

TEST(HostArena, AContainerTakesItsArenaAlongWhenItMoves)
{
    host_arena arena;
    using numbers = std::vector<int, host_arena_allocator<int>>;
    numbers on_heap{1, 2, 3};
    numbers in_arena{host_arena_allocator<int>{arena}};
    in_arena.assign(1000, 5);
    const int *first = in_arena.data();
    on_heap = std::move(in_arena);
    EXPECT_EQ(on_heap.data(), first);
    EXPECT_EQ(on_heap.get_allocator().arena, &arena);
    EXPECT_EQ(on_heap.size(), 1000u);
}
