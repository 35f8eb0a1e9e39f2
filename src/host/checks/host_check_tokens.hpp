// The words of a check as the server writes it.
#pragma once

#include <string_view>

enum class host_token_kind { end, left, right, comma, comparison, arithmetic, name, number, text, word, unknown };

struct host_token {
    host_token_kind kind = host_token_kind::end;
    // As written; of a name the part between the brackets, of a text with its quotes, and the N before them.
    std::string_view text;
};

// Takes the next token off the front of a text. What no check that SQLite reads alike can hold is unknown: double
// quotes, comments, bit operators, numbers with exponents, names with a bracket in them.
host_token host_take_token(std::string_view &rest);

// Whether a word is the given one, which is upper case.
bool host_is_word(const host_token &token, std::string_view upper);
