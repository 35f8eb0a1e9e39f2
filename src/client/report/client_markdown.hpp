// Text that becomes a part of Markdown, in a paragraph or in a table, and shows as it is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Characters that mean something are escaped, line ends become blanks.
std::string client_markdown_text(std::string_view text);

// As code; empty for an empty text.
std::string client_markdown_code(std::string_view text);

// For a label in quotes in a diagram of Mermaid, which reads it as HTML.
std::string client_mermaid_text(std::string_view text);

// A line of a table.
std::string client_markdown_row(const std::vector<std::string> &cells);
// The lines that a table begins with.
std::string client_markdown_head(const std::vector<std::string> &headings);

// The name of a file for a table, different from the names that are taken, and put with these: letters and digits of
// ASCII, dots, hyphens and underscores. Some file systems do not tell letter cases apart.
std::string client_markdown_file(std::string_view tbl, std::vector<std::string> &taken);
