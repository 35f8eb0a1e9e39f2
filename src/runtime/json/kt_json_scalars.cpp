// Reading JSON texts and numbers.

#include "json/kt_json_reader.hpp"
#include "json/kt_json_text.hpp"

#include <algorithm>
#include <charconv>

// Texts

static bool my_put(kt_json_reader *reader, char byte) noexcept
{
    char *place = reader->scratch.push();
    if (place)
        *place = byte;
    return place;
}

static bool my_put_code_point(kt_json_reader *reader, uint32_t code) noexcept
{
    const auto tail = [&](uint32_t shift) {
        return my_put(reader, static_cast<char>(0x80 | ((code >> shift) & 0x3F)));
    };
    if (code < 0x80)
        return my_put(reader, static_cast<char>(code));
    if (code < 0x800)
        return my_put(reader, static_cast<char>(0xC0 | (code >> 6))) && tail(0);
    if (code < 0x10000)
        return my_put(reader, static_cast<char>(0xE0 | (code >> 12))) && tail(6) && tail(0);
    return my_put(reader, static_cast<char>(0xF0 | (code >> 18))) && tail(12) && tail(6) && tail(0);
}

static int my_hex_digit(char byte) noexcept
{
    if (byte >= '0' && byte <= '9')
        return byte - '0';
    const char lower = static_cast<char>(byte | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

static const char *my_read_hex_4(kt_json_reader *reader, const char *at, uint32_t *code) noexcept
{
    *code = 0;
    for (int i = 0; i < 4; i++, at++) {
        const int digit = my_hex_digit(*at);
        if (digit < 0)
            return kt_reader_fail(reader, at, "four hexadecimal digits");
        *code = *code << 4 | static_cast<uint32_t>(digit);
    }
    return at;
}

// After "\u".
static const char *my_read_code_point(kt_json_reader *reader, const char *at) noexcept
{
    const char *start = at - 2;
    uint32_t code = 0;
    if (!(at = my_read_hex_4(reader, at, &code)))
        return nullptr;
    if (code == 0)
        return kt_reader_fail(reader, start, "a text without a NUL");
    if (code >= 0xDC00 && code <= 0xDFFF)
        return kt_reader_fail(reader, start, "a high surrogate before a low one");
    if (code >= 0xD800 && code <= 0xDBFF) {
        uint32_t low = 0;
        if (at[0] != '\\' || at[1] != 'u')
            return kt_reader_fail(reader, at, "a low surrogate after a high one");
        const char *after = my_read_hex_4(reader, at + 2, &low);
        if (!after)
            return nullptr;
        if (low < 0xDC00 || low > 0xDFFF)
            return kt_reader_fail(reader, at, "a low surrogate after a high one");
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        at = after;
    }
    return my_put_code_point(reader, code) ? at : nullptr;
}

// After a backslash.
static const char *my_read_escape(kt_json_reader *reader, const char *at) noexcept
{
    static constexpr char names[] = "\"\\/bfnrt";
    static constexpr char values[] = "\"\\/\b\f\n\r\t";
    if (*at == 'u')
        return my_read_code_point(reader, at + 1);
    const char *name = *at ? std::strchr(names, *at) : nullptr;
    if (!name)
        return kt_reader_fail(reader, at, "one of \"\\/bfnrtu after a backslash");
    return my_put(reader, values[name - names]) ? at + 1 : nullptr;
}

// One byte or sequence that is neither plain nor the closing quote.
static const char *my_read_special(kt_json_reader *reader, const char *at) noexcept
{
    if (*at == '\\')
        return my_read_escape(reader, at + 1);
    if (at == reader->end)
        return kt_reader_fail(reader, at, "a closing quote");
    if (static_cast<uint8_t>(*at) < 0x20)
        return kt_reader_fail(reader, at, "an escape instead of a control character");
    const uint32_t bytes = kt_utf8_sequence(at, reader->end);
    if (bytes == 0)
        return kt_reader_fail(reader, at, "UTF-8");
    for (uint32_t i = 0; i < bytes; i++)
        if (!my_put(reader, at[i]))
            return nullptr;
    return at + bytes;
}

const char *kt_reader_bytes(kt_json_reader *reader, const char *at, const char **bytes, size_t *length) noexcept
{
    const char *plain_end = kt_json_skip_plain(at, reader->end);
    if (*plain_end == '"') {
        *bytes = at;
        *length = static_cast<size_t>(plain_end - at);
        return plain_end + 1;
    }
    reader->scratch.shrink_to(0);
    for (;;) {
        for (; at < plain_end; at++)
            if (!my_put(reader, *at))
                return nullptr;
        if (*at == '"')
            break;
        if (!(at = my_read_special(reader, at)))
            return nullptr;
        plain_end = kt_json_skip_plain(at, reader->end);
    }
    *bytes = reader->scratch.at(0);
    *length = reader->scratch.count();
    return at + 1;
}

const char *kt_reader_long_text(kt_json_reader *reader, const char *at, KT_variant *value) noexcept
{
    const char *bytes = nullptr;
    size_t length = 0;
    const char *after = kt_reader_bytes(reader, at, &bytes, &length);
    return after && kt_value_text(reader->arena, bytes, length, value) ? after : nullptr;
}

// Numbers

static bool my_is_digit(char byte) noexcept
{
    return byte >= '0' && byte <= '9';
}

static const char *my_read_digits(kt_json_reader *reader, const char *at) noexcept
{
    if (!my_is_digit(*at))
        return kt_reader_fail(reader, at, "a digit");
    while (my_is_digit(*at))
        at++;
    return at;
}

// Whether a number that is not zero is below one: the place of its first digit, moved by its exponent.
static bool my_is_below_one(const char *at, const char *end) noexcept
{
    at += *at == '-';
    const char *first = at;
    while (*first == '0' || *first == '.')
        first++;
    const char *point = std::find_if_not(at, end, my_is_digit);
    const int64_t digits_before_point = first < point ? point - first : point - first + 1; // -2: 0.00x
    const char *letter = std::find_if(first, end, [](char byte) { return byte == 'e' || byte == 'E'; });
    if (letter == end)
        return digits_before_point <= 0;
    const char *exponent_text = letter + 1 + (letter[1] == '+');
    int32_t exponent = 0;
    if (std::from_chars(exponent_text, end, exponent).ec != std::errc{})
        return *exponent_text == '-';
    return digits_before_point + exponent <= 0;
}

// A number whose integer part ends at `at`, with a fraction or an exponent after it.
static const char *my_read_double(kt_json_reader *reader, const char *start, const char *at, KT_variant *value) noexcept
{
    if (*at == '.' && !(at = my_read_digits(reader, at + 1)))
        return nullptr;
    if (*at == 'e' || *at == 'E') {
        at++;
        if (*at == '-' || *at == '+')
            at++;
        if (!(at = my_read_digits(reader, at)))
            return nullptr;
    }
    value->type = KT_VARIANT_DOUBLE;
    if (std::from_chars(start, at, value->as.real).ec != std::errc{}) {
        // Out of range: too small a number is rounded to zero, too large a one is refused.
        if (!my_is_below_one(start, at))
            return kt_reader_fail(reader, start, "a number within the range of a double");
        value->as.real = *start == '-' ? -0.0 : 0.0;
    }
    return at;
}

const char *kt_reader_number(kt_json_reader *reader, const char *at, KT_variant *value) noexcept
{
    const char *start = at;
    const bool is_negative = *at == '-';
    at += is_negative;
    const char *first = at;
    uint64_t number = 0;
    while (my_is_digit(*at)) // 19 digits fit, and more are refused below
        number = number * 10 + static_cast<uint64_t>(*at++ - '0');
    if (at == first)
        return kt_reader_fail(reader, at, is_negative ? "a digit" : "a value");
    if (*first == '0' && at - first > 1)
        return kt_reader_fail(reader, first + 1, "no digit after a leading zero");

    *value = {};
    if (*at == '.' || *at == 'e' || *at == 'E')
        return my_read_double(reader, start, at, value);
    const uint64_t largest = uint64_t{INT64_MAX} + is_negative;
    if (at - first > 19 || number > largest)
        return kt_reader_fail(reader, start, "an integer that 64 bits hold");
    value->type = KT_VARIANT_INT64;
    value->as.int64 = static_cast<int64_t>(is_negative ? 0 - number : number);
    return at;
}
