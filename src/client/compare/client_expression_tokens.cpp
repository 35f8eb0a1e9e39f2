// Both languages are read alike: what one of them lacks does not come up in its expressions.
#include "compare/client_expression_tokens.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <cctype>

// Words that join or begin operands, so that a "(" after one is not that of a call.
static constexpr std::string_view keywords[] = {
    "and", "as", "between", "case", "collate", "else", "end",  "escape", "glob",
    "in",  "is", "like",    "not",  "null",    "or",   "over", "then",   "when",
};

// Marks of two characters.
static constexpr std::string_view long_marks[] = {"<>", "!=", "<=", ">=", "==", "||", "<<", ">>", "!<", "!>"};

static bool my_begins_word(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_' || c == '@' || c == '#' || (c & 0x80);
}

static bool my_is_in_word(char c)
{
    return my_begins_word(c) || std::isdigit(static_cast<unsigned char>(c)) || c == '$';
}

static size_t my_end_of_comment(std::string_view text, size_t at)
{
    const bool is_line = text.substr(at).starts_with("--");
    const size_t end = text.find(is_line ? "\n" : "*/", at + 2);
    return end == std::string_view::npos ? text.size() : end + (is_line ? 1 : 2);
}

// Past what stands in quotes, in which a quote is doubled.
static size_t my_end_of_quoted(std::string_view text, size_t at, char close)
{
    for (size_t n = at + 1; n < text.size(); n++) {
        if (text[n] != close)
            continue;
        if (n + 1 == text.size() || text[n + 1] != close)
            return n + 1;
        n++;
    }
    return text.size();
}

static std::string my_unquoted(std::string_view quoted, char close)
{
    std::string name;
    const bool is_closed = quoted.size() > 1 && quoted.back() == close;
    const std::string_view inner = quoted.substr(1, quoted.size() - (is_closed ? 2 : 1));
    for (size_t n = 0; n < inner.size(); n++) {
        name += inner[n];
        if (inner[n] == close)
            n++;
    }
    return kt_folded(name);
}

static size_t my_end_of_number(std::string_view text, size_t at)
{
    const auto follows_exponent = [&](size_t n) {
        return (text[n] == '+' || text[n] == '-') && std::tolower(static_cast<unsigned char>(text[n - 1])) == 'e' &&
               !text.substr(at).starts_with("0x");
    };
    size_t end = at + 1;
    while (end < text.size() && (my_is_in_word(text[end]) || text[end] == '.' || follows_exponent(end)))
        end++;
    return end;
}

static bool my_is_number(std::string_view text, size_t at)
{
    const size_t digit = text[at] == '.' ? at + 1 : at;
    return digit < text.size() && std::isdigit(static_cast<unsigned char>(text[digit]));
}

static size_t my_add_mark(std::string_view text, size_t at, std::vector<client_expression_token> &tokens)
{
    const auto known = std::find(std::begin(long_marks), std::end(long_marks), text.substr(at, 2));
    const std::string_view mark = known == std::end(long_marks) ? text.substr(at, 1) : *known;
    tokens.push_back({client_expression_token_kind::mark, std::string(mark == "!="   ? "<>"
                                                                      : mark == "==" ? "="
                                                                                     : mark)});
    return at + mark.size();
}

static size_t my_add_word(std::string_view text, size_t at, std::vector<client_expression_token> &tokens)
{
    size_t end = at + 1;
    while (end < text.size() && my_is_in_word(text[end]))
        end++;
    std::string word = kt_folded(text.substr(at, end - at));
    const bool is_keyword = std::find(std::begin(keywords), std::end(keywords), word) != std::end(keywords);
    // N'...', X'...': a string of another kind.
    if (word.size() == 1 && end < text.size() && text[end] == '\'') {
        const size_t past = my_end_of_quoted(text, end, '\'');
        tokens.push_back({client_expression_token_kind::string, word + std::string(text.substr(end, past - end))});
        return past;
    }
    tokens.push_back(
        {is_keyword ? client_expression_token_kind::word : client_expression_token_kind::name, std::move(word)});
    return end;
}

static size_t my_add_token(std::string_view text, size_t at, std::vector<client_expression_token> &tokens)
{
    const char c = text[at];
    if (c == '\'') {
        const size_t end = my_end_of_quoted(text, at, c);
        tokens.push_back({client_expression_token_kind::string, std::string(text.substr(at, end - at))});
        return end;
    }
    if (c == '[' || c == '"' || c == '`') {
        const char close = c == '[' ? ']' : c;
        const size_t end = my_end_of_quoted(text, at, close);
        tokens.push_back({client_expression_token_kind::name, my_unquoted(text.substr(at, end - at), close)});
        return end;
    }
    if (my_is_number(text, at)) {
        const size_t end = my_end_of_number(text, at);
        tokens.push_back({client_expression_token_kind::number, kt_folded(text.substr(at, end - at))});
        return end;
    }
    return my_begins_word(c) ? my_add_word(text, at, tokens) : my_add_mark(text, at, tokens);
}

std::vector<client_expression_token> client_expression_tokens(std::string_view expression)
{
    std::vector<client_expression_token> tokens;
    for (size_t at = 0; at < expression.size();) {
        const std::string_view rest = expression.substr(at);
        if (rest.starts_with("--") || rest.starts_with("/*"))
            at = my_end_of_comment(expression, at);
        else if (std::isspace(static_cast<unsigned char>(rest.front())))
            at++;
        else
            at = my_add_token(expression, at, tokens);
    }
    for (size_t n = 0; n + 1 < tokens.size(); n++) {
        if (tokens[n].kind == client_expression_token_kind::name && tokens[n + 1].text == "(" &&
            tokens[n + 1].kind == client_expression_token_kind::mark)
            tokens[n].kind = client_expression_token_kind::call;
    }
    return tokens;
}
