// Texts in columns, for a person.
#pragma once

#include <string>
#include <vector>

// The number of characters, which is the width on a terminal for most texts.
size_t cli_width(const std::string &text);

// One line for each list of cells, each beginning with the indent; columns are as wide as their widest cell and stand
// two blanks apart.
std::string cli_lay_out(const std::vector<std::vector<std::string>> &lines, const std::string &indent);
