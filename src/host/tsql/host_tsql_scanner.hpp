// Splits T-SQL into tokens.
//
// Comments, which nest, are skipped. A line that holds nothing but GO ends a batch and is a token of its own; inside
// a comment, a string or a quoted name it is part of that.
#pragma once

#include "tsql/host_tsql_words.hpp"

#include <string>

enum class host_tsql_kind : uint8_t {
    end,      // of the script
    batch,    // GO
    command,  // a line for the tool that runs the script, such as ":setvar name value"
    word,     // an unquoted name or keyword
    name,     // [name] or "name"
    text,     // 'text', N'text', or "text" where quotes do not delimit names
    number,   // 1, 1.5, 1e3, $1.25
    binary,   // 0x1F
    variable, // @name, @@name
    mark,     // one or two characters of punctuation
    unknown,  // a character that T-SQL does not use, or something that does not end
};

struct host_tsql_token {
    host_tsql_kind kind = host_tsql_kind::end;
    host_word word = host_word::none;
    bool has_doubled = false; // quotes, each of which stands for one
    std::string_view text;    // as it is written

    bool is(host_word other) const
    {
        return word == other;
    }
    bool is(char mark) const
    {
        return kind == host_tsql_kind::mark && text.size() == 1 && text.front() == mark;
    }
    bool is(std::string_view mark) const
    {
        return kind == host_tsql_kind::mark && text == mark;
    }
    bool is_word(std::string_view other) const // whether or not it is one of ours
    {
        return kind == host_tsql_kind::word && host_same_text(text, other);
    }
    bool is_name() const
    {
        return kind == host_tsql_kind::word || kind == host_tsql_kind::name;
    }
    // The end of a script or batch, where every statement ends.
    bool is_end() const
    {
        return kind <= host_tsql_kind::batch;
    }
    size_t start_in(std::string_view script) const
    {
        return static_cast<size_t>(text.data() - script.data());
    }
};

class host_tsql_scanner {
  public:
    explicit host_tsql_scanner(std::string_view script, bool quoted_identifier = true)
        : script_(script), quoted_identifier_(quoted_identifier)
    {
    }
    host_tsql_token next();
    std::string_view script() const
    {
        return script_;
    }
    // Where the next token is looked for.
    size_t position() const
    {
        return at_;
    }
    void set_position(size_t at)
    {
        at_ = at;
    }
    // SET QUOTED_IDENTIFIER: whether double quotes delimit names, or strings.
    bool quoted_identifier() const
    {
        return quoted_identifier_;
    }
    void set_quoted_identifier(bool on)
    {
        quoted_identifier_ = on;
    }

  private:
    char peek(size_t ahead) const
    {
        return at_ + ahead < script_.size() ? script_[at_ + ahead] : '\0';
    }
    host_tsql_token take(host_tsql_kind kind, size_t end);
    void skip_blanks();
    bool skip_comment();
    bool is_first_on_line() const;
    host_tsql_token next_word();
    host_tsql_token next_number();
    host_tsql_token next_quoted(host_tsql_kind kind, size_t open, char close);
    host_tsql_token next_in_quotes(char quote);
    host_tsql_token next_mark();
    size_t line_end() const;

    std::string_view script_;
    size_t at_ = 0;
    bool quoted_identifier_;
};

// What a token means without its quotes: the name of [a]]b] is a]b. Kept in buffer where it is written otherwise.
std::string_view host_unquoted(const host_tsql_token &token, std::string &buffer);

// The line and column, both from 1, of a byte of a script, as "12:5". Columns count characters.
std::string host_tsql_place(std::string_view script, size_t at);
