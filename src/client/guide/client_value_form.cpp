// What is stored, in words and with an example. The stored form of an example is made by the conversion that loading
// uses, so the guide cannot say anything else than what is loaded.
#include "guide/client_guide.hpp"

#include "rows/convert/client_bytes.hpp"
#include "rows/convert/client_convert.hpp"

#include <cstdio>

namespace {

struct base_form {
    client_base base;
    const char *storage;
    const char *form;
    const char *bind;
    const char *example; // of the longest or finest type; made shorter where a type holds less
};

} // namespace

static constexpr const char *as_it_is = "the number";
static constexpr const char *as_text = "the text";
static constexpr const char *as_bytes = "the bytes";
static constexpr const char *number = "a number";
static constexpr const char *digits = "a number, or its digits as a text";
static constexpr const char *text = "a text";
static constexpr const char *bytes = "a blob";
static constexpr const char *moment = "2013-07-01 12:30:45.1234567";

// In the order of client_base.
static constexpr base_form base_forms[] = {
    {client_base::bit, "INTEGER", "0 or 1", number, "1"},
    {client_base::tinyint, "INTEGER", as_it_is, number, "42"},
    {client_base::smallint, "INTEGER", as_it_is, number, "-42"},
    {client_base::integer, "INTEGER", as_it_is, number, "-42"},
    {client_base::bigint, "INTEGER", as_it_is, number, "-42"},
    {client_base::decimal, "INTEGER", "the value times 10^", digits, ""},
    {client_base::money, "INTEGER", "the value times 10,000", digits, "12.5000"},
    {client_base::smallmoney, "INTEGER", "the value times 10,000", digits, "12.5000"},
    {client_base::real, "REAL", "the double of the same value", number, "0.1"},
    {client_base::floating, "REAL", "the double", number, "0.1"},
    {client_base::fixed_char, "TEXT", "the text with its trailing blanks", text, "AB"},
    {client_base::varchar, "TEXT", as_text, text, "abc"},
    {client_base::text, "TEXT", as_text, text, "abc"},
    {client_base::fixed_nchar, "TEXT", "the text with its trailing blanks", text, "AB"},
    {client_base::nvarchar, "TEXT", as_text, text, "abc"},
    {client_base::ntext, "TEXT", as_text, text, "abc"},
    {client_base::xml, "TEXT", as_text, text, "<a/>"},
    {client_base::binary, "BLOB", "the bytes, with zeros up to the width", bytes, "0A1B"},
    {client_base::varbinary, "BLOB", as_bytes, bytes, "0A1B"},
    {client_base::image, "BLOB", as_bytes, bytes, "0A1B"},
    {client_base::rowversion, "BLOB", "the 8 bytes", bytes, "00000000000007D1"},
    {client_base::guid, "BLOB", "the server's 16 bytes: the first three groups byte-reversed",
     "a blob: Guid.ToByteArray() in .NET, uuid.bytes_le in Python", "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
    {client_base::date, "TEXT", "YYYY-MM-DD", text, "2013-07-01"},
    {client_base::time, "TEXT", "HH:MM:SS", text, "07:00:00.1230000"},
    {client_base::smalldatetime, "TEXT", "YYYY-MM-DD HH:MM:00", text, "2013-07-01 12:30:00"},
    {client_base::datetime, "TEXT", "YYYY-MM-DD HH:MM:SS.fff, ending in 0, 3 or 7", text, "2013-07-01 12:30:45.263"},
    {client_base::datetime2, "TEXT", "YYYY-MM-DD HH:MM:SS", text, moment},
    {client_base::datetimeoffset, "TEXT", "YYYY-MM-DD HH:MM:SS", text, moment},
    {client_base::clr, "BLOB", "the server's serialised bytes", bytes, "58"},
    {client_base::variant, nullptr, "left out of the table", "", ""},
};

static constexpr bool my_is_in_order() noexcept
{
    for (size_t n = 0; n < sizeof base_forms / sizeof *base_forms; n++) {
        if (base_forms[n].base != static_cast<client_base>(n))
            return false;
    }
    return base_forms[sizeof base_forms / sizeof *base_forms - 1].base == client_base::variant;
}
static_assert(my_is_in_order());

static bool my_has_digits(client_base base) noexcept
{
    return base == client_base::time || base == client_base::datetime2 || base == client_base::datetimeoffset;
}

std::string client_declared_type_text(const client_declared_type &declared)
{
    const client_server_type &type = declared.type;
    if (type.base == client_base::clr)
        return std::string(declared.name);
    const std::string name = type.base == client_base::rowversion ? "rowversion" : client_base_name(type.base);
    if (type.base == client_base::decimal)
        return name + "(" + std::to_string(type.precision) + "," + std::to_string(type.scale) + ")";
    if (client_has_length(type.base))
        return name + "(" + (type.length > 0 ? std::to_string(type.length) : "max") + ")";
    return my_has_digits(type.base) ? name + "(" + std::to_string(type.scale) + ")" : name;
}

// 12.50 for decimal(9,2), or what has as many digits after the point and still fits.
static std::string my_decimal_example(const client_server_type &type)
{
    const int whole = type.precision - type.scale;
    if (type.scale == 0)
        return whole > 1 ? "42" : "4";
    const auto scale = static_cast<size_t>(type.scale);
    if (scale > 15)
        return "0." + std::string(scale - 1, '0') + "5";
    return (whole > 1 ? "12." : (whole > 0 ? "1." : "0.")) + std::string("5") + std::string(scale - 1, '0');
}

// The digits of a fraction that the type does not have are left out, and the point with them.
static std::string my_moment_example(const client_server_type &type, std::string_view longest)
{
    std::string example(longest.substr(0, longest.size() - 7 + type.scale));
    if (example.back() == '.')
        example.pop_back();
    return type.base == client_base::datetimeoffset ? example + " +02:00" : example;
}

static std::string_view my_clr_example(std::string_view name, std::string_view other) noexcept
{
    if (name == "geography") // POINT (1 2)
        return "E6100000010C0000000000000040000000000000F03F";
    return name == "geometry" ? "00000000010C000000000000F03F0000000000000040" : other;
}

static std::string my_bytes_example(const client_declared_type &declared, std::string_view longest)
{
    const client_server_type &type = declared.type;
    std::string hex(type.base == client_base::clr ? my_clr_example(declared.name, longest) : longest);
    const auto width = static_cast<size_t>(type.length > 0 ? type.length : 0) * 2;
    if (width > 0 && hex.size() > width)
        hex.resize(width);
    if (type.base == client_base::binary && hex.size() < width)
        hex.resize(width, '0');
    return "0x" + hex;
}

static std::string my_text_example(const client_server_type &type, std::string_view longest)
{
    std::string example(type.length > 0 ? longest.substr(0, static_cast<size_t>(type.length)) : longest);
    const bool is_fixed = type.base == client_base::fixed_char || type.base == client_base::fixed_nchar;
    if (is_fixed && type.length > 0)
        example.resize(static_cast<size_t>(type.length), ' ');
    return example;
}

static std::string my_example(const client_declared_type &declared, const base_form &form)
{
    const client_server_type &type = declared.type;
    if (type.base == client_base::decimal)
        return my_decimal_example(type);
    if (my_has_digits(type.base))
        return my_moment_example(type, form.example);
    if (client_is_binary(type.base))
        return my_bytes_example(declared, form.example);
    return client_is_text(type.base) ? my_text_example(type, form.example) : form.example;
}

static std::string my_quoted(std::string_view value)
{
    std::string quoted = "'";
    for (const char c : value) {
        quoted.push_back(c);
        if (c == '\'')
            quoted.push_back(c);
    }
    return quoted + "'";
}

static std::string my_literal(const client_value &value)
{
    switch (value.storage) {
    case client_storage::integer:
        return std::to_string(value.integer);
    case client_storage::real: {
        char shown[40];
        for (int precision = 15; precision <= 17; precision++) {
            std::snprintf(shown, sizeof shown, "%.*g", precision, value.real);
            if (std::stod(shown) == value.real)
                break;
        }
        return shown;
    }
    case client_storage::text:
        return my_quoted(value.bytes);
    case client_storage::blob: {
        std::string hex = "x'";
        client_append_hex(hex, value.bytes);
        return hex + "'";
    }
    case client_storage::null:
        break;
    }
    return "NULL";
}

static std::string my_stored(const client_server_type &type, const std::string &example)
{
    client_converter converter;
    client_value value;
    const client_reject reject = client_convert(converter, type, {client_form::text, example}, value);
    return reject == client_reject::none ? my_literal(value) : "";
}

static std::string my_form_text(const client_server_type &type, const base_form &form)
{
    std::string words = form.form;
    if (type.base == client_base::decimal && type.scale == 0)
        return as_it_is;
    if (type.base == client_base::decimal)
        return words + std::to_string(type.scale);
    if (!my_has_digits(type.base))
        return words;
    const bool is_filled = type.base != client_base::time && (type.scale == 1 || type.scale == 2);
    const int shown = is_filled ? 3 : type.scale;
    if (shown > 0)
        words += "." + std::string(static_cast<size_t>(shown), 'f');
    return type.base == client_base::datetimeoffset ? words + " +HH:MM" : words;
}

client_value_form client_form_of(const client_declared_type &declared)
{
    const client_server_type &type = declared.type;
    const base_form &base = base_forms[static_cast<size_t>(type.base)];
    client_value_form form{base.storage, my_form_text(type, base), base.bind, "", ""};
    if (!base.storage)
        return form;
    form.example = my_example(declared, base);
    form.stored = my_stored(type, form.example);
    return form;
}
