// From the form in which a column keeps its values to that of another type.
#pragma once

#include "rows/table/client_row_tbl.hpp"

// The expression that makes a new column's value of the old column's; the name itself where the form stays, and empty
// where no value can be made of the other. What is not a value of the new type comes out as something that the checks
// of its column refuse.
std::string client_changed_value(const client_server_type &old_type, const client_server_type &new_type,
                                 const std::string &value);

// Whether every value of the old type is one of the new.
bool client_takes_all(const client_server_type &old_type, const client_server_type &new_type) noexcept;

// Whether digits may go unseen: only binary numbers are rounded.
bool client_may_round(const client_server_type &old_type, const client_server_type &new_type) noexcept;
