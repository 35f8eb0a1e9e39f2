#include "rows/convert/client_calendar.hpp"

static constexpr int days_of_month[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

static bool my_is_leap(int year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

bool client_is_date(const client_date &date) noexcept
{
    if (date.year < 1 || date.year > 9999 || date.month < 1 || date.month > 12 || date.day < 1)
        return false;
    const bool longer = date.month == 2 && my_is_leap(date.year);
    return date.day <= days_of_month[date.month - 1] + (longer ? 1 : 0);
}

// Years begin in March here, so that the leap day is the last of one.
int32_t client_days_of(const client_date &date) noexcept
{
    const int year = date.month <= 2 ? date.year - 1 : date.year;
    const int era = year / 400;
    const int of_era = year % 400;
    const int of_year = (153 * (date.month + (date.month > 2 ? -3 : 9)) + 2) / 5 + date.day - 1;
    return era * 146097 + of_era * 365 + of_era / 4 - of_era / 100 + of_year - 306;
}

client_date client_date_of(int32_t days) noexcept
{
    days += 306;
    const int era = days / 146097;
    const int of_era = days % 146097;
    const int year_of_era = (of_era - of_era / 1460 + of_era / 36524 - of_era / 146096) / 365;
    const int of_year = of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const int shifted = (5 * of_year + 2) / 153;
    const int month = shifted < 10 ? shifted + 3 : shifted - 9;
    return {year_of_era + era * 400 + (month <= 2 ? 1 : 0), month, of_year - (153 * shifted + 2) / 5 + 1};
}
