// Names come from a document that anyone may have written, and the statements hold them unescaped. So a name is held
// to what can neither end its quotes nor show otherwise than it reads; everything else, in any script, is welcome.
#include "kt_chars.h"
#include "tov_ddl.h"

const char *tov_find_name_flaw(const char *name) noexcept
{
    if (!name)
        return "no name";
    if (!*name)
        return "an empty name";
    while (*name) {
        const int32_t code_point = KT_char__next(&name);
        if (code_point < 0)
            return "a name that is not UTF-8";
        if (code_point == '"')
            return "a name with a double quote";
        if (code_point == '\'')
            return "a name with a single quote";
        if (KT_char__is_control(code_point))
            return "a name with a control character";
        if (KT_char__is_direction(code_point))
            return "a name with a character that changes the direction of writing";
    }
    return nullptr;
}
