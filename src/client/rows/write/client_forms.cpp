// bcp writes a float with up to 17 digits and a real with up to 8: 0.99980003999200195, 1.0, 5.0000000000000003E-2. It
// changes to an exponent where more than that many digits would follow the point.
#include "rows/write/client_forms.hpp"

#include "rows/convert/client_bytes.hpp"

#include <charconv>

namespace {
// A number as digits without the zeros at their end, and the power of ten of the first.
struct decimal_digits {
    bool negative = false;
    std::string digits;
    int exponent = 0;
};
} // namespace

static decimal_digits my_split(double value, int precision)
{
    char room[40];
    const char *end = std::to_chars(room, room + sizeof room, value, std::chars_format::scientific, precision - 1).ptr;
    std::string_view text(room, static_cast<size_t>(end - room));
    decimal_digits result;
    result.negative = text.front() == '-';
    const size_t mark = text.find('e');
    for (const char c : text.substr(0, mark)) {
        if (c >= '0' && c <= '9')
            result.digits.push_back(c);
    }
    result.digits.erase(result.digits.find_last_not_of('0') + 1);
    text.remove_prefix(mark + (text[mark + 1] == '+' ? 2 : 1));
    std::from_chars(text.data(), text.data() + text.size(), result.exponent);
    return result;
}

// 8 digits of a real, unless it takes the ninth to mean it.
static int my_precision(double value, bool is_real)
{
    constexpr int of_float = 17, of_real = 8;
    if (!is_real)
        return of_float;
    char room[40];
    const char *end = std::to_chars(room, room + sizeof room, value, std::chars_format::scientific, of_real - 1).ptr;
    float back = 0;
    std::from_chars(room, end, back);
    return back == static_cast<float>(value) ? of_real : of_real + 1;
}

// Digits with a point after so many of them, at least one on either side.
static void my_append_pointed(std::string &text, std::string digits, int whole)
{
    if (whole <= 0)
        digits.insert(0, static_cast<size_t>(1 - whole), '0');
    const auto point = static_cast<size_t>(whole <= 0 ? 1 : whole);
    if (digits.size() <= point)
        digits.append(point + 1 - digits.size(), '0');
    text.append(digits, 0, point).append(".").append(digits, point);
}

static void my_append_bcp_real(std::string &text, double value, bool is_real)
{
    const int precision = my_precision(value, is_real);
    const decimal_digits number = my_split(value, precision);
    const int after_point = static_cast<int>(number.digits.size()) - 1 - number.exponent;
    if (number.negative)
        text.push_back('-');
    if (number.digits.empty()) {
        text += "0.0";
    } else if (after_point <= precision && number.exponent < precision) {
        my_append_pointed(text, number.digits, number.exponent + 1);
    } else {
        my_append_pointed(text, number.digits, 1);
        text += (number.exponent < 0 ? "E" : "E+") + std::to_string(number.exponent);
    }
}

void client_append_shortest(std::string &text, double value, bool is_real)
{
    char room[40];
    const auto narrow = static_cast<float>(value);
    const char *end = is_real ? std::to_chars(room, room + sizeof room, narrow).ptr
                              : std::to_chars(room, room + sizeof room, value).ptr;
    text.append(room, static_cast<size_t>(end - room));
}

static void my_append_real(std::string &text, double value, bool is_real, client_text_form form)
{
    if (form != client_text_form::plain) {
        my_append_bcp_real(text, value, is_real);
        return;
    }
    const size_t before = text.size();
    client_append_shortest(text, value, is_real);
    if (text.find_first_of(".e", before) == text.npos)
        text += ".0";
}

static void my_append_scaled(std::string &text, int64_t value, int scale, bool with_zero)
{
    const uint64_t magnitude = value < 0 ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    std::string digits = std::to_string(magnitude);
    const auto fraction = static_cast<size_t>(scale);
    if (digits.size() <= fraction)
        digits.insert(0, fraction + 1 - digits.size(), '0');
    if (value < 0)
        text.push_back('-');
    const std::string whole = digits.substr(0, digits.size() - fraction);
    if (with_zero || whole != "0" || scale == 0)
        text += whole;
    if (scale > 0)
        text += "." + digits.substr(digits.size() - fraction);
}

static int my_scale(const client_server_type &type) noexcept
{
    if (type.base == client_base::money || type.base == client_base::smallmoney)
        return 4;
    return type.base == client_base::decimal ? type.scale : 0;
}

// One and two digits of a fraction are kept as three; an offset may follow.
static void my_append_text(std::string &text, const client_server_type &type, std::string_view kept)
{
    static constexpr size_t filled = 23;
    const bool has_offset = type.base == client_base::datetimeoffset;
    const bool is_filled = (has_offset || type.base == client_base::datetime2) && (type.scale == 1 || type.scale == 2);
    if (!is_filled || kept.size() != filled + (has_offset ? 7 : 0)) {
        text += kept;
        return;
    }
    text += kept.substr(0, 20 + type.scale);
    text += kept.substr(filled);
}

static void my_append_bytes(std::string &text, const client_server_type &type, std::string_view bytes,
                            client_text_form form)
{
    if (type.base == client_base::guid && bytes.size() == 16) {
        client_append_guid(text, bytes);
        return;
    }
    if (form == client_text_form::plain)
        text += "0x";
    client_append_hex(text, bytes);
}

static bool my_has_short_form(const client_server_type &type) noexcept
{
    const client_base base = type.base;
    return base == client_base::money || base == client_base::smallmoney || base == client_base::real ||
           base == client_base::floating || base == client_base::datetime || base == client_base::datetime2;
}

// Takes ".000" from the end of what was appended; ".50" stays.
static void my_shorten(std::string &text, size_t from)
{
    const size_t point = text.find('.', from);
    if (point == text.npos || text.find_first_not_of('0', point + 1) != text.npos)
        return;
    text.erase(point);
    if (text.size() == from || text.back() == '-') // nothing stood before the point
        text.push_back('0');
}

void client_append_form(std::string &text, const client_server_type &type, const client_value &value,
                        client_text_form form)
{
    const size_t before = text.size();
    switch (value.storage) {
    case client_storage::integer:
        my_append_scaled(text, value.integer, my_scale(type), form == client_text_form::plain);
        break;
    case client_storage::real:
        my_append_real(text, value.real, type.base == client_base::real, form);
        break;
    case client_storage::blob:
        my_append_bytes(text, type, value.bytes, form);
        break;
    case client_storage::text:
        my_append_text(text, type, value.bytes);
        break;
    case client_storage::null:
        break;
    }
    if (form == client_text_form::bcp_short && my_has_short_form(type))
        my_shorten(text, before);
}
