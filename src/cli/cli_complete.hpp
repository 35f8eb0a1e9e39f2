// Completion of a command line: the shells' scripts ask the command itself, so that none of them repeats its options.
#pragma once

#include "cli_arguments.hpp"

// The first word of such a question. The words of the command line follow, the last being the one to complete.
inline constexpr const char *cli_complete_word = "__complete";

// Prints what the last word may become, one possibility a line, its description after a tab. A line ":files" says that
// it may be the name of a file.
int cli_complete(const std::vector<cli_known_command> &commands, const std::vector<std::string> &words);
