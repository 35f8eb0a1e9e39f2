// Finds the expression in a CREATE DEFAULT statement.
#include "steps/host_bound_default.hpp"

#include <algorithm>

static constexpr std::string_view blanks = " \t\r\n";

static bool my_is_name_byte(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           byte == '_' || byte == '@' || byte == '#' || byte == '$' || static_cast<unsigned char>(byte) >= 0x80;
}

// The end of a text or quoted name that begins at `at`; a doubled closing quote is part of it.
static size_t my_skip_quoted(std::string_view text, size_t at)
{
    const char close = text[at] == '[' ? ']' : text[at];
    for (at++; at < text.size(); at++) {
        if (text[at] != close)
            continue;
        if (at + 1 == text.size() || text[at + 1] != close)
            return at + 1;
        at++;
    }
    return at;
}

// The end of a block comment that begins at `at`; such comments nest.
static size_t my_skip_comment(std::string_view text, size_t at)
{
    size_t depth = 0;
    while (at < text.size()) {
        const std::string_view two = text.substr(at, 2);
        const bool opens = two == "/*";
        const bool closes = two == "*/";
        depth += opens;
        depth -= closes;
        at += opens || closes ? 2U : 1U;
        if (depth == 0)
            break;
    }
    return at;
}

static size_t my_skip_name(std::string_view text, size_t at)
{
    while (at < text.size() && my_is_name_byte(text[at]))
        at++;
    return at;
}

static bool my_is_as(std::string_view word)
{
    return word.size() == 2 && (word[0] | 0x20) == 'a' && (word[1] | 0x20) == 's';
}

std::string_view host_bound_default_expression(std::string_view statement)
{
    size_t expression = statement.size();
    size_t end = statement.size();
    int depth = 0;
    for (size_t at = 0; at < end;) {
        const char byte = statement[at];
        if (byte == '\'' || byte == '"' || byte == '[') {
            at = my_skip_quoted(statement, at);
        } else if (statement.substr(at, 2) == "/*") {
            at = my_skip_comment(statement, at);
        } else if (statement.substr(at, 2) == "--") {
            at = std::min(statement.find('\n', at), statement.size());
        } else if (my_is_name_byte(byte)) {
            const size_t word_end = my_skip_name(statement, at);
            if (depth == 0 && my_is_as(statement.substr(at, word_end - at)))
                expression = word_end;
            at = word_end;
        } else if (byte == ';' && expression < end) {
            end = at;
        } else {
            depth += byte == '(' ? 1 : 0;
            depth -= byte == ')' ? 1 : 0;
            at++;
        }
    }
    statement = statement.substr(expression, end - expression);
    const size_t first = statement.find_first_not_of(blanks);
    const size_t last = statement.find_last_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{} : statement.substr(first, last + 1 - first);
}
