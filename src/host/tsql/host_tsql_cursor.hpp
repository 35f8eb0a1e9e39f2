// Walks over the tokens of a script, one ahead.
//
// A failure sticks: the cursor is then at an end and stays there, so that everything that reads on comes to its
// own end soon, and only those who act on what was read need to ask.
#pragma once

#include "tsql/host_tsql_scanner.hpp"

#include <string>

class host_tsql_cursor {
  public:
    explicit host_tsql_cursor(std::string_view script, bool quoted_identifier = true)
        : scanner(script, quoted_identifier)
    {
        advance();
    }
    void advance()
    {
        last_end = token.text.data() + token.text.size();
        if (!failed())
            token = scanner.next();
    }
    bool take(host_word word)
    {
        const bool found = token.is(word);
        if (found)
            advance();
        return found;
    }
    bool take(char mark)
    {
        const bool found = token.is(mark);
        if (found)
            advance();
        return found;
    }
    // The token so many after the current one.
    host_tsql_token peek(int ahead = 1)
    {
        const size_t position = scanner.position();
        host_tsql_token found;
        for (int n = 0; n < ahead; n++)
            found = scanner.next();
        scanner.set_position(position);
        return found;
    }
    bool failed() const
    {
        return failed_;
    }
    // Where it failed, and what was expected there.
    const host_tsql_token &failed_token() const
    {
        return failed_token_;
    }
    const std::string &message() const
    {
        return message_;
    }
    void fail(std::string message);
    // Fails: expected this, found the current token.
    void fail_expected(std::string_view expected);
    void expect(char mark);
    void expect(host_word word, std::string_view text);
    // Goes back to a token that was current before, and forgets a failure.
    void go_back(const host_tsql_token &before);
    // The source from a token up to, and without, the current one.
    std::string_view text_since(const host_tsql_token &first) const
    {
        return {first.text.data(),
                last_end > first.text.data() ? static_cast<size_t>(last_end - first.text.data()) : 0};
    }
    // Skips a pair of parentheses and what is between them.
    void skip_parentheses();

    host_tsql_scanner scanner;
    host_tsql_token token;
    const char *last_end = nullptr;

  private:
    bool failed_ = false;
    host_tsql_token failed_token_;
    std::string message_;
};
