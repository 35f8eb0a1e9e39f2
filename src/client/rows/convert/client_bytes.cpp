#include "rows/convert/client_bytes.hpp"

#include <array>

static constexpr std::string_view hex_digits = "0123456789ABCDEF";
static constexpr std::string_view base64_digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The server keeps the first three groups of a uniqueidentifier low byte first: where each byte of the text goes.
static constexpr int guid_places[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

static constexpr std::array<int8_t, 256> my_digit_values() noexcept
{
    std::array<int8_t, 256> values{};
    values.fill(-1);
    for (size_t n = 0; n < hex_digits.size(); n++) {
        values[static_cast<unsigned char>(hex_digits[n])] = static_cast<int8_t>(n);
        if (n > 9)
            values[static_cast<unsigned char>(hex_digits[n] | 0x20)] = static_cast<int8_t>(n);
    }
    return values;
}
static constexpr std::array<int8_t, 256> digit_values = my_digit_values();

// The byte of two digits, negative for others.
static int my_pair(const char *digits) noexcept
{
    const int high = digit_values[static_cast<unsigned char>(digits[0])];
    const int low = digit_values[static_cast<unsigned char>(digits[1])];
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

bool client_append_from_hex(std::string &bytes, std::string_view hex)
{
    if (hex.size() >= 2 && hex[0] == '0' && (hex[1] == 'x' || hex[1] == 'X'))
        hex.remove_prefix(2);
    if (hex.size() % 2 != 0)
        return false;
    const size_t before = bytes.size();
    bytes.resize(before + hex.size() / 2);
    for (size_t n = 0; n < hex.size(); n += 2) {
        const int byte = my_pair(hex.data() + n);
        if (byte < 0)
            return false;
        bytes[before + n / 2] = static_cast<char>(byte);
    }
    return true;
}

bool client_append_from_base64(std::string &bytes, std::string_view base64)
{
    while (!base64.empty() && base64.back() == '=' && base64.size() % 4 != 1)
        base64.remove_suffix(1);
    if (base64.size() % 4 == 1)
        return false;
    uint32_t bits = 0;
    int count = 0;
    for (const char c : base64) {
        const size_t digit = base64_digits.find(c);
        if (digit == std::string_view::npos)
            return false;
        bits = bits << 6 | static_cast<uint32_t>(digit);
        count += 6;
        if (count < 8)
            continue;
        count -= 8;
        bytes.push_back(static_cast<char>(bits >> count & 0xFF));
    }
    return (bits & ((1U << count) - 1)) == 0;
}

bool client_read_guid(std::string_view text, char bytes[16]) noexcept
{
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    if (text.size() != 36)
        return false;
    size_t at = 0;
    for (const int place : guid_places) {
        if (at == 8 || at == 13 || at == 18 || at == 23) {
            if (text[at++] != '-')
                return false;
        }
        const int byte = my_pair(text.data() + at);
        if (byte < 0)
            return false;
        bytes[place] = static_cast<char>(byte);
        at += 2;
    }
    return true;
}

void client_append_hex(std::string &text, std::string_view bytes)
{
    for (const char byte : bytes) {
        text.push_back(hex_digits[static_cast<unsigned char>(byte) >> 4]);
        text.push_back(hex_digits[static_cast<unsigned char>(byte) & 0x0F]);
    }
}

void client_append_base64(std::string &text, std::string_view bytes)
{
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view three = bytes.substr(at, 3);
        uint32_t bits = 0;
        for (size_t n = 0; n < 3; n++)
            bits = bits << 8 | (n < three.size() ? static_cast<unsigned char>(three[n]) : 0U);
        for (size_t n = 0; n < 4; n++)
            text.push_back(n > three.size() ? '=' : base64_digits[bits >> (18 - 6 * n) & 0x3F]);
    }
}

void client_append_guid(std::string &text, std::string_view bytes)
{
    for (size_t n = 0; n < 16; n++) {
        if (n == 4 || n == 6 || n == 8 || n == 10)
            text.push_back('-');
        client_append_hex(text, bytes.substr(static_cast<size_t>(guid_places[n]), 1));
    }
}
