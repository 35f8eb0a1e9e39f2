// The words of a check.
#include "checks/host_check_tokens.hpp"

#include <gtest/gtest.h>
#include <string>

// The tokens as a letter for the kind and the text, joined by blanks; an unknown one ends the list.
static std::string tokens_of(std::string_view text)
{
    std::string result;
    for (host_token token = host_take_token(text); token.kind != host_token_kind::end; token = host_take_token(text)) {
        const char letter = std::string_view{"e(),can1swu"}[static_cast<size_t>(token.kind)];
        result += (result.empty() ? "" : " ") + std::string{letter} + ':' + std::string(token.text);
        if (token.kind == host_token_kind::unknown)
            break;
    }
    return result;
}

TEST(HostCheckTokensTest, Kinds)
{
    const struct {
        const char *text;
        const char *tokens;
    } cases[] = {
        {"", ""},
        {" \t\r\n", ""},
        {"([Qty]>=(0))", "(:( n:Qty c:>= (:( 1:0 ):) ):)"},
        {"[a b]<>'it''s'", "n:a b c:<> s:'it''s'"},
        {"1.5 .5 5. 07", "1:1.5 1:.5 1:5. 1:07"},
        {"a_1 AND", "w:a_1 w:AND"},
        {"+ - * / %", "a:+ a:- a:* a:/ a:%"},
        {"= < > <= >= <> !=", "c:= c:< c:> c:<= c:>= c:<> c:!="},
        {"1,2", "1:1 ,:, 1:2"},
        {"N'x')", "s:N'x' ):)"},
        {"n'x'", "u:n'x'"},
        {"1e3", "u:1e3"},
        {"0x1F", "u:0x1F"},
        {"[a]]b]", "u:[a]]b]"},
        {"[a", "u:[a"},
        {"'a", "u:'a"},
        {"\"a\"", "u:\"a\""},
        {"--1", "u:--1"},
        {"/*1*/", "u:/*1*/"},
        {"!<1", "u:!<1"},
        {"|1", "u:|1"},
        {"\xC3\xA4", "u:\xC3\xA4"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(tokens_of(c.text), c.tokens) << c.text;
}

TEST(HostCheckTokensTest, WordsMatchInAnyCase)
{
    EXPECT_TRUE(host_is_word({host_token_kind::word, "bEtWeen"}, "BETWEEN"));
    EXPECT_FALSE(host_is_word({host_token_kind::word, "BETWEE"}, "BETWEEN"));
    EXPECT_FALSE(host_is_word({host_token_kind::word, "BETWEENS"}, "BETWEEN"));
    EXPECT_FALSE(host_is_word({host_token_kind::name, "BETWEEN"}, "BETWEEN"));
}
