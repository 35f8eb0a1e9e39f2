#include "steps/host_moment_literal.hpp"

#include "steps/host_import.hpp"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int64_t units_a_second = 10'000'000;
constexpr int64_t units_a_day = 86'400 * units_a_second;

// What a literal says; a part that it lacks is empty or zero.
struct moment_literal {
    std::string_view date;
    int64_t time = 0; // in units of 10^-7 seconds
    std::string_view offset = "+00:00";
    bool is_read = true;
};

} // namespace

// The number of so many digits at a place; -1 when they are not all digits.
static int my_number(std::string_view text, size_t at, size_t count)
{
    int number = 0;
    for (size_t n = at; n < at + count; n++) {
        if (n >= text.size() || text[n] < '0' || text[n] > '9')
            return -1;
        number = number * 10 + (text[n] - '0');
    }
    return number;
}

static bool my_is_day(std::string_view date)
{
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int year = my_number(date, 0, 4);
    const int month = my_number(date, 5, 2);
    const int day = my_number(date, 8, 2);
    if (date.size() != 10 || date[4] != '-' || date[7] != '-' || year < 1 || month < 1 || month > 12 || day < 1)
        return false;
    const bool is_leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= days[month - 1] + (month == 2 && is_leap ? 1 : 0);
}

// HH:MM, and seconds with or without a fraction of up to seven digits.
static int64_t my_read_time(std::string_view text)
{
    const int hour = my_number(text, 0, 2);
    const int minute = my_number(text, 3, 2);
    const int second = text.size() > 5 ? my_number(text, 6, 2) : 0;
    const bool has_marks = text.size() >= 5 && text[2] == ':' && (text.size() == 5 || text[5] == ':');
    if (!has_marks || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59)
        return -1;
    int64_t time = (hour * 3600 + minute * 60 + second) * units_a_second;
    if (text.size() <= 8)
        return time;
    const size_t digits = text.size() - 9;
    const int fraction = text[8] == '.' && digits > 0 && digits <= 7 ? my_number(text, 9, digits) : -1;
    if (fraction < 0)
        return -1;
    int64_t unit = units_a_second;
    for (size_t n = 0; n < digits; n++)
        unit /= 10;
    return time + fraction * unit;
}

static bool my_is_offset(std::string_view text)
{
    const int hours = my_number(text, 1, 2);
    const int minutes = my_number(text, 4, 2);
    return text.size() == 6 && (text[0] == '+' || text[0] == '-') && text[3] == ':' && hours >= 0 && minutes >= 0 &&
           minutes < 60 && hours * 60 + minutes <= 14 * 60;
}

static moment_literal my_read(std::string_view type, std::string_view text)
{
    moment_literal literal;
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (type == "datetimeoffset" && text.size() > 16 && my_is_offset(text.substr(text.size() - 6))) {
        literal.offset = text.substr(text.size() - 6);
        text.remove_suffix(text[text.size() - 7] == ' ' ? 7 : 6);
    }
    if (type != "time") {
        literal.date = text.substr(0, 10);
        literal.is_read = my_is_day(literal.date) && (text.size() == 10 || text[10] == ' ' || text[10] == 'T');
        text.remove_prefix(std::min<size_t>(text.size(), 11));
    }
    if (!text.empty() || type == "time")
        literal.time = my_read_time(text);
    literal.is_read &= literal.time >= 0 && !(type == "date" && literal.time > 0);
    if (literal.offset == "-00:00")
        literal.offset = "+00:00";
    return literal;
}

int host_fraction_digits(std::string_view type, int64_t scale)
{
    if (type == "datetime")
        return 3;
    if (type == "smalldatetime")
        return 0;
    const bool is_filled = type != "time" && (scale == 1 || scale == 2);
    return is_filled ? 3 : static_cast<int>(scale);
}

// The server's old types round: a datetime to 1/300 seconds, and a smalldatetime from there to minutes.
static int64_t my_round(std::string_view type, int64_t time)
{
    constexpr int64_t ticks_a_minute = 60 * 300;
    const int64_t ticks = (time / 10'000 * 3 + 5) / 10;
    if (type == "smalldatetime")
        return (ticks + ticks_a_minute / 2) / ticks_a_minute * 60 * units_a_second;
    return type == "datetime" ? (ticks * 10 + 1) / 3 * 10'000 : time;
}

static std::string my_time_text(int64_t time, int digits)
{
    char text[32];
    const auto seconds = static_cast<int>(time / units_a_second);
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%07d", seconds / 3600, seconds / 60 % 60, seconds % 60,
                  static_cast<int>(time % units_a_second));
    return {text, static_cast<size_t>(digits ? 9 + digits : 8)};
}

static const char *my_flaw(std::string_view type, int64_t scale, const moment_literal &literal, int64_t rounded)
{
    const bool is_old = type == "datetime" || type == "smalldatetime";
    int64_t step = units_a_second;
    for (int64_t n = 0; n < scale; n++)
        step /= 10;
    if (!literal.is_read)
        return "it is not a moment of the calendar in a form that is known";
    if (literal.time % (is_old ? 10'000 : step) != 0) // the old types take three digits, and round them
        return "it has more fraction digits than the column";
    if (rounded >= units_a_day)
        return "it is rounded into the next day";
    if (type == "datetime" && literal.date < "1753")
        return "it is before 1753-01-01, the first day of a datetime";
    if (type == "smalldatetime" && (literal.date < "1900" || literal.date > "2079-06-06"))
        return "it is not from 1900-01-01 to 2079-06-06, the days of a smalldatetime";
    return nullptr;
}

host_stored_default host_store_moment(const host_column &col, std::string_view text)
{
    const std::string_view type = host_type_name(col);
    const moment_literal literal = my_read(type, text);
    const int64_t time = my_round(type, literal.time);
    if (const char *flaw = my_flaw(type, col.scale, literal, time))
        return {"", flaw};
    std::string stored(literal.date);
    if (type != "date")
        stored += (stored.empty() ? "" : " ") + my_time_text(time, host_fraction_digits(type, col.scale));
    if (type == "datetimeoffset")
        stored += " " + std::string(literal.offset);
    return {"'" + stored + "'", ""};
}
