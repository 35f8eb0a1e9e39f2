#include "rows/read/client_script_values.hpp"

#include "rows/convert/client_cast.hpp"

#include <charconv>

static client_field my_keep(client_row &row, client_form form, const client_token &t)
{
    if (!t.doubled)
        return {form, t.text};
    const size_t from = row.unescaped.size();
    client_append_unquoted(row.unescaped, t, '\'');
    return {form, std::string_view(row.unescaped).substr(from)};
}

// A literal: what it is, or the server's for anything else. A sign, or a $ and a sign, before a number belong to it.
static client_field my_literal(client_token_stream &tokens, client_row &row)
{
    client_token t = tokens.next();
    if (t.kind == client_token_kind::string)
        return my_keep(row, client_form::literal, t);
    if (t.kind == client_token_kind::hex)
        return {client_form::hex, t.text};
    if (client_is_word(t, "null"))
        return {client_form::null, {}};
    if (client_is_word(t, "default"))
        return {client_form::absent, {}};
    const size_t from = row.unescaped.size();
    if (client_is_mark(t, '$'))
        t = tokens.next();
    if (client_is_mark(t, '-') || client_is_mark(t, '+')) {
        row.unescaped += t.text;
        t = tokens.next();
    }
    if (client_is_mark(t, '$'))
        t = tokens.next();
    if (t.kind != client_token_kind::number)
        return {client_form::server, t.text};
    row.unescaped += t.text;
    return {client_form::number, std::string_view(row.unescaped).substr(from)};
}

// A name in lower case, without what precedes its last dot.
static std::string my_type_name(client_token_stream &tokens)
{
    std::string name;
    for (client_token t = tokens.next();; t = tokens.next()) {
        name.clear();
        for (const char c : t.text)
            name.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c);
        if (!client_is_mark(tokens.peek(), '.'))
            return name;
        tokens.next();
    }
}

static int my_number(const client_token &t, int otherwise)
{
    int number = otherwise;
    std::from_chars(t.text.data(), t.text.data() + t.text.size(), number);
    return number;
}

// A type of a CAST, up to the parenthesis that ends it. The server's own defaults come first, then what is written.
static client_server_type my_type(client_token_stream &tokens, std::string_view name)
{
    client_server_type type;
    type.base = client_find_base(name);
    int first = type.base == client_base::decimal ? 18 : -1;
    int second = 0;
    const bool is_moment = type.base == client_base::time || type.base == client_base::datetime2 ||
                           type.base == client_base::datetimeoffset;
    if (is_moment)
        first = 7;
    else if (client_is_text(type.base) || client_is_binary(type.base))
        first = 30;
    if (client_is_mark(tokens.peek(), '(')) {
        tokens.next();
        first = my_number(tokens.next(), -1); // "max" is no number
        if (client_is_mark(tokens.peek(), ','))
            second = (tokens.next(), my_number(tokens.next(), 0));
        tokens.next();
    }
    type.length = first;
    type.precision = static_cast<uint8_t>(type.base == client_base::decimal ? first : 0);
    type.scale = static_cast<uint8_t>(is_moment ? first : second);
    return type;
}

// CAST(literal AS type): the value of that type, if it holds the literal. A type of the database's own, of which the
// script does not say what it is, is taken for the column's: such casts are written for columns of these types.
static client_field my_read_cast(client_token_stream &tokens, client_converter &converter, client_row &row)
{
    constexpr client_field servers{client_form::server, {}};
    tokens.next();
    if (!client_is_mark(tokens.next(), '('))
        return servers;
    const client_field inner = my_literal(tokens, row);
    if (inner.form == client_form::server || inner.form == client_form::absent || !client_is_word(tokens.next(), "as"))
        return servers;
    const std::string name = my_type_name(tokens);
    const client_server_type type = my_type(tokens, name);
    if (!client_is_mark(tokens.next(), ')'))
        return servers;
    return client_is_server_type(name) ? client_cast(converter, type, inner, row.made) : inner;
}

// Passes over an expression, up to the comma or parenthesis after it; false when the data ends before.
static bool my_skip_expression(client_token_stream &tokens)
{
    int depth = 0;
    while (true) {
        const client_token t = tokens.peek();
        if (t.kind == client_token_kind::more || t.kind == client_token_kind::end)
            return false;
        if (depth == 0 && (client_is_mark(t, ',') || client_is_mark(t, ')')))
            return true;
        depth += client_is_mark(t, '(') ? 1 : (client_is_mark(t, ')') ? -1 : 0);
        tokens.next();
    }
}

bool client_read_script_value(client_token_stream &tokens, client_converter &converter, client_row &row,
                              client_field &field)
{
    const client_token_stream start = tokens;
    const client_token first = tokens.peek();
    field = client_is_word(first, "cast") ? my_read_cast(tokens, converter, row) : my_literal(tokens, row);
    const client_token end = tokens.peek();
    if (field.form != client_form::server && (client_is_mark(end, ',') || client_is_mark(end, ')')))
        return true;
    tokens = start;
    const bool is_whole = my_skip_expression(tokens);
    field = {client_form::server, tokens.since(start.at)};
    return is_whole;
}
