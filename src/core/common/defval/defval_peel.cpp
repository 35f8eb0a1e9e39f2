// Reading host defaults token by token.
//
// The three readers walk the same way: they count parentheses, hold at most one find, and accept it when the text ends
// with as many parentheses closed as opened. A closing one before its opening one is not an error by itself.

#include "defval/defval_peel.hpp"
#include "defval/defval_chars.hpp"
#include "defval/defval_tokenizer.hpp"

namespace {

// A token and its place, spaces and comments left out.
struct token_cursor {
    const char *text;
    int32_t length;
    int32_t code;
};

} // namespace

static void my_read_token(token_cursor *token) noexcept
{
    while ((token->length = _tov_get_token(token->text, &token->code)) != 0 && token->code == TK_SPACE)
        token->text += token->length;
}

static token_cursor my_first_token(const char *text) noexcept
{
    token_cursor token{text, 0, TK_END_OF_FILE};
    my_read_token(&token);
    return token;
}

static void my_step(token_cursor *token) noexcept
{
    token->text += token->length;
    my_read_token(token);
}

static std::string_view my_text(const token_cursor &token) noexcept
{
    return {token.text, static_cast<size_t>(token.length)};
}

// The literal that starts at a token, which ends up as the literal's last one; none when no literal starts there.
static std::string_view my_read_literal(token_cursor *token) noexcept
{
    const char *start = token->text;
    switch (token->code) {
    case TK_STRING:
    case TK_NULL:
    case TK_INTEGER:
    case TK_FLOAT:
    case TK_BLOB:
        return my_text(*token);
    case TK_ID: // the prefix of a national string, which SQLite has no need of
        if (my_text(*token) != "N")
            return {};
        my_step(token);
        return token->code == TK_STRING ? my_text(*token) : std::string_view{};
    case TK_MINUS:
        my_step(token);
        if (token->code != TK_INTEGER && token->code != TK_FLOAT)
            return {};
        return {start, static_cast<size_t>(token->text + token->length - start)};
    default:
        return {};
    }
}

std::string_view _tov_peel_literal(const char *host_text) noexcept
{
    std::string_view literal;
    int64_t depth = 0;
    for (token_cursor token = my_first_token(host_text); token.code != TK_END_OF_FILE; my_step(&token)) {
        if (token.code == TK_RP) {
            depth--;
            continue;
        }
        if (literal.data())
            return {};
        if (token.code == TK_LP) {
            depth++;
            continue;
        }
        literal = my_read_literal(&token);
        if (!literal.data())
            return {};
    }
    return depth == 0 ? literal : std::string_view{};
}

bool _tov_peel_call(const char *host_text, std::string_view *name) noexcept
{
    std::string_view found;
    int64_t depth = 0;
    for (token_cursor token = my_first_token(host_text); token.code != TK_END_OF_FILE; my_step(&token)) {
        if (token.code == TK_LP) {
            depth++;
        } else if (token.code == TK_RP) {
            depth--;
        } else if (token.code == TK_ID && !found.data()) {
            found = my_text(token);
            my_step(&token);
            if (token.code != TK_LP)
                return false;
            my_step(&token);
            if (token.code != TK_RP)
                return false;
        } else {
            return false;
        }
    }
    if (depth != 0)
        return false;
    *name = found;
    return true;
}

// The scanner takes a host's 0x0A1B for one malformed number, so every byte of it is an identifier character. Only
// the last two are looked at more closely.
static bool my_is_hex_constant(std::string_view token) noexcept
{
    const size_t length = token.size();
    return length >= 4 && length % 2 == 0 && token.starts_with("0x") && tov_is(token[length - 2], TOV_CHAR_HEX_DIGIT) &&
           tov_is(token[length - 1], TOV_CHAR_HEX_DIGIT);
}

std::string_view _tov_peel_hex_digits(const char *host_text) noexcept
{
    std::string_view digits;
    int64_t depth = 0;
    for (token_cursor token = my_first_token(host_text); token.code != TK_END_OF_FILE; my_step(&token)) {
        if (token.code == TK_RP) {
            depth--;
            continue;
        }
        if (digits.data())
            return {};
        if (token.code == TK_LP)
            depth++;
        else if (token.code == TK_ILLEGAL && my_is_hex_constant(my_text(token)))
            digits = my_text(token).substr(2);
        else
            return {};
    }
    return depth == 0 ? digits : std::string_view{};
}
