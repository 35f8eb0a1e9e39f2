// How many bytes a text takes in the code page of a column, which is what limits a varchar.
#pragma once

#include "rows/convert/client_page_chars.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

// What was found out about code pages so far. Most take a byte for each UTF-16 unit, whatever it is, since a character
// that they lack becomes a question mark; only those with characters of several bytes are asked about each character.
class client_code_pages {
  public:
    client_code_pages();
    ~client_code_pages();
    client_code_pages(const client_code_pages &) = delete;
    client_code_pages &operator=(const client_code_pages &) = delete;

    // The bytes that a text takes; units is its length in UTF-16, and an unknown page (0) counts as such units.
    size_t count_bytes(uint16_t page, std::string_view text, size_t units);

    // The same as the server's rules count: in a double-byte page each character takes two bytes but those that are
    // known to take one, whether the page has it or not.
    size_t count_by_rule(uint16_t page, std::string_view text, size_t units);

    // Whether the text has a character that a single-byte page lacks.
    bool lacks(uint16_t page, std::string_view text);

    // What client_single_bytes_of() says, which is kept.
    const std::vector<client_char_range> &single_bytes(uint16_t page);

  private:
    struct wide_page;
    std::map<uint16_t, std::unique_ptr<wide_page>> pages_;
    std::map<uint16_t, std::vector<client_char_range>> single_bytes_;
};
