// Tables of text for a person: cells are padded to the width of their column.
#pragma once

#include <string>
#include <vector>

// The number of code points, which is the width on a terminal but for wide and combining characters.
size_t cli_width(const std::string &text);

// One line for each list of cells, each beginning with the indent; columns are as wide as their widest cell, with two
// blanks between them.
std::string cli_lay_out(const std::vector<std::vector<std::string>> &lines, const std::string &indent);
