// INSERT statements of T-SQL scripts, a tuple of values at a time. Everything else in a script is passed over; what
// is inside procedures, triggers and the like is not a row, up to the GO that ends their batch.
//
// A value that is not a literal, or a CAST of one, is one that only the server could compute.
#include "rows/read/client_reader.hpp"
#include "rows/read/client_script_values.hpp"

namespace {

class insert_reader final : public client_reader {
  public:
    client_step read(std::string_view data, bool is_all, client_row &row) override;

  private:
    client_step read_outside(client_token_stream &tokens, std::string_view data, client_row &row);
    client_step read_head(client_token_stream &tokens, std::string_view data, client_row &row);
    client_step read_module(std::string_view data, bool is_all, client_row &row);
    client_step read_tuple(client_token_stream &tokens, std::string_view data, client_row &row);
    client_step read_separator(client_token_stream &tokens, client_row &row);
    void read_setting(client_token_stream &tokens);

    client_insert_head head_;
    client_converter converter_; // for what is cast
    bool in_values_ = false;
    bool after_tuple_ = false;
    bool in_module_ = false;
};

} // namespace

static std::string my_name(const client_token &t)
{
    std::string name;
    if (t.doubled)
        client_append_unquoted(name, t, t.text.find("]]") != t.text.npos ? ']' : '"');
    else
        name = t.text;
    return name;
}

static bool my_is_name(const client_token &t) noexcept
{
    return t.kind == client_token_kind::word || t.kind == client_token_kind::quoted_name;
}

// "SET DATEFORMAT dmy" decides how dates are read from here on.
void insert_reader::read_setting(client_token_stream &tokens)
{
    if (!client_is_word(tokens.peek(), "dateformat"))
        return;
    tokens.next();
    const client_token order = tokens.next();
    if (client_is_word(order, "dmy"))
        head_.date_order = client_date_order::dmy;
    else if (client_is_word(order, "ymd"))
        head_.date_order = client_date_order::ymd;
    else if (client_is_word(order, "mdy"))
        head_.date_order = client_date_order::mdy;
}

static bool my_begins_module(client_token_stream &tokens)
{
    for (client_token t = tokens.peek(); client_is_word(t, "or") || client_is_word(t, "alter"); t = tokens.peek())
        tokens.next();
    const client_token kind = tokens.peek();
    for (const char *word : {"proc", "procedure", "function", "trigger", "view"}) {
        if (client_is_word(kind, word))
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

client_step insert_reader::read_outside(client_token_stream &tokens, std::string_view data, client_row &row)
{
    row.size = 0;
    while (true) {
        const client_token t = tokens.next();
        if (t.kind == client_token_kind::end)
            return client_step::end;
        if (t.kind == client_token_kind::more)
            return row.size > 0 ? client_step::skip : client_step::more;
        const size_t start = tokens.start;
        const bool is_definition = client_is_word(t, "create") || client_is_word(t, "alter");
        if (is_definition || client_is_word(t, "set") || client_is_word(t, "insert")) {
            client_token_stream ahead = tokens; // the words that follow have to be there
            for (int n = 0; n < 4; n++) {
                if (ahead.next().kind == client_token_kind::more) {
                    row.size = start;
                    return start > 0 ? client_step::skip : client_step::more;
                }
            }
        }
        if (client_is_word(t, "set"))
            read_setting(tokens);
        if (is_definition && my_begins_module(tokens)) {
            in_module_ = true;
            row.size = tokens.at;
            return client_step::skip;
        }
        if (client_is_word(t, "insert")) {
            if (start > 0) {
                row.size = start;
                return client_step::skip;
            }
            return read_head(tokens, data, row);
        }
        row.size = tokens.at;
    }
}

// Words that no INSERT of a query holds: they begin the next statement.
static bool my_begins_statement(const client_token &t)
{
    for (const char *word :
         {"go",     "insert", "update",   "delete", "merge",     "truncate", "set",     "declare", "if",
          "while",  "begin",  "create",   "alter",  "drop",      "exec",     "execute", "print",   "use",
          "return", "commit", "rollback", "grant",  "raiserror", "throw",    "waitfor"}) {
        if (client_is_word(t, word))
            return true;
    }
    return false;
}

// A SELECT goes on the one before it only after one of these.
static bool my_joins_queries(const client_token &t)
{
    return client_is_word(t, "union") || client_is_word(t, "all") || client_is_word(t, "except") ||
           client_is_word(t, "intersect");
}

// Passes over the rest of an INSERT whose first word after the columns is given, as far as its end can be told; false
// when the data ends before.
static bool my_skip_query(client_token_stream &tokens, client_token last)
{
    bool has_query = client_is_word(last, "select");
    int depth = client_is_mark(last, '(') ? 1 : 0;
    int cases = 0;
    while (true) {
        const client_token t = tokens.peek();
        if (t.kind == client_token_kind::more)
            return false;
        const bool is_query = depth == 0 && client_is_word(t, "select");
        const bool is_end = client_is_word(t, "end");
        if (t.kind == client_token_kind::end || (is_query && has_query && !my_joins_queries(last)) ||
            (depth == 0 && (client_is_mark(t, ';') || my_begins_statement(t))) || (is_end && cases == 0))
            return true;
        has_query |= is_query;
        depth += client_is_mark(t, '(') ? 1 : (client_is_mark(t, ')') ? -1 : 0);
        cases += client_is_word(t, "case") ? 1 : (is_end ? -1 : 0);
        last = tokens.next();
    }
}

// INSERT [INTO] name [(columns)] VALUES; anything else after it is not a list of rows.
client_step insert_reader::read_head(client_token_stream &tokens, std::string_view data, client_row &row)
{
    client_insert_head head;
    head.date_order = head_.date_order;
    if (client_is_word(tokens.peek(), "into"))
        tokens.next();
    client_token t = tokens.next();
    while (my_is_name(t)) {
        head.schema_name = head.tbl_name;
        head.tbl_name = my_name(t);
        if (!client_is_mark(tokens.peek(), '.'))
            break;
        tokens.next();
        t = tokens.next();
    }
    t = tokens.next();
    if (client_is_mark(t, '(')) {
        head.has_cols = true;
        for (t = tokens.next(); my_is_name(t) || client_is_mark(t, ','); t = tokens.next()) {
            if (my_is_name(t))
                head.cols.push_back(my_name(t));
        }
        if (client_is_mark(t, ')'))
            t = tokens.next();
    }
    if (t.kind == client_token_kind::more)
        return client_step::more;
    const bool is_list = client_is_word(t, "values");
    if (!is_list && !my_skip_query(tokens, t))
        return client_step::more;
    row.size = tokens.at;
    head.number = head_.number + 1;
    head.text = data.substr(0, tokens.at);
    head_ = std::move(head);
    row.head = &head_;
    if (is_list) {
        in_values_ = true;
        after_tuple_ = false;
        return client_step::skip;
    }
    row.reject = client_reject::server_value;
    return client_step::row;
}

client_step insert_reader::read_tuple(client_token_stream &tokens, std::string_view data, client_row &row)
{
    row.unescaped.clear();
    row.made.clear();
    row.unescaped.reserve(data.size()); // never grows: fields borrow from it
    row.has_absent = false;
    converter_.date_order = head_.date_order;
    bool ends = false;
    tokens.next();
    while (!ends) {
        client_field field;
        if (!client_read_script_value(tokens, converter_, row, field)) {
            if (tokens.peek().kind == client_token_kind::more)
                return client_step::more;
            row.reject = client_reject::cut_row;
            row.size = data.size();
            return client_step::row;
        }
        row.has_absent |= field.form == client_form::absent;
        row.fields.push_back(field);
        ends = client_is_mark(tokens.next(), ')');
    }
    row.size = tokens.at;
    after_tuple_ = true;
    return client_step::row;
}

// A comma before the next tuple, or the end of the statement.
client_step insert_reader::read_separator(client_token_stream &tokens, client_row &row)
{
    const client_token t = tokens.next();
    if (t.kind == client_token_kind::more)
        return client_step::more;
    after_tuple_ = false;
    in_values_ = client_is_mark(t, ',');
    row.size = in_values_ ? tokens.at : tokens.start;
    if (t.kind == client_token_kind::end)
        return client_step::end;
    return client_step::skip;
}

client_step insert_reader::read(std::string_view data, bool is_all, client_row &row)
{
    row.fields.clear();
    row.reject = client_reject::none;
    row.place = SIZE_MAX;
    row.head = &head_;
    row.before = in_values_ ? std::string_view(head_.text) : std::string_view(); // else the row has its own
    row.after = ";\n";
    if (in_module_)
        return read_module(data, is_all, row);
    client_token_stream tokens(data, is_all);
    if (!in_values_)
        return read_outside(tokens, data, row);
    if (after_tuple_)
        return read_separator(tokens, row);
    const client_token t = tokens.peek();
    if (t.kind == client_token_kind::more)
        return client_step::more;
    if (tokens.start > 0) {
        row.size = tokens.start;
        return client_step::skip;
    }
    if (client_is_mark(t, '('))
        return read_tuple(tokens, data, row);
    in_values_ = false;
    row.size = 0;
    return t.kind == client_token_kind::end ? client_step::end : client_step::skip;
}

std::unique_ptr<client_reader> client_make_insert_reader()
{
    return std::make_unique<insert_reader>();
}
