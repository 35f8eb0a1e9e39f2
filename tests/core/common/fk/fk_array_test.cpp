#include "fk/fk_array.hpp"

#include "kt_test.hpp"

namespace {

using ArrayTest = ContextTest;

// Notes what is asked for and gives nothing.
void *note_size(void *data, size_t size)
{
    *static_cast<size_t *>(data) = size;
    return nullptr;
}

void release_nothing(void *, void *)
{
}

} // namespace

TEST_F(ArrayTest, GrowsToTwiceItsRoomAtLeast)
{
    fk_array<uint32_t> array{ctx};
    for (uint32_t n = 0; n < 1000; n++) {
        const uint32_t capacity = array.capacity;
        fk_append(ctx, &array, n);
        EXPECT_TRUE(array.capacity == capacity || array.capacity >= 2 * capacity);
    }
    fk_append_many(ctx, &array, 5000, 7);
    EXPECT_OK(ctx);
    ASSERT_EQ(array.count, 6000u);
    for (uint32_t n = 0; n < 6000; n++)
        EXPECT_EQ(array[n], n < 1000 ? n : 7);
}

// Positions and distances between them fit into 31 bits; what comes near is out of memory and asks for no more.
TEST_F(ArrayTest, HasNoRoomBeyondThirtyOneBits)
{
    constexpr uint32_t most = UINT32_MAX / 2;
    const struct {
        const char *name;
        uint32_t count;
        uint32_t more;
        size_t asked_for;
    } cases[] = {
        {"the last that doubles", most / 2, 1, most - 1},
        {"beyond it all there may be", most / 2 + 1, 1, most},
        {"the last item", most - 1, 1, most},
        {"one too many", most, 1, 0},
        {"far too many at once", 16, most, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        fk_array<uint64_t> array{ctx};
        array.count = array.capacity = c.count;
        size_t asked_for = 0;
        const KT_allocator watch = {note_size, nullptr, release_nothing, &asked_for};
        KT_memory__set_allocator(&watch);
        fk_reserve(ctx, &array, c.more);
        KT_memory__set_allocator(nullptr);
        EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, "out of memory");
        EXPECT_EQ(asked_for, c.asked_for * sizeof(uint64_t));
        EXPECT_EQ(array.capacity, c.count);
        reset();
    }
}
