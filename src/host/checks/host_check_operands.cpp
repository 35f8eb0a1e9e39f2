// The operands of a check: columns, literals, sums and what else gives a value.
#include "checks/host_check_reader.hpp"

#include "tsql/host_tsql_words.hpp"

#include <algorithm>

// Deeper nesting is refused: the reader calls itself for each level.
static constexpr int max_depth = 100;

void host_check_advance(host_check_reader &reader)
{
    reader.token = host_take_token(reader.rest);
}

host_value host_check_refuse(host_check_reader &reader, const char *refusal, std::string_view detail)
{
    if (!reader.reading.refusal) {
        reader.reading.refusal = refusal;
        reader.reading.detail = detail;
    }
    return {};
}

host_value host_check_refuse_token(host_check_reader &reader)
{
    if (reader.token.kind == host_token_kind::end)
        return host_check_refuse(reader, "it ends too early");
    return host_check_refuse(reader, "SQLite lacks this or reads it differently", reader.token.text);
}

bool host_check_failed(const host_value &value)
{
    return value.kind == host_value_kind::failed;
}

bool host_check_take(host_check_reader &reader, host_token_kind kind)
{
    if (reader.token.kind != kind)
        return false;
    host_check_advance(reader);
    return true;
}

bool host_check_take(host_check_reader &reader, std::string_view upper)
{
    if (!host_is_word(reader.token, upper))
        return false;
    host_check_advance(reader);
    return true;
}

static host_value my_read_column(host_check_reader &reader)
{
    const std::string_view name = reader.token.text;
    const auto &cols = reader.table.cols;
    const auto found = std::find_if(cols.begin(), cols.end(),
                                    [name](const host_column &col) { return host_same_text(col.name, name); });
    if (found == cols.end())
        return host_check_refuse(reader, "it names a column that the table lacks", name);
    if (!found->prepared) {
        reader.reading.unprepared = true;
        return host_check_refuse(reader, "it uses a column that is left out of the table", name);
    }
    auto &used = reader.reading.cols;
    if (std::find(used.begin(), used.end(), &*found) == used.end())
        used.push_back(&*found);
    host_check_advance(reader);
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
        return host_check_refuse(reader, "CASE or ABS is used with values other than whole numbers of up to 32 bits");
    }
}

// After CASE: WHEN condition THEN value ... [ELSE value] END.
static host_value my_read_case(host_check_reader &reader)
{
    if (!host_is_word(reader.token, "WHEN"))
        return host_check_refuse_token(reader);
    while (host_check_take(reader, "WHEN")) {
        const host_value condition = host_read_check_condition(reader);
        if (!host_check_failed(condition) && condition.kind != host_value_kind::truth)
            return host_check_refuse(reader, "a value is used as a condition");
        if (host_check_failed(condition) || !host_check_take(reader, "THEN"))
            return host_check_refuse_token(reader);
        if (host_check_failed(my_as_whole_number(reader, host_read_check_sum(reader))))
            return {};
    }
    if (host_check_take(reader, "ELSE") && host_check_failed(my_as_whole_number(reader, host_read_check_sum(reader))))
        return {};
    if (!host_check_take(reader, "END"))
        return host_check_refuse_token(reader);
    return {host_value_kind::integer, nullptr, {}};
}

static host_value my_read_enclosed(host_check_reader &reader)
{
    if (!host_check_take(reader, host_token_kind::left))
        return host_check_refuse_token(reader);
    const host_value value = host_read_check_condition(reader);
    if (host_check_failed(value) || host_check_take(reader, host_token_kind::right))
        return value;
    return host_check_refuse_token(reader);
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
        host_check_advance(reader);
        return host_number_value(token.text);
    case host_token_kind::text:
        host_check_advance(reader);
        return {host_value_kind::text_literal, nullptr, token.text};
    default:
        if (host_check_take(reader, "CASE"))
            return my_read_case(reader);
        if (host_check_take(reader, "ABS"))
            return my_as_whole_number(reader, my_read_enclosed(reader));
        return host_check_refuse_token(reader);
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
        host_check_advance(reader);
    }
    if (reader.depth == max_depth)
        return host_check_refuse(reader, "it is nested too deep");
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
    while (!host_check_failed(left) && my_is_operator(reader, operators)) {
        const char operation = reader.token.text.front();
        host_check_advance(reader);
        const host_value right = read_operand(reader);
        if (host_check_failed(right))
            return right;
        if (const char *refusal = host_refuse_arithmetic(left, right, operation))
            return host_check_refuse(reader, refusal);
        left = {host_value_kind::integer, nullptr, {}};
    }
    return left;
}

static host_value my_read_product(host_check_reader &reader)
{
    return my_read_joined(reader, "*/%", my_read_signed);
}

host_value host_read_check_sum(host_check_reader &reader)
{
    return my_read_joined(reader, "+-", my_read_product);
}
