#include "defaults/host_plain_moment.hpp"

#include <charconv>
#include <chrono>
#include <cstdio>

// Takes digits off the front; -1 when there are fewer than the least or more than the most.
static int my_take_number(std::string_view &text, size_t least, size_t most)
{
    size_t count = 0;
    int number = 0;
    while (count < text.size() && text[count] >= '0' && text[count] <= '9' && count < most)
        number = number * 10 + (text[count++] - '0');
    text.remove_prefix(count);
    return count < least ? -1 : number;
}

static bool my_take(std::string_view &text, char mark)
{
    const bool found = !text.empty() && text.front() == mark;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

static std::string my_day(int year, int month, int day)
{
    char text[40];
    const int size = std::snprintf(text, sizeof text, "%04d-%02d-%02d", year, month, day);
    return {text, static_cast<size_t>(size)};
}

static bool my_ends_day(std::string_view rest)
{
    return rest.empty() || rest.front() == ' ';
}

// Of two numbers that are a month and a day in an order that is not known; empty when both orders are possible.
static std::string my_day_in_some_order(int year, int first, int second)
{
    if (first > 12 && second <= 12)
        return my_day(year, second, first);
    return second > 12 || first == second ? my_day(year, first, second) : "";
}

std::string host_plain_moment(std::string_view text)
{
    std::string_view rest = text;
    if (text.find_first_not_of(' ') == std::string_view::npos)
        return "1900-01-01";
    const int digits = my_take_number(rest, 8, 8);
    if (digits > 0 && my_ends_day(rest))
        return my_day(digits / 10000, digits / 100 % 100, digits % 100) + std::string(rest);
    rest = text;
    const int first = my_take_number(rest, 1, 2);
    const char mark = rest.empty() ? '\0' : rest.front();
    if (first < 0 || (mark != '/' && mark != '-' && mark != '.') || !my_take(rest, mark))
        return std::string(text);
    const int second = my_take_number(rest, 1, 2);
    if (second < 0 || !my_take(rest, mark))
        return std::string(text);
    const int year = my_take_number(rest, 4, 4);
    const std::string day = year < 0 || !my_ends_day(rest) ? "" : my_day_in_some_order(year, first, second);
    return day.empty() ? std::string(text) : day + std::string(rest);
}

bool host_is_read_by_language(std::string_view text)
{
    std::string_view rest = text;
    my_take_number(rest, 4, 4);
    const bool has_marks = my_take(rest, '-');
    const int month = my_take_number(rest, 2, 2);
    const bool is_day = my_take(rest, '-') && has_marks;
    const int day = my_take_number(rest, 2, 2);
    return is_day && my_ends_day(rest) && month != day && day <= 12;
}

std::string host_day_of_number(std::string_view text)
{
    constexpr int most = 2'958'463; // 9999-12-31
    constexpr int least = -53'690;  // 1753-01-01
    int number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < least || number > most)
        return "";
    using namespace std::chrono;
    const year_month_day day{sys_days{January / 1 / 1900} + days{number}};
    return my_day(static_cast<int>(day.year()), static_cast<int>(static_cast<unsigned>(day.month())),
                  static_cast<int>(static_cast<unsigned>(day.day())));
}
