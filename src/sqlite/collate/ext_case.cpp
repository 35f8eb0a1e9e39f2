// The server's tables were made before some scripts got capital letters (Georgian in 2018): a pair counts when both
// letters were there already.
#include "collate/ext_case.hpp"

#include <unicode/uchar.h>

static constexpr uint8_t last_known_version = 5; // of Unicode, in its first number

static bool my_is_known(UChar32 c) noexcept
{
    UVersionInfo version;
    u_charAge(c, version);
    return version[0] <= last_known_version;
}

UChar32 ext_upper(UChar32 c) noexcept
{
    const UChar32 upper = u_toupper(c);
    return upper != c && u_tolower(upper) == c && my_is_known(upper) && my_is_known(c) ? upper : c;
}

UChar32 ext_lower(UChar32 c) noexcept
{
    const UChar32 lower = u_tolower(c);
    return lower != c && u_toupper(lower) == c && my_is_known(lower) && my_is_known(c) ? lower : c;
}
