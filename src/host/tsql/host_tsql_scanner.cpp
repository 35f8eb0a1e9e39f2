// The tokens of T-SQL.
#include "tsql/host_tsql_scanner.hpp"

#include <algorithm>
#include <array>

enum class host_byte : uint8_t { other, blank, letter, digit, quote, mark };

static constexpr std::array<host_byte, 256> my_classify_bytes()
{
    std::array<host_byte, 256> classes{};
    for (const char byte : std::string_view(" \t\r\n\f\v"))
        classes[static_cast<unsigned char>(byte)] = host_byte::blank;
    for (const char byte : std::string_view("(),.;=<>+-*/%&|^~!:{}?\\"))
        classes[static_cast<unsigned char>(byte)] = host_byte::mark;
    for (const char byte : std::string_view("'\"["))
        classes[static_cast<unsigned char>(byte)] = host_byte::quote;
    for (size_t byte = 0; byte < 256; byte++) {
        if (byte >= '0' && byte <= '9')
            classes[byte] = host_byte::digit;
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' || byte == '#' || byte == '@' ||
            byte >= 0x80)
            classes[byte] = host_byte::letter;
    }
    return classes;
}
static constexpr std::array<host_byte, 256> byte_classes = my_classify_bytes();

static host_byte my_class(char byte)
{
    return byte_classes[static_cast<unsigned char>(byte)];
}

static constexpr std::array<bool, 256> my_mark_name_bytes()
{
    std::array<bool, 256> marks{};
    for (size_t byte = 0; byte < 256; byte++)
        marks[byte] = byte_classes[byte] == host_byte::letter || byte_classes[byte] == host_byte::digit || byte == '$';
    return marks;
}
static constexpr std::array<bool, 256> name_bytes = my_mark_name_bytes();

static bool my_is_name_byte(char byte)
{
    return name_bytes[static_cast<unsigned char>(byte)];
}

static bool my_is_hex_digit(char byte)
{
    return host_is_digit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

host_tsql_token host_tsql_scanner::take(host_tsql_kind kind, size_t end)
{
    const host_tsql_token token{kind, host_word::none, false, {script_.data() + at_, end - at_}};
    at_ = end;
    return token;
}

size_t host_tsql_scanner::line_end() const
{
    return std::min(script_.find_first_of("\r\n", at_), script_.size());
}

// Skips a block comment, in which others may be nested; false, without moving, when it does not end.
bool host_tsql_scanner::skip_comment()
{
    int depth = 0;
    for (size_t at = at_; (at = script_.find_first_of("/*", at)) < script_.size();) {
        const std::string_view two = script_.substr(at, 2);
        if (two == "/*") {
            depth++;
            at += 2;
        } else if (two == "*/") {
            at += 2;
            if (--depth == 0) {
                at_ = at;
                return true;
            }
        } else {
            at++;
        }
    }
    return false;
}

void host_tsql_scanner::skip_blanks()
{
    const std::string_view script = script_;
    for (;;) {
        size_t at = at_;
        while (at < script.size() && my_class(script[at]) == host_byte::blank)
            at++;
        at_ = at;
        if (at == script.size() || (script[at] != '-' && script[at] != '/'))
            return;
        if (script[at] == '-' && peek(1) == '-')
            at_ = line_end();
        else if (script[at] == '-' || peek(1) != '*' || !skip_comment())
            return;
    }
}

bool host_tsql_scanner::is_first_on_line() const
{
    size_t at = at_;
    while (at > 0 && (script_[at - 1] == ' ' || script_[at - 1] == '\t'))
        at--;
    return at == 0 || script_[at - 1] == '\n' || script_[at - 1] == '\r';
}

// Whether what follows GO on its line leaves it a separator: nothing, a count, a comment.
static bool my_ends_separator(std::string_view rest)
{
    rest = host_trimmed(rest);
    while (!rest.empty() && host_is_digit(rest.front()))
        rest.remove_prefix(1);
    rest = host_trimmed(rest);
    return rest.empty() || rest == ";" || rest.starts_with("--") ||
           (rest.starts_with("/*") && rest.find("*/") == rest.size() - 2);
}

host_tsql_token host_tsql_scanner::next_word()
{
    const std::string_view script = script_;
    size_t end = at_ + 1;
    while (end < script.size() && my_is_name_byte(script[end]))
        end++;
    const std::string_view text(script.data() + at_, end - at_);
    const host_word word = host_find_word(text);
    if (word == host_word::go && is_first_on_line()) {
        const size_t last = line_end();
        if (my_ends_separator(script_.substr(end, last - end)))
            return take(host_tsql_kind::batch, last);
    }
    host_tsql_token token = take(text.front() == '@' ? host_tsql_kind::variable : host_tsql_kind::word, end);
    token.word = word;
    return token;
}

host_tsql_token host_tsql_scanner::next_number()
{
    size_t end = at_;
    if (script_[end] == '0' && (peek(1) | 0x20) == 'x') {
        end += 2;
        while (end < script_.size() && my_is_hex_digit(script_[end]))
            end++;
        return take(host_tsql_kind::binary, end);
    }
    const auto skip_digits = [this, &end] {
        while (end < script_.size() && host_is_digit(script_[end]))
            end++;
    };
    if (script_[end] == '$')
        end++;
    skip_digits();
    if (end < script_.size() && script_[end] == '.') {
        end++;
        skip_digits();
    }
    if (end < script_.size() && (script_[end] | 0x20) == 'e') {
        const bool has_sign = end + 1 < script_.size() && (script_[end + 1] == '+' || script_[end + 1] == '-');
        end += has_sign ? 2U : 1U;
        skip_digits();
    }
    return take(host_tsql_kind::number, end);
}

// Something between quotes, the first of which comes after `open` bytes; a doubled closing quote is part of it.
host_tsql_token host_tsql_scanner::next_quoted(host_tsql_kind kind, size_t open, char close)
{
    bool has_doubled = false;
    for (size_t at = at_ + open + 1; (at = script_.find(close, at)) < script_.size(); at += 2) {
        if (at + 1 == script_.size() || script_[at + 1] != close) {
            host_tsql_token token = take(kind, at + 1);
            token.has_doubled = has_doubled;
            return token;
        }
        has_doubled = true;
    }
    return take(host_tsql_kind::unknown, script_.size());
}

host_tsql_token host_tsql_scanner::next_mark()
{
    const char first = script_[at_], second = peek(1);
    if (first == '/' && second == '*')
        return take(host_tsql_kind::unknown, script_.size());
    bool is_double = false;
    if (second == '=')
        is_double = first == '<' || first == '>' || first == '!' || first == '+' || first == '-';
    else if (second == '>')
        is_double = first == '<' || first == '!';
    else
        is_double = (second == '<' && first == '!') || (second == ':' && first == ':');
    return take(host_tsql_kind::mark, at_ + (is_double ? 2U : 1U));
}

host_tsql_token host_tsql_scanner::next_in_quotes(char quote)
{
    if (quote == '\'')
        return next_quoted(host_tsql_kind::text, 0, '\'');
    if (quote == '[')
        return next_quoted(host_tsql_kind::name, 0, ']');
    return next_quoted(quoted_identifier_ ? host_tsql_kind::name : host_tsql_kind::text, 0, '"');
}

host_tsql_token host_tsql_scanner::next()
{
    if (at_ < script_.size() &&
        (my_class(script_[at_]) == host_byte::blank || script_[at_] == '-' || script_[at_] == '/'))
        skip_blanks();
    if (at_ == script_.size())
        return take(host_tsql_kind::end, at_);
    const char byte = script_[at_];
    switch (my_class(byte)) {
    case host_byte::letter:
        if ((byte == 'N' || byte == 'n') && peek(1) == '\'')
            return next_quoted(host_tsql_kind::text, 1, '\'');
        return next_word();
    case host_byte::digit:
        return next_number();
    case host_byte::quote:
        return next_in_quotes(byte);
    case host_byte::mark:
        if (byte == '.' && host_is_digit(peek(1)))
            return next_number();
        if (byte == ':' && my_class(peek(1)) == host_byte::letter && is_first_on_line())
            return take(host_tsql_kind::command, line_end());
        return next_mark();
    default:
        if (byte == '$' && (host_is_digit(peek(1)) || peek(1) == '.'))
            return next_number();
        if (byte == '$' && my_class(peek(1)) == host_byte::letter)
            return next_word();
        return take(host_tsql_kind::unknown, at_ + 1);
    }
}

std::string_view host_unquoted(const host_tsql_token &token, std::string &buffer)
{
    std::string_view text = token.text;
    if (token.kind != host_tsql_kind::name && token.kind != host_tsql_kind::text)
        return text;
    if (text.front() == 'N' || text.front() == 'n')
        text.remove_prefix(1);
    const char close = text.back();
    text = text.substr(1, text.size() - 2);
    if (!token.has_doubled)
        return text;
    buffer.clear();
    for (size_t at = text.find(close); at != std::string_view::npos; at = text.find(close)) {
        buffer += text.substr(0, at + 1);
        text.remove_prefix(at + 2);
    }
    buffer += text;
    return buffer;
}

std::string host_tsql_place(std::string_view script, size_t at)
{
    const std::string_view before = script.substr(0, at);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::string_view on_line = before.substr(before.rfind('\n') + 1);
    const auto column = 1 + std::count_if(on_line.begin(), on_line.end(),
                                          [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
    return std::to_string(line) + ':' + std::to_string(column);
}
