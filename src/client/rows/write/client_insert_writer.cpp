// An INSERT for each row, as the server's own script writer has them. What the server fills by itself is left to it,
// but for identity columns, whose values are kept.
#include "rows/convert/client_bytes.hpp"
#include "rows/write/client_row_writer.hpp"

#include <algorithm>
#include <cmath>

static constexpr int rows_a_batch = 100;

namespace {

class insert_writer final : public client_row_writer {
  public:
    explicit insert_writer(client_out_rows rows);
    void append_head(std::string &text) override;
    void append_row(std::string &text, std::span<const client_value> values) override;
    void append_tail(std::string &text) override;

  private:
    static void append_value(std::string &text, const client_server_type &type, const client_value &value);

    client_out_rows rows_;
    std::string name_;
    std::string begin_; // of each statement
    int in_batch_ = 0;
};

} // namespace

static std::string my_bracketed(const std::string &name)
{
    std::string text = "[";
    for (const char byte : name) {
        text.push_back(byte);
        if (byte == ']')
            text.push_back(byte);
    }
    return text + "]";
}

insert_writer::insert_writer(client_out_rows rows) : rows_(std::move(rows))
{
    name_ = my_bracketed(rows_.schema_name) + "." + my_bracketed(rows_.tbl_name);
    for (const client_out_col &col : rows_.cols) {
        if (col.type.base != client_base::rowversion)
            begin_ += (begin_.empty() ? "" : ", ") + my_bracketed(col.name);
    }
    begin_ = "INSERT " + name_ + (begin_.empty() ? " DEFAULT VALUES" : " (" + begin_ + ") VALUES ");
}

void insert_writer::append_head(std::string &text)
{
    if (rows_.checks_later)
        text += "ALTER TABLE " + name_ + " NOCHECK CONSTRAINT ALL\nGO\n";
    if (rows_.has_identity)
        text += "SET IDENTITY_INSERT " + name_ + " ON\nGO\n";
}

void insert_writer::append_tail(std::string &text)
{
    if (in_batch_ > 0)
        text += "GO\n";
    if (rows_.has_identity)
        text += "SET IDENTITY_INSERT " + name_ + " OFF\nGO\n";
    if (rows_.checks_later)
        text += "ALTER TABLE " + name_ + " WITH CHECK CHECK CONSTRAINT ALL\nGO\n";
}

void insert_writer::append_row(std::string &text, std::span<const client_value> values)
{
    text += begin_;
    const char *separator = "(";
    for (size_t n = 0; n < values.size(); n++) {
        const client_server_type &type = rows_.cols[n].type;
        if (type.base == client_base::rowversion)
            continue;
        text += separator;
        append_value(text, type, values[n]);
        separator = ", ";
    }
    text += *separator == ',' ? ")\n" : "\n";
    if (++in_batch_ == rows_a_batch)
        text += "GO\n";
    in_batch_ %= rows_a_batch;
}

// A T between date and time, which the server reads alike in every language.
static void my_append_string(std::string &text, const client_server_type &type, std::string_view value)
{
    const auto is_ascii = std::all_of(value.begin(), value.end(), [](char byte) { return (byte & 0x80) == 0; });
    const bool has_date = type.base == client_base::datetime || type.base == client_base::smalldatetime ||
                          type.base == client_base::datetime2 || type.base == client_base::datetimeoffset;
    text += client_is_unicode(type.base) || !is_ascii ? "N'" : "'";
    for (size_t n = 0; n < value.size(); n++) {
        text.push_back(has_date && n == 10 && value[n] == ' ' ? 'T' : value[n]);
        if (value[n] == '\'')
            text.push_back('\'');
    }
    text.push_back('\'');
}

// With an exponent, so that the server does not take it for a decimal first.
static void my_append_real(std::string &text, const client_server_type &type, double value)
{
    const size_t before = text.size();
    client_append_shortest(text, value, type.base == client_base::real);
    if (!std::isfinite(value)) // the server has none of these, and will refuse it
        text.insert(before, "'").push_back('\'');
    else if (text.find('e', before) == text.npos)
        text += "e0";
}

void insert_writer::append_value(std::string &text, const client_server_type &type, const client_value &value)
{
    std::string form;
    switch (value.storage) {
    case client_storage::null:
        text += "NULL";
        return;
    case client_storage::real:
        my_append_real(text, type, value.real);
        return;
    case client_storage::integer:
        client_append_form(text, type, value, client_text_form::plain);
        return;
    case client_storage::blob:
        if (type.base == client_base::guid && value.bytes.size() == 16) {
            client_append_guid(form, value.bytes);
            my_append_string(text, type, form);
        } else {
            client_append_form(text, type, value, client_text_form::plain);
        }
        return;
    case client_storage::text:
        client_append_form(form, type, value, client_text_form::plain);
        my_append_string(text, type, form);
        return;
    }
}

std::unique_ptr<client_row_writer> client_make_insert_writer(client_out_rows rows)
{
    return std::make_unique<insert_writer>(std::move(rows));
}
