// Everything but real and float is exact: a number is read digit by digit into 64 bits, and what does not fit, or would
// lose a digit, is refused.
#include "rows/convert/client_numbers.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

static constexpr int64_t max_int64 = std::numeric_limits<int64_t>::max();

namespace {
// The limits of a type, and how many of its digits are a fraction.
struct exact_limits {
    int64_t low;
    int64_t high;
    int scale;
};

struct exact_digits {
    uint64_t value = 0; // scaled
    bool overflow = false;

    void add(char digit) noexcept
    {
        const auto next = static_cast<uint64_t>(digit - '0');
        overflow |= value > (std::numeric_limits<uint64_t>::max() - next) / 10;
        value = value * 10 + next;
    }
};
} // namespace

static constexpr std::array<int64_t, 19> my_powers_of_ten() noexcept
{
    std::array<int64_t, 19> powers{1};
    for (size_t n = 1; n < powers.size(); n++)
        powers[n] = powers[n - 1] * 10;
    return powers;
}
static constexpr std::array<int64_t, 19> powers_of_ten = my_powers_of_ten();

static exact_limits my_limits(const client_server_type &type) noexcept
{
    switch (type.base) {
    case client_base::bit:
        return {0, 1, 0};
    case client_base::tinyint:
        return {0, 255, 0};
    case client_base::smallint:
        return {-32768, 32767, 0};
    case client_base::integer:
        return {-2147483647 - 1, 2147483647, 0};
    case client_base::bigint:
        return {std::numeric_limits<int64_t>::min(), max_int64, 0};
    case client_base::smallmoney:
        return {-2147483647 - 1, 2147483647, 4};
    case client_base::money:
        return {std::numeric_limits<int64_t>::min(), max_int64, 4};
    default:
        break;
    }
    const bool is_narrow = type.precision > 0 && type.precision < 19;
    const int64_t most = is_narrow ? powers_of_ten[type.precision] - 1 : max_int64;
    return {-most, most, type.scale};
}

// Digits with at most one point, at least one digit, nothing else.
static client_reject my_read_plain(std::string_view text, int scale, exact_digits &digits) noexcept
{
    size_t at = 0;
    for (; at < text.size() && client_is_digit(text[at]); at++)
        digits.add(text[at]);
    const size_t whole = at;
    int missing = scale;
    bool lost = false;
    if (at < text.size() && text[at] == '.') {
        for (at++; at < text.size() && client_is_digit(text[at]); at++) {
            if (missing > 0) {
                digits.add(text[at]);
                missing--;
            } else {
                lost |= text[at] != '0';
            }
        }
    }
    const bool is_only_point = whole == 0 && at < 2;
    if (at != text.size() || is_only_point)
        return client_reject::not_a_number;
    for (; missing > 0 && digits.value != 0; missing--)
        digits.add('0');
    return lost ? client_reject::too_precise : client_reject::none;
}

// 1.5E-3 becomes .0015: the same digits with the point where the exponent puts it.
static client_reject my_read_with_exponent(std::string_view mantissa, std::string_view exponent_text, int scale,
                                           exact_digits &digits) noexcept
{
    if (!exponent_text.empty() && exponent_text.front() == '+')
        exponent_text.remove_prefix(1);
    int exponent = 0;
    const char *end = exponent_text.data() + exponent_text.size();
    const auto [stop, error] = std::from_chars(exponent_text.data(), end, exponent);
    if (error != std::errc() || stop != end)
        return client_reject::not_a_number;
    const size_t point = std::min(mantissa.find('.'), mantissa.size());
    if (std::abs(exponent) > 400 || mantissa.size() > 100)
        return client_reject::out_of_range;
    char plain[1024];
    size_t size = 0;
    const auto put = [&](char c) { plain[size++] = c; };
    const int whole = static_cast<int>(point) + exponent; // digits before the point
    int taken = 0;
    if (whole <= 0)
        put('.');
    for (int zeros = whole; zeros < 0; zeros++)
        put('0');
    for (const char c : mantissa) {
        if (c == '.')
            continue;
        put(c);
        if (++taken == whole)
            put('.');
    }
    for (; taken < whole; taken++)
        put('0');
    return my_read_plain({plain, size}, scale, digits);
}

static client_reject my_read_digits(std::string_view text, int scale, exact_digits &digits) noexcept
{
    const size_t exponent = text.find_first_of("eE");
    if (exponent == std::string_view::npos)
        return my_read_plain(text, scale, digits);
    exact_digits mantissa; // read alone first, so that what follows meets digits and one point only
    if (my_read_plain(text.substr(0, exponent), 100, mantissa) == client_reject::not_a_number)
        return client_reject::not_a_number;
    return my_read_with_exponent(text.substr(0, exponent), text.substr(exponent + 1), scale, digits);
}

static bool my_take_sign(std::string_view &text) noexcept
{
    const bool signed_text = !text.empty() && (text.front() == '-' || text.front() == '+');
    const bool negative = signed_text && text.front() == '-';
    if (signed_text)
        text.remove_prefix(1);
    return negative;
}

static client_reject my_put_in_limits(const exact_limits &limits, bool negative, uint64_t magnitude,
                                      int64_t &value) noexcept
{
    const uint64_t most =
        negative ? uint64_t{0} - static_cast<uint64_t>(limits.low) : static_cast<uint64_t>(limits.high);
    if (magnitude > most)
        return client_reject::out_of_range;
    value = static_cast<int64_t>(negative ? uint64_t{0} - magnitude : magnitude);
    return client_reject::none;
}

client_reject client_read_exact(const client_server_type &type, std::string_view text, int64_t &value) noexcept
{
    const bool negative = my_take_sign(text);
    const exact_limits limits = my_limits(type);
    exact_digits digits;
    const client_reject reject = my_read_digits(text, limits.scale, digits);
    if (reject != client_reject::none)
        return reject;
    return digits.overflow ? client_reject::out_of_range : my_put_in_limits(limits, negative, digits.value, value);
}

template <class Float> static client_reject my_read_float(std::string_view text, double &value) noexcept
{
    Float number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::result_out_of_range)
        return client_reject::out_of_range;
    if (error != std::errc() || stop != end)
        return client_reject::not_a_number;
    value = static_cast<double>(number);
    return client_reject::none;
}

client_reject client_read_float(const client_server_type &type, std::string_view text, double &value) noexcept
{
    const bool negative = my_take_sign(text);
    if (text.empty() || (!client_is_digit(text.front()) && text.front() != '.')) // no words, such as nan
        return client_reject::not_a_number;
    const bool is_real = type.base == client_base::real;
    const client_reject reject = is_real ? my_read_float<float>(text, value) : my_read_float<double>(text, value);
    if (negative)
        value = -value;
    return reject;
}

uint64_t client_read_little(std::string_view bytes) noexcept
{
    uint64_t number = 0;
    for (size_t n = bytes.size(); n-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[n]);
    return number;
}

// The number's low bits with the sign of its highest one.
static int64_t my_signed(std::string_view bytes) noexcept
{
    const auto unused = static_cast<int>(64 - 8 * bytes.size());
    return static_cast<int64_t>(client_read_little(bytes) << unused) >> unused;
}

// Precision, scale, sign (1 is plus), 16 bytes of magnitude.
static client_reject my_read_native_decimal(const client_server_type &type, std::string_view bytes,
                                            int64_t &value) noexcept
{
    if (bytes.size() != 19)
        return client_reject::bad_row;
    if (client_read_little(bytes.substr(11, 8)) != 0)
        return client_reject::out_of_range;
    uint64_t magnitude = client_read_little(bytes.substr(3, 8));
    for (int scale = static_cast<unsigned char>(bytes[1]); scale > type.scale; scale--) {
        if (magnitude % 10 != 0)
            return client_reject::too_precise;
        magnitude /= 10;
    }
    exact_digits digits;
    digits.value = magnitude;
    for (int scale = static_cast<unsigned char>(bytes[1]); scale < type.scale && digits.value != 0; scale++)
        digits.add('0');
    if (digits.overflow)
        return client_reject::out_of_range;
    return my_put_in_limits(my_limits(type), bytes[2] == 0, digits.value, value);
}

template <class Float> static client_reject my_read_native_float(std::string_view bytes, double &value) noexcept
{
    Float number = 0;
    if (bytes.size() != sizeof number)
        return client_reject::bad_row;
    std::memcpy(&number, bytes.data(), sizeof number);
    value = static_cast<double>(number);
    return std::isfinite(value) ? client_reject::none : client_reject::not_a_number;
}

static size_t my_native_size(client_base base) noexcept
{
    switch (base) {
    case client_base::bit:
    case client_base::tinyint:
        return 1;
    case client_base::smallint:
        return 2;
    case client_base::integer:
    case client_base::smallmoney:
        return 4;
    default:
        return 8;
    }
}

static client_reject my_read_native_exact(const client_server_type &type, std::string_view bytes,
                                          int64_t &value) noexcept
{
    if (bytes.size() != my_native_size(type.base))
        return client_reject::bad_row;
    if (type.base == client_base::money) // the high half comes first
        value =
            static_cast<int64_t>(client_read_little(bytes.substr(0, 4)) << 32 | client_read_little(bytes.substr(4)));
    else
        value = type.base == client_base::tinyint ? static_cast<int64_t>(client_read_little(bytes)) : my_signed(bytes);
    const exact_limits limits = my_limits(type);
    return value < limits.low || value > limits.high ? client_reject::out_of_range : client_reject::none;
}

client_reject client_read_native_number(const client_server_type &type, std::string_view bytes,
                                        client_value &value) noexcept
{
    value.storage = client_storage::integer;
    switch (type.base) {
    case client_base::real:
        value.storage = client_storage::real;
        return my_read_native_float<float>(bytes, value.real);
    case client_base::floating:
        value.storage = client_storage::real;
        return my_read_native_float<double>(bytes, value.real);
    case client_base::decimal:
        return my_read_native_decimal(type, bytes, value.integer);
    default:
        return my_read_native_exact(type, bytes, value.integer);
    }
}
