// The grammar of constants:
//
//   sum       + -, of whole numbers, strings, and a moment and days
//   product   *, of whole numbers
//   sign      + -
//   primary   (sum), number, 'text', 0x0A, NULL, a call
#include "defaults/host_constant_reader.hpp"

#include <charconv>
#include <limits>

using kind = host_constant_kind;

// Deeper nesting is refused: the reader calls itself for each level.
static constexpr int max_depth = 100;

std::optional<int64_t> host_whole_number(const host_constant &constant)
{
    constexpr size_t most_digits = 10; // with a sign
    int64_t number = 0;
    const std::string &text = constant.text;
    if (constant.kind != kind::number || text.size() > most_digits || !constant.type.empty())
        return {};
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// A result that overflows an int is an error on the server.
static host_maybe_constant my_compute(int64_t left, int64_t right, char operation)
{
    const int64_t result = operation == '*' ? left * right : operation == '+' ? left + right : left - right;
    if (result < std::numeric_limits<int32_t>::min() || result > std::numeric_limits<int32_t>::max())
        return {};
    return host_constant{kind::number, std::to_string(result)};
}

static host_maybe_constant my_join(const host_constant &left, const host_constant &right, char operation)
{
    const std::optional<int64_t> a = host_whole_number(left);
    const std::optional<int64_t> b = host_whole_number(right);
    if (a && b)
        return my_compute(*a, *b, operation);
    if (left.kind == kind::text && right.kind == kind::text && operation == '+' && left.type.empty() &&
        right.type.empty())
        return host_constant{kind::text, left.text + right.text};
    const bool is_datetime = left.kind == kind::clock && left.is_datetime && left.type.empty();
    return is_datetime && b && operation != '*' ? host_shift_clock(left, "days", operation == '+' ? *b : -*b)
                                                : std::nullopt;
}

static host_maybe_constant my_read_enclosed(host_constant_reader &reader)
{
    if (reader.depth == max_depth)
        return {};
    reader.depth++;
    host_maybe_constant constant = host_read_constant_sum(reader);
    reader.depth--;
    return reader.cursor.take(')') ? constant : std::nullopt;
}

static host_maybe_constant my_read_primary(host_constant_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token token = cursor.token;
    std::string buffer;
    if (cursor.take('('))
        return my_read_enclosed(reader);
    if (cursor.take(host_word::null))
        return host_constant{kind::null};
    switch (token.kind) {
    case host_tsql_kind::number:
        cursor.advance();
        return host_constant{kind::number, std::string(token.text)};
    case host_tsql_kind::text:
        cursor.advance();
        return host_constant{kind::text, std::string(host_unquoted(token, buffer))};
    case host_tsql_kind::binary:
        cursor.advance();
        return host_constant{kind::binary, std::string(token.text)};
    default:
        return host_read_constant_call(reader);
    }
}

static host_maybe_constant my_read_signed(host_constant_reader &reader)
{
    bool has_sign = false;
    bool is_negative = false;
    while (reader.cursor.token.is('-') || reader.cursor.token.is('+')) {
        has_sign = true;
        is_negative ^= reader.cursor.token.is('-');
        reader.cursor.advance();
    }
    host_maybe_constant constant = my_read_primary(reader);
    if (!has_sign || !constant)
        return constant;
    if (constant->kind != kind::number || !constant->type.empty())
        return {};
    if (is_negative)
        constant->text = constant->text.starts_with('-') ? constant->text.substr(1) : '-' + constant->text;
    return constant;
}

static host_maybe_constant my_read_product(host_constant_reader &reader)
{
    host_maybe_constant left = my_read_signed(reader);
    while (left && reader.cursor.take('*')) {
        const host_maybe_constant right = my_read_signed(reader);
        left = right ? my_join(*left, *right, '*') : std::nullopt;
    }
    return left;
}

host_maybe_constant host_read_constant_sum(host_constant_reader &reader)
{
    host_maybe_constant left = my_read_product(reader);
    while (left && (reader.cursor.token.is('+') || reader.cursor.token.is('-'))) {
        const char operation = reader.cursor.token.text.front();
        reader.cursor.advance();
        const host_maybe_constant right = my_read_product(reader);
        left = right ? my_join(*left, *right, operation) : std::nullopt;
    }
    return left;
}

std::optional<host_constant> host_read_constant(std::string_view expression, const host_constant_options &options)
{
    host_constant_reader reader{host_tsql_cursor(expression), options};
    host_maybe_constant constant = host_read_constant_sum(reader);
    const bool is_whole = reader.cursor.token.kind == host_tsql_kind::end && !reader.cursor.failed();
    return is_whole ? constant : std::nullopt;
}
