#include "rows/read/client_script_tokens.hpp"

#include "kt_string.h"

static bool my_is_word_char(char c) noexcept
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') || c == '_' || c == '#' ||
           c == '$' || c == '@';
}

bool client_is_word(const client_token &t, std::string_view word) noexcept
{
    return t.kind == client_token_kind::word && t.text.size() == word.size() &&
           KT_strnicmp(t.text.data(), word.data(), static_cast<uint32_t>(word.size())) == 0;
}

bool client_is_mark(const client_token &t, char mark) noexcept
{
    return t.kind == client_token_kind::mark && t.text[0] == mark;
}

// False when more is needed to know where a comment ends.
bool client_token_stream::skip_comment()
{
    if (look(0) == '-') {
        const size_t end = data_.find('\n', at);
        at = end == data_.npos ? data_.size() : end + 1;
        return end != data_.npos || is_all_;
    }
    int depth = 0;
    do {
        if (at + 1 >= data_.size()) {
            at = data_.size();
            return is_all_;
        }
        const bool opens = look(0) == '/' && look(1) == '*';
        const bool closes = look(0) == '*' && look(1) == '/';
        depth += opens ? 1 : (closes ? -1 : 0);
        at += opens || closes ? 2 : 1;
    } while (depth > 0);
    return true;
}

bool client_token_stream::skip_blanks()
{
    while (at < data_.size()) {
        const char c = data_[at];
        const bool is_blank = c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
        const bool is_comment = (c == '-' && look(1) == '-') || (c == '/' && look(1) == '*');
        if (!is_blank && !is_comment)
            break;
        if (is_blank)
            at++;
        else if (!skip_comment())
            return false;
    }
    return true;
}

client_token client_token_stream::quoted(char end, client_token_kind kind)
{
    const size_t from = at;
    client_token result{kind, {}, false};
    while (true) {
        const size_t quote = data_.find(end, at);
        if (quote == data_.npos || (quote + 1 == data_.size() && !is_all_))
            return {is_all_ ? client_token_kind::end : client_token_kind::more, {}, false};
        at = quote + 1;
        if (look(0) != end) {
            result.text = data_.substr(from, quote - from);
            return result;
        }
        result.doubled = true;
        at++;
    }
}

client_token client_token_stream::run(client_token_kind kind, size_t from)
{
    while (at < data_.size()) {
        const char c = data_[at];
        const bool is_sign =
            kind == client_token_kind::number && (c == '+' || c == '-') && (data_[at - 1] | 0x20) == 'e';
        const bool is_point = kind == client_token_kind::number && c == '.';
        if (!my_is_word_char(c) && !is_sign && !is_point)
            break;
        at++;
    }
    if (at == data_.size() && !is_all_)
        return {client_token_kind::more, {}, false};
    return {kind, data_.substr(from, at - from), false};
}

client_token client_token_stream::next()
{
    if (has_ended_)
        return {is_all_ ? client_token_kind::end : client_token_kind::more, {}, false};
    const client_token result = scan();
    has_ended_ = result.kind == client_token_kind::end || result.kind == client_token_kind::more;
    return result;
}

client_token client_token_stream::scan()
{
    if (!skip_blanks())
        return {client_token_kind::more, {}, false};
    start = at;
    if (at == data_.size() || (at + 1 == data_.size() && !is_all_))
        return {is_all_ ? client_token_kind::end : client_token_kind::more, {}, false};
    const char c = data_[at];
    const bool is_national = (c == 'N' || c == 'n') && look(1) == '\'';
    if (c == '\'' || is_national) {
        at += is_national ? 2 : 1;
        return quoted('\'', client_token_kind::string);
    }
    if (c == '"' || c == '[') {
        at++;
        return quoted(c == '[' ? ']' : '"', client_token_kind::quoted_name);
    }
    if (c == '0' && (look(1) | 0x20) == 'x')
        return run(client_token_kind::hex, at);
    if ((c >= '0' && c <= '9') || (c == '.' && look(1) >= '0' && look(1) <= '9'))
        return run(client_token_kind::number, at);
    if (c == '@')
        return run(client_token_kind::variable, at);
    if (c != '$' && my_is_word_char(c))
        return run(client_token_kind::word, at);
    at++;
    return {client_token_kind::mark, data_.substr(start, 1), false};
}

void client_append_unquoted(std::string &text, const client_token &t, char quote)
{
    for (size_t n = 0; n < t.text.size(); n++) {
        text.push_back(t.text[n]);
        if (t.text[n] == quote)
            n++;
    }
}
