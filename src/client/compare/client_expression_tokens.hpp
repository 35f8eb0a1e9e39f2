// An expression of T-SQL or SQLite, split into tokens.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class client_expression_token_kind : uint8_t {
    name,   // text without quotes, in lower case
    word,   // a keyword, in lower case
    call,   // a name that "(" follows, in lower case
    number, // in lower case
    string, // as it is written
    mark,   // an operator, parenthesis or comma
};

struct client_expression_token {
    client_expression_token_kind kind;
    std::string text;
};

// The tokens. What has no end goes on to the end of the expression.
std::vector<client_expression_token> client_expression_tokens(std::string_view expression);
