// INSERT statements of T-SQL scripts, a tuple of values at a time. Everything else in a script is passed over; what
// stands in procedures, triggers and the like is no row, up to the GO that ends their batch.
//
// A value that is not a literal, or a CAST of one, is one that only the server could compute.
#include "rows/read/client_reader.hpp"

#include "kt_string.h"

#include <cstring>

namespace {

enum class token_kind : uint8_t { end, more, word, quoted_name, string, number, hex, variable, mark };

struct token {
    token_kind kind = token_kind::end;
    std::string_view text; // without the quotes of a string or name
    bool doubled = false;  // it has quotes inside, doubled
};

// Splits text into tokens from a place on.
class token_stream {
  public:
    token_stream(std::string_view data, bool is_all) : data_(data), is_all_(is_all)
    {
    }
    token next();
    token peek()
    {
        const size_t before = at;
        const token result = next();
        at = before;
        return result;
    }

    size_t at = 0;
    size_t start = 0; // of the last token

  private:
    bool skip_blanks();
    bool skip_comment();
    token quoted(char end, token_kind kind);
    token run(token_kind kind, size_t from);
    char look(size_t ahead) const
    {
        return at + ahead < data_.size() ? data_[at + ahead] : '\0';
    }

    std::string_view data_;
    bool is_all_;
};

class insert_reader final : public client_reader {
  public:
    client_step read(std::string_view data, bool is_all, client_row &row) override;

  private:
    client_step read_outside(token_stream &tokens, std::string_view data, client_row &row);
    client_step read_head(token_stream &tokens, std::string_view data, client_row &row);
    client_step read_module(std::string_view data, bool is_all, client_row &row);
    client_step read_tuple(token_stream &tokens, std::string_view data, client_row &row);
    client_step read_separator(token_stream &tokens, client_row &row);
    void read_setting(token_stream &tokens);

    client_insert_head head_;
    bool in_values_ = false;
    bool after_tuple_ = false;
    bool in_module_ = false;
};

} // namespace

static bool my_is_word_char(char c) noexcept
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') || c == '_' || c == '#' ||
           c == '$' || c == '@';
}

static bool my_is_word(const token &t, std::string_view word) noexcept
{
    return t.kind == token_kind::word && t.text.size() == word.size() &&
           KT_strnicmp(t.text.data(), word.data(), static_cast<uint32_t>(word.size())) == 0;
}

static bool my_is_mark(const token &t, char mark) noexcept
{
    return t.kind == token_kind::mark && t.text[0] == mark;
}

// False when more is needed to know where a comment ends.
bool token_stream::skip_comment()
{
    if (look(0) == '-') {
        const size_t end = data_.find('\n', at);
        at = end == data_.npos ? data_.size() : end + 1;
        return end != data_.npos || is_all_;
    }
    int depth = 0;
    do {
        if (at + 1 >= data_.size()) {
            at = data_.size();
            return is_all_;
        }
        const bool opens = look(0) == '/' && look(1) == '*';
        const bool closes = look(0) == '*' && look(1) == '/';
        depth += opens ? 1 : (closes ? -1 : 0);
        at += opens || closes ? 2 : 1;
    } while (depth > 0);
    return true;
}

bool token_stream::skip_blanks()
{
    while (at < data_.size()) {
        const char c = data_[at];
        const bool is_blank = c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
        const bool is_comment = (c == '-' && look(1) == '-') || (c == '/' && look(1) == '*');
        if (!is_blank && !is_comment)
            break;
        if (is_blank)
            at++;
        else if (!skip_comment())
            return false;
    }
    return true;
}

token token_stream::quoted(char end, token_kind kind)
{
    const size_t from = at;
    token result{kind, {}, false};
    while (true) {
        const size_t quote = data_.find(end, at);
        if (quote == data_.npos || (quote + 1 == data_.size() && !is_all_))
            return {is_all_ ? token_kind::end : token_kind::more, {}, false};
        at = quote + 1;
        if (look(0) != end) {
            result.text = data_.substr(from, quote - from);
            return result;
        }
        result.doubled = true;
        at++;
    }
}

token token_stream::run(token_kind kind, size_t from)
{
    while (at < data_.size()) {
        const char c = data_[at];
        const bool is_sign = kind == token_kind::number && (c == '+' || c == '-') && (data_[at - 1] | 0x20) == 'e';
        const bool is_point = kind == token_kind::number && c == '.';
        if (!my_is_word_char(c) && !is_sign && !is_point)
            break;
        at++;
    }
    if (at == data_.size() && !is_all_)
        return {token_kind::more, {}, false};
    return {kind, data_.substr(from, at - from), false};
}

token token_stream::next()
{
    if (!skip_blanks())
        return {token_kind::more, {}, false};
    start = at;
    if (at == data_.size() || (at + 1 == data_.size() && !is_all_))
        return {is_all_ ? token_kind::end : token_kind::more, {}, false};
    const char c = data_[at];
    const bool is_national = (c == 'N' || c == 'n') && look(1) == '\'';
    if (c == '\'' || is_national) {
        at += is_national ? 2 : 1;
        return quoted('\'', token_kind::string);
    }
    if (c == '"' || c == '[') {
        at++;
        return quoted(c == '[' ? ']' : '"', token_kind::quoted_name);
    }
    if (c == '0' && (look(1) | 0x20) == 'x')
        return run(token_kind::hex, at);
    if ((c >= '0' && c <= '9') || (c == '.' && look(1) >= '0' && look(1) <= '9'))
        return run(token_kind::number, at);
    if (c == '@')
        return run(token_kind::variable, at);
    if (c != '$' && my_is_word_char(c))
        return run(token_kind::word, at);
    at++;
    return {token_kind::mark, data_.substr(start, 1), false};
}

// A name or string with its doubled quotes halved.
static void my_append_plain(std::string &text, const token &t, char quote)
{
    for (size_t n = 0; n < t.text.size(); n++) {
        text.push_back(t.text[n]);
        if (t.text[n] == quote)
            n++;
    }
}

static std::string my_name(const token &t)
{
    std::string name;
    if (t.doubled)
        my_append_plain(name, t, t.text.find("]]") != t.text.npos ? ']' : '"');
    else
        name = t.text;
    return name;
}

static bool my_is_name(const token &t) noexcept
{
    return t.kind == token_kind::word || t.kind == token_kind::quoted_name;
}

// "SET DATEFORMAT dmy" decides how dates are read from here on.
void insert_reader::read_setting(token_stream &tokens)
{
    if (!my_is_word(tokens.peek(), "dateformat"))
        return;
    tokens.next();
    const token order = tokens.next();
    if (my_is_word(order, "dmy"))
        head_.date_order = client_date_order::dmy;
    else if (my_is_word(order, "ymd"))
        head_.date_order = client_date_order::ymd;
    else if (my_is_word(order, "mdy"))
        head_.date_order = client_date_order::mdy;
}

static bool my_begins_module(token_stream &tokens)
{
    for (token t = tokens.peek(); my_is_word(t, "or") || my_is_word(t, "alter"); t = tokens.peek())
        tokens.next();
    const token kind = tokens.peek();
    for (const char *word : {"proc", "procedure", "function", "trigger", "view"}) {
        if (my_is_word(kind, word))
            return true;
    }
    return false;
}

// Up to the line that says GO.
client_step insert_reader::read_module(std::string_view data, bool is_all, client_row &row)
{
    size_t at = 0;
    while (at < data.size()) {
        const size_t end = data.find('\n', at);
        if (end == data.npos && !is_all)
            break;
        std::string_view line = data.substr(at, end == data.npos ? data.npos : end - at);
        at = end == data.npos ? data.size() : end + 1;
        while (!line.empty() &&
               (line.back() == '\r' || line.back() == ' ' || line.back() == '\t' || line.back() == ';'))
            line.remove_suffix(1);
        if (line.size() == 2 && (line[0] | 0x20) == 'g' && (line[1] | 0x20) == 'o') {
            in_module_ = false;
            break;
        }
    }
    row.size = at;
    if (at > 0)
        return client_step::skip;
    return is_all ? client_step::end : client_step::more;
}

client_step insert_reader::read_outside(token_stream &tokens, std::string_view data, client_row &row)
{
    row.size = 0;
    while (true) {
        const token t = tokens.next();
        if (t.kind == token_kind::end)
            return client_step::end;
        if (t.kind == token_kind::more)
            return row.size > 0 ? client_step::skip : client_step::more;
        const size_t start = tokens.start;
        const bool is_definition = my_is_word(t, "create") || my_is_word(t, "alter");
        if (is_definition || my_is_word(t, "set") || my_is_word(t, "insert")) {
            token_stream ahead = tokens; // the words that follow have to be there
            for (int n = 0; n < 4; n++) {
                if (ahead.next().kind == token_kind::more) {
                    row.size = start;
                    return start > 0 ? client_step::skip : client_step::more;
                }
            }
        }
        if (my_is_word(t, "set"))
            read_setting(tokens);
        if (is_definition && my_begins_module(tokens)) {
            in_module_ = true;
            row.size = tokens.at;
            return client_step::skip;
        }
        if (my_is_word(t, "insert")) {
            if (start > 0) {
                row.size = start;
                return client_step::skip;
            }
            return read_head(tokens, data, row);
        }
        row.size = tokens.at;
    }
}

// INSERT [INTO] name [(columns)] VALUES; anything else after it is no list of rows.
client_step insert_reader::read_head(token_stream &tokens, std::string_view data, client_row &row)
{
    client_insert_head head;
    head.date_order = head_.date_order;
    if (my_is_word(tokens.peek(), "into"))
        tokens.next();
    token t = tokens.next();
    while (my_is_name(t)) {
        head.schema_name = head.tbl_name;
        head.tbl_name = my_name(t);
        if (!my_is_mark(tokens.peek(), '.'))
            break;
        tokens.next();
        t = tokens.next();
    }
    t = tokens.next();
    if (my_is_mark(t, '(')) {
        head.has_cols = true;
        for (t = tokens.next(); my_is_name(t) || my_is_mark(t, ','); t = tokens.next()) {
            if (my_is_name(t))
                head.cols.push_back(my_name(t));
        }
        if (my_is_mark(t, ')'))
            t = tokens.next();
    }
    if (t.kind == token_kind::more)
        return client_step::more;
    row.size = tokens.at;
    head.number = head_.number + 1;
    head.text = data.substr(0, tokens.at);
    head_ = std::move(head);
    row.head = &head_;
    if (my_is_word(t, "values")) {
        in_values_ = true;
        after_tuple_ = false;
        return client_step::skip;
    }
    row.reject = client_reject::server_value;
    return client_step::row;
}

static client_field my_keep(client_row &row, client_form form, const token &t)
{
    if (!t.doubled)
        return {form, t.text};
    const size_t from = row.unescaped.size();
    my_append_plain(row.unescaped, t, '\'');
    return {form, std::string_view(row.unescaped).substr(from)};
}

// Passes over the rest of an expression, up to the comma or parenthesis that ends it.
static bool my_skip_expression(token_stream &tokens)
{
    int depth = 0;
    while (true) {
        const token t = tokens.peek();
        if (t.kind == token_kind::more || t.kind == token_kind::end)
            return false;
        if (depth == 0 && (my_is_mark(t, ',') || my_is_mark(t, ')')))
            return true;
        depth += my_is_mark(t, '(') ? 1 : (my_is_mark(t, ')') ? -1 : 0);
        tokens.next();
    }
}

// A literal: what it is, or the server's for anything else. A sign or a $ before a number belongs to it.
static client_field my_literal(token_stream &tokens, client_row &row)
{
    token t = tokens.next();
    if (t.kind == token_kind::string)
        return my_keep(row, client_form::literal, t);
    if (t.kind == token_kind::hex)
        return {client_form::hex, t.text};
    if (my_is_word(t, "null"))
        return {client_form::null, {}};
    if (my_is_word(t, "default"))
        return {client_form::absent, {}};
    const size_t from = row.unescaped.size();
    bool signed_number = false;
    for (; my_is_mark(t, '-') || my_is_mark(t, '+') || my_is_mark(t, '$'); t = tokens.next()) {
        if (!my_is_mark(t, '$') && !signed_number)
            row.unescaped += t.text;
        signed_number |= !my_is_mark(t, '$');
    }
    if (t.kind != token_kind::number)
        return {client_form::server, t.text};
    row.unescaped += t.text;
    return {client_form::number, std::string_view(row.unescaped).substr(from)};
}

// CAST(literal AS type) and CONVERT(type, literal) mean the literal, whose column converts it anyway.
static client_field my_value(token_stream &tokens, client_row &row)
{
    const token first = tokens.peek();
    if (!my_is_word(first, "cast"))
        return my_literal(tokens, row);
    tokens.next();
    if (!my_is_mark(tokens.next(), '('))
        return {client_form::server, first.text};
    const client_field inner = my_literal(tokens, row);
    if (!my_is_word(tokens.next(), "as"))
        return {client_form::server, first.text};
    if (!my_skip_expression(tokens)) // the type; a comma inside its parentheses is skipped with them
        return {client_form::server, first.text};
    tokens.next();
    return inner;
}

client_step insert_reader::read_tuple(token_stream &tokens, std::string_view data, client_row &row)
{
    row.unescaped.clear();
    row.unescaped.reserve(data.size()); // never grows: fields borrow from it
    row.has_absent = false;
    bool ends = false;
    tokens.next();
    while (!ends) {
        client_field field = my_value(tokens, row);
        const token end = tokens.peek();
        if (!my_is_mark(end, ',') && !my_is_mark(end, ')')) {
            field = {client_form::server, field.bytes};
            if (!my_skip_expression(tokens)) {
                if (tokens.peek().kind == token_kind::more)
                    return client_step::more;
                row.reject = client_reject::cut_row;
                row.size = data.size();
                return client_step::row;
            }
        }
        row.has_absent |= field.form == client_form::absent;
        row.fields.push_back(field);
        ends = my_is_mark(tokens.next(), ')');
    }
    row.size = tokens.at;
    after_tuple_ = true;
    return client_step::row;
}

// A comma before the next tuple, or the end of the statement.
client_step insert_reader::read_separator(token_stream &tokens, client_row &row)
{
    const token t = tokens.next();
    if (t.kind == token_kind::more)
        return client_step::more;
    after_tuple_ = false;
    in_values_ = my_is_mark(t, ',');
    row.size = in_values_ ? tokens.at : tokens.start;
    if (t.kind == token_kind::end)
        return client_step::end;
    return client_step::skip;
}

client_step insert_reader::read(std::string_view data, bool is_all, client_row &row)
{
    row.fields.clear();
    row.reject = client_reject::none;
    row.place = SIZE_MAX;
    row.head = &head_;
    row.before = head_.text;
    row.after = ";\n";
    if (in_module_)
        return read_module(data, is_all, row);
    token_stream tokens(data, is_all);
    if (!in_values_)
        return read_outside(tokens, data, row);
    if (after_tuple_)
        return read_separator(tokens, row);
    const token t = tokens.peek();
    if (t.kind == token_kind::more)
        return client_step::more;
    if (tokens.start > 0) {
        row.size = tokens.start;
        return client_step::skip;
    }
    if (my_is_mark(t, '('))
        return read_tuple(tokens, data, row);
    in_values_ = false;
    row.size = 0;
    return t.kind == token_kind::end ? client_step::end : client_step::skip;
}

std::unique_ptr<client_reader> client_make_insert_reader()
{
    return std::make_unique<insert_reader>();
}
