#include "rows/convert/client_moment_text.hpp"

#include "rows/convert/client_calendar.hpp"

#include <algorithm>

static size_t my_count_digits(std::string_view text) noexcept
{
    size_t count = 0;
    while (count < text.size() && client_is_digit(text[count]))
        count++;
    return count;
}

// Takes a number of so many digits.
static bool my_take_number(std::string_view &text, size_t least, size_t most, int &number) noexcept
{
    const size_t count = my_count_digits(text);
    if (count < least || count > most)
        return false;
    number = 0;
    for (size_t n = 0; n < count; n++)
        number = number * 10 + (text[n] - '0');
    text.remove_prefix(count);
    return true;
}

static bool my_take(std::string_view &text, char c) noexcept
{
    if (text.empty() || text.front() != c)
        return false;
    text.remove_prefix(1);
    return true;
}

static void my_skip_blanks(std::string_view &text) noexcept
{
    while (my_take(text, ' ')) {
    }
}

// YYYY-MM-DD, or eight digits without marks.
static bool my_take_iso_date(std::string_view &text, client_parsed_moment &moment) noexcept
{
    if (my_count_digits(text) == 8) {
        int number = 0;
        my_take_number(text, 8, 8, number);
        moment.year = number / 10000;
        moment.month = number / 100 % 100;
        moment.day = number % 100;
        return true;
    }
    return my_take_number(text, 4, 4, moment.year) && my_take(text, '-') && my_take_number(text, 2, 2, moment.month) &&
           my_take(text, '-') && my_take_number(text, 2, 2, moment.day);
}

static int my_full_year(int year, size_t digits) noexcept
{
    return digits > 2 ? year : year + (year < 50 ? 2000 : 1900);
}

// 7/4/1996, 1962/2/18, 06/12/94: a year of four digits is recognised wherever it is.
static bool my_take_marked_date(std::string_view &text, client_date_order order, client_parsed_moment &moment) noexcept
{
    int parts[3] = {};
    size_t digits[3] = {};
    char mark = 0;
    for (int n = 0; n < 3; n++) {
        digits[n] = my_count_digits(text);
        if (!my_take_number(text, 1, 4, parts[n]))
            return false;
        if (n == 0 && (text.empty() || std::string_view("/-.").find(text.front()) == std::string_view::npos))
            return false;
        if (n == 0)
            mark = text.front();
        if (n < 2 && !my_take(text, mark))
            return false;
    }
    const bool year_first = digits[0] > 2 || (order == client_date_order::ymd && digits[2] <= 2);
    const int year = year_first ? 0 : 2;
    const bool day_first = order == client_date_order::dmy && !year_first;
    moment.year = my_full_year(parts[year], digits[year]);
    moment.month = parts[year_first ? 1 : (day_first ? 1 : 0)];
    moment.day = parts[year_first ? 2 : (day_first ? 0 : 1)];
    return true;
}

// The digits after the point; from the eighth on they must be zeros to be counted at all.
static bool my_take_fraction(std::string_view &text, client_parsed_moment &moment) noexcept
{
    const size_t count = my_count_digits(text);
    if (count == 0)
        return false;
    int64_t unit = client_units_a_second / 10;
    for (size_t n = 0; n < count; n++, unit /= 10) {
        moment.time += (text[n] - '0') * unit;
        if (text[n] != '0')
            moment.digits = static_cast<int>(std::min<size_t>(n + 1, 99));
    }
    text.remove_prefix(count);
    return true;
}

// AM or PM, with or without a blank before it.
static bool my_take_half_day(std::string_view &text, int &hour) noexcept
{
    std::string_view rest = text;
    my_skip_blanks(rest);
    if (rest.size() < 2 || (rest[1] | 0x20) != 'm')
        return true;
    const int half = rest[0] | 0x20;
    if (half != 'a' && half != 'p')
        return true;
    if (hour < 1 || hour > 12)
        return false;
    hour = hour % 12 + (half == 'p' ? 12 : 0);
    text = rest.substr(2);
    return true;
}

static bool my_take_time(std::string_view &text, bool literal, client_parsed_moment &moment) noexcept
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    moment.has_time = true;
    if (!my_take_number(text, literal ? 1 : 2, 2, hour) || !my_take(text, ':') || !my_take_number(text, 2, 2, minute))
        return false;
    if (my_take(text, ':')) {
        if (!my_take_number(text, 2, 2, second))
            return false;
        if (my_take(text, '.') && !my_take_fraction(text, moment))
            return false;
    }
    if (literal && !my_take_half_day(text, hour))
        return false;
    moment.time += (int64_t{hour} * 60 + minute) * client_units_a_minute + second * client_units_a_second;
    return hour < 24 && minute < 60 && second < 60;
}

static bool my_take_offset(std::string_view &text, client_parsed_moment &moment) noexcept
{
    moment.has_offset = true;
    if (my_take(text, 'Z'))
        return true;
    const bool negative = my_take(text, '-');
    int hours = 0;
    int minutes = 0;
    if ((!negative && !my_take(text, '+')) || !my_take_number(text, 2, 2, hours) || !my_take(text, ':') ||
        !my_take_number(text, 2, 2, minutes))
        return false;
    moment.offset = (hours * 60 + minutes) * (negative ? -1 : 1);
    return minutes < 60 && hours * 60 + minutes <= 14 * 60;
}

bool client_parse_moment(std::string_view text, bool literal, client_date_order order,
                         client_parsed_moment &moment) noexcept
{
    if (text.size() < 4 || text.size() > 64)
        return false;
    const size_t first = my_count_digits(text);
    if (!(first < text.size() && text[first] == ':')) {
        const std::string_view whole = text;
        moment.has_date = true;
        if (!my_take_iso_date(text, moment)) {
            text = whole;
            if (!literal || !my_take_marked_date(text, order, moment))
                return false;
        }
        if (!client_is_date({moment.year, moment.month, moment.day}))
            return false;
        if (text.empty())
            return true;
        if (!my_take(text, 'T') && !my_take(text, ' '))
            return false;
        if (literal)
            my_skip_blanks(text);
    }
    if (!my_take_time(text, literal, moment))
        return false;
    my_take(text, ' ');
    return text.empty() || (my_take_offset(text, moment) && text.empty());
}

bool client_parse_kept_moment(std::string_view text, client_moment &moment) noexcept
{
    client_parsed_moment parsed;
    if (!client_parse_moment(text, false, client_date_order::mdy, parsed))
        return false;
    moment = {client_days_of({parsed.year, parsed.month, parsed.day}), parsed.time, parsed.offset};
    return true;
}
