// Objects are rows; what is between them (brackets of an array, commas, line ends, the name that FOR JSON gives to
// all of them) is passed over. What is not an object is refused up to the end of its line.
#include "rows/read/client_json_object.hpp"

#include "rows/convert/client_utf8.hpp"

#include <algorithm>

// An object that has not ended after so much is not one.
static constexpr size_t most_of_object = size_t{64} * 1024 * 1024;

namespace {

class json_reader final : public client_reader {
  public:
    json_reader(std::vector<client_json_member> members, bool at_start)
        : members_(std::move(members)), at_start_(at_start)
    {
    }
    client_step read(std::string_view data, bool is_all, client_row &row) override;

  private:
    client_step read_object(std::string_view data, bool is_all, client_row &row);
    static client_step refuse_line(std::string_view data, client_reject reject, client_row &row);
    std::string_view without(std::string_view data, const client_json_extent &extent);
    void pass(std::string_view data);

    std::vector<client_json_member> members_;
    bool at_start_;
    size_t before_ = 0; // characters of the line before the data
    std::string joined_;
};

} // namespace

// {"name":[ before the first row; 0 when there is none, npos when more has to be seen.
static size_t my_root_size(std::string_view data, bool is_all)
{
    size_t at = 0;
    const auto skip_blanks = [&] { at = std::min(data.find_first_not_of(" \t\r\n", at), data.size()); };
    for (const char mark : {'{', '"', ':', '['}) {
        if (mark == ':') {
            at = data.find('"', at);
            at = at == std::string_view::npos ? data.size() : at + 1;
        }
        skip_blanks();
        if (at == data.size())
            return is_all ? 0 : std::string_view::npos;
        if (data[at] != mark)
            return 0;
        at++;
    }
    skip_blanks();
    if (at == data.size() && !is_all)
        return std::string_view::npos;
    return at < data.size() && data[at] == '{' ? at : 0;
}

// The object without the line ends that are not part of it.
std::string_view json_reader::without(std::string_view data, const client_json_extent &extent)
{
    if (extent.line_ends.empty())
        return data.substr(0, extent.size);
    joined_.clear();
    size_t from = 0;
    std::vector<size_t> seams;
    for (const size_t place : extent.line_ends) {
        joined_.append(data, from, place - from);
        seams.push_back(joined_.size());
        from = place + 1;
    }
    joined_.append(data, from, extent.size - from);
    for (size_t n = seams.size(); n-- > 0;)
        client_join_halves(joined_, seams[n]);
    return joined_;
}

client_step json_reader::refuse_line(std::string_view data, client_reject reject, client_row &row)
{
    const size_t end = data.find('\n');
    row.fields.clear();
    row.reject = reject;
    row.size = end == std::string_view::npos ? data.size() : end + 1;
    row.after = end == std::string_view::npos ? "\n" : "";
    return client_step::row;
}

client_step json_reader::read_object(std::string_view data, bool is_all, client_row &row)
{
    const client_json_extent extent = client_measure_json_object(data, before_);
    if (!extent.is_whole) {
        if (!is_all && data.size() < most_of_object)
            return client_step::more;
        return refuse_line(data, is_all ? client_reject::cut_row : client_reject::bad_row, row);
    }
    row.size = extent.size;
    row.after = "\n";
    client_read_json_object(without(data, extent), members_, row);
    return client_step::row;
}

// Notes how long the line is that the data after this begins in.
void json_reader::pass(std::string_view data)
{
    const size_t end = data.rfind('\n');
    before_ = end == std::string_view::npos ? before_ : 0;
    before_ += client_count_units(end == std::string_view::npos ? data : data.substr(end + 1));
}

client_step json_reader::read(std::string_view data, bool is_all, client_row &row)
{
    row.reject = client_reject::none;
    row.place = SIZE_MAX;
    row.blamed = {};
    if (at_start_) {
        const size_t size = my_root_size(data, is_all);
        if (size == std::string_view::npos)
            return client_step::more;
        at_start_ = false;
        row.size = size;
        if (size > 0) {
            pass(data.substr(0, size));
            return client_step::skip;
        }
    }
    const size_t from = std::min(data.find_first_not_of(" \t\r\n,[]}"), data.size());
    client_step step = client_step::skip;
    row.size = from;
    if (from == 0 && data.empty())
        return is_all ? client_step::end : client_step::more;
    if (from == 0 && data[0] == '{')
        step = read_object(data, is_all, row);
    else if (from == 0 && data.find('\n') == std::string_view::npos && !is_all)
        return client_step::more;
    else if (from == 0)
        step = refuse_line(data, client_reject::bad_row, row);
    if (step != client_step::more)
        pass(data.substr(0, row.size));
    return step;
}

std::unique_ptr<client_reader> client_make_json_reader(std::vector<client_json_member> members, bool at_start)
{
    return std::make_unique<json_reader>(std::move(members), at_start);
}
