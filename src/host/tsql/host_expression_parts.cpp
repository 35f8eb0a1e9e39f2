// Literals, names and words of expressions, as the server spells them.
#include "tsql/host_expression_parts.hpp"

#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <array>
#include <charconv>

std::string host_unquoted_literal(std::string_view literal)
{
    std::string text;
    for (size_t n = 1; n + 1 < literal.size(); n++) {
        text += literal[n];
        n += literal[n] == '\'' ? 1U : 0U;
    }
    return text;
}

std::string host_quoted(std::string_view text)
{
    std::string literal = "'";
    for (const char byte : text)
        literal += byte == '\'' ? "''" : std::string_view(&byte, 1);
    return literal + '\'';
}

std::string host_bracketed(std::string_view name)
{
    std::string text = "[";
    for (const char byte : name)
        text += byte == ']' ? "]]" : std::string_view(&byte, 1);
    return text + ']';
}

// The shape of C's "%.16e", with three digits of exponent, as the server's.
static std::string my_float_spelling(std::string_view number)
{
    double value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc{} || end != number.data() + number.size())
        return std::string(number);
    std::array<char, 40> digits{};
    const auto written =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::scientific, 16);
    std::string text(digits.data(), written.ptr);
    const size_t exponent = text.find('e') + 2;
    if (text.size() - exponent < 3)
        text.insert(exponent, 3 - (text.size() - exponent), '0');
    return text;
}

std::string host_number_spelling(std::string_view number)
{
    if (number.front() == '$')
        return std::string(number);
    if (number.find_first_of("eE") != std::string_view::npos)
        return my_float_spelling(number);
    const size_t first = std::min(number.find_first_not_of('0'), number.size());
    std::string text(number.substr(first));
    if (text.empty() || text.front() == '.')
        text.insert(0, 1, '0');
    constexpr std::string_view greatest = "2147483647";
    const bool is_whole = text.find('.') == std::string::npos;
    if (is_whole && (text.size() > greatest.size() || (text.size() == greatest.size() && text > greatest)))
        text += '.';
    return text;
}

std::string host_binary_spelling(std::string_view binary)
{
    std::string text = "0x";
    for (const char byte : binary.substr(2))
        text += byte >= 'a' && byte <= 'f' ? static_cast<char>(byte - 'a' + 'A') : byte;
    return text;
}

std::string host_text_spelling(const host_tsql_token &text)
{
    if (text.text.front() == '\'')
        return std::string(text.text);
    if (text.text.front() != '"')
        return 'N' + std::string(text.text.substr(1));
    std::string buffer;
    std::string spelling = "'";
    for (const char byte : host_unquoted(text, buffer))
        spelling += byte == '\'' ? "''" : std::string_view(&byte, 1);
    return spelling + '\'';
}

std::string host_variable_spelling(std::string_view variable)
{
    std::string text(variable);
    if (text.starts_with("@@"))
        std::transform(text.begin(), text.end(), text.begin(), host_lower);
    return text;
}

static std::string my_read_part(host_tsql_cursor &cursor)
{
    std::string buffer;
    const std::string part = host_bracketed(host_unquoted(cursor.token, buffer));
    if (!cursor.token.is_name())
        cursor.fail_expected("a name");
    cursor.advance();
    return part;
}

std::string host_read_name_spelling(host_tsql_cursor &cursor)
{
    std::string text = my_read_part(cursor);
    while (cursor.take('.')) {
        text += '.';
        if (!cursor.token.is('.'))
            text += my_read_part(cursor);
    }
    return text;
}

std::string host_read_method_name(host_tsql_cursor &cursor)
{
    if (!cursor.token.is_name())
        cursor.fail_expected("a name");
    std::string name(cursor.token.text);
    cursor.advance();
    return name;
}

struct host_respelling {
    std::string_view written;
    std::string_view spelled;
};

static constexpr host_respelling comparisons[] = {
    {"=", "="},   {"<>", "<>"}, {"!=", "<>"}, {"<", "<"},   {">", ">"},
    {"<=", "<="}, {">=", ">="}, {"!<", ">="}, {"!>", "<="},
};

static constexpr host_respelling date_parts[] = {
    {"yy", "year"},         {"yyyy", "year"},     {"qq", "quarter"},  {"q", "quarter"},      {"mm", "month"},
    {"m", "month"},         {"dy", "dayofyear"},  {"y", "dayofyear"}, {"dd", "day"},         {"d", "day"},
    {"wk", "week"},         {"ww", "week"},       {"dw", "weekday"},  {"w", "weekday"},      {"hh", "hour"},
    {"mi", "minute"},       {"n", "minute"},      {"ss", "second"},   {"s", "second"},       {"ms", "millisecond"},
    {"mcs", "microsecond"}, {"ns", "nanosecond"}, {"tz", "tzoffset"}, {"isowk", "iso_week"}, {"isoww", "iso_week"},
};

bool host_is_comparison(std::string_view mark)
{
    return !host_comparison_spelling(mark).empty();
}

std::string_view host_comparison_spelling(std::string_view mark)
{
    for (const host_respelling &comparison : comparisons) {
        if (comparison.written == mark)
            return comparison.spelled;
    }
    return {};
}

std::string_view host_wordless_function(host_word word)
{
    switch (word) {
    case host_word::current_timestamp:
        return "getdate()";
    case host_word::system_user:
        return "suser_sname()";
    case host_word::user:
    case host_word::current_user:
    case host_word::session_user:
        return "user_name()";
    default:
        return {};
    }
}

bool host_takes_date_part(std::string_view function)
{
    constexpr std::array<std::string_view, 7> functions{"dateadd",  "datediff",  "datediff_big", "datename",
                                                        "datepart", "datetrunc", "date_bucket"};
    return std::find(functions.begin(), functions.end(), function) != functions.end();
}

std::string host_date_part(std::string_view written)
{
    std::string part(written);
    std::transform(part.begin(), part.end(), part.begin(), host_lower);
    for (const host_respelling &known : date_parts) {
        if (known.written == part)
            return std::string(known.spelled);
    }
    return part;
}
