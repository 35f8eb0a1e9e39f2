// Texts in UTF-8: whether they are, and how long the server finds them.
//
// Half a surrogate pair is carried through decoding as three bytes, which UTF-8 forbids, so that it is found here as
// what it is and not as a strange byte.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class client_utf8_flaw : uint8_t { none, not_utf_8, half_surrogate };

// What one look over a text finds.
struct client_text_size {
    client_utf8_flaw flaw = client_utf8_flaw::none;
    bool ascii = true;
    size_t units = 0; // of UTF-16
};

client_text_size client_measure_text(std::string_view sv) noexcept;

// The UTF-16 units of a text, whatever is wrong with it.
size_t client_count_units(std::string_view text) noexcept;

// Reads one character of valid UTF-8 (or half a pair, see above) and moves on; the text must not be empty.
uint32_t client_next_char(std::string_view &sv) noexcept;

void client_append_utf8(std::string &text, uint32_t character);

// Appends UTF-16, low byte first, as UTF-8. An odd last byte is left out.
void client_append_utf16(std::string &text, std::string_view utf16);

// Makes one character of the two halves of a surrogate pair that meet at a place, if they do.
void client_join_halves(std::string &text, size_t place);

// The other way: bytes of UTF-16, low byte first.
void client_append_as_utf16(std::string &utf16, std::string_view text);
