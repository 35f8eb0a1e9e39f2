// Parentheses are looked at from the inside out in one pass: what a pair encloses is known when it closes.
#include "compare/client_meaning.hpp"

#include "compare/client_expression_tokens.hpp"

#include <algorithm>

namespace {

// What stands between a pair of parentheses, or outside of all, without pairs that were dropped.
struct enclosed {
    size_t open = 0;     // the position of the parenthesis
    size_t count = 0;    // of tokens
    size_t first = 0;    // the first of them
    bool is_one = false; // pair of parentheses, and nothing else
};

// An expression while its parentheses are looked at.
struct paren_work {
    const std::vector<client_expression_token> &tokens;
    std::vector<bool> dropped;
    std::vector<enclosed> open; // the outermost first
};

} // namespace

static bool my_is_mark(const client_expression_token &token, std::string_view text)
{
    return token.kind == client_expression_token_kind::mark && token.text == text;
}

// Whether the parentheses at a position hold arguments or a list rather than an operand.
static bool my_is_list(const paren_work &work, size_t open)
{
    if (open == 0)
        return false;
    const client_expression_token &before = work.tokens[open - 1];
    return before.kind == client_expression_token_kind::call ||
           (before.kind == client_expression_token_kind::word && before.text == "in");
}

// A number with its sign is one operand, unless an operator that may bind to the sign stands before.
static bool my_is_signed_number(const paren_work &work, const enclosed &inner)
{
    if (inner.count != 2 || work.tokens[inner.first].text != "-" ||
        work.tokens[inner.first + 1].kind != client_expression_token_kind::number)
        return false;
    static constexpr std::string_view after[] = {"(", ",", "=", "<>", "<", ">", "<=", ">="};
    if (inner.open == 0)
        return true;
    const client_expression_token &before = work.tokens[inner.open - 1];
    return before.kind == client_expression_token_kind::word ||
           std::find(std::begin(after), std::end(after), before.text) != std::end(after);
}

static void my_count(enclosed &outer, size_t first, size_t count, bool is_one)
{
    outer.is_one = is_one && outer.count == 0;
    outer.first = outer.count == 0 ? first : outer.first;
    outer.count += count;
}

// Drops the pair that closes here when it changes nothing: it encloses one operand, or another pair.
static void my_close(paren_work &work, size_t close)
{
    const enclosed inner = work.open.back();
    work.open.pop_back();
    enclosed &outer = work.open.back();
    const bool is_operand = inner.count == 1 || inner.is_one || my_is_signed_number(work, inner);
    if (!is_operand || my_is_list(work, inner.open))
        return my_count(outer, inner.open, inner.count + 2, true);
    work.dropped[inner.open] = work.dropped[close] = true;
    my_count(outer, inner.first, inner.count, inner.is_one);
}

// A pair around everything changes nothing either.
static void my_drop_outer(paren_work &work)
{
    if (work.open.size() != 1 || !work.open.front().is_one)
        return;
    work.dropped[work.open.front().first] = true;
    for (size_t n = work.tokens.size(); n-- > 0;) {
        if (work.dropped[n])
            continue;
        work.dropped[n] = true;
        return;
    }
}

static std::vector<bool> my_dropped_parens(const std::vector<client_expression_token> &tokens)
{
    paren_work work{tokens, std::vector<bool>(tokens.size()), {{}}};
    for (size_t n = 0; n < tokens.size(); n++) {
        if (my_is_mark(tokens[n], "(")) {
            work.open.push_back({n});
        } else if (my_is_mark(tokens[n], ")")) {
            if (work.open.size() == 1) // closes nothing: not an expression
                return std::vector<bool>(tokens.size());
            my_close(work, n);
        } else {
            my_count(work.open.back(), n, 1, false);
        }
    }
    my_drop_outer(work);
    return std::move(work.dropped);
}

// Only a name that could not be a word is told from one by its quotes.
static std::string my_spelled(const client_expression_token &token, const client_name_meaning &rename)
{
    if (token.kind == client_expression_token_kind::name && token.text == "current_timestamp")
        return "getdate ( )";
    if (token.kind != client_expression_token_kind::name)
        return token.text;
    return '[' + (rename ? rename(token.text) : token.text) + ']';
}

std::string client_meaning(std::string_view expression, const client_name_meaning &rename)
{
    const std::vector<client_expression_token> tokens = client_expression_tokens(expression);
    const std::vector<bool> dropped = my_dropped_parens(tokens);
    std::string meaning;
    for (size_t n = 0; n < tokens.size(); n++) {
        if (!dropped[n])
            meaning += (meaning.empty() ? "" : " ") + my_spelled(tokens[n], rename);
    }
    return meaning;
}

std::vector<std::string> client_names_in(std::string_view expression)
{
    std::vector<std::string> names;
    for (const client_expression_token &token : client_expression_tokens(expression)) {
        if (token.kind == client_expression_token_kind::name &&
            std::find(names.begin(), names.end(), token.text) == names.end())
            names.push_back(token.text);
    }
    return names;
}
