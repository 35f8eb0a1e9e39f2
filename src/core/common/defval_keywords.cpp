// The keyword lookup.

#include "defval_keywords.h"
#include "defval_chars.h"
#include "defval_tokenizer.h"
#include "kt_string.h"

int32_t keywordCode(const char *text, int32_t n) noexcept
{
    if (n < 2)
        return TK_ID;
    const uint32_t length = static_cast<uint32_t>(n);
    const uint32_t first = tov_lower[static_cast<unsigned char>(text[0])];
    const uint32_t last = tov_lower[static_cast<unsigned char>(text[length - 1])];
    const tov_keyword_tables &tables = tov_keyword_lookup;
    for (uint32_t k = tables.buckets[tov_keyword_hash(first, last, length)]; k != 0; k = tables.chains[k - 1])
        if (tables.lengths[k - 1] == length && KT_strnicmp(&tables.text[tables.offsets[k - 1]], text, length) == 0)
            return tables.codes[k - 1];
    return TK_ID;
}
