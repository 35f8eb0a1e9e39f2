// What was probably meant by a word that is not known.
#pragma once

#include <string>
#include <vector>

// The word that takes the fewest typing errors to become the given one, in any letter case; "" where none is near.
std::string cli_nearest(const std::string &word, const std::vector<std::string> &words);
