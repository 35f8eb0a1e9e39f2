// Conditions, and whole expressions.
#include "tsql/host_server_spelling.hpp"

#include "tsql/host_expression_parts.hpp"
#include "tsql/host_speller.hpp"

// left IN (a, b): the server keeps the list as a chain of comparisons, from its end.
host_operand host_speller::read_in(const host_operand &left)
{
    const std::string tested = text_.substr(left.start);
    text_.resize(left.start);
    cursor_.expect('(');
    size_t count = 0;
    do {
        const size_t start = text_.size();
        read_value();
        const std::string value = text_.substr(start);
        text_.resize(start);
        text_.insert(left.start, tested + '=' + value + (count++ > 0 ? " OR " : ""));
    } while (cursor_.take(','));
    cursor_.expect(')');
    return {left.start, count > 1 ? host_binding::disjunction : host_binding::comparison};
}

host_operand host_speller::read_between(const host_operand &left)
{
    const std::string tested = text_.substr(left.start);
    text_ += ">=";
    read_value();
    cursor_.expect(host_word::and_, "AND");
    text_ += " AND " + tested + "<=";
    read_value();
    return {left.start, host_binding::conjunction};
}

host_operand host_speller::read_like(const host_operand &left)
{
    text_ += " like ";
    read_value();
    if (cursor_.take(host_word::escape)) {
        text_ += " escape ";
        read_value();
    }
    return {left.start, host_binding::comparison};
}

host_operand host_speller::read_comparison(host_operand left)
{
    text_ += host_comparison_spelling(cursor_.token.text);
    cursor_.advance();
    read_value();
    return {left.start, host_binding::comparison};
}

host_operand host_speller::read_predicate()
{
    const host_operand left = read_sum();
    const bool is_comparison = cursor_.token.kind == host_tsql_kind::mark && host_is_comparison(cursor_.token.text);
    const bool is_tested = is_comparison || cursor_.token.is(host_word::is) || cursor_.token.is(host_word::not_) ||
                           cursor_.token.is(host_word::between) || cursor_.token.is(host_word::in) ||
                           cursor_.token.is(host_word::like);
    if (!is_tested)
        return left;
    wrap_grouped(left);
    if (is_comparison)
        return read_comparison(left);
    if (cursor_.take(host_word::is)) {
        text_ += cursor_.take(host_word::not_) ? " IS NOT NULL" : " IS NULL";
        cursor_.expect(host_word::null, "NULL");
        return {left.start, host_binding::comparison};
    }
    const bool is_negated = cursor_.take(host_word::not_);
    host_operand test;
    if (cursor_.take(host_word::between))
        test = read_between(left);
    else if (cursor_.take(host_word::in))
        test = read_in(left);
    else if (cursor_.take(host_word::like))
        test = read_like(left);
    else
        cursor_.fail_expected("a comparison");
    if (!is_negated)
        return test;
    if (test.binding > host_binding::negation)
        wrap(test);
    text_.insert(test.start, "NOT ");
    return {test.start, host_binding::negation};
}

host_operand host_speller::read_not()
{
    if (!cursor_.token.is(host_word::not_))
        return read_predicate();
    const size_t start = text_.size();
    cursor_.advance();
    text_ += "NOT ";
    if (++depth_ > max_expression_depth)
        cursor_.fail("the expression is nested too deep");
    const host_operand operand = read_not();
    depth_--;
    if (operand.binding > host_binding::negation)
        wrap(operand);
    return {start, host_binding::negation};
}

host_operand host_speller::read_and()
{
    host_operand left = read_not();
    while (cursor_.take(host_word::and_)) {
        if (left.binding == host_binding::disjunction)
            wrap(left);
        text_ += " AND ";
        const host_operand right = read_not();
        if (right.binding == host_binding::disjunction)
            wrap(right);
        left = {left.start, host_binding::conjunction};
    }
    return left;
}

host_operand host_speller::read_condition()
{
    host_operand left = read_and();
    while (cursor_.take(host_word::or_)) {
        text_ += " OR ";
        read_and();
        left = {left.start, host_binding::disjunction};
    }
    return left;
}

std::string host_read_expression(host_tsql_cursor &cursor)
{
    host_speller speller(cursor);
    speller.read_sum();
    return speller.take_text();
}

std::string host_read_condition(host_tsql_cursor &cursor)
{
    host_speller speller(cursor);
    speller.read_condition();
    return speller.take_text();
}

static bool my_is_enclosed(std::string_view expression, bool quoted_identifier)
{
    host_tsql_cursor cursor(expression, quoted_identifier);
    cursor.skip_parentheses();
    return !cursor.failed() && cursor.token.kind == host_tsql_kind::end;
}

std::string host_server_spelling(std::string_view expression, bool quoted_identifier)
{
    host_tsql_cursor cursor(expression, quoted_identifier);
    std::string spelling = host_read_condition(cursor);
    if (!cursor.failed() && cursor.token.kind == host_tsql_kind::end)
        return spelling;
    const std::string written(host_trimmed(expression));
    return my_is_enclosed(written, quoted_identifier) ? written : '(' + written + ')';
}
