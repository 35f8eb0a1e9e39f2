// Values that conditions compare.
#include "script/host_script_conditions.hpp"

#include <charconv>

static host_fact my_read_call(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token name = cursor.token;
    cursor.advance();
    bool is_plain = true;
    while (cursor.take('.')) {
        is_plain = false;
        cursor.advance();
    }
    if (!cursor.token.is('('))
        return {};
    if (is_plain)
        return host_ask_function(reader, name.text);
    cursor.skip_parentheses();
    return {};
}

// (SELECT COUNT(*) FROM sys.tables WHERE ...)
static host_fact my_read_count(host_script_reader &reader)
{
    const std::optional<bool> exists = host_read_exists(reader);
    if (!exists)
        return {};
    return *exists ? host_fact{host_fact_kind::count, {}} : host_fact{host_fact_kind::number, "0"};
}

static host_fact my_read_operand(host_script_reader &reader)
{
    constexpr int max_nesting = 400;
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token token = cursor.token;
    std::string buffer;
    switch (token.kind) {
    case host_tsql_kind::text:
        cursor.advance();
        return {host_fact_kind::text, std::string(host_unquoted(token, buffer))};
    case host_tsql_kind::number:
        cursor.advance();
        return {host_fact_kind::number, std::string(token.text)};
    case host_tsql_kind::variable:
    case host_tsql_kind::binary:
        cursor.advance();
        return {};
    case host_tsql_kind::name:
        return my_read_call(reader);
    case host_tsql_kind::word:
        if (cursor.take(host_word::null))
            return {host_fact_kind::null, {}};
        if (!host_is_reserved(token.word))
            return my_read_call(reader);
        break;
    default:
        break;
    }
    if (cursor.token.is('(')) {
        if (cursor.peek().is(host_word::select) && host_same_text(cursor.peek(2).text, "COUNT"))
            return my_read_count(reader);
        if (cursor.peek().is(host_word::select) || ++reader.nesting > max_nesting) {
            cursor.skip_parentheses();
            return {};
        }
        cursor.advance();
        host_fact inner = host_read_fact(reader);
        cursor.expect(')');
        reader.nesting--;
        return inner;
    }
    if (cursor.take('-') && cursor.token.kind == host_tsql_kind::number) {
        host_fact number{host_fact_kind::number, '-' + std::string(cursor.token.text)};
        cursor.advance();
        return number;
    }
    cursor.fail_expected("a value");
    return {};
}

host_fact host_read_fact(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_fact fact = my_read_operand(reader);
    while (cursor.token.is('+') || cursor.token.is('-') || cursor.token.is('*') || cursor.token.is('/') ||
           cursor.token.is('%') || cursor.token.is('&')) {
        cursor.advance();
        my_read_operand(reader);
        fact = {};
    }
    return fact;
}

static std::optional<bool> my_decide(int order, std::string_view comparison)
{
    if (comparison == "=")
        return order == 0;
    if (comparison == "<>" || comparison == "!=")
        return order != 0;
    if (comparison == "<")
        return order < 0;
    if (comparison == ">")
        return order > 0;
    if (comparison == "<=" || comparison == "!>")
        return order <= 0;
    return order >= 0;
}

// A count of which only is known that it is not 0.
static std::optional<bool> my_compare_count(std::string_view comparison, const host_fact &right)
{
    if (right.kind == host_fact_kind::number && right.text == "0")
        return my_decide(1, comparison);
    if (right.kind == host_fact_kind::number && right.text == "1" && (comparison == ">=" || comparison == "<"))
        return comparison == ">=";
    return std::nullopt;
}

std::optional<bool> host_compare_facts(const host_fact &left, std::string_view comparison, const host_fact &right)
{
    if (left.kind == host_fact_kind::null || right.kind == host_fact_kind::null)
        return false;
    if (left.kind == host_fact_kind::count)
        return my_compare_count(comparison, right);
    if (left.kind == host_fact_kind::object && right.kind == host_fact_kind::number)
        return my_decide(right.text == "0" ? 1 : -1, comparison); // ids are greater than 0
    if (left.kind != right.kind || left.kind == host_fact_kind::unknown || left.kind == host_fact_kind::something)
        return std::nullopt;
    if (left.kind != host_fact_kind::number)
        return my_decide(host_folded(left.text).compare(host_folded(right.text)), comparison);
    double a = 0, b = 0;
    std::from_chars(left.text.data(), left.text.data() + left.text.size(), a);
    std::from_chars(right.text.data(), right.text.data() + right.text.size(), b);
    return my_decide(a < b ? -1 : a > b ? 1 : 0, comparison);
}
