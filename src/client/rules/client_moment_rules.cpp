// Dates and times in the one form of each type, of days that are in the calendar, within the limits of the type.
#include "guide/client_guide.hpp"
#include "rules/client_rule_parts.hpp"

static constexpr const char *day_pattern = "[0-9][0-9][0-9][0-9]-[01][0-9]-[0-3][0-9]";
static constexpr const char *minute_pattern = "[0-2][0-9]:[0-5][0-9]";
static constexpr const char *time_pattern = "[0-2][0-9]:[0-5][0-9]:[0-5][0-9]";

static std::string my_fraction_pattern(int digits)
{
    std::string pattern = ".";
    for (int n = 0; n < digits; n++)
        pattern += "[0-9]";
    return pattern;
}

// One and two digits of a moment are filled up to three.
std::string client_fraction_pattern(const client_server_type &type)
{
    if (type.base == client_base::datetime)
        return ".[0-9][0-9][037]";
    if (type.scale == 0)
        return "";
    if (type.base == client_base::time || type.scale > 2)
        return my_fraction_pattern(type.scale);
    return my_fraction_pattern(type.scale) + (type.scale == 1 ? "00" : "0");
}

static std::string my_pattern(const client_server_type &type)
{
    const std::string moment = std::string(day_pattern) + " " + time_pattern;
    switch (type.base) {
    case client_base::time:
        return time_pattern + client_fraction_pattern(type);
    case client_base::smalldatetime:
        return std::string(day_pattern) + " " + minute_pattern + ":00";
    case client_base::datetimeoffset:
        return moment + client_fraction_pattern(type) + " [-+][01][0-9]:[0-5][0-9]";
    default:
        return moment + client_fraction_pattern(type);
    }
}

// The form of values that SQLite's time functions would round, and that are kept with three digits therefore.
static std::string my_shortened_pattern(const client_server_type &type)
{
    if (type.scale < 4 || type.base == client_base::datetimeoffset)
        return "";
    if (type.base == client_base::time)
        return time_pattern + my_fraction_pattern(3);
    return std::string(day_pattern) + " 23:59:59.999";
}

static void my_add_form(const client_server_type &type, const std::string &value, std::vector<client_rule> &rules)
{
    const std::string shortened = my_shortened_pattern(type);
    std::string good = client_about(value, "@ GLOB '") + my_pattern(type) + "'";
    if (!shortened.empty())
        good = "(" + good + client_about(value, " OR @ GLOB '") + shortened + "')";
    good += client_about(value, type.base == client_base::time ? " AND @ < '24'" : " AND substr(@,12,2) < '24'");
    if (type.base == client_base::datetimeoffset)
        good += client_about(value, " AND substr(@,-5) <= '14:00' AND substr(@,-6) != '-00:00'");
    const client_declared_type declared{type, ""};
    rules.push_back({"NOT (" + good + ")",
                     "invalid " + client_declared_type_text(declared) + " (" + client_form_of(declared).form + ")",
                     good});
}

// Any month has 28 days; about the few others SQLite is asked.
static void my_add_calendar(const std::string &value, std::vector<client_rule> &rules)
{
    static constexpr const char *is_day =
        "NOT (substr(@,9,2) BETWEEN '01' AND '28' AND substr(@,6,2) BETWEEN '01' AND '12' OR "
        "coalesce(date(substr(@,1,10),'+0 days') = substr(@,1,10), 0))";
    rules.push_back({client_about(value, is_day), "not a day of the calendar"});
}

// The server keeps a moment with an offset in UTC, which is at most 14 hours away.
static constexpr const char *beyond_utc =
    "@ < '0001' OR (@ < '0001-01-01 14' AND substr(@,-6,1) = '+' AND substr(@,12,5) < substr(@,-5)) OR "
    "(@ > '9999-12-31 10' AND substr(@,-6,1) = '-' AND "
    "(substr(@,12,2) + substr(@,-5,2)) * 60 + substr(@,15,2) + substr(@,-2) >= 1440)";

static void my_add_limits(const client_server_type &type, const std::string &value, std::vector<client_rule> &rules)
{
    switch (type.base) {
    case client_base::datetime:
        rules.push_back({client_about(value, "@ < '1753'"), "out of range: datetime (1753-01-01 to 9999-12-31)",
                         client_about(value, "@>='1753'")});
        break;
    case client_base::smalldatetime:
        rules.push_back({client_about(value, "@ NOT BETWEEN '1900' AND '2079-06-07'"),
                         "out of range: smalldatetime (1900-01-01 to 2079-06-06)",
                         client_about(value, "@ BETWEEN '1900' AND '2079-06-07'")});
        break;
    case client_base::datetimeoffset:
        rules.push_back({client_about(value, beyond_utc), "out of range: " + client_declared_type_text({type, ""}) +
                                                              " (0001-01-01 to 9999-12-31, in UTC too)"});
        break;
    default:
        rules.push_back({client_about(value, "@ < '0001'"),
                         "out of range: " + client_declared_type_text({type, ""}) + " (0001-01-01 to 9999-12-31)",
                         client_about(value, "@>='0001'")});
    }
}

static void my_add_date(const std::string &value, std::vector<client_rule> &rules)
{
    rules.push_back({client_about(value, "date(@,'+0 days') IS NOT @"), "invalid date (YYYY-MM-DD)"});
}

void client_add_moment_rules(const client_server_type &type, const std::string &value, std::vector<client_rule> &rules)
{
    if (type.base == client_base::date)
        my_add_date(value, rules);
    else
        my_add_form(type, value, rules);
    if (type.base == client_base::time)
        return;
    if (type.base != client_base::date)
        my_add_calendar(value, rules);
    my_add_limits(type, value, rules);
}
