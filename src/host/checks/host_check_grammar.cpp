// The grammar of the checks that are kept, from the loosest binding to the tightest:
//
//   condition   or, and, not
//   predicate   comparison, IS [NOT] NULL, [NOT] BETWEEN, [NOT] IN, [NOT] LIKE
//   sum         + -
//   product     * / %
//   sign        + -
//   primary     (condition), [column], number, 'text', CASE WHEN, a function (host_check_calls)
//
// Everything else is refused. The server and SQLite bind these alike. Each step of the reader answers with a value;
// what is wrong with it, and what has to be written differently, is decided where two values meet (host_check_values).
#include "checks/host_check_reader.hpp"

static host_value my_truth()
{
    return {host_value_kind::truth};
}

static void my_note_compared(host_check_reader &reader, const host_value &value)
{
    if (value.kind == host_value_kind::text)
        reader.reading.compared.push_back(value.col);
}

// Reads the other side of a comparison; the sign is IN or BETWEEN when there are more of these.
static host_value my_read_compared(host_check_reader &reader, host_value &left, std::string_view sign)
{
    host_value right = host_read_check_sum(reader);
    if (host_check_failed(right))
        return right;
    if (const char *refusal = host_compare(reader.reading.changes, left, right, sign))
        return host_check_refuse(reader, refusal);
    my_note_compared(reader, left);
    my_note_compared(reader, right);
    return my_truth();
}

static host_value my_read_between(host_check_reader &reader, host_value &left)
{
    if (host_check_failed(my_read_compared(reader, left, "BETWEEN")))
        return {};
    if (!host_check_take(reader, "AND"))
        return host_check_refuse_token(reader);
    return my_read_compared(reader, left, "BETWEEN");
}

static host_value my_read_in(host_check_reader &reader, host_value &left)
{
    if (!host_check_take(reader, host_token_kind::left))
        return host_check_refuse_token(reader);
    do {
        if (host_check_failed(my_read_compared(reader, left, "IN")))
            return {};
    } while (host_check_take(reader, host_token_kind::comma));
    if (!host_check_take(reader, host_token_kind::right))
        return host_check_refuse_token(reader);
    return my_truth();
}

static host_value my_read_like(host_check_reader &reader, const host_value &left, std::string_view word)
{
    const host_value pattern = host_read_check_sum(reader);
    if (host_check_failed(pattern))
        return pattern;
    host_value escape;
    const bool has_escape = host_check_take(reader, "ESCAPE");
    if (has_escape)
        escape = host_read_check_sum(reader);
    if (has_escape && host_check_failed(escape))
        return escape;
    if (const char *refusal = host_match(reader.reading.changes, left, pattern, has_escape ? &escape : nullptr, word))
        return host_check_refuse(reader, refusal);
    my_note_compared(reader, left);
    return my_truth();
}

static host_value my_read_is_null(host_check_reader &reader, const host_value &left)
{
    host_check_take(reader, "NOT");
    if (left.kind == host_value_kind::truth || left.kind == host_value_kind::units || !host_check_take(reader, "NULL"))
        return host_check_refuse_token(reader);
    return my_truth();
}

static host_value my_read_predicate(host_check_reader &reader)
{
    host_value left = host_read_check_sum(reader);
    if (host_check_failed(left))
        return left;
    if (reader.token.kind == host_token_kind::comparison) {
        const std::string_view sign = reader.token.text;
        host_check_advance(reader);
        return my_read_compared(reader, left, sign);
    }
    if (host_check_take(reader, "IS"))
        return my_read_is_null(reader, left);
    const bool is_negated = host_check_take(reader, "NOT");
    if (host_check_take(reader, "BETWEEN"))
        return my_read_between(reader, left);
    if (host_check_take(reader, "IN"))
        return my_read_in(reader, left);
    const std::string_view word = reader.token.text;
    if (host_check_take(reader, "LIKE"))
        return my_read_like(reader, left, word);
    return is_negated ? host_check_refuse_token(reader) : left;
}

static host_value my_read_negated(host_check_reader &reader)
{
    bool is_negated = false;
    while (host_check_take(reader, "NOT"))
        is_negated = true;
    const host_value value = my_read_predicate(reader);
    if (is_negated && !host_check_failed(value) && value.kind != host_value_kind::truth)
        return host_check_refuse(reader, "a value is used as a condition");
    return value;
}

// AND binds tighter than OR on both sides, which matters to neither side's operands: both must be conditions.
host_value host_read_check_condition(host_check_reader &reader)
{
    host_value left = my_read_negated(reader);
    while (!host_check_failed(left) && (host_is_word(reader.token, "AND") || host_is_word(reader.token, "OR"))) {
        host_check_advance(reader);
        const host_value right = my_read_negated(reader);
        if (host_check_failed(right))
            return right;
        if (left.kind != host_value_kind::truth || right.kind != host_value_kind::truth)
            return host_check_refuse(reader, "a value is used as a condition");
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
    host_check_reader reader{table, definition, {}};
    host_check_advance(reader);
    const host_value value = host_read_check_condition(reader);
    if (!host_check_failed(value) && reader.token.kind != host_token_kind::end)
        host_check_refuse_token(reader);
    else if (!host_check_failed(value) && value.kind != host_value_kind::truth)
        host_check_refuse(reader, "it is not a condition");
    if (!reader.reading.refusal)
        reader.reading.condition = host_changed_text(reader.reading.changes, definition);
    reader.reading.is_enclosed = my_is_enclosed(definition);
    return std::move(reader.reading);
}
