// Expressions that mean the same have one form, others do not.
#include "compare/client_meaning.hpp"
#include "kt_test.hpp"

namespace {

struct meaning_case {
    const char *a;
    const char *b;
};

const meaning_case equal_cases[] = {
    {"((0))", "0"},
    {"((-1))", "-1"},
    {"(getdate())", "GETDATE ( )"},
    {"CURRENT_TIMESTAMP", "(getdate())"},
    {"([Kind]='b' OR [Kind]='a')", "kind = 'b' or KIND='a'"},
    {"[a]<>(0)", "a != 0 -- not nothing"},
    {"[a]>(-1)", "\"a\" > -1"},
    {"(((([a]+[b]))))", "a+b"},
    {"convert([decimal](9,2),(0))", "CONVERT(decimal(9,2), 0)"},
    {"[x] in ((1),(2))", "x IN (1, 2)"},
    {"1E5", "1e5"},
    {"[a]]b]", "\"a]b\""},
};

const meaning_case different_cases[] = {
    {"0", "1"},      {"'a'", "'A'"},        {"'a'", "N'a'"},      {"(a+b)*c", "a+b*c"}, {"a-(-1)", "a-1"},
    {"f(a)", "f a"}, {"x in (1)", "x = 1"}, {"'it''s'", "'its'"}, {"0x0A", "0x0B"},     {"not (a or b)", "not a or b"},
    {"a", "'a'"},    {"[a b]", "a b"},
};

TEST(MeaningTest, SpellingDoesNotCount)
{
    for (const meaning_case &c : equal_cases)
        EXPECT_EQ(client_meaning(c.a), client_meaning(c.b)) << c.a << "   " << c.b;
}

TEST(MeaningTest, WhatMattersDoes)
{
    for (const meaning_case &c : different_cases)
        EXPECT_NE(client_meaning(c.a), client_meaning(c.b)) << c.a << "   " << c.b;
}

TEST(MeaningTest, NamesCanBeGivenOthers)
{
    const auto rename = [](const std::string &name) { return name == "a" ? std::string("b") : name; };
    EXPECT_EQ(client_meaning("[A]>(0) AND a('a')", rename), client_meaning("[b] > 0 and a('a')"));
}

TEST(MeaningTest, NamesAreFoundOnceEach)
{
    EXPECT_EQ(client_names_in("[B]>f([a]) AND b IS NULL OR c=1"), (std::vector<std::string>{"b", "a", "c"}));
}

// Nothing that is not an expression does harm.
TEST(MeaningTest, WhatHasNoEndIsRead)
{
    constexpr meaning_case cases[] = {{"", ""},       {"(", "("},   {")", ")"},   {"())(", "( ) ) ("}, {"'a", "'a"},
                                      {"[a", "[a]"},  {"/* a", ""}, {"-- a", ""}, {"((((", "( ( ( ("}, {"a(", "a ("},
                                      {"1e+", "1e+"}, {".", "."}};
    for (const meaning_case &c : cases)
        EXPECT_EQ(client_meaning(c.a), c.b);
}

// Parentheses as deep as a document likes take time in proportion to their number.
TEST(MeaningTest, DeepParenthesesAreReadInOnePass)
{
    const std::string deep(200000, '(');
    EXPECT_EQ(client_meaning(deep + "1" + std::string(200000, ')')), "1");
}

} // namespace
