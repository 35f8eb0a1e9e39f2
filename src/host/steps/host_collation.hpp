// What a collation's name and comparison style say about comparing texts.
#pragma once

#include <cstdint>
#include <string>

struct host_collation_rules {
    std::string locale; // the name without the options at its end, e.g. "Latin1_General_100"
    bool binary = false;
    bool noaccent = false;
    bool nocase = false;
    bool ks = false; // tells hiragana from katakana
    bool ws = false; // tells wide from narrow forms
    bool sc = false; // counts supplementary characters as one
};

// Code pages in which a character takes one to four bytes: those of Japanese, Chinese and Korean, and UTF-8.
bool host_is_multibyte(int64_t code_page);

// The name may be null. The style, where there is one (not negative), is a better source than the name for what may
// be ignored; whether texts are compared as bytes, and supplementary characters, only the name tells.
host_collation_rules host_read_collation(const char *name, int64_t comparison_style);
