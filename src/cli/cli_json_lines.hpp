// JSON as version control likes it.
#pragma once

#include <string>
#include <string_view>

// Valid JSON without blanks, laid out with a member or item on each line; lists of plain values stay on one.
std::string cli_json_lines(std::string_view json);
