// Characters of UTF-8, one at a time, and what of them a message may show.
#include "kt_chars.h"

#include "kt_owned.hpp"

#define KT_HERE "src/runtime/kt_chars"

static bool my_is_continuation(unsigned char byte) noexcept
{
    return (byte & 0xC0U) == 0x80U;
}

int32_t KT_char__next(const char **at) noexcept
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(*at);
    const unsigned char lead = bytes[0];
    (*at)++;
    if (lead < 0x80)
        return lead;
    if (lead < 0xC2 || lead > 0xF4)
        return -1;
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    int32_t code_point = lead & (0x3F >> more);
    for (int i = 1; i <= more; i++) {
        if (!my_is_continuation(bytes[i]))
            return -1;
        code_point = (code_point << 6) | (bytes[i] & 0x3F);
    }
    static constexpr int32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    const bool surrogate = code_point >= 0xD800 && code_point <= 0xDFFF;
    if (code_point < smallest[more] || code_point > 0x10FFFF || surrogate)
        return -1;
    *at += more;
    return code_point;
}

KT_bool KT_char__is_direction(int32_t code_point) noexcept
{
    return code_point == 0x061C || code_point == 0x200E || code_point == 0x200F ||
           (code_point >= 0x202A && code_point <= 0x202E) || (code_point >= 0x2066 && code_point <= 0x2069);
}

KT_bool KT_char__is_control(int32_t code_point) noexcept
{
    return code_point < 0x20 || (code_point >= 0x7F && code_point < 0xA0) || code_point == 0x2028 ||
           code_point == 0x2029;
}

static void my_append_shown_char(KT_context *ctx, KT_string *message, const char **text) noexcept
{
    const char *start = *text;
    const int32_t code_point = KT_char__next(text);
    if (code_point < 0)
        KT_TRY(KT_string__append__sz(ctx, message, "\xEF\xBF\xBD"));
    else if (KT_char__is_control(code_point) || KT_char__is_direction(code_point))
        KT_TRY(KT_string__append__format(ctx, message, "<U+%04X>", static_cast<unsigned>(code_point)));
    else
        KT_TRY(KT_string__append__format(ctx, message, "%.*s", static_cast<int>(*text - start), start));
}

void KT_string__append__shown(KT_context *ctx, KT_string *message, const char *text) noexcept
{
    static constexpr int longest = 60;
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc__sz(ctx, shown.out(), "\""));
    for (int count = 0; *text && count < longest; count++)
        KT_TRY(my_append_shown_char(ctx, shown, &text));
    KT_TRY(KT_string__append__sz(ctx, shown, *text ? "...\"" : "\""));
    KT_TRY(KT_string__append__string(ctx, message, shown));
}

static bool my_is_harmless(int32_t code_point) noexcept
{
    return code_point >= 0 && !KT_char__is_control(code_point) && !KT_char__is_direction(code_point);
}

static bool my_is_blank(char byte) noexcept
{
    return byte == '\t' || byte == '\n' || byte == '\r';
}

// Appends the characters from text on that are shown as they are, as many as there are in a row, and moves past them.
static void my_append_harmless_run(KT_context *ctx, KT_string *line, const char **text) noexcept
{
    static constexpr ptrdiff_t longest = 4096; // a length is an int for the formatter
    const char *start = *text;
    const char *end = start;
    while (*end && end - start < longest) {
        const char *next = end;
        if (!my_is_harmless(KT_char__next(&next)))
            break;
        end = next;
    }
    KT_TRY(KT_string__append__format(ctx, line, "%.*s", static_cast<int>(end - start), start));
    *text = end;
}

void KT_string__append__harmless(KT_context *ctx, KT_string *line, const char *text) noexcept
{
    kt_owned_string harmless{ctx};
    KT_TRY(KT_string__alloc(ctx, harmless.out()));
    while (*text) {
        KT_TRY(my_append_harmless_run(ctx, harmless, &text));
        if (my_is_blank(*text)) {
            KT_TRY(KT_string__append__sz(ctx, harmless, " "));
            text++;
        } else if (*text) {
            KT_TRY(my_append_shown_char(ctx, harmless, &text));
        }
    }
    KT_TRY(KT_string__append__string(ctx, line, harmless));
}

void KT_strdup__folded(KT_context *ctx, const char *text, char **folded) noexcept
{
    KT_TRY(KT_strdup(ctx, text, folded));
    for (char *at = *folded; *at; at++)
        *at = static_cast<char>(KT_char__folded(*at));
}
