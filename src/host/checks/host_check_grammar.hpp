// Reads a check of the server and says whether SQLite has a condition that means the same for every value that a column
// may hold under the server's rules.
#pragma once

#include "checks/host_check_changes.hpp"
#include "records/host_catalogue.hpp"

struct host_check_reading {
    // Null when SQLite has such a condition.
    const char *refusal = nullptr;
    // The condition: the check, with what SQLite would read differently written for it.
    std::string condition;
    host_check_changes changes;
    // What the refusal is about, as written; may be empty.
    std::string detail;
    // Whether that is a column that is left out of the table.
    bool unprepared = false;
    // The columns that it uses, each once, in order.
    std::vector<const host_column *> cols;
    // Those that are compared as strings.
    std::vector<const host_column *> compared;
    // Whether one pair of parentheses holds the whole text.
    bool is_enclosed = false;
};

host_check_reading host_read_check(const host_table &table, std::string_view definition);
