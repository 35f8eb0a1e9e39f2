// CSV: fields in quotes hold separators, line ends and doubled quotes; other fields are taken as they are.
//
// Where quotes do not close as they should, the row ends at its first line end, and reading goes on after that: one
// stray quote costs one row, or two, and not the rest of the file.
#include "rows/read/client_reader.hpp"

#include <algorithm>
#include <array>

// So much is looked through for a quote that closes.
static constexpr size_t most_of_quoted = size_t{64} * 1024 * 1024;

namespace {

enum class field_end : uint8_t { field, row, data, more, broken };

class csv_reader final : public client_reader {
  public:
    explicit csv_reader(client_csv_form form) : form_(std::move(form))
    {
        ends_['\n'] = ends_['\r'] = ends_[static_cast<unsigned char>(form_.field_end[0])] = true;
    }
    client_step read(std::string_view data, bool is_all, client_row &row) override;

  private:
    client_step read_row(std::string_view data, bool is_all, client_row &row);
    field_end read_field(std::string_view data, bool is_all, size_t &at, client_row &row) const;
    field_end read_quoted(std::string_view data, bool is_all, size_t &at, client_row &row) const;
    field_end take_end(std::string_view data, bool is_all, size_t &at) const;
    void keep(std::string_view field, client_row &row) const;
    client_step judge(field_end end, size_t at, client_row &row) const;

    client_csv_form form_;
    std::array<bool, 256> ends_{}; // whether a field without quotes may end at a byte
};

} // namespace

// What ends a field, at the place where it does.
field_end csv_reader::take_end(std::string_view data, bool is_all, size_t &at) const
{
    if (at == data.size())
        return is_all ? field_end::data : field_end::more;
    if (!is_all && at + form_.field_end.size() + 1 > data.size())
        return field_end::more;
    if (data.substr(at).starts_with(form_.field_end)) {
        at += form_.field_end.size();
        return field_end::field;
    }
    if (data[at] == '\r' && at + 1 < data.size() && data[at + 1] == '\n')
        at++;
    if (data[at] != '\r' && data[at] != '\n')
        return field_end::broken;
    at++;
    return field_end::row;
}

field_end csv_reader::read_quoted(std::string_view data, bool is_all, size_t &at, client_row &row) const
{
    const size_t from = at + 1;
    bool is_doubled = false;
    at = data.find('"', from);
    while (at != std::string_view::npos && at + 1 < data.size() && data[at + 1] == '"') {
        is_doubled = true;
        at = data.find('"', at + 2);
    }
    if (at == std::string_view::npos)
        return is_all || data.size() > most_of_quoted ? field_end::broken : field_end::more;
    if (at + 1 == data.size() && !is_all)
        return field_end::more;
    std::string_view field = data.substr(from, at - from);
    if (is_doubled) {
        const size_t begin = row.unescaped.size();
        for (size_t n = 0; n < field.size(); n++) {
            row.unescaped.push_back(field[n]);
            n += field[n] == '"' ? 1U : 0U;
        }
        field = std::string_view(row.unescaped).substr(begin);
    }
    row.fields.push_back({client_form::text, field});
    at++;
    return take_end(data, is_all, at);
}

// A field without quotes. One NUL byte is an empty text, as in bcp's files.
void csv_reader::keep(std::string_view field, client_row &row) const
{
    const bool may_be_either = form_.null_is_guessed && form_.null_word.empty() && field == "NULL";
    if (may_be_either && row.reject == client_reject::none) {
        row.reject = client_reject::null_or_text;
        row.place = row.fields.size();
    }
    if (field == form_.null_word)
        row.fields.emplace_back();
    else
        row.fields.push_back({client_form::text, field == std::string_view("\0", 1) ? std::string_view("") : field});
}

field_end csv_reader::read_field(std::string_view data, bool is_all, size_t &at, client_row &row) const
{
    if (at < data.size() && data[at] == '"')
        return read_quoted(data, is_all, at, row);
    const size_t from = at;
    while (true) {
        while (at < data.size() && !ends_[static_cast<unsigned char>(data[at])])
            at++;
        const size_t size = at - from;
        const field_end end = take_end(data, is_all, at);
        if (end == field_end::more)
            return end;
        if (end != field_end::broken) {
            keep(data.substr(from, size), row);
            return end;
        }
        at++; // a separator of several characters that only begins here
    }
}

client_step csv_reader::judge(field_end end, size_t at, client_row &row) const
{
    row.size = at;
    if (row.fields.size() == form_.count || row.reject == client_reject::bad_row)
        return client_step::row;
    row.place = std::min(row.fields.size(), form_.count) - 1;
    row.reject = row.fields.size() > form_.count ? client_reject::too_many_fields : client_reject::too_few_fields;
    if (end == field_end::data && row.reject == client_reject::too_few_fields)
        row.reject = client_reject::cut_row;
    return client_step::row;
}

// The first line, where the quotes of a row cannot be followed.
static size_t my_line_size(std::string_view data)
{
    const size_t end = data.find('\n');
    return end == std::string_view::npos ? data.size() : end + 1;
}

client_step csv_reader::read_row(std::string_view data, bool is_all, client_row &row)
{
    size_t at = 0;
    row.unescaped.clear();
    row.unescaped.reserve(data.size()); // never grows: fields borrow from it
    while (true) {
        const field_end end = read_field(data, is_all, at, row);
        if (end == field_end::more)
            return client_step::more;
        if (end == field_end::broken) {
            row.reject = client_reject::bad_row;
            row.place = row.fields.empty() ? 0 : row.fields.size() - 1;
            return judge(end, my_line_size(data), row);
        }
        if (end != field_end::field) {
            row.after = end == field_end::data ? "\n" : "";
            return judge(end, at, row);
        }
    }
}

client_step csv_reader::read(std::string_view data, bool is_all, client_row &row)
{
    row.fields.clear();
    row.reject = client_reject::none;
    row.place = SIZE_MAX;
    if (data.empty())
        return is_all ? client_step::end : client_step::more;
    const client_step step = read_row(data, is_all, row);
    const bool is_blank = row.fields.size() == 1 && data.find_first_not_of("\r\n") >= row.size && form_.count != 1;
    if (step != client_step::row || (!form_.skips_header && !is_blank))
        return step;
    form_.skips_header = form_.skips_header && is_blank;
    return client_step::skip;
}

std::unique_ptr<client_reader> client_make_csv_reader(client_csv_form form)
{
    return std::make_unique<csv_reader>(std::move(form));
}
