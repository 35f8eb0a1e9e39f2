// Days and dates of the calendar that the server counts by, back to the year 1.
#pragma once

#include <cstdint>

struct client_date {
    int year;
    int month;
    int day;
};

inline constexpr int32_t client_last_day = 3652058; // 9999-12-31

bool client_is_date(const client_date &date) noexcept;

// Days since 0001-01-01.
int32_t client_days_of(const client_date &date) noexcept;
client_date client_date_of(int32_t days) noexcept;
