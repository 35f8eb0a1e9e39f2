// T-SQL text as tokens, as far as rows need it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class client_token_kind : uint8_t { end, more, word, quoted_name, string, number, hex, variable, mark };

struct client_token {
    client_token_kind kind = client_token_kind::end;
    std::string_view text; // without the quotes of a string or name
    bool doubled = false;  // it has quotes inside, doubled
};

// Splits text into tokens from a place on.
class client_token_stream {
  public:
    client_token_stream(std::string_view data, bool is_all) : data_(data), is_all_(is_all)
    {
    }
    client_token next();
    client_token peek()
    {
        const size_t before = at;
        const client_token result = next();
        at = before;
        return result;
    }

    // What was read from a place on.
    std::string_view since(size_t from) const
    {
        return data_.substr(from, at - from);
    }

    size_t at = 0;
    size_t start = 0; // of the last token

  private:
    client_token scan();
    bool skip_blanks();
    bool skip_comment();
    client_token quoted(char end, client_token_kind kind);
    client_token run(client_token_kind kind, size_t from);
    char look(size_t ahead) const
    {
        return at + ahead < data_.size() ? data_[at + ahead] : '\0';
    }

    std::string_view data_;
    bool is_all_;
    bool has_ended_ = false; // with a token that is not whole, after which nothing can be told
};

// Whether a token is this word, letter case aside, or this mark.
bool client_is_word(const client_token &t, std::string_view word) noexcept;
bool client_is_mark(const client_token &t, char mark) noexcept;

// Appends a name or string with its doubled quotes halved.
void client_append_unquoted(std::string &text, const client_token &t, char quote);
