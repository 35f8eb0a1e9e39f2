// Reads a check of the server and says whether SQLite would read the same out of the same text.
#pragma once

#include "records/host_catalogue.hpp"

#include <string_view>

struct host_check_reading {
    // Null when the check means the same in SQLite.
    const char *refusal = nullptr;
    // What the refusal is about, as written; may be empty.
    std::string detail;
    // Whether that is a column that is left out of the table.
    bool unprepared = false;
    // The columns that it uses, each once, in order.
    std::vector<const host_column *> cols;
    // Whether one pair of parentheses holds the whole text.
    bool is_enclosed = false;
};

host_check_reading host_read_check(const host_table &table, std::string_view definition);
