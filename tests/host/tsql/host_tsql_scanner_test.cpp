// The tokens of T-SQL.
#include "tsql/host_tsql_scanner.hpp"

#include <gtest/gtest.h>

namespace {

// The tokens, each behind the letter of its kind: "w:select n:[a]".
std::string tokens_of(std::string_view script, bool quoted_identifier = true)
{
    constexpr std::string_view letters = "egcwntdbvm?";
    host_tsql_scanner scanner(script, quoted_identifier);
    std::string list;
    for (host_tsql_token token = scanner.next(); token.kind != host_tsql_kind::end; token = scanner.next())
        list += (list.empty() ? "" : " ") + std::string(1, letters[static_cast<size_t>(token.kind)]) + ':' +
                std::string(token.text);
    return list;
}

struct scanner_case {
    const char *name;
    const char *script;
    const char *tokens;
};

const scanner_case scanner_cases[] = {
    {"nothing", " \t\r\n", ""},
    {"words", "select _a b# ##t a$b", "w:select w:_a w:b# w:##t w:a$b"},
    {"letters beyond ASCII", "\xC3\xA4\xC3\xB6 x", "w:\xC3\xA4\xC3\xB6 w:x"},
    {"names", "[a] [a]]b] [a.b] \"a\"\"b\" []", "n:[a] n:[a]]b] n:[a.b] n:\"a\"\"b\" n:[]"},
    {"a bracket inside a name opens nothing", "[a[b] c", "n:[a[b] w:c"},
    {"strings", "'a' N'b' n'c''d' '' 'e\nf'", "t:'a' t:N'b' t:n'c''d' t:'' t:'e\nf'"},
    {"an N that is a word", "N 'a' No'b'", "w:N t:'a' w:No t:'b'"},
    {"numbers", "1 1.5 .5 1. 1e3 1E-3 2e+1 $1.25 007", "d:1 d:1.5 d:.5 d:1. d:1e3 d:1E-3 d:2e+1 d:$1.25 d:007"},
    {"binary", "0x 0xAf0 0Xg", "b:0x b:0xAf0 b:0X w:g"},
    {"variables", "@a @@rowcount @", "v:@a v:@@rowcount v:@"},
    {"marks of one and two characters", "<= >= <> != !< !> :: += -= < = ! + - . ,",
     "m:<= m:>= m:<> m:!= m:!< m:!> m::: m:+= m:-= m:< m:= m:! m:+ m:- m:. m:,"},
    {"marks side by side", "a=-1 b<-2 (*)", "w:a m:= m:- d:1 w:b m:< m:- d:2 m:( m:* m:)"},
    {"comments", "a -- b\nc /* d */ e--", "w:a w:c w:e"},
    {"comments that nest", "a /* b /* c */ d */ e /**/ f", "w:a w:e w:f"},
    {"a comment in a comment of a line", "a -- /* b\nc", "w:a w:c"},
    {"a division", "a / b - c", "w:a m:/ w:b m:- w:c"},
    {"a comment that does not end", "a /* b /* c */", "w:a ?:/* b /* c */"},
    {"a string that does not end", "a 'b", "w:a ?:'b"},
    {"a name that does not end", "[a]] b", "?:[a]] b"},
    {"GO on a line of its own", "a\nGO\n go 5 -- x\ngo;\nb", "w:a g:GO g:go 5 -- x g:go; w:b"},
    {"GO elsewhere", "a GO\ngo home\n[go]\n'\ngo\n' /*\ngo\n*/", "w:a w:GO w:go w:home n:[go] t:'\ngo\n'"},
    {"GO with line ends of other systems", "a\r\nGO\r\nb\rGO\rc", "w:a g:GO w:b g:GO w:c"},
    {"commands of the tool that runs the script", ":r a.sql\n x :y\n:setvar a b",
     "c::r a.sql w:x m:: w:y c::setvar a b"},
    {"bytes that T-SQL does not use", "` \x01", "?:` ?:\x01"},
};

TEST(HostTsqlScannerTest, Tokens)
{
    for (const scanner_case &c : scanner_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(tokens_of(c.script), c.tokens);
    }
    EXPECT_EQ(tokens_of("\"a\"\"b\" 'c'", false), "t:\"a\"\"b\" t:'c'");
}

TEST(HostTsqlScannerTest, WhatTokensMean)
{
    const struct {
        const char *script;
        const char *meaning;
    } cases[] = {
        {"[a]", "a"},        {"[a]]b]", "a]b"}, {"[]]]", "]"}, {"\"a\"\"b\"", "a\"b"}, {"'it''s'", "it's"},
        {"N'''a'''", "'a'"}, {"''", ""},        {"N", "N"},    {"word", "word"},       {"[a\"b]", "a\"b"},
    };
    for (const auto &c : cases) {
        std::string buffer;
        host_tsql_scanner scanner(c.script);
        EXPECT_EQ(host_unquoted(scanner.next(), buffer), c.meaning) << c.script;
    }
}

TEST(HostTsqlScannerTest, WordsAreFoundWhateverTheirCase)
{
    for (const char *script : {"SELECT", "select", "SeLeCt"})
        EXPECT_TRUE(host_tsql_scanner(script).next().is(host_word::select)) << script;
    for (const char *script : {"selec", "selectt", "[select]", "s\xE5lect", "@select", "S", "SELECT_"})
        EXPECT_TRUE(host_tsql_scanner(script).next().is(host_word::none)) << script;
    EXPECT_TRUE(host_is_reserved(host_word::select));
    EXPECT_FALSE(host_is_reserved(host_word::period));
    EXPECT_FALSE(host_is_reserved(host_word::none));
}

TEST(HostTsqlScannerTest, Places)
{
    const std::string_view script = "a\n\xC3\xA4\xC3\xB6 b\r\nc";
    EXPECT_EQ(host_tsql_place(script, 0), "1:1");
    EXPECT_EQ(host_tsql_place(script, script.find('b')), "2:4");
    EXPECT_EQ(host_tsql_place(script, script.find('c')), "3:1");
    EXPECT_EQ(host_tsql_place(script, script.size()), "3:2");
}

} // namespace
