// Patterns of LIKE as patterns of GLOB.
#pragma once

#include <string>
#include <string_view>

// How the column's collation compares.
struct host_like_rules {
    bool is_binary = false;
    bool ignores_case = false;
    bool knows_letters = false; // ASCII letters equal themselves, in the other case too, and nothing else in ASCII
    bool counts_units = false;  // a character beyond 65535 is two of those that _ stands for
};

struct host_like_pattern {
    const char *refusal = nullptr; // null when GLOB matches the same strings
    std::string glob = {};
    size_t length = 0; // of what matches, when it has no %
    bool has_percent = false;
    bool ends_in_percent = false;
    bool may_end_in_blank = false; // what matches
};

// The escape is NUL when there is none.
host_like_pattern host_read_like(std::string_view pattern, char escape, const host_like_rules &rules);
