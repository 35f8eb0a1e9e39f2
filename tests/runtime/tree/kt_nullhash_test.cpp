// The set of texts: order of first addition, each text once.
#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <string>

namespace {

class NullhashTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_nullhash__alloc(ctx, &set);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_nullhash__free(ctx, set);
        ContextTest::TearDown();
    }
    // The texts in order, each followed by a bar.
    std::string texts()
    {
        uint32_t count = 0;
        KT_nullhash__count(ctx, set, &count);
        std::string all;
        for (uint32_t n = 0; n < count; n++) {
            const char *text = nullptr;
            KT_nullhash__get_nth(ctx, set, n, &text);
            EXPECT_OK(ctx);
            all += std::string(text) + "|";
        }
        return all;
    }

    KT_nullhash *set = nullptr;
};

} // namespace

TEST_F(NullhashTest, ARepeatedTextKeepsItsFirstPlace)
{
    EXPECT_EQ(texts(), "");
    for (const char *text : {"b", "a", "", "b", "B", "a longer text that lies outside", "", "a", "c"})
        KT_nullhash__update(ctx, set, text);
    EXPECT_OK(ctx);
    EXPECT_EQ(texts(), "b|a||B|a longer text that lies outside|c|");
}

TEST_F(NullhashTest, TextsAreCopied)
{
    std::string text = "text";
    KT_nullhash__update(ctx, set, text.c_str());
    text = "other";
    EXPECT_EQ(texts(), "text|");
}

TEST_F(NullhashTest, ManyTextsKeepTheirOrder)
{
    std::string expected;
    for (int n = 0; n < 10000; n++) {
        KT_nullhash__update(ctx, set, std::to_string(n * 7919 % 10000).c_str());
        KT_nullhash__update(ctx, set, std::to_string(n / 2 * 7919 % 10000).c_str());
        expected += std::to_string(n * 7919 % 10000) + "|";
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(texts(), expected);
}

TEST_F(NullhashTest, APositionPastTheEndIsRefused)
{
    KT_nullhash__update(ctx, set, "only");
    const char *text = nullptr;
    for (uint32_t n : {1u, 2u, UINT32_MAX}) {
        KT_nullhash__get_nth(ctx, set, n, &text);
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_RANGE);
        EXPECT_EQ(text, nullptr);
        reset();
    }
}

TEST_F(NullhashTest, FreeingNothingDoesNothing)
{
    KT_nullhash__free(ctx, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(NullhashTest, FailingMemoryLeavesTheSetAsItWas)
{
    bool is_whole = false;
    for (kt_failing_alloc fault; !is_whole && fault.next();) {
        KT_nullhash *made = nullptr;
        KT_nullhash__alloc(ctx, &made);
        is_whole = !fault.fired();
        uint32_t expected = 0;
        for (int n = 0; made && n < 20; n++) {
            KT_nullhash__update(ctx, made, ("a text of more than a few bytes " + std::to_string(n)).c_str());
            if (kt_has_err(ctx))
                break;
            expected++;
        }
        is_whole = is_whole && !fault.fired();
        EXPECT_FAILED(ctx, is_whole ? 0 : KT_ERR_OUT_OF_MEMORY);
        reset();
        uint32_t count = 0;
        if (made)
            KT_nullhash__count(ctx, made, &count);
        EXPECT_EQ(count, expected);
        KT_nullhash__free(ctx, made);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}
