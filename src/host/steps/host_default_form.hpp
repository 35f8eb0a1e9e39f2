// Defaults in the form in which a column's values are kept (docs/values.md), so that what the database itself makes
// equals what is loaded.
#pragma once

#include "records/host_catalogue.hpp"

#include <string>
#include <string_view>

struct host_stored_default {
    std::string expr;
    std::string refusal; // why the column cannot hold it; empty when it can
};

// The stored form of a default that the schema module has translated: a literal or one of its expressions.
host_stored_default host_store_default(const host_column &col, std::string_view expr);
