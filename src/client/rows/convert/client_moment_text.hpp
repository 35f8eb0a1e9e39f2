// Dates and times as texts have them, taken apart.
#pragma once

#include "rows/convert/client_moments.hpp"

// What a text says; what it leaves out is told by the flags.
struct client_parsed_moment {
    int year = 1;
    int month = 1;
    int day = 1;
    int64_t time = 0; // in units
    int digits = 0;   // of the fraction that are not trailing zeros
    int offset = 0;   // minutes
    bool has_date = false;
    bool has_time = false;
    bool has_offset = false;
};

// A literal may have a date in the order given, an hour of twelve, and a year of two digits.
bool client_parse_moment(std::string_view text, bool literal, client_date_order order,
                         client_parsed_moment &moment) noexcept;
