// Dates and times: from texts and from the bytes of row parts, to the forms that the database keeps.
#pragma once

#include "rows/convert/client_server_type.hpp"
#include "rows/convert/client_value.hpp"

// The order of day, month and year in a date of a script that does not begin with the year (SET DATEFORMAT).
enum class client_date_order : uint8_t { mdy, dmy, ymd };

// Reads a text. A literal may have a date in the order given, an hour of twelve, and a year of two digits.
client_reject client_read_moment(const client_server_type &type, const client_field &field, client_date_order order,
                                 client_room &scratch, client_value &value) noexcept;

// Reads native bytes.
client_reject client_read_native_moment(const client_server_type &type, std::string_view bytes, client_room &scratch,
                                        client_value &value) noexcept;

// Reads the bytes of CAST(0x... AS datetime), as scripts of older tools have them.
client_reject client_read_binary_moment(const client_server_type &type, std::string_view bytes, client_room &scratch,
                                        client_value &value) noexcept;

// The other way: days since 0001-01-01, units of 10^-7 seconds since midnight and minutes of offset from a kept form.
struct client_moment {
    int32_t days = 0;
    int64_t time = 0; // may reach a day and beyond while it is being rounded
    int offset = 0;
};
bool client_parse_kept_moment(std::string_view text, client_moment &moment) noexcept;

inline constexpr int64_t client_units_a_second = 10'000'000;
inline constexpr int64_t client_units_a_millisecond = 10'000;
inline constexpr int64_t client_units_a_minute = 60 * client_units_a_second;
inline constexpr int64_t client_units_a_day = 86'400 * client_units_a_second;
inline constexpr int32_t client_days_to_1900 = 693595;
