#include "defaults/host_guid.hpp"

#include <iterator>

std::string host_guid_literal(std::string_view text)
{
    // Where the digits of each byte are in 00112233-4455-6677-8899-AABBCCDDEEFF.
    static constexpr size_t places[] = {6, 4, 2, 0, 11, 9, 16, 14, 19, 21, 24, 26, 28, 30, 32, 34};
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    const bool has_marks = text.size() == 36 && text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
    if (!has_marks)
        return "";
    std::string literal = "x'";
    for (const size_t place : places) {
        for (const char digit : text.substr(place, 2)) {
            if (std::string_view("0123456789abcdefABCDEF").find(digit) == std::string_view::npos)
                return "";
            literal += digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
        }
    }
    return literal + "'";
}
