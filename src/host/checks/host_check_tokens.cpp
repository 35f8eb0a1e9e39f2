// Splits a check into tokens.
#include "checks/host_check_tokens.hpp"

#include "kt_string.h"
#include "tsql/host_tsql_words.hpp"

static bool my_is_letter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
}

static char my_at(std::string_view text, size_t at)
{
    return at < text.size() ? text[at] : '\0';
}

static size_t my_count_digits(std::string_view text, size_t at)
{
    size_t count = 0;
    while (host_is_digit(my_at(text, at + count)))
        count++;
    return count;
}

// The length of a decimal number; 0 when a letter follows, as in 0x1F and 1e3.
static size_t my_number_length(std::string_view text)
{
    size_t length = my_count_digits(text, 0);
    if (my_at(text, length) == '.')
        length += 1 + my_count_digits(text, length + 1);
    return my_is_letter(my_at(text, length)) ? 0 : length;
}

// The length of a text with its quotes, in which a quote is doubled; 0 when it does not end.
static size_t my_text_length(std::string_view text)
{
    for (size_t at = 1; at < text.size(); at++) {
        if (text[at] != '\'')
            continue;
        if (my_at(text, at + 1) != '\'')
            return at + 1;
        at++;
    }
    return 0;
}

static size_t my_word_length(std::string_view text)
{
    size_t length = 0;
    while (my_is_letter(my_at(text, length)) || host_is_digit(my_at(text, length)))
        length++;
    return length;
}

// What cannot be split any further: the text up to a blank or a parenthesis, at least a byte of it.
static host_token my_unknown(std::string_view rest)
{
    return {host_token_kind::unknown, rest.substr(0, rest.find_first_of(" \t\r\n()", 1))};
}

static host_token my_take(std::string_view &rest, host_token_kind taken, size_t length)
{
    if (length == 0)
        return my_unknown(rest);
    const host_token token{taken, rest.substr(0, length)};
    rest.remove_prefix(length);
    return token;
}

static host_token my_take_name(std::string_view &rest)
{
    const size_t close = rest.find(']');
    if (close == std::string_view::npos || my_at(rest, close + 1) == ']')
        return my_unknown(rest);
    const host_token token{host_token_kind::name, rest.substr(1, close - 1)};
    rest.remove_prefix(close + 1);
    return token;
}

static host_token my_take_operator(std::string_view &rest)
{
    constexpr std::string_view comparisons[] = {"<>", "!=", "<=", ">=", "=", "<", ">"};
    const std::string_view two = rest.substr(0, 2);
    if (two == "--" || two == "/*" || two == "*/")
        return my_unknown(rest);
    for (const std::string_view comparison : comparisons) {
        if (rest.starts_with(comparison))
            return my_take(rest, host_token_kind::comparison, comparison.size());
    }
    constexpr std::string_view arithmetic = "+-*/%";
    const bool is_known = arithmetic.find(rest.front()) != std::string_view::npos;
    return my_take(rest, host_token_kind::arithmetic, is_known ? 1 : 0);
}

host_token host_take_token(std::string_view &rest)
{
    const size_t start = rest.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos)
        return {};
    rest.remove_prefix(start);
    const char first = rest.front();
    if (first == '(')
        return my_take(rest, host_token_kind::left, 1);
    if (first == ')')
        return my_take(rest, host_token_kind::right, 1);
    if (first == ',')
        return my_take(rest, host_token_kind::comma, 1);
    if (first == '[')
        return my_take_name(rest);
    if (first == '\'')
        return my_take(rest, host_token_kind::text, my_text_length(rest));
    if (host_is_digit(first) || (first == '.' && host_is_digit(my_at(rest, 1))))
        return my_take(rest, host_token_kind::number, my_number_length(rest));
    if (my_is_letter(first)) {
        const size_t length = my_word_length(rest);
        if (my_at(rest, length) != '\'')
            return my_take(rest, host_token_kind::word, length);
        const size_t quoted = first == 'N' && length == 1 ? my_text_length(rest.substr(1)) : 0;
        return my_take(rest, host_token_kind::text, quoted ? quoted + 1 : 0);
    }
    return my_take_operator(rest);
}

bool host_is_word(const host_token &token, std::string_view upper)
{
    return token.kind == host_token_kind::word && token.text.size() == upper.size() &&
           KT_strnicmp(token.text.data(), upper.data(), static_cast<uint32_t>(upper.size())) == 0;
}
