// Shapes from inside: which maps share one, and what the JSON reader and writer find prepared in it.

#include "kt_test.hpp"
#include "tree/kt_tree.hpp"

#include <string>

namespace {

constexpr uint32_t full_credit = 4096;

class ShapeTest : public ::testing::Test {
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
    kt_step next(kt_shape *shape, const std::string &key, kt_shape **found)
    {
        return kt_shape_next(shape, kt_make_query(key.c_str()), found);
    }
    // The shape of maps with one key; keys that nobody began with before need two of them.
    kt_shape *shape_of(const std::string &key)
    {
        kt_shape *found = nullptr;
        if (next(&arena->empty_shape, key, &found) == kt_step::go_private) {
            EXPECT_EQ(next(&arena->empty_shape, key, &found), kt_step::shared);
        }
        return found;
    }

    kt_arena *arena = nullptr;
};

} // namespace

TEST_F(ShapeTest, AFirstKeyIsWorthAShapeWhenItComesAgain)
{
    kt_shape *found = nullptr;
    for (int n = 0; n < 200; n++)
        EXPECT_EQ(next(&arena->empty_shape, "only " + std::to_string(n), &found), kt_step::go_private);
    EXPECT_EQ(arena->transitions.count, 0u);
    EXPECT_EQ(next(&arena->empty_shape, "name", &found), kt_step::go_private);
    EXPECT_EQ(next(&arena->empty_shape, "name", &found), kt_step::shared);
    EXPECT_EQ(arena->transitions.count, 1u);
}

TEST_F(ShapeTest, AFurtherKeyIsWorthAShapeAtOnce)
{
    kt_shape *first = shape_of("name");
    kt_shape *second = nullptr;
    EXPECT_EQ(next(first, "txid", &second), kt_step::shared);
    EXPECT_EQ(second->count, 2u);
    EXPECT_EQ(second->parent, first);
    EXPECT_EQ(second->keys, first->keys) << "shapes along one chain share their list of keys";
    EXPECT_EQ(second->keys->count, 2u);
}

// Past eight keys the list has an index, of each key once.
TEST_F(ShapeTest, TheIndexOfAListHoldsItsKeysAndNothingElse)
{
    kt_shape *shape = shape_of("0");
    for (uint32_t n = 1; n < kt_max_shape; n++) {
        ASSERT_EQ(next(shape, std::to_string(n), &shape), kt_step::shared) << n;
        const kt_index &index = shape->keys->index;
        uint32_t members = 0;
        for (uint32_t at = 0; index.cells && at <= index.mask; at++)
            members += index.cells[at].slot_plus_1 != 0;
        ASSERT_EQ(members, n < kt_scan_limit ? 0 : n + 1);
        ASSERT_TRUE(!index.cells || 2 * members <= index.mask + 1) << "more than half full";
    }
}

TEST_F(ShapeTest, NewShapesSpendTheCreditThatKnownOnesEarn)
{
    kt_shape *first = shape_of("name");
    kt_shape *a = nullptr;
    kt_shape *b = nullptr;
    ASSERT_EQ(next(first, "a", &a), kt_step::shared);
    ASSERT_EQ(next(first, "b", &b), kt_step::shared);
    EXPECT_EQ(arena->shape_credit, full_credit - 3);
    kt_shape *found = nullptr;
    ASSERT_EQ(next(first, "a", &found), kt_step::shared); // b was the last one
    EXPECT_EQ(found, a);
    EXPECT_EQ(arena->shape_credit, full_credit - 2);
    for (int n = 0; n < 10; n++) {
        ASSERT_EQ(next(first, "b", &found), kt_step::shared);
        ASSERT_EQ(next(first, "a", &found), kt_step::shared);
    }
    EXPECT_EQ(arena->shape_credit, full_credit);
}

TEST_F(ShapeTest, WithoutCreditThereAreNoNewShapes)
{
    kt_shape *first = shape_of("name");
    kt_shape *known = nullptr;
    ASSERT_EQ(next(first, "known", &known), kt_step::shared);
    kt_shape *found = nullptr;
    for (uint32_t n = 2; n < full_credit; n++)
        ASSERT_EQ(next(first, std::to_string(n), &found), kt_step::shared) << n;
    EXPECT_EQ(next(first, "one more", &found), kt_step::go_private);
    EXPECT_EQ(next(first, "known", &found), kt_step::shared);
    EXPECT_EQ(found, known);
    EXPECT_EQ(next(first, "one more", &found), kt_step::shared);
}

TEST_F(ShapeTest, TheLargestShapeHasSixtyFourKeys)
{
    kt_shape *shape = shape_of("0");
    for (uint32_t n = 1; n < kt_max_shape; n++)
        ASSERT_EQ(next(shape, std::to_string(n), &shape), kt_step::shared) << n;
    EXPECT_EQ(next(shape, "one more", &shape), kt_step::go_private);
}

// The reader compares what it finds with the quoted key, the writer copies "key": as it lies there.
TEST_F(ShapeTest, KeysLieThereInTheirJsonForm)
{
    for (size_t length = 1; length <= 40; length++) {
        const std::string key(length, 'k');
        const kt_shape *shape = shape_of(key);
        const kt_shape_key &stored = shape->keys->keys[shape->count - 1];
        const std::string json = '"' + key + "\":";
        EXPECT_STREQ(stored.text, key.c_str());
        ASSERT_EQ(stored.json_length, json.size());
        EXPECT_EQ(std::string(stored.text + length + 1, json.size()), json);
        ASSERT_EQ(shape->quoted_length, length + 1);
        EXPECT_EQ(std::string(shape->long_quoted, length + 1), key + '"');
        if (length + 1 <= sizeof shape->quoted) {
            EXPECT_EQ(std::string(reinterpret_cast<const char *>(shape->quoted), length + 1), key + '"');
        }
    }
}

TEST_F(ShapeTest, AKeyThatJsonWritesOtherwiseHasNoFormThere)
{
    for (const char *key : {"a\"b", "a\\b", "a\nb", "\x01"}) {
        const kt_shape *shape = shape_of(key);
        EXPECT_EQ(shape->keys->keys[0].json_length, 0u) << key;
        EXPECT_EQ(shape->quoted_length, 0u) << key;
    }
}
