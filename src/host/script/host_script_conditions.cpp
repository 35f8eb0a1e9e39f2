// Conditions: what joins tests, and where the statement begins that depends on them.
#include "script/host_script_conditions.hpp"

static std::optional<bool> my_read_or(host_script_reader &reader);

static std::optional<bool> my_and(std::optional<bool> a, std::optional<bool> b)
{
    if ((a && !*a) || (b && !*b))
        return false;
    return a && b ? std::optional<bool>(true) : std::nullopt;
}

static std::optional<bool> my_negated(std::optional<bool> test)
{
    return test ? std::optional<bool>(!*test) : test;
}

static bool my_is_comparison(const host_tsql_token &token)
{
    constexpr std::string_view signs[] = {"=", "<>", "!=", "<", ">", "<=", ">=", "!<", "!>"};
    for (const std::string_view sign : signs) {
        if (token.is(sign))
            return true;
    }
    return false;
}

static std::optional<bool> my_read_in(host_script_reader &reader, const host_fact &left)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!cursor.token.is('(') || cursor.peek().is(host_word::select)) {
        cursor.skip_parentheses();
        return std::nullopt;
    }
    cursor.advance();
    std::optional<bool> found = false;
    do {
        const std::optional<bool> is_same = host_compare_facts(left, "=", host_read_fact(reader));
        found = my_negated(my_and(my_negated(found), my_negated(is_same)));
    } while (cursor.take(','));
    cursor.expect(')');
    return found;
}

// value = value, value IS NULL, value IN (...)
static std::optional<bool> my_read_comparison(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_fact left = host_read_fact(reader);
    if (my_is_comparison(cursor.token)) {
        const std::string sign(cursor.token.text);
        cursor.advance();
        return host_compare_facts(left, sign, host_read_fact(reader));
    }
    if (cursor.take(host_word::is)) {
        const bool is_negated = cursor.take(host_word::not_);
        cursor.expect(host_word::null, "NULL");
        if (left.kind == host_fact_kind::unknown)
            return std::nullopt;
        return (left.kind == host_fact_kind::null) != is_negated;
    }
    const bool is_negated = cursor.take(host_word::not_);
    if (cursor.take(host_word::in)) {
        const std::optional<bool> found = my_read_in(reader, left);
        return is_negated ? my_negated(found) : found;
    }
    if (cursor.take(host_word::like)) {
        host_read_fact(reader);
    } else if (cursor.take(host_word::between)) {
        host_read_fact(reader);
        cursor.expect(host_word::and_, "AND");
        host_read_fact(reader);
    }
    return std::nullopt;
}

// Parentheses hold a test or a value; which of them shows what follows.
static std::optional<bool> my_read_group(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    cursor.skip_parentheses();
    const bool is_value = cursor.failed() || my_is_comparison(cursor.token) || cursor.token.is(host_word::is) ||
                          cursor.token.is(host_word::in) || cursor.token.is('+') || cursor.token.is('-') ||
                          cursor.token.is('*') || cursor.token.is('/');
    if (cursor.failed())
        return std::nullopt;
    cursor.go_back(first);
    if (is_value || cursor.peek().is(host_word::select))
        return my_read_comparison(reader);
    cursor.advance();
    const std::optional<bool> test = my_read_or(reader);
    if (!cursor.failed() && cursor.take(')'))
        return test;
    cursor.go_back(first);
    cursor.skip_parentheses();
    return std::nullopt;
}

static std::optional<bool> my_read_not(host_script_reader &reader)
{
    constexpr int max_nesting = 400;
    host_tsql_cursor &cursor = reader.cursor;
    if (++reader.nesting > max_nesting)
        cursor.fail("the condition is nested too deep");
    std::optional<bool> test;
    if (cursor.take(host_word::not_))
        test = my_negated(my_read_not(reader));
    else if (cursor.take(host_word::exists))
        test = host_read_exists(reader);
    else
        test = cursor.token.is('(') ? my_read_group(reader) : my_read_comparison(reader);
    reader.nesting--;
    return test;
}

static std::optional<bool> my_read_and(host_script_reader &reader)
{
    std::optional<bool> test = my_read_not(reader);
    while (reader.cursor.take(host_word::and_))
        test = my_and(test, my_read_not(reader));
    return test;
}

static std::optional<bool> my_read_or(host_script_reader &reader)
{
    std::optional<bool> test = my_read_and(reader);
    while (reader.cursor.take(host_word::or_))
        test = my_negated(my_and(my_negated(test), my_negated(my_read_and(reader))));
    return test;
}

static bool my_begins_statement(const host_tsql_token &token)
{
    return token.is_end() || token.is(';') || host_starts_statement(token.word) || token.is(host_word::throw_) ||
           token.is(host_word::enable) || token.is(host_word::disable);
}

std::optional<bool> host_read_test(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    reader.nesting = 0;
    const std::optional<bool> test = my_read_or(reader);
    if (!cursor.failed() && my_begins_statement(cursor.token) && !cursor.token.is_end())
        return test;
    // Something that was not understood; the statement is found all the same.
    cursor.go_back(first);
    int cases = 0;
    while (!my_begins_statement(cursor.token) || (cases > 0 && !cursor.token.is_end())) {
        cases += cursor.token.is(host_word::case_) ? 1 : 0;
        cases -= cursor.token.is(host_word::end) ? 1 : 0;
        if (cursor.token.is('('))
            cursor.skip_parentheses();
        else
            cursor.advance();
    }
    if (cursor.token.is_end())
        cursor.fail_expected("a statement after the condition");
    return std::nullopt;
}
