// Places in scripts, as findings have them.
#pragma once

#include <cstdint>
#include <string>

// "orders.sql:12:5", taken apart. A text that does not end so is a file's name.
struct cli_place {
    std::string file;
    int64_t line = 0; // 0: none
    int64_t column = 0;
};

cli_place cli_place_of(const std::string &text);
