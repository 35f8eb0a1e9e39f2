// Which abstract types carry identity values.
#pragma once

#include "tov_abstract_types.h"

#include <cstring>

// Type names are compared exactly. A type record without a name gives null, which is not a type.

// A column that gets its values from the host itself.
inline bool fk_is_identity(const char *abstract_type) noexcept
{
    return abstract_type && strcmp(abstract_type, "identity") == 0;
}

// A column that may hold the values of an identity column it refers to.
inline bool fk_is_integer_key(const char *abstract_type) noexcept
{
    const tov_abstract_type *type = tov_find_abstract_type(abstract_type);
    return type && type->is_integer_key;
}
