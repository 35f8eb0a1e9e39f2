#include "rows/convert/client_convert.hpp"

#include "rows/convert/client_bytes.hpp"
#include "rows/convert/client_cast_use.hpp"
#include "rows/convert/client_numbers.hpp"
#include "rows/convert/client_utf8.hpp"

static constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

static bool my_is_fixed_text(client_base base) noexcept
{
    return base == client_base::fixed_char || base == client_base::fixed_nchar;
}

// Fills a char or nchar up with blanks, as the server returns it.
static void my_pad(client_converter &converter, size_t missing, client_value &value)
{
    std::string &room = converter.room->large;
    if (value.bytes.data() != room.data())
        room.assign(value.bytes);
    room.append(missing, ' ');
    value.bytes = room;
}

static bool my_lacks(client_converter &converter, uint16_t page, std::string_view text)
{
    return client_is_single_byte_page(page) && converter.pages.lacks(page, text);
}

// The bytes of a text that is not ASCII alone. Where the server's rules are kept, conversion counts as they do.
static size_t my_measure_in_page(client_converter &converter, uint16_t page, std::string_view text, size_t units)
{
    return converter.with_rules ? converter.pages.count_by_rule(page, text, units)
                                : converter.pages.count_bytes(page, text, units);
}

static client_reject my_take_measured(client_converter &converter, const client_server_type &type,
                                      std::string_view text, const client_text_size &size, client_value &value)
{
    if (size.flaw != client_utf8_flaw::none)
        return size.flaw == client_utf8_flaw::not_utf_8 ? client_reject::not_utf_8 : client_reject::half_surrogate;
    value.storage = client_storage::text;
    value.bytes = text;
    const bool is_in_page = !size.ascii && !client_is_unicode(type.base);
    if (is_in_page && converter.with_rules && my_lacks(converter, type.code_page, text))
        return client_reject::not_in_page;
    if (type.length <= 0)
        return client_reject::none;
    const size_t length = is_in_page ? my_measure_in_page(converter, type.code_page, text, size.units) : size.units;
    const auto most = static_cast<size_t>(type.length);
    if (length > most)
        return client_reject::too_long;
    if (length < most && my_is_fixed_text(type.base))
        my_pad(converter, most - length, value);
    return client_reject::none;
}

static client_reject my_take_text(client_converter &converter, const client_server_type &type, std::string_view text,
                                  client_value &value)
{
    if (type.base == client_base::xml && text.starts_with(byte_order_mark))
        text.remove_prefix(byte_order_mark.size());
    return my_take_measured(converter, type, text, client_measure_text(text), value);
}

static client_reject my_take_native_text(client_converter &converter, const client_server_type &type,
                                         std::string_view bytes, client_value &value)
{
    if (bytes.size() % 2 != 0)
        return client_reject::bad_row;
    converter.room->large.clear();
    client_append_utf16(converter.room->large, bytes);
    const size_t units = bytes.size() / 2;
    if (converter.room->large.size() > units) // not ASCII alone
        return my_take_text(converter, type, converter.room->large, value);
    return my_take_measured(converter, type, converter.room->large, {client_utf8_flaw::none, true, units}, value);
}

static client_reject my_take_bytes(client_converter &converter, const client_server_type &type, std::string_view bytes,
                                   client_value &value)
{
    const size_t size = bytes.size();
    value.storage = client_storage::blob;
    value.bytes = bytes;
    if (type.base == client_base::rowversion)
        return size == 8 ? client_reject::none : client_reject::not_binary;
    if (type.length <= 0)
        return client_reject::none;
    const auto most = static_cast<size_t>(type.length);
    if (size > most)
        return client_reject::too_long;
    if (size < most && type.base == client_base::binary) { // the server fills up with zeros
        std::string &room = converter.room->large;
        if (bytes.data() != room.data())
            room.assign(bytes);
        room.append(most - size, '\0');
        value.bytes = room;
    }
    return client_reject::none;
}

// Base64 that reads as hexadecimal digits too, or as the text form of a hierarchyid, which begins and ends with a
// slash.
static bool my_may_mean_other(const client_server_type &type, std::string_view base64)
{
    const bool is_hex = base64.size() > 2 && (base64.starts_with("0x") || base64.starts_with("0X")) &&
                        base64.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string_view::npos;
    return is_hex || (type.base == client_base::clr && base64.starts_with('/') && base64.ends_with('/'));
}

// Decodes hexadecimal digits or Base64 to bytes.
static client_reject my_decode(client_converter &converter, const client_field &field)
{
    std::string &room = converter.room->large;
    room.clear();
    const bool is_base64 = field.form == client_form::base64;
    const bool decoded =
        is_base64 ? client_append_from_base64(room, field.bytes) : client_append_from_hex(room, field.bytes);
    return decoded ? client_reject::none : client_reject::not_binary;
}

static client_reject my_convert_binary(client_converter &converter, const client_server_type &type,
                                       const client_field &field, client_value &value)
{
    if (field.form == client_form::native)
        return my_take_bytes(converter, type, field.bytes, value);
    const bool is_digits =
        field.form == client_form::text || field.form == client_form::hex || field.form == client_form::base64;
    if (!is_digits || (field.form == client_form::base64 && my_may_mean_other(type, field.bytes)))
        return client_reject::not_binary;
    const client_reject reject = my_decode(converter, field);
    if (reject != client_reject::none)
        return reject;
    return my_take_bytes(converter, type, converter.room->large, value);
}

static client_reject my_convert_guid(client_converter &converter, const client_field &field, client_value &value)
{
    value.storage = client_storage::blob;
    if (field.form == client_form::native || field.form == client_form::hex) {
        value.bytes = field.bytes;
        if (field.form == client_form::hex) {
            if (my_decode(converter, field) != client_reject::none)
                return client_reject::not_a_guid;
            value.bytes = converter.room->large;
        }
        return value.bytes.size() == 16 ? client_reject::none : client_reject::not_a_guid;
    }
    if (!client_read_guid(field.bytes, converter.room->small))
        return client_reject::not_a_guid;
    value.bytes = {converter.room->small, 16};
    return client_reject::none;
}

static client_reject my_convert_text(client_converter &converter, const client_server_type &type,
                                     const client_field &field, client_value &value)
{
    switch (field.form) {
    case client_form::native:
        return my_take_native_text(converter, type, field.bytes, value);
    case client_form::text:
    case client_form::literal:
        return my_take_text(converter, type, field.bytes, value);
    case client_form::number: // the server makes the same text of a number without an exponent
        if (field.bytes.find_first_of("eE") == std::string_view::npos)
            return my_take_text(converter, type, field.bytes, value);
        return client_reject::wrong_form;
    default:
        return client_reject::wrong_form;
    }
}

static client_reject my_convert_exact(const client_server_type &type, const client_field &field, client_value &value)
{
    value.storage = client_storage::integer;
    if (field.form == client_form::boolean) {
        value.integer = field.bytes == "true" ? 1 : 0;
        return type.base == client_base::bit ? client_reject::none : client_reject::not_a_number;
    }
    const client_reject reject = client_read_exact(type, field.bytes, value.integer);
    const bool is_bit = type.base == client_base::bit;
    if (is_bit && field.form == client_form::number && reject == client_reject::out_of_range) {
        value.integer = 1; // as the server takes any number but zero
        return client_reject::none;
    }
    return is_bit && reject != client_reject::none ? client_reject::not_a_bit : reject;
}

static client_reject my_convert_number(const client_server_type &type, const client_field &field, client_value &value)
{
    if (field.form == client_form::native)
        return client_read_native_number(type, field.bytes, value);
    if (field.form == client_form::hex || field.form == client_form::base64)
        return client_reject::not_a_number;
    if (type.base != client_base::real && type.base != client_base::floating)
        return my_convert_exact(type, field, value);
    value.storage = client_storage::real;
    return client_read_float(type, field.bytes, value.real);
}

static client_reject my_convert_moment(client_converter &converter, const client_server_type &type,
                                       const client_field &field, client_value &value)
{
    client_reject reject = client_reject::none;
    if (field.form == client_form::native) {
        reject = client_read_native_moment(type, field.bytes, *converter.room, value);
    } else if (field.form == client_form::hex) {
        reject = my_decode(converter, field);
        if (reject == client_reject::none)
            reject = client_read_binary_moment(type, converter.room->large, *converter.room, value);
    } else if (field.form != client_form::text && field.form != client_form::literal) {
        reject = client_reject::wrong_form; // to the server a number is one of days
    } else {
        reject = client_read_moment(type, field, converter.date_order, *converter.room, value);
    }
    const bool refused = reject == client_reject::none && value.shortened && converter.exact;
    return refused ? client_reject::needs_shortening : reject;
}

client_reject client_convert(client_converter &converter, const client_server_type &type, const client_field &field,
                             client_value &value)
{
    value.shortened = false;
    if (field.form == client_form::null) {
        value.storage = client_storage::null;
        return type.nullable ? client_reject::none : client_reject::null_not_allowed;
    }
    const bool is_cast = field.cast != client_base::variant;
    if (field.form == client_form::server || (is_cast && !client_is_decided(field, type)))
        return client_reject::server_value;
    if (client_is_text(type.base))
        return my_convert_text(converter, type, field, value);
    if (client_is_binary(type.base))
        return my_convert_binary(converter, type, field, value);
    if (type.base == client_base::guid)
        return my_convert_guid(converter, field, value);
    if (client_is_moment(type.base))
        return my_convert_moment(converter, type, field, value);
    return my_convert_number(type, field, value);
}
