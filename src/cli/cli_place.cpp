#include "cli_place.hpp"

#include <charconv>
#include <string_view>

// Takes ":NUMBER" off the end of a place; 0 when it does not end so.
static int64_t my_take_number(std::string_view &text)
{
    const size_t colon = text.rfind(':');
    if (colon == std::string_view::npos)
        return 0;
    int64_t number = 0;
    const char *end = text.data() + text.size();
    const auto [read_end, error] = std::from_chars(text.data() + colon + 1, end, number);
    if (read_end != end || error != std::errc() || number <= 0)
        return 0;
    text.remove_suffix(text.size() - colon);
    return number;
}

cli_place cli_place_of(const std::string &text)
{
    std::string_view file = text;
    const int64_t column = my_take_number(file);
    const int64_t line = column > 0 ? my_take_number(file) : 0;
    if (line == 0)
        return {text};
    return {std::string(file), line, column};
}
