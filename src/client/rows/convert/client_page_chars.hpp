// The characters of the code pages that the server's collations have.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

struct client_char_range {
    uint32_t first;
    uint32_t last;
};

inline constexpr uint16_t client_utf_8_page = 65001;

bool client_is_single_byte_page(uint16_t page) noexcept;
bool client_is_double_byte_page(uint16_t page) noexcept;

// Whether characters of the page may take more than a byte.
bool client_is_wide_page(uint16_t page) noexcept;

// A page as iconv knows it; null for one that is not known here.
const char *client_page_name(uint16_t page) noexcept;

// The characters beyond ASCII that take one byte in a page that is known here, in order. Bytes that a page leaves
// undefined are characters on the server too: controls (U+0080 to U+009F), or characters for private use. U+FFFD counts
// as one of the page.
std::vector<client_char_range> client_single_bytes_of(uint16_t page);

bool client_is_in(const std::vector<client_char_range> &ranges, uint32_t character) noexcept;
