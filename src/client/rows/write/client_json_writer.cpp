// JSON lines: an object for each row, with values as the server's FOR JSON writes them. NULL is written out, so that
// all objects have the same members.
#include "rows/convert/client_bytes.hpp"
#include "rows/convert/client_json_text.hpp"
#include "rows/write/client_row_writer.hpp"

#include <cmath>

namespace {

// A slash is escaped too, as the server does it.
void append_string(std::string &json, std::string_view text)
{
    for (const char byte : text) {
        if (byte == '/')
            json.push_back('\\');
        client_append_json_byte(json, byte);
    }
}

class json_writer final : public client_row_writer {
  public:
    explicit json_writer(client_out_rows rows) : rows_(std::move(rows))
    {
        for (const client_out_col &col : rows_.cols) {
            names_.emplace_back(names_.empty() ? "{\"" : ",\"");
            append_string(names_.back(), col.name);
            names_.back() += "\":";
        }
    }
    void append_head(std::string &) override
    {
    }
    void append_row(std::string &text, std::span<const client_value> values) override
    {
        for (size_t n = 0; n < values.size(); n++) {
            text += names_[n];
            append_value(text, rows_.cols[n].type, values[n]);
        }
        text += "}\n";
    }
    void append_tail(std::string &) override
    {
    }

  private:
    void append_value(std::string &text, const client_server_type &type, const client_value &value);

    client_out_rows rows_;
    std::vector<std::string> names_; // each with its quotes and colon
    std::string form_;
};

} // namespace

// A T between date and time, no zeros at the end of the fraction, the offset directly after it.
static std::string my_json_moment(std::string moment)
{
    const size_t dot = moment.find('.');
    if (dot != moment.npos) {
        const size_t end = std::min(moment.find(' ', dot), moment.size());
        const size_t last = moment.find_last_not_of('0', end - 1);
        const size_t keep = last == dot ? dot : last + 1;
        moment.erase(keep, end - keep);
    }
    const size_t date_end = moment.find(' ');
    if (date_end == 10)
        moment[date_end] = 'T';
    const size_t offset = moment.find(' ');
    if (offset != moment.npos)
        moment.erase(offset, 1);
    return moment;
}

void json_writer::append_value(std::string &text, const client_server_type &type, const client_value &value)
{
    if (value.storage == client_storage::null) {
        text += "null";
        return;
    }
    if (type.base == client_base::bit && value.storage == client_storage::integer) {
        text += value.integer ? "true" : "false";
        return;
    }
    if (value.storage == client_storage::real && std::isfinite(value.real)) {
        client_append_shortest(text, value.real, type.base == client_base::real);
        return;
    }
    form_.clear();
    if (value.storage == client_storage::blob && type.base != client_base::guid)
        client_append_base64(form_, value.bytes);
    else
        client_append_form(form_, type, value, client_text_form::plain);
    const bool is_money = type.base == client_base::money || type.base == client_base::smallmoney;
    if (value.storage == client_storage::integer && !is_money) {
        text += form_;
        return;
    }
    text.push_back('"');
    append_string(text,
                  value.storage == client_storage::text && client_is_moment(type.base) ? my_json_moment(form_) : form_);
    text.push_back('"');
}

std::unique_ptr<client_row_writer> client_make_json_writer(client_out_rows rows)
{
    return std::make_unique<json_writer>(std::move(rows));
}
