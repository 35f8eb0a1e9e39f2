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

static std::string harmless(KT_context *ctx, const std::string &text)
{
    KT_string *line = nullptr;
    KT_string__alloc__sz(ctx, &line, "at: ");
    KT_string__append__harmless(ctx, line, text.c_str());
    return take(ctx, line);
}

TEST_F(KtChars, AreMadeHarmlessInALine)
{
    EXPECT_EQ(harmless(ctx, ""), "at: ");
    EXPECT_EQ(harmless(ctx, "Größe \"x\""), "at: Größe \"x\"");
    EXPECT_EQ(harmless(ctx, "a\r\n\tb"), "at: a   b");
    EXPECT_EQ(harmless(ctx, "a\x1B[2J\x7F"), "at: a<U+001B>[2J<U+007F>");
    EXPECT_EQ(harmless(ctx, "\u009B2Ja\u202E\u2028\u061C"), "at: <U+009B>2Ja<U+202E><U+2028><U+061C>");
    EXPECT_EQ(harmless(ctx, "a\xFF\x9B\xC3"), "at: a\uFFFD\uFFFD\uFFFD");
    const std::string longer(10000, 'x');
    EXPECT_EQ(harmless(ctx, longer + "ä\x01"), "at: " + longer + "ä<U+0001>");
    EXPECT_OK(ctx);
}

TEST_F(KtChars, MadeHarmlessSurviveFailingAllocations)
{
    KT_string *line = nullptr;
    KT_string__alloc__sz(ctx, &line, "at: ");
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_string__append__harmless(ctx, line, std::string(200, '\x01').c_str());
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_STREQ(KT_string__sz(line), "at: ");
    }
    KT_string__free(ctx, line);
}

TEST_F(KtChars, AMalformedOneIsOneByteLong)
{
    for (const char *text : {"\x80\x80", "\x82\x80", "\xBF\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xE0\x80\x80",
                             "\xED\xA0\x80", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        const char *at = text;
        EXPECT_EQ(KT_char__next(&at), -1) << text;
        EXPECT_EQ(at, text + 1) << text;
    }
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
