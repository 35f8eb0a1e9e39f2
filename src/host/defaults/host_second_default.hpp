// Defaults that the schema module does not translate, for a column.
#pragma once

#include "defaults/host_constant.hpp"
#include "records/host_catalogue.hpp"

struct host_second_default {
    std::string host_text = {}; // a simpler default of the server with the same meaning, for the schema module to read
    std::string expr = {};      // or SQLite's expression, in the form of the column's values
    bool is_local = false;      // it is the server's local time
};

// Both texts are empty when the column gets no default.
host_second_default host_read_second_default(const host_column &col, std::string_view expression,
                                             const host_constant_options &options);

// Whether the default takes numbers from a sequence; the name is as it is written.
bool host_is_sequence_default(std::string_view expression, std::string_view &name);
