#include "tov_ddl.h"

#include <gtest/gtest.h>

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

TEST(DdlNames, FlawsAreFound)
{
    for (const name_case &c : name_cases) {
        SCOPED_TRACE(c.sentence);
        EXPECT_STREQ(tov_find_name_flaw(c.name), c.flaw);
    }
}
