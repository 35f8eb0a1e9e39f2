// Failure and repeated reading of tokens.
#include "tsql/host_tsql_cursor.hpp"

void host_tsql_cursor::fail(std::string message)
{
    if (failed_)
        return;
    failed_ = true;
    failed_token_ = token;
    message_ = std::move(message);
    token = {host_tsql_kind::end, host_word::none, false, token.text.substr(0, 0)};
}

static std::string my_shown(const host_tsql_token &token)
{
    constexpr size_t longest = 40;
    if (token.kind == host_tsql_kind::end)
        return "the end";
    if (token.kind == host_tsql_kind::batch)
        return "the end of the batch";
    const std::string_view text = token.text.substr(0, token.text.find_first_of("\r\n"));
    if (token.kind == host_tsql_kind::unknown && text.size() > 1)
        return text.starts_with("/*") ? "a comment that does not end" : "a quote that is not closed";
    return '\'' + std::string(text.substr(0, longest)) + (text.size() > longest ? "...'" : "'");
}

void host_tsql_cursor::fail_expected(std::string_view expected)
{
    if (!failed_)
        fail("expected " + std::string(expected) + ", found " + my_shown(token));
}

void host_tsql_cursor::expect(char mark)
{
    if (!take(mark))
        fail_expected(std::string("'") + mark + '\'');
}

void host_tsql_cursor::expect(host_word word, std::string_view text)
{
    if (!take(word))
        fail_expected(text);
}

void host_tsql_cursor::go_back(const host_tsql_token &before)
{
    failed_ = false;
    scanner.set_position(before.start_in(scanner.script()));
    token = scanner.next();
}

// Past a pair of parentheses that begins before this place, as long as nothing in it needs to be split into tokens:
// quotes, what may begin a comment, and lines, one of which may say GO. Otherwise the place itself.
static size_t my_skip_plain_parentheses(std::string_view script, size_t from)
{
    int depth = 1;
    for (size_t at = from; at < script.size(); at++) {
        switch (script[at]) {
        case '(':
            depth++;
            break;
        case ')':
            if (--depth == 0)
                return at + 1;
            break;
        case '\'':
        case '"':
        case '[':
        case '-':
        case '/':
        case '\r':
        case '\n':
            return from;
        default:
            break;
        }
    }
    return from;
}

void host_tsql_cursor::skip_parentheses()
{
    if (token.is('(') && !failed()) {
        const size_t from = scanner.position();
        const size_t end = my_skip_plain_parentheses(scanner.script(), from);
        if (end != from) {
            token.text = scanner.script().substr(end - 1, 1); // the end of what text_since() gives
            scanner.set_position(end);
            return advance();
        }
    }
    expect('(');
    for (int depth = 1; depth > 0;) {
        if (token.is_end() || token.kind == host_tsql_kind::unknown) {
            fail_expected("')'");
            return;
        }
        depth += token.is('(') ? 1 : 0;
        depth -= token.is(')') ? 1 : 0;
        advance();
    }
}
