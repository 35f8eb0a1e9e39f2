#include "rows/convert/client_utf8.hpp"

#include <cstddef>
#include <cstring>

namespace {
struct byte_text {
    const unsigned char *at;
    const unsigned char *end;

    explicit byte_text(std::string_view text) noexcept
        : at(reinterpret_cast<const unsigned char *>(text.data())), end(at + text.size())
    {
    }
    bool is_tail(std::ptrdiff_t n) const noexcept
    {
        return n < end - at && (at[n] & 0xC0) == 0x80;
    }
};
} // namespace

// Moves past ASCII, eight bytes at a time.
static void my_skip_ascii(byte_text &text) noexcept
{
    while (text.end - text.at >= 8) {
        uint64_t eight = 0;
        std::memcpy(&eight, text.at, sizeof eight);
        if (eight & UINT64_C(0x8080808080808080))
            break;
        text.at += 8;
    }
    while (text.at < text.end && *text.at < 0x80)
        text.at++;
}

// The length of the character at this place, 0 for none.
static int my_char_size(const byte_text &text) noexcept
{
    const unsigned first = text.at[0];
    if (first < 0xC2 || first > 0xF4 || !text.is_tail(1))
        return 0;
    const unsigned second = text.at[1];
    if (first < 0xE0)
        return 2;
    if (first < 0xF0)
        return text.is_tail(2) && !(first == 0xE0 && second < 0xA0) ? 3 : 0;
    const bool in_range = !(first == 0xF0 && second < 0x90) && !(first == 0xF4 && second > 0x8F);
    return in_range && text.is_tail(2) && text.is_tail(3) ? 4 : 0;
}

client_text_size client_measure_text(std::string_view sv) noexcept
{
    client_text_size size;
    byte_text text(sv);
    while (true) {
        const unsigned char *from = text.at;
        my_skip_ascii(text);
        size.units += static_cast<size_t>(text.at - from);
        if (text.at == text.end)
            return size;
        size.ascii = false;
        const int bytes = my_char_size(text);
        const bool half = bytes == 3 && text.at[0] == 0xED && text.at[1] >= 0xA0;
        if (bytes == 0 || half) {
            size.flaw = half ? client_utf8_flaw::half_surrogate : client_utf8_flaw::not_utf_8;
            return size;
        }
        size.units += bytes == 4 ? 2 : 1;
        text.at += bytes;
    }
}

size_t client_count_units(std::string_view text) noexcept
{
    size_t units = 0;
    for (const char byte : text) {
        const auto bits = static_cast<unsigned char>(byte);
        units += (bits & 0xC0) != 0x80 ? 1U : 0U;
        units += bits >= 0xF0 ? 1U : 0U;
    }
    return units;
}

void client_join_halves(std::string &text, size_t place)
{
    constexpr size_t half = 3;
    const auto unit = [&](size_t at) {
        const auto bits = [&](size_t n) { return static_cast<uint32_t>(static_cast<unsigned char>(text[at + n])); };
        return (bits(0) & 0x0F) << 12 | (bits(1) & 0x3F) << 6 | (bits(2) & 0x3F);
    };
    if (place < half || text.size() - place < half || text[place - half] != '\xED' || text[place] != '\xED')
        return;
    const uint32_t high = unit(place - half);
    const uint32_t low = unit(place);
    if (high < 0xD800 || high >= 0xDC00 || low < 0xDC00 || low >= 0xE000)
        return;
    std::string joined;
    client_append_utf8(joined, 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
    text.replace(place - half, 2 * half, joined);
}

uint32_t client_next_char(std::string_view &sv) noexcept
{
    const byte_text text(sv);
    const uint32_t first = text.at[0];
    const int bytes = first < 0x80 ? 1 : my_char_size(text);
    sv.remove_prefix(bytes == 0 ? 1 : static_cast<size_t>(bytes));
    const auto tail = [&](int n) { return text.at[n] & UINT32_C(0x3F); };
    switch (bytes) {
    case 2:
        return (first & 0x1F) << 6 | tail(1);
    case 3:
        return (first & 0x0F) << 12 | tail(1) << 6 | tail(2);
    case 4:
        return (first & 0x07) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
    default:
        return first;
    }
}

void client_append_utf8(std::string &text, uint32_t character)
{
    const auto put = [&](uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    const auto put_tail = [&](int shift) { put(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        put_tail(0);
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put_tail(6);
        put_tail(0);
    } else {
        put(0xF0 | character >> 18);
        put_tail(12);
        put_tail(6);
        put_tail(0);
    }
}

static uint32_t my_unit(std::string_view utf16, size_t at) noexcept
{
    return static_cast<unsigned char>(utf16[at]) | static_cast<uint32_t>(static_cast<unsigned char>(utf16[at + 1]))
                                                       << 8;
}

// Copies units that are ASCII, sixteen at a time, as far as they go; the number of units.
static size_t my_copy_ascii(char *to, const char *from, size_t count) noexcept
{
    static constexpr size_t batch = 16;
    size_t done = 0;
    for (; count - done >= batch; done += batch) {
        const char *units = from + done * 2;
        int low = 0;
        int high = 0;
        for (size_t n = 0; n < batch; n++) {
            low |= units[n * 2];
            high |= units[n * 2 + 1];
        }
        if (low < 0 || high != 0)
            return done;
        for (size_t n = 0; n < batch; n++)
            to[done + n] = units[n * 2];
    }
    while (done < count && from[done * 2] >= 0 && from[done * 2 + 1] == 0) {
        to[done] = from[done * 2];
        done++;
    }
    return done;
}

void client_append_utf16(std::string &text, std::string_view utf16)
{
    const size_t before = text.size();
    const size_t count = utf16.size() / 2;
    text.resize(before + count);
    const size_t ascii = my_copy_ascii(text.data() + before, utf16.data(), count);
    text.resize(before + ascii);
    for (size_t at = ascii * 2; at + 1 < utf16.size(); at += 2) {
        uint32_t unit = my_unit(utf16, at);
        if (unit < 0x80) {
            text.push_back(static_cast<char>(unit));
            continue;
        }
        if (unit >= 0xD800 && unit < 0xDC00 && at + 3 < utf16.size()) {
            const uint32_t low = my_unit(utf16, at + 2);
            if (low >= 0xDC00 && low < 0xE000) {
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
                at += 2;
            }
        }
        client_append_utf8(text, unit);
    }
}

void client_append_as_utf16(std::string &utf16, std::string_view text)
{
    const auto put = [&](uint32_t unit) {
        utf16.push_back(static_cast<char>(unit & 0xFF));
        utf16.push_back(static_cast<char>(unit >> 8));
    };
    while (!text.empty()) {
        const uint32_t character = client_next_char(text);
        if (character < 0x10000) {
            put(character);
        } else {
            put(0xD800 + ((character - 0x10000) >> 10));
            put(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
    }
}
