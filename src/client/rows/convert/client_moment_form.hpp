// The forms in which the database keeps dates and times, and the server's old types, which round.
#pragma once

#include "rows/convert/client_moments.hpp"

inline constexpr int32_t client_first_datetime_day = 639905;     // 1753-01-01
inline constexpr int32_t client_last_smalldatetime_day = 759130; // 2079-06-06

// Writes a moment that the column's type holds into the scratch; says that it was shortened, if so.
client_reject client_write_moment(const client_server_type &type, const client_moment &moment, client_room &scratch,
                                  client_value &value) noexcept;

// Makes a time of day of one that is negative, or a day or more.
void client_carry_days(client_moment &moment) noexcept;

// The server counts 1/300 seconds and prints the milliseconds nearest to them.
int64_t client_time_of_ticks(int64_t ticks) noexcept;

// What a text or bytes are that are no value of a type.
client_reject client_moment_flaw(client_base base) noexcept;
