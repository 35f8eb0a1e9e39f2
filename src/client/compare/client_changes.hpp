// The differences of two contents, as plain records.
#pragma once

#include "compare/client_match.hpp"

// One change. Strings are empty where there is nothing to say.
struct client_change {
    const char *kind = "";
    const char *what = "changed";
    std::string name;
    std::string old_name = {};
    bool is_guess = false;
    const char *member = nullptr;
    std::string old_text = {};
    std::string new_text = {};
};

// Adds what has changed of the schema as a whole.
void client_compare_wholes(const client_comparison &comparison, std::vector<client_change> &changes);

// Adds what has changed of a table; all its parts where one side does not have it.
void client_compare_tbls(const client_comparison &comparison, const client_tbl_pair &pair,
                         std::vector<client_change> &changes);
