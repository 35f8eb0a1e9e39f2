// Shared by the sources that generate text: appending many pieces at once.
#pragma once

#include "tov_parse_defin_private.h"

#include <cstring>
#include <initializer_list>

// Appends the pieces one after another; none may be null, and each is written as it stands.
inline void ddl_append(KT_context *ctx, KT_string *text, std::initializer_list<const char *> pieces) noexcept
{
    for (const char *piece : pieces)
        KT_TRY(KT_string__append__sz(ctx, text, piece));
}

// Type names are compared exactly. A record without one gives null, which is no type.
inline bool ddl_is_type(const char *abstract_type, const char *name) noexcept
{
    return abstract_type && std::strcmp(abstract_type, name) == 0;
}
