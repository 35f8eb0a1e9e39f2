// Names come from a document that anyone may have written, and the statements hold them unescaped. So a name is held
// to what can neither end its quotes nor show otherwise than it reads; everything else, in any script, is welcome.
#include "client_names.h"

#define KT_HERE "src/client/client_names"

static bool my_is_continuation(unsigned char byte) noexcept
{
    return (byte & 0xC0U) == 0x80U;
}

int32_t client_next_char(const char **at) noexcept
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

bool client_is_direction_char(int32_t code_point) noexcept
{
    return code_point == 0x061C || code_point == 0x200E || code_point == 0x200F ||
           (code_point >= 0x202A && code_point <= 0x202E) || (code_point >= 0x2066 && code_point <= 0x2069);
}

bool client_is_control_char(int32_t code_point) noexcept
{
    return code_point < 0x20 || (code_point >= 0x7F && code_point < 0xA0) || code_point == 0x2028 ||
           code_point == 0x2029;
}

const char *client_find_name_flaw(const char *name) noexcept
{
    if (!name)
        return "no name";
    if (!*name)
        return "an empty name";
    while (*name) {
        const int32_t code_point = client_next_char(&name);
        if (code_point < 0)
            return "a name that is not UTF-8";
        if (code_point == '"')
            return "a name with a double quote";
        if (code_point == '\'')
            return "a name with a single quote";
        if (client_is_control_char(code_point))
            return "a name with a control character";
        if (client_is_direction_char(code_point))
            return "a name with a character that changes the direction of writing";
    }
    return nullptr;
}

static void my_append_shown_char(KT_context *ctx, KT_string *message, const char **text) noexcept
{
    const char *start = *text;
    const int32_t code_point = client_next_char(text);
    if (code_point < 0)
        KT_TRY(KT_string__append__sz(ctx, message, "\xEF\xBF\xBD"));
    else if (client_is_control_char(code_point) || client_is_direction_char(code_point))
        KT_TRY(KT_string__append__format(ctx, message, "<U+%04X>", static_cast<unsigned>(code_point)));
    else
        KT_TRY(KT_string__append__format(ctx, message, "%.*s", static_cast<int>(*text - start), start));
}

void client_append_shown(KT_context *ctx, KT_string *message, const char *text) noexcept
{
    static constexpr int longest = 60;
    KT_TRY(KT_string__append__sz(ctx, message, "\""));
    for (int shown = 0; *text && shown < longest; shown++)
        KT_TRY(my_append_shown_char(ctx, message, &text));
    KT_TRY(KT_string__append__sz(ctx, message, *text ? "...\"" : "\""));
}

void client_fold_name(KT_context *ctx, const char *name, char **folded) noexcept
{
    KT_TRY(KT_strdup(ctx, name, folded));
    for (char *at = *folded; *at; at++) {
        if (*at >= 'A' && *at <= 'Z')
            *at = static_cast<char>(*at - 'A' + 'a');
    }
}
