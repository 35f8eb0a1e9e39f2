// Strings as they are compared: without the differences that a collation does not see and ICU would.
#pragma once

#include "collate/ext_rules.hpp"

#include <string>

struct ext_folded {
    std::u16string text; // what ICU compares
    // What decides between strings that ICU takes for equal: for each character whether it is wide or katakana, where
    // that counts, and variation selectors. Equal characters leave no trace at the end.
    std::u32string marks;
};

// Folds a string of UTF-8 for a linguistic collation; what is not UTF-8 counts as U+FFFD.
void ext_fold(std::string_view utf8, const ext_rules &rules, ext_folded &folded);

// Folds a string for a collation of a code page: two strings are equal when the results are the same.
void ext_fold_code_page(std::string_view utf8, const ext_rules &rules, std::u16string &folded);
