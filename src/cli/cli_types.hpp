// The types that a column may have, as a person names them.
#pragma once

#include "tov_abstract_types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct cli_type {
    const tov_abstract_type *abstract_type; // null where no column of the schema holds a default of this type
    const char *carries_over;               // what a default of this type may be
};

// A type by the system's own name ("sint32") or SQL Server's ("int"), perhaps in brackets and with sizes:
// "[decimal](9,2)". The digits after the point go to scale where the name gives them. Nothing for an unknown name.
std::optional<cli_type> cli_find_type(const std::string &declared, uint32_t *scale);

// The names of all types.
std::vector<std::string> cli_type_names();
