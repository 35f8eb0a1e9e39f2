// bcp's native form with Unicode text, which row parts of packages have: fields one after the other, each of a size
// that its type fixes or after its length.
//
// Nothing in it says where a row begins. Once a length cannot be, nothing after it can be read.
#include "rows/read/client_reader.hpp"

#include "rows/convert/client_numbers.hpp"

namespace {

// How a column's values are written: after a length of so many bytes, all ones for NULL, or without one.
struct native_form {
    size_t prefix = 0;
    size_t fixed = 0; // the only size that a value may have; 0 where any may
    bool is_utf_16 = false;
};

class native_reader final : public client_reader {
  public:
    explicit native_reader(std::vector<native_form> forms) : forms_(std::move(forms))
    {
    }
    client_step read(std::string_view data, bool is_all, client_row &row) override;

  private:
    client_step give_up(client_reject reject, size_t place, std::string_view data, client_row &row);

    std::vector<native_form> forms_;
    bool is_broken_ = false;
};

enum class field_step : uint8_t { taken, more, broken };

} // namespace

static size_t my_time_size(int scale) noexcept
{
    return scale <= 2 ? 3 : (scale <= 4 ? 4 : 5);
}

// The size of a type whose values all have the same; 0 for others.
static size_t my_fixed_size(const client_server_type &type) noexcept
{
    switch (type.base) {
    case client_base::bit:
    case client_base::tinyint:
        return 1;
    case client_base::smallint:
        return 2;
    case client_base::integer:
    case client_base::real:
    case client_base::smallmoney:
    case client_base::smalldatetime:
        return 4;
    case client_base::bigint:
    case client_base::floating:
    case client_base::money:
    case client_base::datetime:
    case client_base::rowversion:
        return 8;
    case client_base::decimal:
        return 19;
    case client_base::guid:
        return 16;
    case client_base::date:
        return 3;
    case client_base::time:
        return my_time_size(type.scale);
    case client_base::datetime2:
        return my_time_size(type.scale) + 3;
    case client_base::datetimeoffset:
        return my_time_size(type.scale) + 5;
    default:
        return 0;
    }
}

static size_t my_prefix_of_sized(const client_server_type &type) noexcept
{
    switch (type.base) {
    case client_base::text:
    case client_base::ntext:
    case client_base::image:
        return 4;
    case client_base::xml:
    case client_base::clr:
    case client_base::variant:
        return 8;
    default:
        return type.length > 0 ? 2 : 8;
    }
}

static native_form my_form(const client_server_type &type) noexcept
{
    native_form form;
    form.fixed = my_fixed_size(type);
    form.is_utf_16 = client_is_text(type.base);
    if (type.base == client_base::fixed_char && !type.nullable) {
        form.fixed = static_cast<size_t>(type.length) * 2;
        return form;
    }
    const bool always = type.base == client_base::bit || type.base == client_base::guid ||
                        type.base == client_base::decimal || type.base == client_base::rowversion;
    if (form.fixed == 0)
        form.prefix = my_prefix_of_sized(type);
    else
        form.prefix = always || type.nullable ? 1 : 0;
    return form;
}

// Takes a field at a place of the data.
static field_step my_take_field(const native_form &form, std::string_view data, size_t &at, client_field &field)
{
    size_t size = form.fixed;
    if (form.prefix > 0) {
        if (data.size() - at < form.prefix)
            return field_step::more;
        const uint64_t length = client_read_little(data.substr(at, form.prefix));
        const uint64_t none = UINT64_MAX >> (64 - 8 * form.prefix);
        at += form.prefix;
        if (length == none) {
            field = {};
            return field_step::taken;
        }
        const bool is_odd = form.is_utf_16 && length % 2 != 0;
        if (is_odd || length > INT32_MAX || (form.fixed > 0 && length != form.fixed))
            return field_step::broken;
        size = static_cast<size_t>(length);
    }
    if (data.size() - at < size)
        return field_step::more;
    field = {client_form::native, data.substr(at, size)};
    at += size;
    return field_step::taken;
}

client_step native_reader::give_up(client_reject reject, size_t place, std::string_view data, client_row &row)
{
    is_broken_ = true;
    row.reject = reject;
    row.place = place;
    row.size = data.size();
    return client_step::row;
}

client_step native_reader::read(std::string_view data, bool is_all, client_row &row)
{
    row.fields.resize(forms_.size());
    row.reject = client_reject::none;
    row.place = SIZE_MAX;
    row.size = data.size();
    if (data.empty())
        return is_all ? client_step::end : client_step::more;
    if (is_broken_)
        return client_step::skip;
    size_t at = 0;
    for (size_t n = 0; n < forms_.size(); n++) {
        const field_step step = my_take_field(forms_[n], data, at, row.fields[n]);
        if (step == field_step::broken)
            return give_up(client_reject::bad_row, n, data, row);
        if (step == field_step::more)
            return is_all ? give_up(client_reject::cut_row, n, data, row) : client_step::more;
    }
    row.size = at;
    return client_step::row;
}

std::unique_ptr<client_reader> client_make_native_reader(const std::vector<client_server_type> &types)
{
    std::vector<native_form> forms;
    for (const client_server_type &type : types)
        forms.push_back(my_form(type));
    return std::make_unique<native_reader>(std::move(forms));
}
