// The scanner for SQL text.
//
// A token's first byte decides which rule reads it, through a table of 256 entries. Each rule returns where the token
// ends and never looks past the terminating NUL. Texts are up to 2 GB long; nothing is allocated.

#include "defval/defval_tokenizer.hpp"
#include "defval/defval_chars.hpp"
#include "defval/defval_keyword_lookup.hpp"
#include "defval/defval_token_starts.hpp"

#include <cstring>

// Steps over every byte of a kind; a NUL is of none.
static inline const char *my_skip(const char *at, tov_char_class kind) noexcept
{
    while (tov_is(*at, kind))
        at++;
    return at;
}

// Steps to the next byte of that value, or to the NUL.
static const char *my_find(const char *at, char byte) noexcept
{
    while (*at && *at != byte)
        at++;
    return at;
}

static const char *my_line_comment(const char *text, int32_t *code) noexcept
{
    *code = TK_SPACE;
    return my_find(text + 2, '\n');
}

static const char *my_slash(const char *text, int32_t *code) noexcept
{
    if (text[1] != '*' || !text[2]) {
        *code = TK_SLASH;
        return text + 1;
    }
    *code = TK_SPACE;
    const char *close = std::strstr(text + 2, "*/");
    return close ? close + 2 : text + std::strlen(text);
}

static const char *my_less(const char *text, int32_t *code) noexcept
{
    switch (text[1]) {
    case '=':
        *code = TK_LE;
        return text + 2;
    case '>':
        *code = TK_NE;
        return text + 2;
    case '<':
        *code = TK_LSHIFT;
        return text + 2;
    default:
        *code = TK_LT;
        return text + 1;
    }
}

static const char *my_greater(const char *text, int32_t *code) noexcept
{
    switch (text[1]) {
    case '=':
        *code = TK_GE;
        return text + 2;
    case '>':
        *code = TK_RSHIFT;
        return text + 2;
    default:
        *code = TK_GT;
        return text + 1;
    }
}

// A doubled quote stands for one and does not end the token.
static const char *my_quoted(const char *text, int32_t *code) noexcept
{
    const char quote = text[0];
    for (const char *at = text + 1;;) {
        at = my_find(at, quote);
        if (!*at) {
            *code = TK_ILLEGAL;
            return at;
        }
        if (at[1] != quote) {
            *code = quote == '\'' ? TK_STRING : TK_ID;
            return at + 1;
        }
        at += 2;
    }
}

// An exponent needs a digit, or a sign and a digit; without them the "e" joins the number and spoils it.
static const char *my_number(const char *text, int32_t *code) noexcept
{
    *code = TK_INTEGER;
    const char *at = my_skip(text, TOV_CHAR_DIGIT);
    if (*at == '.') {
        *code = TK_FLOAT;
        at = my_skip(at + 1, TOV_CHAR_DIGIT);
    }
    if (!tov_is(*at, TOV_CHAR_ID))
        return at;
    if (*at == 'e' || *at == 'E') {
        const char *digits = at[1] == '+' || at[1] == '-' ? at + 2 : at + 1;
        if (tov_is(*digits, TOV_CHAR_DIGIT)) {
            *code = TK_FLOAT;
            at = my_skip(digits, TOV_CHAR_DIGIT);
        }
    }
    if (tov_is(*at, TOV_CHAR_ID)) {
        *code = TK_ILLEGAL;
        at = my_skip(at, TOV_CHAR_ID);
    }
    return at;
}

static const char *my_bracketed(const char *text, int32_t *code) noexcept
{
    const char *close = my_find(text + 1, ']');
    *code = *close ? TK_ID : TK_ILLEGAL;
    return *close ? close + 1 : close;
}

// From the "(" after a variable's name to the first ")" or space.
static const char *my_variable_argument(const char *open, int32_t *code) noexcept
{
    const char *at = open + 1;
    while (*at && *at != ')' && !tov_is(*at, TOV_CHAR_SPACE))
        at++;
    if (*at == ')')
        return at + 1;
    *code = TK_ILLEGAL;
    return at;
}

static const char *my_variable(const char *text, int32_t *code) noexcept
{
    *code = TK_ILLEGAL;
    for (const char *at = text + 1;;) {
        if (tov_is(*at, TOV_CHAR_ID)) {
            *code = TK_VARIABLE;
            at++;
        } else if (at[0] == ':' && at[1] == ':') {
            at += 2;
        } else if (*at == '(' && *code == TK_VARIABLE) {
            return my_variable_argument(at, code);
        } else {
            return at;
        }
    }
}

static const char *my_hash(const char *text, int32_t *code) noexcept
{
    if (!tov_is(text[1], TOV_CHAR_DIGIT))
        return my_variable(text, code);
    *code = TK_REGISTER;
    return my_skip(text + 1, TOV_CHAR_DIGIT);
}

// No keyword has one byte only, and none is longer than the longest.
static const char *my_identifier(const char *text, int32_t *code) noexcept
{
    const char *end = my_skip(text + 1, TOV_CHAR_ID);
    const size_t length = static_cast<size_t>(end - text);
    const bool can_be_keyword = length >= 2 && length <= tov_keyword_max_length;
    *code = can_be_keyword ? tov_keyword_code(text, static_cast<uint32_t>(length)) : static_cast<int32_t>(TK_ID);
    return end;
}

static const char *my_blob(const char *text, int32_t *code) noexcept
{
    if (text[1] != '\'')
        return my_identifier(text, code);
    const char *at = my_skip(text + 2, TOV_CHAR_HEX_DIGIT);
    *code = *at == '\'' && (at - text) % 2 == 0 ? TK_BLOB : TK_ILLEGAL;
    at = my_find(at, '\'');
    return *at ? at + 1 : at;
}

// The token of one byte, or that of two when the second is the one given.
static inline const char *my_pair(const char *text, char second, tov_token two, tov_token one, int32_t *code) noexcept
{
    const bool paired = text[1] == second;
    *code = paired ? two : one;
    return text + (paired ? 2 : 1);
}

static inline const char *my_scan(const char *text, int32_t *code) noexcept
{
    const unsigned char first = static_cast<unsigned char>(*text);
    switch (tov_starts.kind[first]) {
    case tov_start::identifier:
        return my_identifier(text, code);
    case tov_start::space:
        *code = TK_SPACE;
        return my_skip(text + 1, TOV_CHAR_SPACE);
    case tov_start::single:
        *code = tov_starts.single_code[first];
        return text + 1;
    case tov_start::digit:
        return my_number(text, code);
    case tov_start::quote:
        return my_quoted(text, code);
    case tov_start::x:
        return my_blob(text, code);
    case tov_start::end:
        *code = TK_END_OF_FILE;
        return text;
    case tov_start::minus:
        if (text[1] == '-')
            return my_line_comment(text, code);
        *code = TK_MINUS;
        return text + 1;
    case tov_start::slash:
        return my_slash(text, code);
    case tov_start::equal:
        return my_pair(text, '=', TK_EQ, TK_EQ, code);
    case tov_start::less:
        return my_less(text, code);
    case tov_start::greater:
        return my_greater(text, code);
    case tov_start::exclamation:
        *code = text[1] == '=' ? TK_NE : TK_ILLEGAL;
        return text + 2;
    case tov_start::bar:
        return my_pair(text, '|', TK_CONCAT, TK_BITOR, code);
    case tov_start::dot:
        if (tov_is(text[1], TOV_CHAR_DIGIT))
            return my_number(text, code);
        *code = TK_DOT;
        return text + 1;
    case tov_start::bracket:
        return my_bracketed(text, code);
    case tov_start::question:
        *code = TK_VARIABLE;
        return my_skip(text + 1, TOV_CHAR_DIGIT);
    case tov_start::hash:
        return my_hash(text, code);
    case tov_start::variable:
        return my_variable(text, code);
    case tov_start::illegal:
        break;
    }
    *code = TK_ILLEGAL;
    return text + 1;
}

int32_t _tov_get_token(const char *text, int32_t *code) noexcept
{
    const ptrdiff_t length = my_scan(text, code) - text;
    return length <= INT32_MAX ? static_cast<int32_t>(length) : INT32_MAX;
}
