// Every form is read into days and units of 10^-7 seconds, and written from there in the one form of the column's type.
//
// What a type cannot hold is refused before anything is rounded; a datetime then goes to the nearest 1/300 second and a
// smalldatetime to the nearest minute, which may carry into the next day, as the server does it.
#include "rows/convert/client_moments.hpp"

#include "rows/convert/client_calendar.hpp"
#include "rows/convert/client_moment_form.hpp"
#include "rows/convert/client_moment_text.hpp"

static int64_t my_ticks(int64_t time) noexcept
{
    return (time / client_units_a_millisecond * 3 + 5) / 10;
}

static client_reject my_round_datetime(client_moment &moment) noexcept
{
    moment.time = client_time_of_ticks(my_ticks(moment.time));
    client_carry_days(moment);
    const bool held = moment.days >= client_first_datetime_day && moment.days <= client_last_day;
    return held ? client_reject::none : client_reject::out_of_range;
}

static client_reject my_round_smalldatetime(client_moment &moment) noexcept
{
    const int64_t ticks = my_ticks(moment.time);
    moment.time = (ticks + 30 * 300) / (60 * 300) * client_units_a_minute;
    client_carry_days(moment);
    const bool held = moment.days >= client_days_to_1900 && moment.days <= client_last_smalldatetime_day;
    return held ? client_reject::none : client_reject::out_of_range;
}

// The server keeps a moment with an offset in UTC.
static bool my_has_utc(client_moment moment) noexcept
{
    moment.time -= moment.offset * client_units_a_minute;
    client_carry_days(moment);
    return moment.days >= 0 && moment.days <= client_last_day;
}

// Whether the parts that the text has are those of the type. A datetimeoffset without its offset is UTC.
static bool my_has_right_parts(client_base base, const client_parsed_moment &moment) noexcept
{
    if (moment.has_offset && base != client_base::datetimeoffset)
        return false;
    return moment.has_date == (base != client_base::time);
}

client_reject client_read_moment(const client_server_type &type, const client_field &field, client_date_order order,
                                 client_room &scratch, client_value &value) noexcept
{
    client_parsed_moment parsed;
    const bool literal = field.form == client_form::literal;
    if (!client_parse_moment(field.bytes, literal, order, parsed) || !my_has_right_parts(type.base, parsed))
        return client_moment_flaw(type.base);
    client_moment moment{client_days_of({parsed.year, parsed.month, parsed.day}), parsed.time, parsed.offset};
    if (type.base == client_base::date)
        return parsed.time != 0 || parsed.digits > 0 ? client_reject::time_of_day
                                                     : client_write_moment(type, moment, scratch, value);
    const bool is_old = type.base == client_base::datetime || type.base == client_base::smalldatetime;
    if (parsed.digits > (is_old ? 3 : type.scale))
        return client_reject::too_precise;
    if (type.base == client_base::datetimeoffset && !my_has_utc(moment))
        return client_reject::out_of_range;
    client_reject reject = client_reject::none;
    if (is_old)
        reject = type.base == client_base::datetime ? my_round_datetime(moment) : my_round_smalldatetime(moment);
    if (reject != client_reject::none)
        return reject;
    return client_write_moment(type, moment, scratch, value);
}
