// Decimal constants as whole numbers of units: 12.5 with two decimals is 1250.
//
// SQLite keeps the host's fixed-point values as such integers. With a scale of 0 the digits of a fraction simply join
// the others (1.5 becomes 15), as they always have.

#include "defval/defval_translation.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>

// How many more decimals the scale has than the text. A second point, or too many decimals, is a failure.
static void my_missing_decimals(KT_context *ctx, const char *text, uint32_t scale, uint32_t *missing) noexcept
{
    const char *point = scale > 0 ? std::strchr(text, '.') : nullptr;
    if (!point) {
        *missing = scale;
        return;
    }
    const size_t decimals = std::strlen(point + 1);
    if (std::strchr(point + 1, '.') || decimals > scale)
        KT_FAIL(KT_ERR_NOT_FOUND, "problem with decimal string for scale=%d: %s", static_cast<int>(scale), text);
    *missing = scale - static_cast<uint32_t>(decimals);
}

// The buffer holds the host's 38 digits with a sign. What does not fit is refused, leading zeros or not.
static void my_parse_without_points(KT_context *ctx, const char *text, int64_t *value) noexcept
{
    char digits[40];
    size_t length = 0;
    for (const char *at = text; *at; at++) {
        if (*at == '.')
            continue;
        if (length == sizeof digits - 1)
            KT_FAIL(KT_ERR_BAD_NUMBER, "'%s' is too long for a number", text);
        digits[length++] = *at;
    }
    digits[length] = '\0';
    KT_TRY(KT_int64__parse__strict(ctx, digits, value));
}

void tov_convert_decimal_constant_to_scaled_integer(KT_context *ctx, const char *text, uint32_t scale,
                                                    int64_t *value) noexcept
{
    uint32_t missing = 0;
    int64_t parsed = 0;
    KT_TRY(my_missing_decimals(ctx, text, scale & 0xFFU, &missing));
    KT_TRY(my_parse_without_points(ctx, text, &parsed));
    // Unsigned, because a product that does not fit wraps around.
    uint64_t units = static_cast<uint64_t>(parsed);
    for (; missing > 0; missing--)
        units *= 10;
    *value = static_cast<int64_t>(units);
}
