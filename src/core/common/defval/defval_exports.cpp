// The keyword lookup and the character tables for the rest of the product, in the form that C reads.

#include "defval/defval_chars.hpp"
#include "defval/defval_tokenizer.hpp"
#include "tov_defval.h"

const unsigned char sqlite3CtypeMap[256] = {TOV_VALUES_256(tov_char_class_of)};

const unsigned char sqlite3UpperToLower[256] = {TOV_VALUES_256(tov_lower_of)};

int sqlite3KeywordCode(const char *text, int n) noexcept
{
    return _tov_find_keyword(text, n);
}
