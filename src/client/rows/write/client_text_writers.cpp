// bcp's character form and CSV.
#include "rows/write/client_row_writer.hpp"

namespace {

class bcp_writer final : public client_row_writer {
  public:
    bcp_writer(client_out_rows rows, client_text_ends ends, bool is_short)
        : rows_(std::move(rows)), ends_(std::move(ends)),
          form_(is_short ? client_text_form::bcp_short : client_text_form::bcp)
    {
    }
    void append_head(std::string &) override
    {
    }
    void append_row(std::string &text, std::span<const client_value> values) override;
    void append_tail(std::string &) override
    {
    }
    int64_t unreadable() const noexcept override
    {
        return unreadable_;
    }

  private:
    bool holds_an_end(std::string_view text, bool is_last) const noexcept;

    client_out_rows rows_;
    client_text_ends ends_;
    client_text_form form_;
    int64_t unreadable_ = 0;
};

class csv_writer final : public client_row_writer {
  public:
    csv_writer(client_out_rows rows, client_text_ends ends) : rows_(std::move(rows)), ends_(std::move(ends))
    {
    }
    void append_head(std::string &text) override;
    void append_row(std::string &text, std::span<const client_value> values) override;
    void append_tail(std::string &) override
    {
    }

  private:
    void append_quoted(std::string &text, std::string_view field, bool is_text) const;

    client_out_rows rows_;
    client_text_ends ends_;
    std::string field_;
};

} // namespace

// The row terminator is data in every field but the last. A text that is a NUL byte itself reads as an empty one.
bool bcp_writer::holds_an_end(std::string_view text, bool is_last) const noexcept
{
    return text.find(ends_.field_end) != text.npos || (is_last && text.find(ends_.row_end) != text.npos) ||
           text == std::string_view("\0", 1);
}

// NULL is nothing, and an empty text one NUL byte.
void bcp_writer::append_row(std::string &text, std::span<const client_value> values)
{
    for (size_t n = 0; n < values.size(); n++) {
        const size_t before = text.size();
        client_append_form(text, rows_.cols[n].type, values[n], form_);
        const bool is_text = values[n].storage == client_storage::text;
        if (is_text && holds_an_end(std::string_view(text).substr(before), n + 1 == values.size()))
            unreadable_++;
        if (text.size() == before && values[n].storage != client_storage::null)
            text.push_back('\0');
        text += n + 1 < values.size() ? ends_.field_end : ends_.row_end;
    }
}

// NULL is nothing, and an empty text two quotes.
void csv_writer::append_quoted(std::string &text, std::string_view field, bool is_text) const
{
    const bool quoted = (is_text && (field.empty() || field == "NULL")) ||
                        field.find_first_of("\"\r\n") != field.npos || field.find(ends_.field_end) != field.npos;
    if (!quoted) {
        text += field;
        return;
    }
    text.push_back('"');
    for (const char byte : field) {
        text.push_back(byte);
        if (byte == '"')
            text.push_back(byte);
    }
    text.push_back('"');
}

void csv_writer::append_head(std::string &text)
{
    for (size_t n = 0; n < rows_.cols.size(); n++) {
        append_quoted(text, rows_.cols[n].name, true);
        text += n + 1 < rows_.cols.size() ? ends_.field_end : ends_.row_end;
    }
}

void csv_writer::append_row(std::string &text, std::span<const client_value> values)
{
    for (size_t n = 0; n < values.size(); n++) {
        field_.clear();
        client_append_form(field_, rows_.cols[n].type, values[n], client_text_form::plain);
        if (values[n].storage != client_storage::null)
            append_quoted(text, field_, values[n].storage == client_storage::text);
        text += n + 1 < values.size() ? ends_.field_end : ends_.row_end;
    }
}

std::unique_ptr<client_row_writer> client_make_bcp_writer(client_out_rows rows, client_text_ends ends, bool is_short)
{
    return std::make_unique<bcp_writer>(std::move(rows), std::move(ends), is_short);
}

std::unique_ptr<client_row_writer> client_make_csv_writer(client_out_rows rows, client_text_ends ends)
{
    return std::make_unique<csv_writer>(std::move(rows), std::move(ends));
}
