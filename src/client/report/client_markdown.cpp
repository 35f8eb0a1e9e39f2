#include "report/client_markdown.hpp"

#include "kt_folded.hpp"

#include <algorithm>

static bool my_ends_line(char c) noexcept
{
    return c == '\n' || c == '\r';
}

std::string client_markdown_text(std::string_view text)
{
    static constexpr std::string_view special = "\\`*_[]<>|~&$";
    static constexpr std::string_view special_at_first = "#+-=:";
    std::string escaped;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos ||
            (escaped.empty() && special_at_first.find(c) != std::string_view::npos))
            escaped.push_back('\\');
        escaped.push_back(my_ends_line(c) ? ' ' : c);
    }
    return escaped;
}

static size_t my_longest_run_of_backticks(std::string_view text)
{
    size_t longest = 0;
    size_t run = 0;
    for (const char c : text) {
        run = c == '`' ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

// A bar ends a cell even inside of code, unless it is escaped.
std::string client_markdown_code(std::string_view text)
{
    if (text.empty())
        return "";
    const std::string fence(my_longest_run_of_backticks(text) + 1, '`');
    const std::string blank = fence.size() > 1 ? " " : "";
    std::string code = fence + blank;
    for (const char c : text) {
        if (c == '|')
            code.push_back('\\');
        code.push_back(my_ends_line(c) ? ' ' : c);
    }
    return code + blank + fence;
}

std::string client_mermaid_text(std::string_view text)
{
    static constexpr std::string_view special = "&<>\"\\#`;";
    std::string escaped;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos)
            escaped += "&#" + std::to_string(static_cast<unsigned char>(c)) + ";";
        else
            escaped.push_back(my_ends_line(c) ? ' ' : c);
    }
    return escaped;
}

std::string client_markdown_row(const std::vector<std::string> &cells)
{
    std::string line = "|";
    for (const std::string &cell : cells)
        line += " " + cell + (cell.empty() ? "|" : " |");
    return line + "\n";
}

std::string client_markdown_head(const std::vector<std::string> &headings)
{
    std::string line = client_markdown_row(headings) + "|";
    for (size_t n = 0; n < headings.size(); n++)
        line += "---|";
    return line + "\n";
}

std::string client_markdown_file(std::string_view tbl, std::vector<std::string> &taken)
{
    static constexpr std::string_view kept = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_";
    constexpr size_t most = 100;
    std::string stem;
    for (const char c : tbl.substr(0, most))
        stem.push_back(kept.find(c) == std::string_view::npos ? '_' : c);
    const auto is_taken = [&](const std::string &name) {
        return std::find(taken.begin(), taken.end(), kt_folded(name)) != taken.end();
    };
    std::string name = stem + ".md";
    for (int n = 2; is_taken(name); n++)
        name = stem + "-" + std::to_string(n) + ".md";
    taken.push_back(kt_folded(name));
    return name;
}
