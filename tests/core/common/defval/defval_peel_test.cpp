// What is found inside the parentheses of a host default.

#include "defval/defval_peel.hpp"
#include "defval/defval_translation.hpp"
#include "kt_test.hpp"

struct peel_case {
    const char *name;
    const char *text;
    const char *expected; // null for none
};

static const peel_case literal_cases[] = {
    {"a number in two pairs of parentheses", "((0))", "0"},
    {"a bare literal", "5", "5"},
    {"white space and comments around everything", " ( /*a*/ ( 7 --b\n ) ) \t", "7"},
    {"a fraction", "((1.5))", "1.5"},
    {"a string with its quotes", "('a''b')", "'a''b'"},
    {"a national string without its prefix", "(N'abc')", "'abc'"},
    {"a national string with a space after the prefix", "(N 'abc')", "'abc'"},
    {"a small n is not a prefix", "(n'abc')", nullptr},
    {"a prefix before anything else", "(N 5)", nullptr},
    {"a prefix at the end", "(N", nullptr},
    {"another name before a string", "(M'abc')", nullptr},
    {"a name that starts with the prefix", "(NN'abc')", nullptr},
    {"a negative number", "((-1))", "-1"},
    {"a minus keeps the spaces after it", "(( - 1))", "- 1"},
    {"a minus keeps the comment after it", "(-/*a*/1.5)", "-/*a*/1.5"},
    {"a minus before a string", "(-'1')", nullptr},
    {"a minus before a parenthesis", "(-(1))", nullptr},
    {"two minuses are a comment", "(--1\n2)", "2"},
    {"two minuses apart", "(- -1)", nullptr},
    {"a plus", "(+1)", nullptr},
    {"null as written", "(nUlL)", "nUlL"},
    {"a blob", "(x'0A')", "x'0A'"},
    {"a host's hexadecimal constant is none", "(0x0A)", nullptr},
    {"a function name", "(getdate())", nullptr},
    {"a keyword", "(CURRENT_TIMESTAMP)", nullptr},
    {"an expression", "((1)+(2))", nullptr},
    {"two literals", "(1 2)", nullptr},
    {"two national strings", "(N'a' N'b')", nullptr},
    {"a literal and a negative number", "(1 -2)", nullptr},
    {"a parenthesis opened after the literal", "(1 ()", nullptr},
    {"one more parenthesis opened", "((1)", nullptr},
    {"one more parenthesis closed", "(1))", nullptr},
    {"parentheses that balance out of order", ")1(", nullptr},
    {"parentheses that balance before the literal", ")(1", "1"},
    {"parentheses around nothing", "(())", nullptr},
    {"nothing", "", nullptr},
    {"an open string", "('abc)", nullptr},
    {"an exclamation mark at the end", "(1!", nullptr},
    {"a semicolon", "(1;)", nullptr},
};

TEST(Peel, FindsTheLiteral)
{
    for (const peel_case &c : literal_cases) {
        SCOPED_TRACE(c.name);
        const std::string_view literal = _tov_peel_literal(c.text);
        EXPECT_EQ(literal.data() != nullptr, c.expected != nullptr);
        EXPECT_EQ(literal, c.expected ? c.expected : "");
    }
}

// The name is null for a text of parentheses only, and "untouched" when the text is something else.
static const peel_case call_cases[] = {
    {"a call in parentheses", "(getutcdate())", "getutcdate"},
    {"spaces everywhere", " ( ( NEWID ( ) ) ) ", "NEWID"},
    {"a bare call", "newid()", "newid"},
    {"a quoted name keeps its quotes", "([newid]())", "[newid]"},
    {"a comment in the parentheses", "(f(/*a*/))", "f"},
    {"parentheses before the name", "()f()", "f"},
    {"parentheses only", "(())", nullptr},
    {"nothing", "", nullptr},
    {"an argument", "(f(1))", "untouched"},
    {"a nested call", "(dateadd(day,1,getdate()))", "untouched"},
    {"a keyword", "(CURRENT_TIMESTAMP)", "untouched"},
    {"a name without parentheses", "(getdate)", "untouched"},
    {"a name at the end", "getdate", "untouched"},
    {"an open call", "getdate(", "untouched"},
    {"two calls", "f() f()", "untouched"},
    {"a qualified call", "dbo.f()", "untouched"},
    {"a literal", "(1)", "untouched"},
    {"a literal after the call", "f() 1", "untouched"},
    {"one more parenthesis opened", "(f()", "untouched"},
    {"one more parenthesis closed", "f())", "untouched"},
};

class PeelCall : public ContextTest {};

TEST_F(PeelCall, FindsTheFunction)
{
    for (const peel_case &c : call_cases) {
        SCOPED_TRACE(c.name);
        char untouched[] = "untouched";
        char *name = untouched;
        _tov_parse_mssql_defval_func_no_args(ctx, c.text, &name);
        EXPECT_OK(ctx);
        EXPECT_STREQ(name, c.expected);
        if (name != untouched)
            _kt_free(ctx, name);
    }
}

static const peel_case hex_cases[] = {
    {"digits", "((0x0A1B))", "0A1B"},
    {"a bare constant", "0x12", "12"},
    {"only the last two are checked", "(0xZZ12)", "ZZ12"},
    {"the last is checked", "(0x121Z)", nullptr},
    {"the one before it is checked", "(0x12Z1)", nullptr},
    {"a capital X", "(0X12)", nullptr},
    {"an odd number of digits", "(0xABC)", nullptr},
    {"no digits", "(0x)", nullptr},
    {"another number that is spoilt", "(1x12)", nullptr},
    {"two constants", "(0x12 0x12)", nullptr},
    {"a parenthesis opened after the constant", "(0x12()", nullptr},
    {"parentheses that balance after the constant", "(0x12)()", nullptr},
    {"one more parenthesis opened", "((0x12)", nullptr},
    {"one more parenthesis closed", "(0x12))", nullptr},
    {"another token", "(0x12+1)", nullptr},
    {"a number", "(12)", nullptr},
    {"parentheses only", "()", nullptr},
    {"nothing", "", nullptr},
    {"a short malformed token", "(!)", nullptr},
    {"spaces everywhere", " ( 0x12 ) ", "12"},
};

TEST(Peel, FindsTheHexDigits)
{
    for (const peel_case &c : hex_cases) {
        SCOPED_TRACE(c.name);
        const std::string_view digits = _tov_peel_hex_digits(c.text);
        EXPECT_EQ(digits.data() != nullptr, c.expected != nullptr);
        EXPECT_EQ(digits, c.expected ? c.expected : "");
    }
}

TEST(Peel, CountsAnyNumberOfParentheses)
{
    const std::string open(100000, '(');
    const std::string close(100000, ')');
    EXPECT_EQ(_tov_peel_literal((open + "1" + close).c_str()), "1");
    EXPECT_EQ(_tov_peel_literal((open + "1" + close + ")").c_str()).data(), nullptr);
    EXPECT_EQ(_tov_peel_hex_digits((open + "0x12" + close).c_str()), "12");
}
