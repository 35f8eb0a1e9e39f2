#include "check/client_expressions.hpp"

#include <gtest/gtest.h>

namespace {
struct expression_case {
    const char *sentence;
    client_shape shape;
    const char *expression;
    const char *flaw; // null: the expression keeps to its place
};
} // namespace

static constexpr client_shape VALUE = client_shape::default_value;
static constexpr client_shape GROUP = client_shape::group;
static constexpr client_shape INNER = client_shape::inner;

static constexpr const char *not_one_value = "neither one literal nor one expression in parentheses";
static constexpr const char *not_a_group = "not one expression in parentheses";
static constexpr const char *semicolon = "a \";\" outside of quotes";
static constexpr const char *endless_quote = "unterminated quote";
static constexpr const char *endless_comment = "unterminated comment";
static constexpr const char *shell_line =
    "a line with nothing but \"/\" or \"go\", which ends a statement in the sqlite3 shell";
static constexpr const char *direction = "a character that changes the direction of writing";

static const expression_case expression_cases[] = {
    {"a number is a value", VALUE, "42", nullptr},
    {"so is one with a sign", VALUE, "-1.5e-3", nullptr},
    {"and a blank after the sign", VALUE, "- 5", nullptr},
    {"and a hexadecimal one", VALUE, "0x1F", nullptr},
    {"a text is a value", VALUE, "'abc'", nullptr},
    {"with quotes and all else in it", VALUE, "'O''Brien; -- /* ('", nullptr},
    {"with a line feed in it", VALUE, "'a\nb\x01'", nullptr},
    {"a blob is a value", VALUE, "x'0A1B'", nullptr},
    {"a word is a value", VALUE, "CURRENT_TIMESTAMP", nullptr},
    {"a group is a value", VALUE, "(datetime('now'))", nullptr},
    {"with blanks around it", VALUE, " ( 1 + 2 ) ", nullptr},
    {"with comments that end", VALUE, "/* a ; */ (1) -- b ;\n", nullptr},
    {"nothing is not a value", VALUE, "", not_one_value},
    {"blanks are no value", VALUE, " /* x */ ", not_one_value},
    {"a sign is not a value", VALUE, "-", not_one_value},
    {"two values", VALUE, "1 2", not_one_value},
    {"a further constraint", VALUE, "1 NOT NULL", not_one_value},
    {"a further constraint after a group", VALUE, "(1) CHECK (0)", not_one_value},
    {"a further column", VALUE, "1, evil int", not_one_value},
    {"an operator outside of parentheses", VALUE, "1+1", not_one_value},
    {"a hexadecimal number ends before a sign", VALUE, "0x1e+1", not_one_value},
    {"a call outside of parentheses", VALUE, "load_extension('x')", not_one_value},
    {"a group that ends too soon", VALUE, "(1)); DROP TABLE t; --\n", "unmatched \")\""},
    {"a statement of its own", VALUE, "1; DROP TABLE t", semicolon},
    {"a ; inside parentheses", VALUE, "(1; 2)", semicolon},
    {"a group that is open", VALUE, "((1)", "a \"(\" that is not closed"},
    {"a text without end", VALUE, "'abc", endless_quote},
    {"a text whose last quote is doubled", VALUE, "'abc''", endless_quote},
    {"a blob without end", VALUE, "x'00", endless_quote},
    {"a name without end", VALUE, "(\"abc)", endless_quote},
    {"a name in brackets without end", VALUE, "([abc)", endless_quote},
    {"a name in backticks without end", VALUE, "(`abc)", endless_quote},
    {"a comment to the end of the line that swallows what follows", VALUE, "1 -- x", endless_comment},
    {"a comment without end", VALUE, "(1 /* )", endless_comment},
    {"a comment that only seems to end", VALUE, "(1 /*/ )", endless_comment},
    {"a control character outside of quotes", VALUE, "(1 \x01)", "a control character outside of quotes"},
    {"a direction character outside of quotes", VALUE, "(1 \u202E)", direction},
    {"a direction character inside of quotes", VALUE, "'\u202E'", direction},
    {"a direction character inside a comment", VALUE, "(1 /*\u2066*/)", direction},
    {"text that is not UTF-8", VALUE, "'\xFF'", "text that is not UTF-8"},

    {"a line that ends a statement in the shell", VALUE, "(1\n/\n2)", shell_line},
    {"with blanks and comments beside it", GROUP, "(1=\r\n \tGo /* x */ -- y\r\n.shell)", shell_line},
    {"after a comment to the end of the line", INNER, "1 -- x\ngo\n.shell", shell_line},
    {"as the last line", VALUE, "1\n/", shell_line},
    {"a line with more than that", INNER, "a\n/ 2 >\ngo - 1\n/* go\n/\n*/", nullptr},
    {"a line in a text", VALUE, "'\ngo\n/\n'", nullptr},
    {"a longer word", INNER, "a >\ngone\n- 1", nullptr},

    {"a group is a group", GROUP, "([A]>0)", nullptr},
    {"a bracket swallows quotes and parentheses", GROUP, "([a'(]>0)", nullptr},
    {"a doubled quote stays in the name", GROUP, "(\"a\"\")\">0)", nullptr},
    {"a column check needs parentheses", GROUP, "A>0", not_a_group},
    {"a literal is not a group", GROUP, "1", not_a_group},
    {"a sign before a group", GROUP, "-(1)", not_a_group},
    {"two groups", GROUP, "(1) (2)", not_a_group},
    {"a conflict clause", GROUP, "(1) ON CONFLICT REPLACE", not_a_group},
    {"groups joined by an operator", GROUP, "(1) OR (1)", not_a_group},

    {"inside parentheses anything goes that leaves them closed", INNER, "[A]>0 AND (B) IN (1, 2)", nullptr},
    {"but not closing them", INNER, "1) ON CONFLICT IGNORE CHECK (1", "unmatched \")\""},
    {"nor a comment that swallows what closes them", INNER, "1 --", endless_comment},
    {"nor a ;", INNER, "1; ATTACH 'x' AS y", semicolon},
};

TEST(ClientExpressions, KeepToTheirPlace)
{
    for (const expression_case &c : expression_cases) {
        SCOPED_TRACE(c.sentence);
        SCOPED_TRACE(c.expression);
        EXPECT_STREQ(client_find_expression_flaw(c.expression, c.shape), c.flaw);
    }
}
