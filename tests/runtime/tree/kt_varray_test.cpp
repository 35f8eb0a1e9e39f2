// Lists.

#include "failing_alloc.hpp"
#include "kt_test.hpp"

namespace {

class VarrayTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_varray__alloc(ctx, &list);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_varray__free(ctx, list);
        ContextTest::TearDown();
    }

    KT_varray *list = nullptr;
};

TEST_F(VarrayTest, HoldsTextsAndMapsInOrder)
{
    uint32_t count = 99;
    KT_varray__count(ctx, list, &count);
    EXPECT_EQ(count, 0u);
    KT_vhash *made = nullptr, *stored = nullptr;
    const char *text = nullptr;
    const KT_variant *value = nullptr;
    KT_varray__append__string__sz(ctx, list, "first");
    KT_varray__appendnew__vhash(ctx, list, &made);
    KT_varray__append__string__sz(ctx, list, nullptr);
    KT_varray__append__bool(ctx, list, 2);
    KT_varray__append__bool(ctx, list, 0);
    KT_varray__count(ctx, list, &count);
    EXPECT_EQ(count, 5u);
    KT_varray__get__sz(ctx, list, 0, &text);
    KT_varray__get__vhash(ctx, list, 1, &stored);
    KT_varray__get_nth(ctx, list, 2, &value);
    EXPECT_OK(ctx);
    EXPECT_STREQ(text, "first");
    EXPECT_EQ(stored, made);
    EXPECT_EQ(value->type, KT_VARIANT_NULL);
    for (const uint32_t n : {3u, 4u}) {
        KT_varray__get_nth(ctx, list, n, &value);
        EXPECT_EQ(value->type, KT_VARIANT_BOOL);
        EXPECT_EQ(value->as.boolean, n == 3 ? 1 : 0);
    }
}

TEST_F(VarrayTest, RefusesPositionsPastTheEndAndOtherTypes)
{
    const char *text = "preset";
    KT_vhash *map = nullptr;
    const KT_variant *value = nullptr;
    KT_varray__append__string__sz(ctx, list, "text");
    KT_varray__appendnew__vhash(ctx, list, &map);
    map = nullptr;
    KT_varray__get__sz(ctx, list, 2, &text);
    EXPECT_ERROR(ctx, KT_ERR_OUT_OF_RANGE, "no element 2 in a list of 2");
    reset();
    KT_varray__get__vhash(ctx, list, UINT32_MAX, &map);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_RANGE);
    reset();
    KT_varray__get_nth(ctx, list, 2, &value);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_RANGE);
    reset();
    KT_varray__get__sz(ctx, list, 1, &text);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "element 1 of the list is not a string");
    reset();
    KT_varray__get__vhash(ctx, list, 0, &map);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "element 0 of the list is not a map");
    reset();
    EXPECT_STREQ(text, "preset");
    EXPECT_EQ(map, nullptr);
    EXPECT_EQ(value, nullptr);
}

TEST_F(VarrayTest, BorrowedTextsStayWhileItGrows)
{
    std::vector<const char *> texts;
    for (int n = 0; n < 10000; n++) {
        const char *text = nullptr;
        KT_varray__append__string__sz(ctx, list, std::to_string(n).c_str());
        KT_varray__get__sz(ctx, list, static_cast<uint32_t>(n), &text);
        texts.push_back(text);
    }
    EXPECT_OK(ctx);
    for (int n = 0; n < 10000; n++) {
        const char *text = nullptr;
        KT_varray__get__sz(ctx, list, static_cast<uint32_t>(n), &text);
        EXPECT_EQ(text, texts[static_cast<size_t>(n)]);
        EXPECT_EQ(text, std::to_string(n));
    }
}

TEST_F(VarrayTest, SurvivesFailingAllocations)
{
    for (const bool is_text : {true, false}) {
        bool is_done = false;
        for (kt_failing_alloc fault; !is_done;) {
            fault.pause();
            KT_varray *own = nullptr;
            KT_varray__alloc(ctx, &own);
            ASSERT_OK(ctx);
            fault.next();
            uint32_t appended = 0;
            while (appended < 300 && !KT_context__has_err(ctx)) {
                KT_vhash *made = nullptr;
                if (is_text)
                    KT_varray__append__string__sz(ctx, own, "a text that does not fit into a variant");
                else
                    KT_varray__appendnew__vhash(ctx, own, &made);
                appended += !KT_context__has_err(ctx);
            }
            is_done = !fault.fired();
            if (!is_done) {
                EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            }
            reset();
            uint32_t count = 0;
            KT_varray__count(ctx, own, &count);
            EXPECT_EQ(count, appended);
            KT_varray__append__string__sz(ctx, own, "memory is back");
            EXPECT_OK(ctx);
            KT_varray__free(ctx, own);
        }
    }
}

TEST_F(VarrayTest, AllocSurvivesFailingAllocations)
{
    for (kt_failing_alloc fault; fault.next(); reset()) {
        KT_varray *made = nullptr;
        KT_varray__alloc(ctx, &made);
        if (!fault.fired()) {
            KT_varray__free(ctx, made);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}

TEST_F(VarrayTest, FreeingNothingIsAllowed)
{
    KT_varray__free(ctx, nullptr);
}

} // namespace
