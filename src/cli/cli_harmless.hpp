// Names and other strings of a document in what is printed for people: none of them may disturb a terminal, or write
// on it what it likes. Output for programs (JSON, SQL) holds them as they are.
#pragma once

#include <string>

// The string on one line, with characters that a terminal would obey or hide spelled out.
std::string cli_harmless(const std::string &text);

// Writes such a line to standard error.
void cli_tell_line(const std::string &text);
