// Literals of dates and times, as the schema module lets them pass, in the one form of a column's type.
#pragma once

#include "steps/host_default_form.hpp"

// The text between the quotes of the literal of a column of one of the types of moments.
host_stored_default host_store_moment(const host_column &col, std::string_view text);

// How many digits a fraction has in the stored form.
int host_fraction_digits(std::string_view type, int64_t scale);
