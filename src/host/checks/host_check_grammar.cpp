// The grammar of the checks that are kept, from the loosest binding to the tightest:
//
//   condition   or, and, not
//   predicate   comparison, IS [NOT] NULL, [NOT] BETWEEN, [NOT] IN, [NOT] LIKE
//   sum         + -
//   product     * / %
//   sign        + -
//   primary     (condition), [column], number, 'text', CASE WHEN, ABS
//
// Everything else is refused. The server and SQLite bind these alike. Each step of the reader answers with a value;
// what is wrong with it is decided where two values meet (host_check_values).
#include "checks/host_check_grammar.hpp"

#include "checks/host_check_tokens.hpp"
#include "checks/host_check_values.hpp"
#include "kt_chars.h"

#include <algorithm>

// Deeper nesting is refused: the reader calls itself for each level.
static constexpr int max_depth = 100;

struct host_check_reader {
    const host_table &table;
    std::string_view rest;
    host_token token;
    int depth = 0;
    host_check_reading reading;
};

static host_value my_read_condition(host_check_reader &reader);
static host_value my_read_sum(host_check_reader &reader);

static void my_advance(host_check_reader &reader)
{
    reader.token = host_take_token(reader.rest);
}

// Gives the check up, for the first reason met.
static host_value my_refuse(host_check_reader &reader, const char *refusal, std::string_view detail = {})
{
    if (!reader.reading.refusal) {
        reader.reading.refusal = refusal;
        reader.reading.detail = detail;
    }
    return {};
}

static host_value my_refuse_token(host_check_reader &reader)
{
    if (reader.token.kind == host_token_kind::end)
        return my_refuse(reader, "it ends too early");
    return my_refuse(reader, "SQLite lacks this or reads it differently", reader.token.text);
}

static bool my_failed(const host_value &value)
{
    return value.kind == host_value_kind::failed;
}

static bool my_take_kind(host_check_reader &reader, host_token_kind kind)
{
    if (reader.token.kind != kind)
        return false;
    my_advance(reader);
    return true;
}

static bool my_take_word(host_check_reader &reader, std::string_view upper)
{
    if (!host_is_word(reader.token, upper))
        return false;
    my_advance(reader);
    return true;
}

static bool my_equals_ignoring_case(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return KT_char__folded(x) == KT_char__folded(y); });
}

static host_value my_read_column(host_check_reader &reader)
{
    const std::string_view name = reader.token.text;
    const auto &cols = reader.table.cols;
    const auto found = std::find_if(cols.begin(), cols.end(),
                                    [name](const host_column &col) { return my_equals_ignoring_case(col.name, name); });
    if (found == cols.end())
        return my_refuse(reader, "it names a column that the table lacks", name);
    if (!found->prepared) {
        reader.reading.unprepared = true;
        return my_refuse(reader, "it uses a column that is left out of the table", name);
    }
    auto &used = reader.reading.cols;
    if (std::find(used.begin(), used.end(), &*found) == used.end())
        used.push_back(&*found);
    my_advance(reader);
    return host_column_value(*found);
}

// A value that is a whole number, whatever it was before.
static host_value my_as_whole_number(host_check_reader &reader, const host_value &value)
{
    switch (value.kind) {
    case host_value_kind::failed:
        return value;
    case host_value_kind::integer:
    case host_value_kind::tinyint:
    case host_value_kind::whole_literal:
        return {host_value_kind::integer, nullptr, {}};
    default:
        return my_refuse(reader, "CASE or ABS is used with values other than whole numbers of up to 32 bits");
    }
}

// After CASE: WHEN condition THEN value ... [ELSE value] END.
static host_value my_read_case(host_check_reader &reader)
{
    if (!host_is_word(reader.token, "WHEN"))
        return my_refuse_token(reader);
    while (my_take_word(reader, "WHEN")) {
        const host_value condition = my_read_condition(reader);
        if (!my_failed(condition) && condition.kind != host_value_kind::truth)
            return my_refuse(reader, "a value is used as a condition");
        if (my_failed(condition) || !my_take_word(reader, "THEN"))
            return my_refuse_token(reader);
        if (my_failed(my_as_whole_number(reader, my_read_sum(reader))))
            return {};
    }
    if (my_take_word(reader, "ELSE") && my_failed(my_as_whole_number(reader, my_read_sum(reader))))
        return {};
    if (!my_take_word(reader, "END"))
        return my_refuse_token(reader);
    return {host_value_kind::integer, nullptr, {}};
}

static host_value my_read_enclosed(host_check_reader &reader)
{
    if (!my_take_kind(reader, host_token_kind::left))
        return my_refuse_token(reader);
    const host_value value = my_read_condition(reader);
    if (my_failed(value) || my_take_kind(reader, host_token_kind::right))
        return value;
    return my_refuse_token(reader);
}

static host_value my_read_primary(host_check_reader &reader)
{
    const host_token token = reader.token;
    switch (token.kind) {
    case host_token_kind::left:
        return my_read_enclosed(reader);
    case host_token_kind::name:
        return my_read_column(reader);
    case host_token_kind::number:
        my_advance(reader);
        return host_number_value(token.text);
    case host_token_kind::text:
        my_advance(reader);
        return {host_value_kind::text_literal, nullptr, token.text};
    default:
        if (my_take_word(reader, "CASE"))
            return my_read_case(reader);
        if (my_take_word(reader, "ABS"))
            return my_as_whole_number(reader, my_read_enclosed(reader));
        return my_refuse_token(reader);
    }
}

static bool my_is_operator(const host_check_reader &reader, std::string_view operators)
{
    return reader.token.kind == host_token_kind::arithmetic &&
           operators.find(reader.token.text.front()) != std::string_view::npos;
}

// A sign before a literal leaves it a literal, before a column a computed number.
static host_value my_read_signed(host_check_reader &reader)
{
    bool has_sign = false;
    while (my_is_operator(reader, "+-")) {
        has_sign = true;
        my_advance(reader);
    }
    if (reader.depth == max_depth)
        return my_refuse(reader, "it is nested too deep");
    reader.depth++;
    const host_value value = my_read_primary(reader);
    reader.depth--;
    const bool is_literal =
        value.kind == host_value_kind::whole_literal || value.kind == host_value_kind::number_literal;
    return !has_sign || is_literal ? value : my_as_whole_number(reader, value);
}

// Reads operands of one level of binding, joined by some of the operators.
static host_value my_read_joined(host_check_reader &reader, std::string_view operators,
                                 host_value (*read_operand)(host_check_reader &reader))
{
    host_value left = read_operand(reader);
    while (!my_failed(left) && my_is_operator(reader, operators)) {
        const char operation = reader.token.text.front();
        my_advance(reader);
        const host_value right = read_operand(reader);
        if (my_failed(right))
            return right;
        if (const char *refusal = host_refuse_arithmetic(left, right, operation))
            return my_refuse(reader, refusal);
        left = {host_value_kind::integer, nullptr, {}};
    }
    return left;
}

static host_value my_read_product(host_check_reader &reader)
{
    return my_read_joined(reader, "*/%", my_read_signed);
}

static host_value my_read_sum(host_check_reader &reader)
{
    return my_read_joined(reader, "+-", my_read_product);
}

// Reads the other side of a comparison.
static host_value my_read_compared(host_check_reader &reader, const host_value &left, bool is_equality)
{
    const host_value right = my_read_sum(reader);
    if (my_failed(right))
        return right;
    if (const char *refusal = host_refuse_comparison(left, right, is_equality))
        return my_refuse(reader, refusal);
    return {host_value_kind::truth, nullptr, {}};
}

static host_value my_read_between(host_check_reader &reader, const host_value &left)
{
    if (my_failed(my_read_compared(reader, left, false)))
        return {};
    if (!my_take_word(reader, "AND"))
        return my_refuse_token(reader);
    return my_read_compared(reader, left, false);
}

static host_value my_read_in(host_check_reader &reader, const host_value &left)
{
    if (!my_take_kind(reader, host_token_kind::left))
        return my_refuse_token(reader);
    do {
        if (my_failed(my_read_compared(reader, left, true)))
            return {};
    } while (my_take_kind(reader, host_token_kind::comma));
    if (!my_take_kind(reader, host_token_kind::right))
        return my_refuse_token(reader);
    return {host_value_kind::truth, nullptr, {}};
}

static host_value my_read_like(host_check_reader &reader, const host_value &left)
{
    const host_value pattern = my_read_sum(reader);
    if (my_failed(pattern))
        return pattern;
    if (const char *refusal = host_refuse_like(left, pattern))
        return my_refuse(reader, refusal);
    return {host_value_kind::truth, nullptr, {}};
}

static host_value my_read_is_null(host_check_reader &reader, const host_value &left)
{
    my_take_word(reader, "NOT");
    if (left.kind == host_value_kind::truth || !my_take_word(reader, "NULL"))
        return my_refuse_token(reader);
    return {host_value_kind::truth, nullptr, {}};
}

static host_value my_read_predicate(host_check_reader &reader)
{
    const host_value left = my_read_sum(reader);
    if (my_failed(left))
        return left;
    if (reader.token.kind == host_token_kind::comparison) {
        const std::string_view sign = reader.token.text;
        my_advance(reader);
        return my_read_compared(reader, left, sign == "=" || sign == "<>" || sign == "!=");
    }
    if (my_take_word(reader, "IS"))
        return my_read_is_null(reader, left);
    const bool is_negated = my_take_word(reader, "NOT");
    if (my_take_word(reader, "BETWEEN"))
        return my_read_between(reader, left);
    if (my_take_word(reader, "IN"))
        return my_read_in(reader, left);
    if (my_take_word(reader, "LIKE"))
        return my_read_like(reader, left);
    return is_negated ? my_refuse_token(reader) : left;
}

static host_value my_read_negated(host_check_reader &reader)
{
    bool is_negated = false;
    while (my_take_word(reader, "NOT"))
        is_negated = true;
    const host_value value = my_read_predicate(reader);
    if (is_negated && !my_failed(value) && value.kind != host_value_kind::truth)
        return my_refuse(reader, "a value is used as a condition");
    return value;
}

// AND binds tighter than OR on both sides, which matters to neither side's operands: both must be conditions.
static host_value my_read_condition(host_check_reader &reader)
{
    host_value left = my_read_negated(reader);
    while (!my_failed(left) && (host_is_word(reader.token, "AND") || host_is_word(reader.token, "OR"))) {
        my_advance(reader);
        const host_value right = my_read_negated(reader);
        if (my_failed(right))
            return right;
        if (left.kind != host_value_kind::truth || right.kind != host_value_kind::truth)
            return my_refuse(reader, "a value is used as a condition");
    }
    return left;
}

// Whether the first parenthesis is closed by the last one.
static bool my_is_enclosed(std::string_view definition)
{
    int depth = 0;
    host_token token = host_take_token(definition);
    if (token.kind != host_token_kind::left)
        return false;
    for (; token.kind != host_token_kind::end; token = host_take_token(definition)) {
        if (token.kind == host_token_kind::unknown)
            return false;
        depth += token.kind == host_token_kind::left ? 1 : 0;
        depth -= token.kind == host_token_kind::right ? 1 : 0;
        if (depth == 0)
            return host_take_token(definition).kind == host_token_kind::end;
    }
    return false;
}

host_check_reading host_read_check(const host_table &table, std::string_view definition)
{
    host_check_reader reader{table, definition, {}, 0, {}};
    my_advance(reader);
    const host_value value = my_read_condition(reader);
    if (!my_failed(value) && reader.token.kind != host_token_kind::end)
        my_refuse_token(reader);
    else if (!my_failed(value) && value.kind != host_value_kind::truth)
        my_refuse(reader, "it is not a condition");
    reader.reading.is_enclosed = my_is_enclosed(definition);
    return std::move(reader.reading);
}
