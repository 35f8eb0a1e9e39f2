#include "rows/write/client_forms.hpp"

#include "rows/convert/client_bytes.hpp"

#include <cstdio>
#include <cstdlib>

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

// The fewest digits that mean the value, with a point.
static void my_append_real(std::string &text, double value, bool is_real)
{
    char digits[40];
    for (int precision = is_real ? 6 : 15; precision <= 17; precision++) {
        std::snprintf(digits, sizeof digits, "%.*g", precision, value);
        const double back = std::strtod(digits, nullptr);
        const bool same = is_real ? static_cast<float>(back) == static_cast<float>(value) : back == value;
        if (same)
            break;
    }
    const std::string_view shortest = digits;
    text += shortest;
    if (shortest.find_first_of(".e") == shortest.npos)
        text += ".0";
}

static int my_scale(const client_server_type &type) noexcept
{
    if (type.base == client_base::money || type.base == client_base::smallmoney)
        return 4;
    return type.base == client_base::decimal ? type.scale : 0;
}

// One and two digits of a fraction are kept as three.
static std::string_view my_moment(const client_server_type &type, std::string_view kept) noexcept
{
    const bool is_filled = type.base == client_base::datetime2 && (type.scale == 1 || type.scale == 2);
    return is_filled && kept.size() == 23 ? kept.substr(0, 20 + type.scale) : kept;
}

static void my_append_bytes(std::string &text, const client_server_type &type, std::string_view bytes,
                            client_text_form form)
{
    if (type.base == client_base::guid && bytes.size() == 16) {
        client_append_guid(text, bytes);
        return;
    }
    if (form != client_text_form::bcp)
        text += "0x";
    client_append_hex(text, bytes);
}

void client_append_form(std::string &text, const client_server_type &type, const client_value &value,
                        client_text_form form)
{
    switch (value.storage) {
    case client_storage::integer:
        my_append_scaled(text, value.integer, my_scale(type), form != client_text_form::bcp);
        return;
    case client_storage::real:
        my_append_real(text, value.real, type.base == client_base::real);
        return;
    case client_storage::blob:
        my_append_bytes(text, type, value.bytes, form);
        return;
    case client_storage::text:
        text += my_moment(type, value.bytes);
        return;
    case client_storage::null:
        return;
    }
}
