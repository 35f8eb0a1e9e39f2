#include "failing_alloc.hpp"
#include "kt_chars.h"
#include "kt_test.hpp"

class KtChars : public ContextTest {};

static std::string shown(KT_context *ctx, const char *text)
{
    KT_string *message = nullptr;
    KT_string__alloc(ctx, &message);
    KT_string__append__shown(ctx, message, text);
    return take(ctx, message);
}

TEST_F(KtChars, AreShownHarmless)
{
    EXPECT_EQ(shown(ctx, "Größe"), "\"Größe\"");
    EXPECT_EQ(shown(ctx, "a\x1B[2J"), "\"a<U+001B>[2J\"");
    EXPECT_EQ(shown(ctx, "a\u202Eb"), "\"a<U+202E>b\"");
    EXPECT_EQ(shown(ctx, "a\xFF"), "\"a\uFFFD\"");
    EXPECT_EQ(shown(ctx, std::string(60, 'x').c_str()), '"' + std::string(60, 'x') + '"');
    EXPECT_EQ(shown(ctx, std::string(61, 'x').c_str()), '"' + std::string(60, 'x') + "...\"");
}

TEST_F(KtChars, AreFoldedAsSqliteComparesThem)
{
    char *folded = nullptr;
    KT_strdup__folded(ctx, "AZ az \u00C4_[", &folded);
    EXPECT_STREQ(folded, "az az \u00C4_[");
    _kt_free(ctx, folded);
}

TEST_F(KtChars, FoldingSurvivesFailingAllocations)
{
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        char *folded = nullptr;
        KT_strdup__folded(ctx, "Orders", &folded);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            _kt_free(ctx, folded);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(folded, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}
