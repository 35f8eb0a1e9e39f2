// What the name of a collation says about comparing strings.
#pragma once

#include "collate/ext_language.hpp"

enum class ext_order : uint8_t {
    linguistic,   // as people of the language sort words
    code_page,    // an SQL_ collation on strings of its code page: character by character
    code_points,  // BIN2
    first_letter, // BIN: the first character by its number, all others by their bytes in UTF-16
};

struct ext_rules {
    const ext_language *language = nullptr;
    ext_order order = ext_order::linguistic;
    int version = 80; // of the server's tables; those of SQL_ collations are the first ones
    bool nocase = false;
    bool noaccent = false;
    bool kana = false;      // hiragana and katakana differ
    bool width = false;     // wide and narrow forms differ
    bool variation = false; // variation selectors count
};

// What follows the name of an SQL_ collation where the strings are those of its code page (char, varchar): the server
// then has other rules than for Unicode.
inline constexpr std::string_view ext_code_page_suffix = ".varchar";

// Whether the name is one that the server could have; letter case does not matter. Whether the server has this very
// combination of language, version and options is not known here.
bool ext_read_rules(std::string_view name, ext_rules &rules) noexcept;
