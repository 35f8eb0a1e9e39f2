// The languages that collations are named after.
#pragma once

#include <cstdint>
#include <string_view>

// Letters that a language counts as its own: in others Æ and Þ are a way of writing two letters, and an i without its
// dot is no small letter of I.
enum ext_letters : uint8_t { ext_no_letters = 0, ext_own_ae = 1, ext_own_thorn = 2, ext_own_i = 4 };

struct ext_language {
    std::string_view name; // as the server writes it
    const char *locale;    // ICU's
    uint8_t own_letters = ext_no_letters;
};

// The language of a Windows collation, or of one whose name begins with SQL_; null for a name that is not known.
const ext_language *ext_find_language(std::string_view name) noexcept;
const ext_language *ext_find_sql_language(std::string_view name) noexcept;
