// From the form in which a column keeps its values to that of another type.
//
// A value becomes what loading it would make of it: the old type shows it, and the new one takes what is shown. Where
// an expression in SQL comes to the same for every value, that is what is run.
#pragma once

#include "rows/table/client_row_tbl.hpp"

enum class client_carrying : uint8_t {
    kept,       // the value is that of the new type as it is, or is refused
    computed,   // by the expression
    converted,  // by the loader's converters alone
    impossible, // nothing can be made of it
};

struct client_value_change {
    client_carrying how = client_carrying::kept;
    std::string sql = {}; // the expression; empty when it takes the converters
};

// What becomes of a column's values; value is its name in quotes. What is not a value of the new type comes out as
// something that the checks of its column refuse, or is refused by the converters.
client_value_change client_changed_value(const client_server_type &old_type, const client_server_type &new_type,
                                         const std::string &value);

// Whether every value of the old type is one of the new.
bool client_takes_all(const client_server_type &old_type, const client_server_type &new_type) noexcept;

// What may go unseen when values are rounded, in words; null where nothing is.
const char *client_rounding(const client_server_type &old_type, const client_server_type &new_type) noexcept;

// A condition for the values of a column that are not taken, as far as SQL can tell.
std::string client_refused_values(const client_server_type &old_type, const client_server_type &new_type,
                                  const std::string &value);
