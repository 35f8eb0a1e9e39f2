// What the server refuses of a column's values beyond what the schema's own checks refuse, as conditions in SQL.
//
// The conditions know nothing of how they are attached to a table. Each is cheap for values that are plainly good, and
// gives the same answer on every version of SQLite: the date functions, which differ, are asked with a modifier, so
// that all of them move an impossible date into the next month, and what they say is compared with the value.
#pragma once

#include "rows/convert/client_code_page.hpp"
#include "rows/convert/client_server_type.hpp"

#include <string>
#include <vector>

struct client_rule {
    std::string refused; // an expression that holds for values that are refused, and not for NULL
    std::string message;
    std::string accepted = {}; // its opposite, which does not hold for them alone, where that is shorter than NOT
};

// The opposite of what a rule refuses.
std::string client_accepted_by(const client_rule &rule);

// The rules for a column's values; value is an expression without side effects that has one of the storage class of
// the column, or NULL, and has passed the schema's own checks.
std::vector<client_rule> client_rules_of(const client_server_type &type, const std::string &value,
                                         client_code_pages &pages);

// The limits of an integer primary key, "LOW AND HIGH", and what is said of values beyond them. The range is empty
// where the type has all integers that SQLite has.
struct client_rowid_limits {
    std::string range;
    std::string message;
};
client_rowid_limits client_rowid_limits_of(const client_server_type &type);
