// The string pool: copies that stay where they are, chunks that grow, one free for all.
#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <string>
#include <utility>
#include <vector>

namespace {

class StrpoolTest : public ContextTest {
  protected:
    const char *add(KT_strpool *pool, const std::string &text)
    {
        const char *copy = nullptr;
        KT_strpool__add__sz(ctx, pool, text.c_str(), &copy);
        EXPECT_OK(ctx);
        return copy;
    }
};

} // namespace

TEST_F(StrpoolTest, CopiesStayWhatAndWhereTheyAre)
{
    for (uint32_t size_hint : {0u, 1u, 500u, 100000u}) {
        KT_strpool *pool = nullptr;
        KT_strpool__alloc(ctx, &pool, size_hint);
        ASSERT_OK(ctx);
        std::vector<std::pair<std::string, const char *>> added;
        for (size_t n = 0; n < 2000; n++) {
            const std::string text(n % 97 == 0 ? n * 10 : n % 40, static_cast<char>('a' + n % 26));
            added.emplace_back(text, add(pool, text));
        }
        for (const auto &[text, copy] : added)
            EXPECT_EQ(text, copy);
        KT_strpool__free(ctx, pool);
    }
    KT_strpool__free(ctx, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(StrpoolTest, TheHintIsTheFirstRoomAndChunksDouble)
{
    kt_failing_alloc watch{kt_failing_alloc::mode::never};
    watch.next();
    KT_strpool *pool = nullptr;
    KT_strpool__alloc(ctx, &pool, 500);
    for (int n = 0; n < 50; n++)
        add(pool, "nine byte");
    EXPECT_EQ(watch.leaked(), 1u) << "500 bytes are one block, the pool itself included";
    add(pool, "nine byte");
    EXPECT_EQ(watch.leaked(), 2u);
    for (int n = 0; n < 100000; n++)
        add(pool, "nine byte");
    EXPECT_LE(watch.leaked(), 14u) << "a million bytes in chunks that double";
    KT_strpool__free(ctx, pool);
    EXPECT_EQ(watch.leaked(), 0u);
}

TEST_F(StrpoolTest, ALongTextGetsItsOwnChunkAndTheOthersGoOn)
{
    kt_failing_alloc watch{kt_failing_alloc::mode::never};
    watch.next();
    KT_strpool *pool = nullptr;
    KT_strpool__alloc(ctx, &pool, 500);
    const char *first = add(pool, "first");
    const std::string long_text(5000, 'x');
    const char *copy = add(pool, long_text);
    const char *second = add(pool, "second");
    EXPECT_EQ(watch.leaked(), 2u);
    EXPECT_EQ(second, first + sizeof "first");
    EXPECT_EQ(copy, long_text);
    KT_strpool__free(ctx, pool);
    EXPECT_EQ(watch.leaked(), 0u);
}

TEST_F(StrpoolTest, FailingMemoryIsReportedAndThePoolGoesOn)
{
    const std::string long_text(5000, 'x');
    for (kt_failing_alloc fault; fault.next(); reset()) {
        KT_strpool *pool = nullptr;
        KT_strpool__alloc(ctx, &pool, 100);
        if (pool) {
            const char *copies[3] = {};
            const std::string texts[3] = {std::string(90, 'a'), std::string(80, 'b'), long_text};
            for (int n = 0; n < 3; n++) {
                KT_strpool__add__sz(ctx, pool, texts[n].c_str(), &copies[n]);
                if (kt_has_err(ctx)) {
                    EXPECT_EQ(copies[n], nullptr);
                    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
                    reset();
                    copies[n] = add(pool, texts[n]);
                }
            }
            for (int n = 0; n < 3; n++)
                EXPECT_EQ(texts[n], copies[n]);
            KT_strpool__free(ctx, pool);
        } else {
            EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, "out of memory");
            EXPECT_EQ(KT_context__count_err_stackframes(ctx), 2u);
        }
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired())
            break;
    }
}
