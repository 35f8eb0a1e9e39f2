// The keyword lookup, inline, because the scanner asks it for every word.
#pragma once

#include "defval/defval_chars.hpp"
#include "defval/defval_keywords.hpp"
#include "defval/defval_tokenizer.hpp"
#include "kt_string.h"

#include <cstring>

// Keywords are mostly written in capitals, as the table has them.
inline bool tov_is_same_word(const char *text, const char *keyword, uint32_t length) noexcept
{
    return std::memcmp(text, keyword, length) == 0 || KT_strnicmp(text, keyword, length) == 0;
}

// The code of the keyword that the first bytes of text spell, TK_ID for any other word. The length is at least 2.
inline int32_t tov_keyword_code(const char *text, uint32_t length) noexcept
{
    const tov_keyword_tables &tables = tov_keyword_data;
    const uint32_t first = tov_lower[static_cast<unsigned char>(text[0])];
    const uint32_t last = tov_lower[static_cast<unsigned char>(text[length - 1])];
    for (uint32_t k = tables.buckets[tov_keyword_hash(first, last, length)]; k != 0; k = tables.chains[k - 1])
        if (tables.lengths[k - 1] == length && tov_is_same_word(text, &tables.text[tables.offsets[k - 1]], length))
            return tables.codes[k - 1];
    return TK_ID;
}
