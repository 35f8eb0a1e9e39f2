// Small helpers on strings, the same in every locale.
#include "kt_chars.h"
#include "kt_string.h"
#include "kt_try.hpp"

#include <charconv>
#include <cstring>

#define KT_HERE "src/runtime/kt_text"

static int my_lower(char byte)
{
    return KT_char__folded(static_cast<unsigned char>(byte));
}

int KT_stricmp(const char *a, const char *b) noexcept
{
    for (;; a++, b++) {
        const int difference = my_lower(*a) - my_lower(*b);
        if (difference != 0 || *a == '\0')
            return difference;
    }
}

int KT_strnicmp(const char *a, const char *b, uint32_t n) noexcept
{
    for (; n > 0; a++, b++, n--) {
        const int difference = my_lower(*a) - my_lower(*b);
        if (difference != 0 || *a == '\0')
            return difference;
    }
    return 0;
}

void KT_int64__parse__strict(KT_context *ctx, const char *text, int64_t *value) noexcept
{
    KT_RETURN_IF_FAILED;
    // from_chars takes a minus but no plus.
    const char *begin = text[0] == '+' && text[1] != '-' ? text + 1 : text;
    const char *end = begin + std::strlen(begin);
    int64_t parsed = 0;
    const auto [stop, error] = std::from_chars(begin, end, parsed);
    if (error == std::errc::result_out_of_range && stop == end)
        KT_FAIL(KT_ERR_BAD_NUMBER, "'%s' does not fit 64 bits", text);
    if (error != std::errc{} || stop != end)
        KT_FAIL(KT_ERR_BAD_NUMBER, "'%s' is not an integer", text);
    *value = parsed;
}

char *KT_int64_to_sz(int64_t value, char *buffer) noexcept
{
    *std::to_chars(buffer, buffer + 20, value).ptr = '\0';
    return buffer;
}
