// Letter case as the server changes it: letter by letter, and only where each letter of a pair is the other's.
#pragma once

#include <unicode/utypes.h>

UChar32 ext_upper(UChar32 c) noexcept;
UChar32 ext_lower(UChar32 c) noexcept;
