// Reads expressions, and writes them as the server does.
//
// The text grows in one string: an operand that turns out to need parentheses gets them where it begins. Parentheses
// that the author wrote stay round arithmetic, and go where they change nothing round conditions, as on the server.
// Numbers always stand in parentheses there.
#include "tsql/host_server_spelling.hpp"

#include "tsql/host_expression_parts.hpp"

// How tightly the last operator of an operand binds.
enum class host_binding { atom, sign, product, sum, comparison, negation, conjunction, disjunction };

struct host_operand {
    size_t start = 0; // in the text
    host_binding binding = host_binding::atom;
    bool grouped = false; // the author put parentheses round it, which the text does not have yet
};

static constexpr int max_expression_depth = 150;

namespace {

class host_speller {
  public:
    explicit host_speller(host_tsql_cursor &cursor) : cursor_(cursor)
    {
    }
    host_operand read_condition();
    host_operand read_sum();
    // What was read, in parentheses.
    std::string take_text()
    {
        text_ += ')';
        return std::move(text_);
    }

  private:
    void wrap(const host_operand &operand);
    void wrap_grouped(const host_operand &operand);
    void part_signs(const host_operand &operand);
    host_operand add_atom(size_t start, std::string_view text);
    host_operand read_and();
    host_operand read_not();
    host_operand read_predicate();
    host_operand read_comparison(host_operand left);
    host_operand read_in(const host_operand &left);
    host_operand read_between(const host_operand &left);
    host_operand read_like(const host_operand &left);
    host_operand read_product();
    host_operand read_sign();
    host_operand read_postfix();
    host_operand read_primary();
    host_operand read_one();
    host_operand read_group();
    host_operand read_case();
    host_operand read_cast();
    host_operand read_convert();
    host_operand read_iif();
    host_operand read_next_value();
    host_operand read_name_or_call();
    host_operand read_word();
    void read_value();
    void read_truth();
    void read_arguments(std::string_view function);
    void add_type();

    host_tsql_cursor &cursor_;
    std::string text_ = "(";
    int depth_ = 0;
};

} // namespace

void host_speller::wrap(const host_operand &operand)
{
    text_.insert(operand.start, 1, '(');
    text_ += ')';
}

// Round arithmetic the author's parentheses stay.
void host_speller::wrap_grouped(const host_operand &operand)
{
    if (operand.grouped && operand.binding != host_binding::atom)
        wrap(operand);
}

// Two minus signs would begin a comment.
void host_speller::part_signs(const host_operand &operand)
{
    if (operand.start > 0 && text_.compare(operand.start - 1, 2, "--") == 0)
        wrap(operand);
}

host_operand host_speller::add_atom(size_t start, std::string_view text)
{
    text_ += text;
    return {start};
}

void host_speller::read_value()
{
    wrap_grouped(read_sum());
}

void host_speller::read_truth()
{
    read_condition();
}

host_operand host_speller::read_group()
{
    cursor_.advance();
    host_operand inner = read_condition();
    cursor_.expect(')');
    inner.grouped = true;
    return inner;
}

host_operand host_speller::read_case()
{
    const size_t start = text_.size();
    cursor_.advance();
    text_ += "case";
    const bool is_simple = !cursor_.token.is(host_word::when);
    if (is_simple) {
        text_ += ' ';
        read_value();
    }
    while (cursor_.take(host_word::when)) {
        text_ += " when ";
        is_simple ? read_value() : read_truth();
        cursor_.expect(host_word::then, "THEN");
        text_ += " then ";
        read_value();
    }
    if (cursor_.take(host_word::else_)) {
        text_ += " else ";
        read_value();
    }
    cursor_.expect(host_word::end, "END");
    return add_atom(start, " end");
}

// Adds a type: [varchar](10).
void host_speller::add_type()
{
    text_ += host_read_type_spelling(cursor_);
}

// CAST(value AS type), which the server turns into a CONVERT. TRY_CAST stays.
host_operand host_speller::read_cast()
{
    const size_t start = text_.size();
    const bool is_try = cursor_.token.is(host_word::try_cast);
    cursor_.advance();
    cursor_.expect('(');
    text_ += is_try ? "TRY_CAST(" : "CONVERT(";
    const size_t value_start = text_.size();
    read_value();
    const std::string value = text_.substr(value_start);
    cursor_.expect(host_word::as, "AS");
    if (is_try)
        text_ += " AS ";
    else
        text_.resize(value_start);
    add_type();
    if (!is_try)
        text_ += ',' + value;
    cursor_.expect(')');
    return add_atom(start, ")");
}

host_operand host_speller::read_convert()
{
    const size_t start = text_.size();
    text_ += cursor_.token.is(host_word::convert) ? "CONVERT(" : "TRY_CONVERT(";
    cursor_.advance();
    cursor_.expect('(');
    add_type();
    while (cursor_.take(',')) {
        text_ += ',';
        read_value();
    }
    cursor_.expect(')');
    return add_atom(start, ")");
}

// IIF(condition, yes, no), which the server turns into a CASE.
host_operand host_speller::read_iif()
{
    const size_t start = text_.size();
    cursor_.advance();
    cursor_.expect('(');
    text_ += "case when ";
    read_truth();
    cursor_.expect(',');
    text_ += " then ";
    read_value();
    cursor_.expect(',');
    text_ += " else ";
    read_value();
    cursor_.expect(')');
    return add_atom(start, " end");
}

host_operand host_speller::read_next_value()
{
    const size_t start = text_.size();
    cursor_.advance();
    cursor_.advance();
    cursor_.expect(host_word::for_, "FOR");
    text_ += "NEXT VALUE FOR " + host_read_name_spelling(cursor_);
    return {start};
}

void host_speller::read_arguments(std::string_view function)
{
    cursor_.expect('(');
    text_ += '(';
    if (host_takes_date_part(function) && cursor_.token.kind == host_tsql_kind::word) {
        text_ += host_date_part(cursor_.token.text);
        cursor_.advance();
        if (cursor_.take(','))
            text_ += ',';
    }
    if (!cursor_.token.is(')')) {
        read_value();
        while (cursor_.take(',')) {
            text_ += ',';
            read_value();
        }
    }
    cursor_.expect(')');
    text_ += ')';
}

// A column, a function of the server (getdate()), or one of a user ([dbo].[Answer]((42))).
host_operand host_speller::read_name_or_call()
{
    const size_t start = text_.size();
    const host_tsql_token first = cursor_.token;
    const std::string name = host_read_name_spelling(cursor_);
    if (!cursor_.token.is('('))
        return add_atom(start, name);
    const bool is_builtin = first.kind == host_tsql_kind::word && cursor_.text_since(first).size() == first.text.size();
    if (is_builtin) {
        for (const char byte : first.text)
            text_ += host_lower(byte);
    } else {
        text_ += name;
    }
    const std::string function = text_.substr(start);
    read_arguments(function);
    return {start};
}

host_operand host_speller::read_word()
{
    const size_t start = text_.size();
    switch (cursor_.token.word) {
    case host_word::case_:
        return read_case();
    case host_word::cast:
    case host_word::try_cast:
        return read_cast();
    case host_word::convert:
    case host_word::try_convert:
        return read_convert();
    case host_word::iif:
        return read_iif();
    case host_word::null:
        cursor_.advance();
        return add_atom(start, "NULL");
    case host_word::next:
        if (cursor_.peek().is(host_word::value))
            return read_next_value();
        return read_name_or_call();
    default:
        break;
    }
    if (const std::string_view function = host_wordless_function(cursor_.token.word); !function.empty()) {
        cursor_.advance();
        return add_atom(start, function);
    }
    if (host_is_reserved(cursor_.token.word)) {
        cursor_.fail_expected("an expression");
        return {start};
    }
    return read_name_or_call();
}

host_operand host_speller::read_primary()
{
    if (++depth_ > max_expression_depth)
        cursor_.fail("the expression is nested too deep");
    const host_operand operand = read_one();
    depth_--;
    return operand;
}

host_operand host_speller::read_one()
{
    const size_t start = text_.size();
    const host_tsql_token token = cursor_.token;
    switch (token.kind) {
    case host_tsql_kind::number:
        cursor_.advance();
        return add_atom(start, '(' + host_number_spelling(token.text) + ')');
    case host_tsql_kind::binary:
        cursor_.advance();
        return add_atom(start, host_binary_spelling(token.text));
    case host_tsql_kind::text:
        cursor_.advance();
        return add_atom(start, host_text_spelling(token));
    case host_tsql_kind::variable:
        cursor_.advance();
        return add_atom(start, host_variable_spelling(token.text));
    case host_tsql_kind::name:
        return read_name_or_call();
    case host_tsql_kind::word:
        return read_word();
    default:
        if (token.is('('))
            return read_group();
        cursor_.fail_expected("an expression");
        return {start};
    }
}

// What may follow a value: a method, a collation, a time zone.
host_operand host_speller::read_postfix()
{
    host_operand operand = read_primary();
    for (;;) {
        if (cursor_.token.is('.') || cursor_.token.is("::")) {
            text_ += cursor_.token.text;
            cursor_.advance();
            text_ += host_read_method_name(cursor_);
            if (cursor_.token.is('('))
                read_arguments({});
        } else if (cursor_.take(host_word::collate)) {
            text_ += " COLLATE " + std::string(cursor_.token.text);
            cursor_.advance();
        } else if (cursor_.token.is(host_word::at)) {
            cursor_.advance();
            cursor_.advance();
            cursor_.expect(host_word::zone, "ZONE");
            text_ += " AT TIME ZONE ";
            wrap_grouped(read_primary());
        } else {
            return operand;
        }
    }
}

host_operand host_speller::read_sign()
{
    const size_t start = text_.size();
    if (!cursor_.token.is('-') && !cursor_.token.is('+') && !cursor_.token.is('~'))
        return read_postfix();
    const std::string sign(cursor_.token.text);
    cursor_.advance();
    if (cursor_.token.kind == host_tsql_kind::number && sign != "~") {
        const std::string number = host_number_spelling(cursor_.token.text);
        cursor_.advance();
        return add_atom(start, sign == "-" ? "(-" + number + ')' : '(' + number + ')');
    }
    text_ += sign;
    if (++depth_ > max_expression_depth)
        cursor_.fail("the expression is nested too deep");
    const host_operand operand = read_sign();
    wrap_grouped(operand);
    part_signs(operand);
    depth_--;
    return {start, host_binding::sign};
}

host_operand host_speller::read_product()
{
    host_operand left = read_sign();
    while (cursor_.token.is('*') || cursor_.token.is('/') || cursor_.token.is('%')) {
        if (left.binding == host_binding::product || (left.grouped && left.binding != host_binding::atom))
            wrap(left);
        text_ += cursor_.token.text;
        cursor_.advance();
        wrap_grouped(read_sign());
        left = {left.start, host_binding::product};
    }
    return left;
}

host_operand host_speller::read_sum()
{
    host_operand left = read_product();
    const auto is_operator = [this] {
        const host_tsql_token &token = cursor_.token;
        return token.is('+') || token.is('-') || token.is('&') || token.is('|') || token.is('^');
    };
    while (is_operator()) {
        if (left.binding == host_binding::sum || (left.grouped && left.binding != host_binding::atom))
            wrap(left);
        text_ += cursor_.token.text;
        cursor_.advance();
        const host_operand right = read_product();
        wrap_grouped(right);
        part_signs(right);
        left = {left.start, host_binding::sum};
    }
    return left;
}

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
