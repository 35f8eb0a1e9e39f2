#include "client_names.h"
#include "failing_alloc.h"
#include "kt_test.h"

class ClientNames : public ContextTest {};

namespace {
struct name_case {
    const char *sentence;
    const char *name;
    const char *flaw; // null: the name is safe
};
} // namespace

static const name_case name_cases[] = {
    {"a plain name is safe", "Orders", nullptr},
    {"blanks, dots, brackets and semicolons are safe inside double quotes", "dbo.Order Details [x];--", nullptr},
    {"letters of any script are safe", "Größe Заказ 注文 طلب", nullptr},
    {"a joiner that Persian words need is safe", "می\u200Cخواهم", nullptr},
    {"characters beyond the first plane are safe", "\U0001F600", nullptr},
    {"no name at all", nullptr, "no name"},
    {"an empty name", "", "an empty name"},
    {"a double quote", "a\"b", "a name with a double quote"},
    {"a single quote", "O'Brien", "a name with a single quote"},
    {"a line feed", "a\nb", "a name with a control character"},
    {"the last of C0", "a\x1F", "a name with a control character"},
    {"DEL", "a\x7F", "a name with a control character"},
    {"the first of C1", "a\u0080", "a name with a control character"},
    {"the last of C1", "a\u009F", "a name with a control character"},
    {"what follows C1 is safe", "a\u00A0", nullptr},
    {"a line separator", "a\u2028", "a name with a control character"},
    {"a paragraph separator", "a\u2029", "a name with a control character"},
    {"a right-to-left mark", "a\u200F", "a name with a character that changes the direction of writing"},
    {"a left-to-right mark", "a\u200E", "a name with a character that changes the direction of writing"},
    {"an Arabic letter mark", "a\u061C", "a name with a character that changes the direction of writing"},
    {"an override", "a\u202E", "a name with a character that changes the direction of writing"},
    {"an embedding", "a\u202A", "a name with a character that changes the direction of writing"},
    {"an isolate", "a\u2066", "a name with a character that changes the direction of writing"},
    {"its end", "a\u2069", "a name with a character that changes the direction of writing"},
    {"a lone continuation byte", "a\x80", "a name that is not UTF-8"},
    {"a cut character", "a\xE2\x82", "a name that is not UTF-8"},
    {"an overlong slash", "\xC0\xAF", "a name that is not UTF-8"},
    {"an overlong quote of three bytes", "\xE0\x80\xA2", "a name that is not UTF-8"},
    {"a surrogate", "\xED\xA0\x80", "a name that is not UTF-8"},
    {"beyond the last character", "\xF4\x90\x80\x80", "a name that is not UTF-8"},
};

TEST_F(ClientNames, FlawsAreFound)
{
    for (const name_case &c : name_cases) {
        SCOPED_TRACE(c.sentence);
        EXPECT_STREQ(client_find_name_flaw(c.name), c.flaw);
    }
}

static std::string shown(KT_context *ctx, const char *text)
{
    KT_string *message = nullptr;
    KT_string__alloc(ctx, &message);
    client_append_shown(ctx, message, text);
    return take(ctx, message);
}

TEST_F(ClientNames, AreShownHarmless)
{
    EXPECT_EQ(shown(ctx, "Größe"), "\"Größe\"");
    EXPECT_EQ(shown(ctx, "a\x1B[2J"), "\"a<U+001B>[2J\"");
    EXPECT_EQ(shown(ctx, "a\u202Eb"), "\"a<U+202E>b\"");
    EXPECT_EQ(shown(ctx, "a\xFF"), "\"a\uFFFD\"");
    EXPECT_EQ(shown(ctx, std::string(60, 'x').c_str()), '"' + std::string(60, 'x') + '"');
    EXPECT_EQ(shown(ctx, std::string(61, 'x').c_str()), '"' + std::string(60, 'x') + "...\"");
}

TEST_F(ClientNames, AreFoldedAsSqliteComparesThem)
{
    char *folded = nullptr;
    client_fold_name(ctx, "AZ az \u00C4_[", &folded);
    EXPECT_STREQ(folded, "az az \u00C4_[");
    _kt_free(ctx, folded);
}

TEST_F(ClientNames, FoldingSurvivesFailingAllocations)
{
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        char *folded = nullptr;
        client_fold_name(ctx, "Orders", &folded);
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
