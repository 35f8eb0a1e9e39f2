#include "defaults/host_plain_moment.hpp"

#include "records/host_catalogue.hpp"

#include <algorithm>
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

static void my_skip_blanks(std::string_view &text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

// The number of a month by its name in English, or the name's first three letters; 0 for anything else.
static int my_take_month(std::string_view &text)
{
    static constexpr std::string_view names[] = {"january", "february", "march",     "april",   "may",      "june",
                                                 "july",    "august",   "september", "october", "november", "december"};
    const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto end = std::find_if_not(text.begin(), text.end(), is_letter);
    const std::string word = host_folded({text.begin(), end});
    for (int month = 1; month <= 12; month++) {
        const std::string_view name = names[month - 1];
        if (word != name && word != name.substr(0, 3))
            continue;
        text.remove_prefix(word.size());
        return month;
    }
    return 0;
}

// The readers of days take one off the front of a text; the day is empty when it is not of their form.

// 19991231
static std::string my_take_digits(std::string_view &text)
{
    const int digits = my_take_number(text, 8, 8);
    return digits > 0 && my_ends_day(text) ? my_day(digits / 10000, digits / 100 % 100, digits % 100) : "";
}

// 1/1/1900
static std::string my_take_marked_day(std::string_view &text)
{
    const int first = my_take_number(text, 1, 2);
    const char mark = text.empty() ? '\0' : text.front();
    if (first < 0 || (mark != '/' && mark != '-' && mark != '.') || !my_take(text, mark))
        return "";
    const int second = my_take_number(text, 1, 2);
    if (second < 0 || !my_take(text, mark))
        return "";
    const int year = my_take_number(text, 4, 4);
    return year < 0 || !my_ends_day(text) ? "" : my_day_in_some_order(year, first, second);
}

// 31 Dec 1999, 31-Dec-1999, December 31, 1999
static std::string my_take_spelled_day(std::string_view &text)
{
    int day = my_take_number(text, 1, 2);
    const bool has_dashes = day >= 0 && my_take(text, '-');
    my_skip_blanks(text);
    const int month = my_take_month(text);
    if (month == 0 || (has_dashes && !my_take(text, '-')))
        return "";
    my_skip_blanks(text);
    if (day < 0)
        day = my_take_number(text, 1, 2);
    my_take(text, ',');
    my_skip_blanks(text);
    const int year = my_take_number(text, 4, 4);
    return year < 0 || day < 0 || !my_ends_day(text) ? "" : my_day(year, month, day);
}

// A time of twelve hours, such as " 11:30 PM", as one of 24; any other text stays as it is.
static std::string my_plain_time(std::string_view text)
{
    constexpr size_t mark_size = 2;
    const std::string folded = host_folded(text.substr(0, text.find_last_not_of(' ') + 1));
    const bool is_afternoon = folded.ends_with("pm");
    std::string_view rest = folded;
    if (!is_afternoon && !folded.ends_with("am"))
        return std::string(text);
    rest.remove_suffix(mark_size);
    rest = rest.substr(0, rest.find_last_not_of(' ') + 1);
    const size_t blanks = std::min(rest.find_first_not_of(' '), rest.size());
    rest.remove_prefix(blanks);
    const int hour = my_take_number(rest, 1, 2);
    if (hour < 1 || hour > 12 || (!rest.empty() && rest.front() != ':') ||
        rest.find_first_not_of("0123456789:.") != std::string_view::npos)
        return std::string(text);
    char hours[16];
    std::snprintf(hours, sizeof hours, "%02d", hour % 12 + (is_afternoon ? 12 : 0));
    const auto colons = std::count(rest.begin(), rest.end(), ':');
    return std::string(blanks, ' ') + hours + std::string(rest) + (colons == 0 ? ":00:00" : colons == 1 ? ":00" : "");
}

std::string host_plain_moment(std::string_view text)
{
    if (text.find_first_not_of(' ') == std::string_view::npos)
        return "1900-01-01";
    for (const auto take : {my_take_digits, my_take_marked_day, my_take_spelled_day}) {
        std::string_view rest = text;
        if (const std::string day = take(rest); !day.empty())
            return day + my_plain_time(rest);
    }
    return my_plain_time(text);
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
