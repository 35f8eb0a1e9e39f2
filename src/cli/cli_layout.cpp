#include "cli_layout.hpp"

#include <algorithm>

static constexpr size_t gap = 2; // blanks between columns

size_t cli_width(const std::string &text)
{
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

static std::vector<size_t> my_widths(const std::vector<std::vector<std::string>> &lines)
{
    std::vector<size_t> widths;
    for (const std::vector<std::string> &line : lines) {
        widths.resize(std::max(widths.size(), line.size()));
        for (size_t n = 0; n < line.size(); n++)
            widths[n] = std::max(widths[n], cli_width(line[n]));
    }
    return widths;
}

std::string cli_lay_out(const std::vector<std::vector<std::string>> &lines, const std::string &indent)
{
    const std::vector<size_t> widths = my_widths(lines);
    std::string text;
    for (const std::vector<std::string> &line : lines) {
        std::string padded = indent;
        for (size_t n = 0; n < line.size(); n++)
            padded += line[n] + std::string(widths[n] - cli_width(line[n]) + gap, ' ');
        padded.erase(padded.find_last_not_of(' ') + 1);
        text += padded + "\n";
    }
    return text;
}
