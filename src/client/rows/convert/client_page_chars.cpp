// What the characters are is asked of iconv, byte by byte.
#include "rows/convert/client_page_chars.hpp"

#include "rows/convert/client_utf8.hpp"

#include <algorithm>
#include <iconv.h>
#include <memory>
#include <string>

static constexpr uint16_t single_byte_pages[] = {437, 850, 874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};
static constexpr uint16_t double_byte_pages[] = {932, 936, 949, 950};

// U+FFFD stands for a character that was lost on the way: refusing the row would not bring it back. SQLite reads the
// two after it, which are no characters, as U+FFFD.
static constexpr client_char_range lost_chars{0xFFFD, 0xFFFF};

// Where the server puts the undefined bytes from A0 on.
static constexpr client_char_range private_chars{0xF880, 0xF8FF};

bool client_is_single_byte_page(uint16_t page) noexcept
{
    return std::find(std::begin(single_byte_pages), std::end(single_byte_pages), page) != std::end(single_byte_pages);
}

bool client_is_double_byte_page(uint16_t page) noexcept
{
    return std::find(std::begin(double_byte_pages), std::end(double_byte_pages), page) != std::end(double_byte_pages);
}

// The character of one byte; 0 when the page has none for it.
static uint32_t my_char_of(iconv_t decoder, char byte)
{
    char out[8];
    char *from = &byte;
    char *to = out;
    size_t left = 1;
    size_t room = sizeof out;
    const bool decoded = iconv(decoder, &from, &left, &to, &room) != static_cast<size_t>(-1) &&
                         iconv(decoder, nullptr, nullptr, &to, &room) != static_cast<size_t>(-1);
    iconv(decoder, nullptr, nullptr, nullptr, nullptr);
    std::string_view text(out, sizeof out - room);
    return decoded && !text.empty() ? client_next_char(text) : 0;
}

static void my_add(std::vector<client_char_range> &ranges, client_char_range added)
{
    if (!ranges.empty() && added.first <= ranges.back().last + 1)
        ranges.back().last = std::max(ranges.back().last, added.last);
    else
        ranges.push_back(added);
}

// The characters of the bytes from 80 on.
static std::vector<client_char_range> my_decode_bytes(uint16_t page, iconv_t decoder)
{
    std::vector<client_char_range> chars;
    bool has_undefined = false;
    for (unsigned byte = 0x80; byte <= 0xFF; byte++) {
        const uint32_t character = my_char_of(decoder, static_cast<char>(byte));
        if (character >= 0x80)
            chars.push_back({character, character});
        else
            has_undefined |= byte >= 0xA0;
    }
    if (page == 936) // which iconv does not say
        chars.push_back({0x20AC, 0x20AC});
    if (client_is_single_byte_page(page)) {
        chars.push_back({0x80, 0x9F});
        chars.push_back(lost_chars);
    }
    if (client_is_single_byte_page(page) && has_undefined)
        chars.push_back(private_chars);
    return chars;
}

std::vector<client_char_range> client_single_bytes_of(uint16_t page)
{
    const std::string name = "CP" + std::to_string(page);
    iconv_t opened = iconv_open("UTF-8", name.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1)) // NOLINT(performance-no-int-to-ptr)
        return {};
    const auto close = [](iconv_t used) { iconv_close(used); };
    const std::unique_ptr<void, decltype(close)> closing(opened, close);
    std::vector<client_char_range> chars = my_decode_bytes(page, opened);
    std::sort(chars.begin(), chars.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<client_char_range> ranges;
    for (const client_char_range &range : chars)
        my_add(ranges, range);
    return ranges;
}

bool client_is_in(const std::vector<client_char_range> &ranges, uint32_t character) noexcept
{
    const auto after = std::upper_bound(ranges.begin(), ranges.end(), character,
                                        [](uint32_t c, const client_char_range &range) { return c < range.first; });
    return after != ranges.begin() && character <= (after - 1)->last;
}
