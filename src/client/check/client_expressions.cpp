// Expressions go into the statements as they are. Before SQLite compiles one, its tokens must show that it ends
// where its place ends: SQLite itself would take "1); DROP TABLE t; --" for the rest of the statement. The splitting
// follows SQLite's own tokenizer in all that matters here: what a quote, a bracket or a comment swallows.
#include "check/client_expressions.hpp"

#include "kt_chars.h"
#include "kt_string.h"

#include <cstddef>
#include <cstring>

enum class token_kind { blank, literal, word, sign, open, close, semicolon, other, endless_quote, endless_comment };

struct token {
    token_kind kind;
    size_t length;
};

static bool my_is_blank(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

static bool my_is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

static bool my_is_word_char(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || my_is_digit(c) || c == '_' || c == '$' ||
           (c & 0x80) != 0;
}

// A text or name in quotes, in which the quote itself is written twice.
static token my_quoted(const char *at, char quote, token_kind kind) noexcept
{
    for (size_t i = 1; at[i]; i++) {
        if (at[i] != quote)
            continue;
        if (at[i + 1] != quote)
            return {kind, i + 1};
        i++;
    }
    return {token_kind::endless_quote, strlen(at)};
}

// A name in brackets or a comment, its ending included.
static token my_up_to(const char *at, size_t start, const char *ending, token_kind kind, token_kind endless) noexcept
{
    const char *end = strstr(at + start, ending);
    if (!end)
        return {endless, strlen(at)};
    return {kind, static_cast<size_t>(end - at) + strlen(ending)};
}

// A number, with what SQLite takes or refuses together with it: 1.5e-3, 0x1F, 12abc.
static token my_number(const char *at) noexcept
{
    const bool hexadecimal = at[0] == '0' && (at[1] == 'x' || at[1] == 'X');
    size_t length = 1;
    for (;; length++) {
        const char c = at[length];
        const bool exponent_sign = (c == '+' || c == '-') && (at[length - 1] == 'e' || at[length - 1] == 'E');
        if (!my_is_word_char(c) && c != '.' && !(exponent_sign && !hexadecimal))
            return {token_kind::literal, length};
    }
}

static token my_word(const char *at) noexcept
{
    if ((at[0] == 'x' || at[0] == 'X') && at[1] == '\'') {
        const token bytes = my_quoted(at + 1, '\'', token_kind::literal);
        return {bytes.kind, bytes.length + 1};
    }
    size_t length = 1;
    while (my_is_word_char(at[length]))
        length++;
    return {token_kind::word, length};
}

static token my_next_token(const char *at) noexcept
{
    if (my_is_blank(*at))
        return {token_kind::blank, 1};
    if (at[0] == '-' && at[1] == '-')
        return my_up_to(at, 2, "\n", token_kind::blank, token_kind::endless_comment);
    if (at[0] == '/' && at[1] == '*')
        return my_up_to(at, 2, "*/", token_kind::blank, token_kind::endless_comment);
    if (my_is_digit(at[0]) || (at[0] == '.' && my_is_digit(at[1])))
        return my_number(at);
    if (my_is_word_char(*at))
        return my_word(at);
    switch (*at) {
    case '\'':
        return my_quoted(at, '\'', token_kind::literal);
    case '"':
    case '`':
        return my_quoted(at, *at, token_kind::word);
    case '[':
        return my_up_to(at, 1, "]", token_kind::word, token_kind::endless_quote);
    case '(':
        return {token_kind::open, 1};
    case ')':
        return {token_kind::close, 1};
    case ';':
        return {token_kind::semicolon, 1};
    case '+':
    case '-':
        return {token_kind::sign, 1};
    default:
        return {token_kind::other, 1};
    }
}

// Direction characters are refused even inside quotes: the whole statement would show otherwise than it runs.
static const char *my_find_char_flaw(const char *text, size_t length, token_kind kind) noexcept
{
    for (const char *end = text + length; text < end;) {
        const int32_t code_point = KT_char__next(&text);
        if (code_point < 0)
            return "text that is not UTF-8";
        if (KT_char__is_direction(code_point))
            return "a character that changes the direction of writing";
        if (kind != token_kind::literal && kind != token_kind::blank && KT_char__is_control(code_point))
            return "a control character outside of quotes";
    }
    return nullptr;
}

// The sqlite3 shell, which runs the script, takes such a line for a ";" and what follows for commands of its own:
// "/" or "go" and nothing else but blanks and comments.
static bool my_ends_statement_in_shell(const char *line) noexcept
{
    while (my_is_blank(*line))
        line++;
    const token first = my_next_token(line);
    const bool is_slash = *line == '/' && first.kind == token_kind::other;
    const bool is_go = first.kind == token_kind::word && first.length == 2 && KT_strnicmp(line, "go", 2) == 0;
    if (!is_slash && !is_go)
        return false;
    for (line += first.length; *line && line[-1] != '\n';) {
        const token next = my_next_token(line);
        if (next.kind != token_kind::blank)
            return false;
        line += next.length;
    }
    return true;
}

static const char *my_find_token_flaw(token_kind kind) noexcept
{
    switch (kind) {
    case token_kind::semicolon:
        return "a \";\" outside of quotes";
    case token_kind::endless_quote:
        return "unterminated quote";
    case token_kind::endless_comment:
        return "unterminated comment";
    default:
        return nullptr;
    }
}

namespace {
// What has been seen of an expression so far, blanks aside; the counts are of what is outside parentheses.
struct outline {
    int depth = 0;
    int values = 0; // literals, words and groups in parentheses
    int groups = 0; // of these, the groups
    int signs = 0;  // signs before the first value
    int others = 0; // operators, commas and the like
};
} // namespace

static void my_count_outside(outline &seen, token_kind kind) noexcept
{
    const bool value = kind == token_kind::open || kind == token_kind::word || kind == token_kind::literal;
    seen.values += value;
    seen.groups += kind == token_kind::open;
    if (kind == token_kind::sign && seen.values == 0)
        seen.signs++;
    else
        seen.others += !value;
}

static const char *my_take(outline &seen, token_kind kind) noexcept
{
    if (kind == token_kind::blank)
        return nullptr;
    if (kind == token_kind::close)
        return --seen.depth < 0 ? "unmatched \")\"" : nullptr;
    if (seen.depth == 0)
        my_count_outside(seen, kind);
    seen.depth += kind == token_kind::open;
    return nullptr;
}

static const char *my_find_shape_flaw(const outline &seen, client_shape shape) noexcept
{
    if (seen.depth > 0)
        return "a \"(\" that is not closed";
    const bool one_value = seen.values == 1 && seen.others == 0;
    if (shape == client_shape::default_value && !one_value)
        return "neither one literal nor one expression in parentheses";
    if (shape == client_shape::group && !(one_value && seen.groups == 1 && seen.signs == 0))
        return "not one expression in parentheses";
    return nullptr;
}

const char *client_find_expression_flaw(const char *expression, client_shape shape) noexcept
{
    outline seen;
    while (*expression) {
        const token next = my_next_token(expression);
        if (const char *flaw = my_find_token_flaw(next.kind))
            return flaw;
        if (const char *flaw = my_find_char_flaw(expression, next.length, next.kind))
            return flaw;
        if (const char *flaw = my_take(seen, next.kind))
            return flaw;
        expression += next.length;
        // A line that begins inside of quotes or a comment in asterisks is none for the shell either.
        if (next.kind == token_kind::blank && expression[-1] == '\n' && my_ends_statement_in_shell(expression))
            return R"(a line with nothing but "/" or "go", which ends a statement in the sqlite3 shell)";
    }
    return my_find_shape_flaw(seen, shape);
}
