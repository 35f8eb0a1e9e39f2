// What the scanner makes of a text, written as code/length for each token.

#include "defval/defval_tokenizer.hpp"
#include "kt_test.hpp"
#include "tov_parse_defin.h"

#include <cstring>
#include <memory>
#include <vector>

static std::string token_list(const std::string &text)
{
    // A block of just that size, so that a sanitizer sees any look past the end.
    const auto block = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(block.get(), text.c_str(), text.size() + 1);
    std::string list;
    for (size_t at = 0; at <= text.size();) {
        int32_t code = 0;
        const int32_t length = _tov_get_token(block.get() + at, &code);
        if (code == TK_END_OF_FILE && length == 0)
            return list + ".";
        if (length <= 0)
            return list + "stuck";
        list += std::to_string(code) + "/" + std::to_string(length) + " ";
        at += static_cast<size_t>(length);
    }
    return list + "beyond"; // only a "!" that ends the text
}

struct token_case {
    const char *name;
    std::string text;
    const char *tokens;
};

static const token_case token_cases[] = {
    {"the end is a token without length", "", "."},

    {"white space is one token", "  \t x", "149/4 26/1 ."},
    {"each of the five can start white space", "\t;\n;\f;\r; ;", "149/1 1/1 149/1 1/1 149/1 1/1 149/1 1/1 149/1 1/1 ."},
    {"a vertical tab continues white space", " \v ", "149/3 ."},
    {"a vertical tab does not start it", "\v ", "148/1 149/1 ."},

    {"a line comment ends before the line feed", "--a\n", "149/3 149/1 ."},
    {"a line comment may end the text", "--a", "149/3 ."},
    {"an empty line comment before a line feed", "--\n", "149/2 149/1 ."},
    {"an empty line comment at the end", "--", "149/2 ."},
    {"a carriage return stays in the comment", "--a\rb\n", "149/5 149/1 ."},
    {"a minus", "-a", "87/1 26/1 ."},
    {"a minus at the end", "-", "87/1 ."},
    {"a negative number is two tokens", "-5", "87/1 129/1 ."},

    {"a block comment includes its end", "/*a*/b", "149/5 26/1 ."},
    {"an empty block comment", "/**/b", "149/4 26/1 ."},
    {"the opening star does not close a comment", "/*/b", "149/4 ."},
    {"stars before the slash close it", "/***/b", "149/5 26/1 ."},
    {"an open block comment runs to the end", "/*a*", "149/4 ."},
    {"a comment of one byte", "/*a", "149/3 ."},
    {"a comment opened by the last two bytes is a slash", "/*", "89/1 88/1 ."},
    {"a slash", "/a", "89/1 26/1 ."},
    {"a slash at the end", "/", "89/1 ."},

    {"operators of one byte", "();+*%,&~", "22/1 23/1 1/1 86/1 88/1 90/1 25/1 82/1 93/1 ."},
    {"one equals sign", "=a", "76/1 26/1 ."},
    {"two equals signs", "==a", "76/2 26/1 ."},
    {"three equals signs", "===", "76/2 76/1 ."},
    {"less", "<a", "79/1 26/1 ."},
    {"less or equal", "<=", "78/2 ."},
    {"less and greater is unequal", "<>", "75/2 ."},
    {"shift left", "<<", "84/2 ."},
    {"less at the end", "<", "79/1 ."},
    {"greater", ">a", "77/1 26/1 ."},
    {"greater or equal", ">=", "80/2 ."},
    {"shift right", ">>", "85/2 ."},
    {"greater then less", "><", "77/1 79/1 ."},
    {"unequal", "!=", "75/2 ."},
    {"an exclamation mark takes the next byte", "!x", "148/2 ."},
    {"an exclamation mark takes even the end", "!", "148/2 beyond"},
    {"a bar", "|a", "83/1 26/1 ."},
    {"two bars", "||", "91/2 ."},
    {"three bars", "|||", "91/2 83/1 ."},

    {"a string", "'abc'", "94/5 ."},
    {"an empty string", "''", "94/2 ."},
    {"a doubled quote does not end a string", "'it''s'", "94/7 ."},
    {"a string of one quote", "''''", "94/4 ."},
    {"an open string", "'abc", "148/4 ."},
    {"a doubled quote at the end leaves the string open", "'abc''", "148/6 ."},
    {"a quote alone", "'", "148/1 ."},
    {"a string holds line feeds and other quotes", "'a\n\"`b'", "94/7 ."},
    {"double quotes make a name", "\"a b\"", "26/5 ."},
    {"doubled double quotes", "\"a\"\"b\"", "26/6 ."},
    {"an open name", "\"a", "148/2 ."},
    {"back quotes make a name", "`a``b`", "26/6 ."},
    {"an open back quote", "`a'\"", "148/4 ."},
    {"a quoted keyword is a name", "\"NULL\"", "26/6 ."},
    {"a national string is a name and a string", "N'abc'", "26/1 94/5 ."},

    {"a dot", ".a", "118/1 26/1 ."},
    {"a dot at the end", ".", "118/1 ."},
    {"a qualified name", "a.b", "26/1 118/1 26/1 ."},

    {"digits", "0123", "129/4 ."},
    {"a fraction", "1.5", "130/3 ."},
    {"a fraction without digits before it", ".5", "130/2 ."},
    {"a fraction without digits after it", "1.", "130/2 ."},
    {"a number ends at the second dot", "1.2.3", "130/3 130/2 ."},
    {"an exponent", "1e5", "130/3 ."},
    {"a capital exponent", "1E5", "130/3 ."},
    {"an exponent with plus", "1e+5", "130/4 ."},
    {"a fraction with a negative exponent", "1.5e-3", "130/6 ."},
    {"an exponent after a bare dot", "1.e5", "130/4 ."},
    {"an exponent after a fraction alone", ".5e5", "130/4 ."},
    {"an e without a digit spoils the number", "1e", "148/2 ."},
    {"an e with a sign only spoils the number", "1e+", "148/2 86/1 ."},
    {"an e with a sign and a letter", "1e-a", "148/2 87/1 26/1 ."},
    {"a letter after the exponent spoils the number", "1e5a", "148/4 ."},
    {"an exponent has no fraction", "1e5.5", "130/3 130/2 ."},
    {"a host's hexadecimal constant is malformed", "0x0A1B", "148/6 ."},
    {"a short one too", "0x1A", "148/4 ."},
    {"any identifier character joins the number", "1_$\x80z(", "148/5 22/1 ."},
    {"a dollar sign joins the number", "1.5$", "148/4 ."},
    {"a number before a parenthesis", "5)", "129/1 23/1 ."},

    {"brackets make a name", "[a b]", "26/5 ."},
    {"an empty bracket name", "[]", "26/2 ."},
    {"a bracket name ends at the first bracket", "[a]]", "26/3 148/1 ."},
    {"an open bracket name", "[ab", "148/3 ."},

    {"a question mark", "?", "133/1 ."},
    {"a numbered parameter", "?12a", "133/3 26/1 ."},
    {"a register", "#12", "132/3 ."},
    {"a register ends at a letter", "#1a", "132/2 26/1 ."},
    {"a hash name", "#a1", "133/3 ."},
    {"a hash alone", "#", "148/1 ."},
    {"a named parameter", ":a1", "133/3 ."},
    {"an at name", "@a", "133/2 ."},
    {"a dollar name", "$a", "133/2 ."},
    {"a name of digits", "@1", "133/2 ."},
    {"a prefix alone", "@", "148/1 ."},
    {"a prefix before a blank", ": a", "148/1 149/1 26/1 ."},
    {"two at signs", "@@a", "148/1 133/2 ."},
    {"two colons belong to the name", "$a::b", "133/5 ."},
    {"two colons may begin it", "$::a", "133/4 ."},
    {"two colons alone are no name", "$::", "148/3 ."},
    {"two colons may end it", "$a::", "133/4 ."},
    {"one colon ends the name", "$a:b", "133/2 133/2 ."},
    {"three colons take two", "$a:::b", "133/4 133/2 ."},
    {"an argument", "$a(x-y)z", "133/7 26/1 ."},
    {"an empty argument", "$a()", "133/4 ."},
    {"an argument after colons", "$a::b(c)", "133/8 ."},
    {"an argument ends at a space", "$a(x y)", "148/4 149/1 26/1 23/1 ."},
    {"a vertical tab is a space there", "$a(x\vy", "148/4 148/1 26/1 ."},
    {"an open argument", "$a(x", "148/4 ."},
    {"an argument of nothing", "$a(", "148/3 ."},
    {"no argument without a name", "$(a)", "148/1 22/1 26/1 23/1 ."},

    {"a blob", "x'0A1B'", "131/7 ."},
    {"a capital blob", "X'0a'", "131/5 ."},
    {"an empty blob", "x''", "131/3 ."},
    {"an odd number of digits is not a blob", "x'0A1'", "148/6 ."},
    {"another letter is not a blob", "x'0G'", "148/5 ."},
    {"a blob that is spoilt late", "x'0A G'b", "148/7 26/1 ."},
    {"an open blob", "x'0A", "148/4 ."},
    {"an open blob with an odd number of digits", "x'0A1", "148/5 ."},
    {"a blob of nothing", "x'", "148/2 ."},
    {"a blob is not closed by a doubled quote", "x'0A''", "131/5 148/1 ."},
    {"an x is a name", "x", "26/1 ."},
    {"a word in x", "xyz'a'", "26/3 94/3 ."},

    {"null", "null", "98/4 ."},
    {"Null", "Null", "98/4 ."},
    {"NULL", "NULL", "98/4 ."},
    {"a keyword and a name", "ISNULL nulls", "73/6 149/1 26/5 ."},
    {"function names", "getdate NEWID", "26/7 149/1 26/5 ."},
    {"current_timestamp is a keyword", "current_timestamp", "66/17 ."},
    {"a name longer than any keyword", "current_timestamps", "26/18 ."},
    {"a name of one letter", "a", "26/1 ."},
    {"an underscore begins a name", "_a1$", "26/4 ."},
    {"a byte from 0x80 begins a name",
     "\x80"
     "a",
     "26/2 ."},
    {"the byte 0xFF too", "\xFF", "26/1 ."},
    {"a name takes dollar signs and digits", "a$1\xC3\xA9(", "26/5 22/1 ."},

    {"bytes that begin nothing", "\x01]^{}\\\x7F", "148/1 148/1 148/1 148/1 148/1 148/1 148/1 ."},
};

TEST(Tokenizer, SplitsTextIntoTokens)
{
    for (const token_case &c : token_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(token_list(c.text), c.tokens);
    }
}

// The rule for each first byte, stated once more by what follows it.
TEST(Tokenizer, EveryFirstByteHasARule)
{
    for (int byte = 1; byte < 256; byte++) {
        const char c = static_cast<char>(byte);
        int32_t code = 0;
        const std::string text{c, ' ', '\0'};
        const int32_t length = _tov_get_token(text.c_str(), &code);
        const unsigned char kind = sqlite3CtypeMap[byte];
        SCOPED_TRACE(byte);
        EXPECT_GE(length, 1);
        if (c != '$' && (kind & 0x42)) {
            EXPECT_EQ(code, 26);
        } else if (kind & 0x04) {
            EXPECT_EQ(code, 129);
        } else if (kind & 0x01 && c != '\v') {
            EXPECT_EQ(code, 149);
        } else if (!std::strchr("();+*%,&~=<>|-/.?", c)) {
            EXPECT_EQ(code, 148);
        }
    }
}

// Any two bytes, any three of those that mean something: tokens cover the text, and a token read alone is the same.
static void expect_whole(const std::string &text)
{
    for (size_t at = 0; at < text.size();) {
        int32_t code = 0;
        const int32_t length = _tov_get_token(text.c_str() + at, &code);
        ASSERT_GT(length, 0) << text;
        if (text[at] == '!' && at + 1 == text.size())
            return;
        ASSERT_LE(at + static_cast<size_t>(length), text.size()) << text;
        const std::string alone = text.substr(at, static_cast<size_t>(length));
        int32_t code_alone = 0;
        ASSERT_EQ(_tov_get_token(alone.c_str(), &code_alone), length) << text << " at " << at;
        ASSERT_EQ(code_alone, code) << text << " at " << at;
        at += static_cast<size_t>(length);
    }
}

TEST(Tokenizer, TokensCoverTheTextAndStandAlone)
{
    for (int first = 1; first < 256; first++)
        for (int second = 1; second < 256; second++)
            ASSERT_NO_FATAL_FAILURE(expect_whole({static_cast<char>(first), static_cast<char>(second)}));
    const std::string_view bytes = " \v\n-/*()'\"`[]!=<>|.0e+xXA_$@:#?;\x80~\x01";
    for (char a : bytes)
        for (char b : bytes)
            for (char c : bytes)
                for (char d : bytes)
                    ASSERT_NO_FATAL_FAILURE(expect_whole({a, b, c, d}));
}

TEST(Tokenizer, LongTokensAreOneToken)
{
    const size_t size = 1 << 20;
    const std::string many(size, 'a');
    const std::string digits(size, '7');
    const std::string length = std::to_string(size);
    EXPECT_EQ(token_list(many), "26/" + length + " .");
    EXPECT_EQ(token_list(digits), "129/" + length + " .");
    EXPECT_EQ(token_list("'" + many + "'"), "94/" + std::to_string(size + 2) + " .");
    EXPECT_EQ(token_list("/*" + many), "149/" + std::to_string(size + 2) + " .");
    EXPECT_EQ(token_list("--" + many), "149/" + std::to_string(size + 2) + " .");
}

// The numbers are compared with elsewhere, so they never change.
TEST(Tokenizer, TokenNumbersArePinned)
{
    const std::vector<int> numbers = {
        TK_SEMI,  TK_LP,       TK_RP,       TK_COMMA,       TK_ID,      TK_NE,     TK_EQ,   TK_GT,      TK_LE,
        TK_LT,    TK_GE,       TK_BITAND,   TK_BITOR,       TK_LSHIFT,  TK_RSHIFT, TK_PLUS, TK_MINUS,   TK_STAR,
        TK_SLASH, TK_REM,      TK_CONCAT,   TK_BITNOT,      TK_STRING,  TK_NULL,   TK_DOT,  TK_INTEGER, TK_FLOAT,
        TK_BLOB,  TK_REGISTER, TK_VARIABLE, TK_END_OF_FILE, TK_ILLEGAL, TK_SPACE};
    EXPECT_EQ(numbers, (std::vector<int>{1,  22, 23, 25, 26, 75, 76, 77,  78,  79,  80,  82,  83,  84,  85,  86, 87,
                                         88, 89, 90, 91, 93, 94, 98, 118, 129, 130, 131, 132, 133, 147, 148, 149}));
}
