#include "defaults/host_clock.hpp"

#include "steps/host_moment_literal.hpp"

#include <algorithm>

// 'now' is the same moment in all of a statement.
static std::string my_strftime(std::string_view format, std::string_view modifiers)
{
    return "strftime('" + std::string(format) + "','now'" + std::string(modifiers) + ")";
}

// The difference between the local time and UTC, in minutes, as the server prints it.
static std::string my_offset(std::string_view modifiers, bool has_offset)
{
    if (!has_offset || modifiers.find("localtime") == std::string_view::npos)
        return "||' +00:00'";
    const std::string minutes = "(strftime('%s','now','localtime')-strftime('%s','now'))/60";
    return "||printf(' %s%02d:%02d',substr('-+',1+(" + minutes + ">=0),1),abs(" + minutes + ")/60,abs(" + minutes +
           ")%60)";
}

// SQLite's clock has milliseconds: what a type has fewer of is cut, what it has more of are zeros.
static std::string my_with_fraction(std::string_view type, int64_t scale, std::string_view modifiers)
{
    const bool is_time = type == "time";
    if (scale == 0)
        return std::string(is_time ? "time" : "datetime") + "('now'" + std::string(modifiers) + ")";
    const std::string clock = my_strftime(is_time ? "%H:%M:%f" : "%Y-%m-%d %H:%M:%f", modifiers);
    const int digits = host_fraction_digits(type, scale);
    const auto zeros = static_cast<size_t>(digits > scale ? digits - scale : std::max<int64_t>(scale - 3, 0));
    const int64_t kept = std::min<int64_t>(scale, 3) + (is_time ? 9 : 20);
    const std::string cut = scale < 3 ? "substr(" + clock + ",1," + std::to_string(kept) + ")" : clock;
    return cut + (zeros ? "||'" + std::string(zeros, '0') + "'" : "");
}

// A datetime ends in 0, 3 or 7, and a smalldatetime is rounded to the minute.
std::string host_clock_expression(std::string_view type, int64_t scale, std::string_view modifiers, bool has_offset)
{
    if (type == "date")
        return "(date('now'" + std::string(modifiers) + "))";
    if (type == "smalldatetime")
        return "(" + my_strftime("%Y-%m-%d %H:%M:00", std::string(modifiers) + ",'+30 seconds'") + ")";
    if (type == "datetime")
        return "(substr(" + my_strftime("%Y-%m-%d %H:%M:%f", modifiers) + ",1,22)||substr('0033377777',substr(" +
               my_strftime("%f", modifiers) + ",-1)+1,1))";
    return "(" + my_with_fraction(type, scale, modifiers) +
           (type == "datetimeoffset" ? my_offset(modifiers, has_offset) : "") + ")";
}
