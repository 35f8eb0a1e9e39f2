// Counting fields is the only way: a line end inside a field that is not the last is data.
//
// A row with too few fields takes what it lacks from the row after it, so that two rows look like one with a field
// terminator too many. Then the row ends at its first row terminator, and reading goes on after that.
#include "rows/read/client_reader.hpp"

#include <cstring>

namespace {

class bcp_reader final : public client_reader {
  public:
    explicit bcp_reader(client_bcp_form form) : form_(std::move(form))
    {
    }
    client_step read(std::string_view data, bool is_all, client_row &row) override;

  private:
    client_step refuse(client_reject reject, size_t place, size_t size, client_row &row) const;
    client_step refuse_unended(std::string_view data, size_t place, client_row &row) const;
    client_step check_last(std::string_view data, size_t last, size_t size, client_row &row) const;

    client_bcp_form form_;
};

} // namespace

static size_t my_find_end(std::string_view data, size_t from, const std::string &end)
{
    if (end.size() != 1)
        return data.find(end, from);
    const void *found = std::memchr(data.data() + from, end[0], data.size() - from);
    return found ? static_cast<size_t>(static_cast<const char *>(found) - data.data()) : data.npos;
}

// Nothing is NULL, and one NUL byte is an empty text.
static client_field my_make_field(std::string_view bytes)
{
    if (bytes.empty())
        return {};
    return {client_form::text, bytes.size() == 1 && bytes[0] == '\0' ? std::string_view("") : bytes};
}

client_step bcp_reader::refuse(client_reject reject, size_t place, size_t size, client_row &row) const
{
    row.reject = reject;
    row.place = place;
    row.size = size;
    return client_step::row;
}

// The data ends, and the row does not.
client_step bcp_reader::refuse_unended(std::string_view data, size_t place, client_row &row) const
{
    const size_t line = my_find_end(data, 0, form_.row_end);
    if (line == data.npos)
        return refuse(client_reject::cut_row, place, data.size(), row);
    return refuse(client_reject::too_few_fields, place, line + form_.row_end.size(), row);
}

client_step bcp_reader::check_last(std::string_view data, size_t last, size_t size, client_row &row) const
{
    const std::string_view field = data.substr(last, size - last - form_.row_end.size());
    row.size = size;
    if (field.find(form_.field_end) != field.npos) {
        const size_t line = my_find_end(data, 0, form_.row_end);
        const bool is_short = line < last;
        return refuse(is_short ? client_reject::too_few_fields : client_reject::too_many_fields, form_.count - 1,
                      line + form_.row_end.size(), row);
    }
    row.fields.push_back(my_make_field(field));
    return client_step::row;
}

client_step bcp_reader::read(std::string_view data, bool is_all, client_row &row)
{
    row.fields.clear();
    row.reject = client_reject::none;
    row.place = SIZE_MAX;
    if (data.empty())
        return is_all ? client_step::end : client_step::more;
    size_t at = 0;
    for (size_t n = 0; n + 1 < form_.count; n++) {
        const size_t end = my_find_end(data, at, form_.field_end);
        if (end == data.npos)
            return is_all ? refuse_unended(data, n, row) : client_step::more;
        const std::string_view field = data.substr(at, end - at);
        if (!form_.holds_lines[n] && field.find(form_.row_end) != field.npos) {
            const size_t line = at + field.find(form_.row_end);
            return refuse(client_reject::too_few_fields, n, line + form_.row_end.size(), row);
        }
        row.fields.push_back(my_make_field(field));
        at = end + form_.field_end.size();
    }
    const size_t end = my_find_end(data, at, form_.row_end);
    if (end == data.npos)
        return is_all ? refuse_unended(data, form_.count - 1, row) : client_step::more;
    return check_last(data, at, end + form_.row_end.size(), row);
}

std::unique_ptr<client_reader> client_make_bcp_reader(client_bcp_form form)
{
    return std::make_unique<bcp_reader>(std::move(form));
}
