// The forms in which the server reads a day, besides YYYY-MM-DD.
#pragma once

#include <string>
#include <string_view>

// A literal of a date, or of a date and a time, with its day as YYYY-MM-DD: of 19000101, and of 1/31/1900 where month
// and day cannot be taken for each other. Nothing is the server's first day, 1900-01-01. Others stay as they are.
std::string host_plain_moment(std::string_view text);

// Whether the old types read the day of YYYY-MM-DD by the language of the session: as year, day and month in some.
bool host_is_read_by_language(std::string_view text);

// The day so many days after 1900-01-01; empty when the text is not a whole number, or it is no day of a datetime.
std::string host_day_of_number(std::string_view text);
