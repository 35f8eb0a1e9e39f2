// What a column's values have to meet, as conditions for CREATE TABLE: what the schema module's statements for triggers
// refuse, and the server's rules, in the shortest words that give the same verdicts.
//
// A trigger's statement is compiled anew by every connection, and run for each row, so the conditions here use what
// SQLite decides without calling functions, where they can: it sorts NULL, numbers, strings and blobs in this order.
// They rely on the affinity of the column's declared type, which is applied before a CHECK is asked.
#pragma once

#include "rules/client_rules.hpp"
#include "tov_abstract_types.h"

struct client_constraint {
    std::string accepted; // an expression that is false, and not NULL, for exactly the values that are refused
    std::string message;
};

struct client_checked_type {
    const tov_abstract_type *abstract;          // null for none
    int32_t width = -1;                         // of strings and blobs; unbounded when not above 0
    int32_t precision = -1;                     // of decimals
    const client_server_type *server = nullptr; // where the server's rules hold
};

// The conditions for a column, named by its quoted name, each for those that have met the ones before.
std::vector<client_constraint> client_constraints_of(const client_checked_type &type, const std::string &col,
                                                     client_code_pages &pages);
