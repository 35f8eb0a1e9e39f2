// The keyword lookup for those who have no scanner at hand.

#include "defval/defval_keyword_lookup.hpp"

int32_t _tov_find_keyword(const char *text, int32_t n) noexcept
{
    return n < 2 ? static_cast<int32_t>(TK_ID) : tov_keyword_code(text, static_cast<uint32_t>(n));
}
