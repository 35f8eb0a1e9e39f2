// Dates and times.
//
// What SQLite makes of a good moment is the moment itself: one call of a function decides about all of its parts. With
// the modifier '+0 days' every version of SQLite moves an impossible date into the next month; it rounds to thousandths
// of a second, too, so a moment with more digits than that may be good though it comes out as another.
//
// A CHECK may not ask for the time. Moments begin with a digit, and only one that does is shown to these functions:
// others might be 'now'. A condition ends in "@ IS NULL", or compares with IS, where a function's NULL has to count as
// a refusal, but that of the column does not.
#include "rules/client_constraint_parts.hpp"
#include "rules/client_rule_parts.hpp"

// The year 0 is refused, and so are those before it, whose sign comes before all digits.
static constexpr const char *good_date = "@>='0001' AND @<':' AND @ IS date(@,'+0 days')";

// A string of ten characters of which SQLite cannot make a date is none of this check's business.
static constexpr const char *own_date = "CASE WHEN @>='0001' AND @<':' AND date(@)=@ THEN 1 WHEN length(@)=10 THEN "
                                        "date(@)=@ AND date(@)>='0001-01-01' ELSE @ IS NULL END";

static constexpr const char *own_time =
    "length(@) BETWEEN 8 AND 16 AND substr(@,3,1)=':' AND substr(@,6,1)=':' AND CAST(substr(@,1,2) AS int)<=23 AND "
    "CAST(substr(@,4,2) AS int)<=59 AND CAST(substr(@,7,2) AS int)<=59 AND "
    "substr(strftime('%H:%M:%f',@),1,length(@))=substr(@,1,12)";

// Blanks at the end aside, the forms are a date, with a time to the minute, the second, the thousandth, and with four
// to seven digits, of which only the part up to the second is looked at; a T may stand between date and time.
//
// Three lengths are looked for in a string: of a list SQLite would make a table each time that it is asked. No moment
// is as long as one of the digits that are in there too.
static constexpr const char *own_datetime =
    "CASE WHEN @<':' AND length(CAST(@ AS BLOB))=23 AND @ GLOB datetime(@,'+0 days')||'.[0-9][0-9][0-9]' THEN 1 "
    "WHEN length(rtrim(@))=23 THEN strftime('%Y-%m-%d %H:%M:%f',@) IS replace(rtrim(@),'T',' ') "
    "WHEN instr('10 16 19',length(rtrim(@))) THEN "
    "substr(strftime('%Y-%m-%d %H:%M:%S',@),1,length(rtrim(@))) IS replace(rtrim(@),'T',' ') "
    "WHEN length(rtrim(@)) BETWEEN 24 AND 27 THEN "
    "strftime('%Y-%m-%d %H:%M:%S',@) IS replace(substr(rtrim(@),1,19),'T',' ') "
    "ELSE @ IS NULL END";

void client_add_moment_constraints(tov_type_kind kind, const std::string &col,
                                   std::vector<client_constraint> &constraints)
{
    if (kind == TOV_KIND_DATE)
        constraints.push_back({client_about(col, own_date), "invalid date (YYYY-MM-DD)"});
    if (kind == TOV_KIND_TIME)
        constraints.push_back({client_about(col, own_time), "invalid time"});
    if (kind == TOV_KIND_DATETIME)
        constraints.push_back({client_about(col, own_datetime), "invalid datetime"});
}

bool client_rules_imply_check(tov_type_kind kind, const client_server_type &type) noexcept
{
    switch (type.base) {
    case client_base::date:
        return kind == TOV_KIND_DATE;
    case client_base::time:
        return kind == TOV_KIND_TIME;
    case client_base::smalldatetime:
    case client_base::datetime:
    case client_base::datetime2:
        return kind == TOV_KIND_DATETIME;
    default:
        return false;
    }
}

// The schema's own check of a time with more than three digits of fraction, given that it has the server's form.
static constexpr const char *own_long_time = "@>=':' OR substr(strftime('%H:%M:%f',@),1,length(@))=substr(@,1,12)";

// What is good but for its rounding is looked at in parts: the schema's own check has SQLite read the whole moment, the
// server's rule only the part up to the second.
static std::string my_long_datetime(const std::string &fraction)
{
    return "CASE WHEN @>=':' THEN 0 WHEN @ GLOB datetime(@,'+0 days')||'" + fraction +
           "' OR @=date(@,'+0 days')||' 23:59:59.999' THEN 1 WHEN @ GLOB strftime('%Y-%m-%d %H:%M:%S',@)||'" +
           fraction + "' THEN datetime(substr(@,1,19),'+0 days') IS substr(@,1,19) ELSE @ IS NULL END";
}

static std::string my_datetime(const client_server_type &type)
{
    const std::string fraction = client_fraction_pattern(type);
    std::string good = "@ GLOB datetime(@,'+0 days')||'" + fraction + "' AND length(CAST(@ AS BLOB))=23";
    if (type.base == client_base::smalldatetime)
        good = "@=strftime('%Y-%m-%d %H:%M:00',@,'+0 days')";
    else if (type.base == client_base::datetime2 && type.scale == 0)
        good = "@=datetime(@,'+0 days')";
    else if (type.base == client_base::datetime2 && type.scale > 3)
        return my_long_datetime(fraction);
    return "CASE WHEN @<':' AND " + good + " THEN 1 ELSE @ IS NULL END";
}

void client_add_server_moment_constraints(const client_server_type &type, const std::string &col,
                                          std::vector<client_constraint> &constraints)
{
    std::vector<client_rule> rules;
    client_add_moment_rules(type, col, rules);
    const client_rule &form = rules.front();
    const client_rule &limits = rules.back();
    if (type.base == client_base::date) {
        constraints.push_back({client_about(col, good_date), form.message});
    } else if (type.base == client_base::time) {
        constraints.push_back({client_accepted_by(form), form.message});
        if (type.scale > 3)
            constraints.push_back({client_about(col, own_long_time), "invalid time"});
    } else {
        constraints.push_back({client_about(col, my_datetime(type)), form.message});
        constraints.push_back({client_accepted_by(limits), limits.message});
    }
}
