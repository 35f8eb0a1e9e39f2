// Letter case of ASCII in C++ code: names are equal here when SQLite takes them for equal, in every locale.
//
//     kt_equal_folded(name, "sqlite_master")
//     names.insert(kt_folded(name))
#pragma once

#include "kt_chars.h"

#include <algorithm>
#include <string>
#include <string_view>

inline bool kt_equal_bytes_folded(char a, char b) noexcept
{
    return KT_char__folded(a) == KT_char__folded(b);
}

inline bool kt_equal_folded(std::string_view a, std::string_view b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), kt_equal_bytes_folded);
}

/** A copy in small letters. */
inline std::string kt_folded(std::string_view text)
{
    std::string folded(text);
    for (char &byte : folded)
        byte = static_cast<char>(KT_char__folded(byte));
    return folded;
}
