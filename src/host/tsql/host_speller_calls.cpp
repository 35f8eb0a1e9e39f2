// CASE, conversions, and calls of functions.
#include "tsql/host_expression_parts.hpp"
#include "tsql/host_speller.hpp"

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
