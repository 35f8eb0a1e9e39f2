// Values, and arithmetic between them.
#include "tsql/host_expression_parts.hpp"
#include "tsql/host_speller.hpp"

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
