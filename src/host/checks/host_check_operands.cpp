// The operands of a check: columns, literals, sums and what else gives a value.
#include "checks/host_check_reader.hpp"

#include "tsql/host_tsql_words.hpp"

#include <algorithm>

// Deeper nesting is refused: the reader calls itself for each level.
static constexpr int max_depth = 100;

const char *host_check_begin(const host_token &token)
{
    return token.text.data() - (token.kind == host_token_kind::name ? 1 : 0);
}

static const char *my_end(const host_token &token)
{
    return token.text.data() + token.text.size() + (token.kind == host_token_kind::name ? 1 : 0);
}

void host_check_advance(host_check_reader &reader)
{
    reader.last_end = my_end(reader.token);
    reader.token = host_take_token(reader.rest);
}

std::string_view host_check_since(const host_check_reader &reader, const char *begin)
{
    return {begin, reader.last_end};
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

bool host_check_take(host_check_reader &reader, host_token_kind wanted)
{
    if (reader.token.kind != wanted)
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

host_value host_read_check_column(host_check_reader &reader)
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
    const char *begin = host_check_begin(reader.token);
    host_check_advance(reader);
    host_value value = host_column_value(*found);
    value.place = host_check_since(reader, begin);
    value.expr = value.place;
    return value;
}

host_value host_check_as_whole_number(host_check_reader &reader, const host_value &value)
{
    host_value whole = host_integer_value();
    switch (value.kind) {
    case host_value_kind::failed:
        return value;
    case host_value_kind::integer:
    case host_value_kind::tinyint:
    case host_value_kind::whole_literal:
        whole.place = value.place;
        whole.extent = value.extent;
        return whole;
    default:
        return host_check_refuse(reader, "CASE or ABS is used with values other than whole numbers of up to 32 bits");
    }
}

static host_value my_read_enclosed(host_check_reader &reader)
{
    host_check_advance(reader);
    host_value value = host_read_check_condition(reader);
    if (host_check_failed(value) || host_check_take(reader, host_token_kind::right))
        return value;
    return host_check_refuse_token(reader);
}

static host_value my_read_literal(host_check_reader &reader)
{
    const host_token token = reader.token;
    host_check_advance(reader);
    if (token.kind == host_token_kind::number)
        return host_number_value(token.text);
    return {host_value_kind::text_literal, nullptr, token.text, token.text};
}

static host_value my_read_primary(host_check_reader &reader)
{
    const char *begin = host_check_begin(reader.token);
    host_value value;
    switch (reader.token.kind) {
    case host_token_kind::left:
        value = my_read_enclosed(reader);
        break;
    case host_token_kind::name:
        value = host_read_check_column(reader);
        break;
    case host_token_kind::number:
    case host_token_kind::text:
        value = my_read_literal(reader);
        break;
    default:
        value = host_read_check_call(reader);
        break;
    }
    value.extent = host_check_since(reader, begin);
    if (value.place.empty())
        value.place = value.extent;
    return value;
}

static bool my_is_operator(const host_check_reader &reader, std::string_view operators)
{
    return reader.token.kind == host_token_kind::arithmetic &&
           operators.find(reader.token.text.front()) != std::string_view::npos;
}

// A sign before a literal leaves it a literal, before a decimal a decimal, and before a whole number a computed one.
static host_value my_read_signed(host_check_reader &reader)
{
    const char *begin = host_check_begin(reader.token);
    while (my_is_operator(reader, "+-"))
        host_check_advance(reader);
    const bool has_sign = host_check_begin(reader.token) != begin;
    if (reader.depth == max_depth)
        return host_check_refuse(reader, "it is nested too deep");
    reader.depth++;
    host_value value = my_read_primary(reader);
    reader.depth--;
    if (!has_sign || host_check_failed(value))
        return value;
    value.extent = host_check_since(reader, begin);
    if (host_is_number_literal(value.kind)) {
        value.is_signed = true;
        return value;
    }
    value.place = value.extent;
    return value.kind == host_value_kind::scaled ? value : host_check_as_whole_number(reader, value);
}

// Reads operands of one level of binding, joined by some of the operators.
static host_value my_read_joined(host_check_reader &reader, std::string_view operators,
                                 host_value (*read_operand)(host_check_reader &reader))
{
    host_value left = read_operand(reader);
    while (!host_check_failed(left) && my_is_operator(reader, operators)) {
        const char operation = reader.token.text.front();
        const char *begin = left.extent.data();
        host_check_advance(reader);
        host_value right = read_operand(reader);
        if (host_check_failed(right))
            return right;
        const char *refusal = nullptr;
        left = host_compute(reader.reading.changes, left, right, operation, refusal);
        if (refusal)
            return host_check_refuse(reader, refusal);
        left.place = left.extent = host_check_since(reader, begin);
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
