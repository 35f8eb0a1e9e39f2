// What of a check is written differently for SQLite. The rest of it stays as it is, letter by letter.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct host_check_change {
    std::string_view place; // in the definition
    std::string text;
};

// In the order of their places, none of which overlap.
using host_check_changes = std::vector<host_check_change>;

// Writes a place differently; changes inside it are gone, so the new text has to be made of the changed one.
void host_change(host_check_changes &changes, std::string_view place, std::string text);

// A part of the definition, or all of it, with the changes.
std::string host_changed_text(const host_check_changes &changes, std::string_view place);
