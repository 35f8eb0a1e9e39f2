// What a clock gives a column, in the column's own form.
#pragma once

#include "records/host_catalogue.hpp"

#include <string>
#include <string_view>

// The SQLite expression for a type of moments. The modifiers follow 'now': ",'localtime'".
std::string host_clock_expression(std::string_view type, int64_t scale, std::string_view modifiers,
                                  bool has_offset = false);
