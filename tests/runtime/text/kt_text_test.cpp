// Comparison without regard to case, and integers as text.
#include "kt_test.hpp"

#include <random>
#include <string>

namespace {

using TextTest = ContextTest;

int sign(int number)
{
    return (number > 0) - (number < 0);
}

} // namespace

struct compare_case {
    const char *a;
    const char *b;
    int expected;
};
static const compare_case compare_cases[] = {
    {"", "", 0},           {"abc", "ABC", 0},
    {"aBc1_", "AbC1_", 0}, {"a", "b", -1},
    {"B", "a", 1},         {"ab", "abc", -1},
    {"abc", "ab", 1},      {"", "a", -1},
    {"Z", "[", 1},         {"z", "[", 1},
    {"@", "`", -1},        {"_", "a", -1},
    {"_", "A", -1},        {"\xC3\xA4", "\xC3\x84", 1},
    {"\xC3\xA4", "z", 1},  {"\x80", "\x7F", 1},
    {"I", "i", 0},         {"a\xFF", "a", 1},
};

TEST_F(TextTest, StricmpIgnoresTheCaseOfAsciiLettersOnly)
{
    for (const compare_case &c : compare_cases) {
        EXPECT_EQ(sign(KT_stricmp(c.a, c.b)), c.expected) << c.a << " " << c.b;
        EXPECT_EQ(sign(KT_stricmp(c.b, c.a)), -c.expected) << c.a << " " << c.b;
        EXPECT_EQ(sign(KT_strnicmp(c.a, c.b, 100)), c.expected) << c.a << " " << c.b;
        EXPECT_EQ(KT_strnicmp(c.a, c.b, 0), 0);
    }
    for (int byte = 1; byte < 256; byte++) {
        const char upper[] = {static_cast<char>(byte), '\0'};
        const bool is_letter = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
        const char other[] = {static_cast<char>(byte ^ 0x20), '\0'};
        EXPECT_EQ(KT_stricmp(upper, other) == 0, is_letter) << byte;
    }
}

TEST_F(TextTest, StrnicmpLooksAtTheFirstBytes)
{
    EXPECT_EQ(KT_strnicmp("ABCx", "abcy", 3), 0);
    EXPECT_LT(KT_strnicmp("ABCx", "abcy", 4), 0);
    EXPECT_LT(KT_strnicmp("AB", "abc", 3), 0);
    EXPECT_EQ(KT_strnicmp("AB", "abc", 2), 0);
    EXPECT_EQ(KT_strnicmp("ab", "AB", UINT32_MAX), 0);
}

struct number_case {
    const char *text;
    int64_t value;
};
static const number_case number_cases[] = {
    {"0", 0},
    {"-0", 0},
    {"+0", 0},
    {"7", 7},
    {"+7", 7},
    {"-7", -7},
    {"0007", 7},
    {"-00000000000000000000000000000007", -7},
    {"9223372036854775807", INT64_MAX},
    {"+9223372036854775807", INT64_MAX},
    {"-9223372036854775808", INT64_MIN},
};

TEST_F(TextTest, WholeIntegersAreRead)
{
    for (const number_case &c : number_cases) {
        int64_t value = 99;
        KT_int64__parse__strict(ctx, c.text, &value);
        EXPECT_OK(ctx);
        EXPECT_EQ(value, c.value) << c.text;
    }
}

struct refused_case {
    const char *text;
    const char *description;
};
static const refused_case refused_cases[] = {
    {"", "'' is not an integer"},
    {"+", "'+' is not an integer"},
    {"-", "'-' is not an integer"},
    {"+-7", "'+-7' is not an integer"},
    {"-+7", "'-+7' is not an integer"},
    {"--7", "'--7' is not an integer"},
    {"++7", "'++7' is not an integer"},
    {" 7", "' 7' is not an integer"},
    {"7 ", "'7 ' is not an integer"},
    {"7\n", "'7\n' is not an integer"},
    {"- 7", "'- 7' is not an integer"},
    {"7.0", "'7.0' is not an integer"},
    {"7e1", "'7e1' is not an integer"},
    {"0x10", "'0x10' is not an integer"},
    {"seven", "'seven' is not an integer"},
    {"1,000", "'1,000' is not an integer"},
    {"\xD9\xA7", "'\xD9\xA7' is not an integer"},
    {"9223372036854775808", "'9223372036854775808' does not fit 64 bits"},
    {"-9223372036854775809", "'-9223372036854775809' does not fit 64 bits"},
    {"+99999999999999999999", "'+99999999999999999999' does not fit 64 bits"},
    {"99999999999999999999x", "'99999999999999999999x' is not an integer"},
};

TEST_F(TextTest, OtherTextsAreRefusedAndTheOutputIsLeft)
{
    for (const refused_case &c : refused_cases) {
        int64_t value = 99;
        KT_int64__parse__strict(ctx, c.text, &value);
        EXPECT_ERROR(ctx, KT_ERR_BAD_NUMBER, c.description);
        EXPECT_EQ(KT_context__count_err_stackframes(ctx), 1u);
        EXPECT_EQ(value, 99);
        reset();
    }
}

TEST_F(TextTest, IntegersAreWrittenAndReadBack)
{
    char buffer[21];
    EXPECT_STREQ(KT_int64_to_sz(0, buffer), "0");
    EXPECT_STREQ(KT_int64_to_sz(-1, buffer), "-1");
    EXPECT_STREQ(KT_int64_to_sz(INT64_MAX, buffer), "9223372036854775807");
    EXPECT_STREQ(KT_int64_to_sz(INT64_MIN, buffer), "-9223372036854775808");
    EXPECT_EQ(KT_int64_to_sz(5, buffer), buffer);
    std::mt19937_64 random{1};
    for (int n = 0; n < 10000; n++) {
        const int64_t number = static_cast<int64_t>(random()) >> (random() % 64);
        int64_t value = 0;
        KT_int64__parse__strict(ctx, KT_int64_to_sz(number, buffer), &value);
        EXPECT_EQ(value, number);
        EXPECT_EQ(buffer, std::to_string(number));
    }
}
