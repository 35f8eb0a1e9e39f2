// What the characters are is asked of iconv, byte by byte.
#include "rows/convert/client_page_chars.hpp"

#include "rows/convert/client_utf8.hpp"

#include <algorithm>
#include <iconv.h>
#include <memory>

namespace {
enum class page_kind : uint8_t { unknown, single_byte, double_byte, other_wide };

struct code_page {
    uint16_t number;
    page_kind kind;
    const char *name; // as iconv knows it
};
} // namespace

static constexpr code_page pages[] = {
    {437, page_kind::single_byte, "CP437"},
    {850, page_kind::single_byte, "CP850"},
    {874, page_kind::single_byte, "CP874"},
    {932, page_kind::double_byte, "CP932"},
    {936, page_kind::double_byte, "CP936"},
    {949, page_kind::double_byte, "CP949"},
    {950, page_kind::double_byte, "CP950"},
    {1250, page_kind::single_byte, "CP1250"},
    {1251, page_kind::single_byte, "CP1251"},
    {1252, page_kind::single_byte, "CP1252"},
    {1253, page_kind::single_byte, "CP1253"},
    {1254, page_kind::single_byte, "CP1254"},
    {1255, page_kind::single_byte, "CP1255"},
    {1256, page_kind::single_byte, "CP1256"},
    {1257, page_kind::single_byte, "CP1257"},
    {1258, page_kind::single_byte, "CP1258"},
    {1361, page_kind::other_wide, "JOHAB"},
    {54936, page_kind::other_wide, "GB18030"},
    {client_utf_8_page, page_kind::other_wide, "UTF-8"},
};

// U+FFFD stands for a character that was lost on the way: refusing the row would not bring it back. SQLite reads the
// two after it, which are no characters, as U+FFFD.
static constexpr client_char_range lost_chars{0xFFFD, 0xFFFF};

// Where the server puts the undefined bytes from A0 on.
static constexpr client_char_range private_chars{0xF880, 0xF8FF};

static code_page my_find_page(uint16_t number) noexcept
{
    for (const code_page &page : pages) {
        if (page.number == number)
            return page;
    }
    return {number, page_kind::unknown, nullptr};
}

bool client_is_single_byte_page(uint16_t page) noexcept
{
    return my_find_page(page).kind == page_kind::single_byte;
}

bool client_is_double_byte_page(uint16_t page) noexcept
{
    return my_find_page(page).kind == page_kind::double_byte;
}

bool client_is_wide_page(uint16_t page) noexcept
{
    return my_find_page(page).kind >= page_kind::double_byte;
}

const char *client_page_name(uint16_t page) noexcept
{
    return my_find_page(page).name;
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
    iconv_t opened = iconv_open("UTF-8", client_page_name(page));
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
