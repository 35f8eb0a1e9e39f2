// Which abstract types carry identity values.
#pragma once

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
    static constexpr const char *names[] = {"sint64", "sint32", "sint16", "uint8"};
    for (const char *name : names) {
        if (abstract_type && strcmp(abstract_type, name) == 0)
            return true;
    }
    return false;
}
