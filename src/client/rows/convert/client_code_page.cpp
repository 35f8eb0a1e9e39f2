#include "rows/convert/client_code_page.hpp"

#include "rows/convert/client_utf8.hpp"

#include <iconv.h>
#include <vector>

struct client_code_pages::wide_page {
    explicit wide_page(const char *name) : sizes(0x10000), encoder(iconv_open(name, "UTF-8"))
    {
    }
    ~wide_page()
    {
        if (is_known())
            iconv_close(encoder);
    }
    wide_page(const wide_page &) = delete;
    wide_page &operator=(const wide_page &) = delete;

    bool is_known() const noexcept
    {
        return encoder != reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
    }
    size_t size_of(uint32_t character);

    std::vector<uint8_t> sizes; // by character; 0 where nobody asked yet
    iconv_t encoder;            // opened last: nothing that may throw comes after
};

static size_t my_encoded_size(iconv_t encoder, uint32_t character)
{
    std::string utf8;
    client_append_utf8(utf8, character);
    char out[8];
    char *from = utf8.data();
    char *to = out;
    size_t left = utf8.size();
    size_t room = sizeof out;
    const bool fits = iconv(encoder, &from, &left, &to, &room) != static_cast<size_t>(-1);
    iconv(encoder, nullptr, nullptr, nullptr, nullptr);
    const size_t marks = character < 0x10000 ? 1 : 2; // a question mark for each unit
    return fits ? sizeof out - room : marks;
}

size_t client_code_pages::wide_page::size_of(uint32_t character)
{
    if (character < 0x80)
        return 1;
    if (character >= 0x10000)
        return my_encoded_size(encoder, character);
    uint8_t &size = sizes[character];
    if (size == 0)
        size = static_cast<uint8_t>(my_encoded_size(encoder, character));
    return size;
}

client_code_pages::client_code_pages() = default;
client_code_pages::~client_code_pages() = default;

size_t client_code_pages::count_bytes(uint16_t page, std::string_view text, size_t units)
{
    if (page == client_utf_8_page)
        return text.size();
    if (!client_is_wide_page(page))
        return units;
    std::unique_ptr<wide_page> &wide = pages_[page];
    if (!wide)
        wide = std::make_unique<wide_page>(client_page_name(page));
    if (!wide->is_known())
        return units;
    size_t bytes = 0;
    while (!text.empty())
        bytes += wide->size_of(client_next_char(text));
    return bytes;
}

const std::vector<client_char_range> &client_code_pages::single_bytes(uint16_t page)
{
    const auto [place, is_new] = single_bytes_.try_emplace(page);
    if (is_new)
        place->second = client_single_bytes_of(page);
    return place->second;
}

size_t client_code_pages::count_by_rule(uint16_t page, std::string_view text, size_t units)
{
    if (!client_is_double_byte_page(page))
        return count_bytes(page, text, units);
    const std::vector<client_char_range> &singles = single_bytes(page);
    size_t bytes = 0;
    while (!text.empty()) {
        const uint32_t character = client_next_char(text);
        bytes += character < 0x80 || client_is_in(singles, character) ? 1U : 2U;
    }
    return bytes;
}

bool client_code_pages::lacks(uint16_t page, std::string_view text)
{
    const std::vector<client_char_range> &chars = single_bytes(page);
    while (!text.empty() && !chars.empty()) {
        const uint32_t character = client_next_char(text);
        if (character >= 0x80 && !client_is_in(chars, character))
            return true;
    }
    return false;
}
