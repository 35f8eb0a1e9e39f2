#include "rows/convert/client_moment_form.hpp"

#include "rows/convert/client_calendar.hpp"

namespace {
struct moment_text {
    char *at;

    void put(char c) noexcept
    {
        *at++ = c;
    }
    void put_number(int64_t number, int width) noexcept
    {
        for (int n = width - 1; n >= 0; n--, number /= 10)
            at[n] = static_cast<char>('0' + number % 10);
        at += width;
    }
    void put_date(int32_t days) noexcept
    {
        const client_date date = client_date_of(days);
        put_number(date.year, 4);
        put('-');
        put_number(date.month, 2);
        put('-');
        put_number(date.day, 2);
    }
    // With so many digits of fraction; further ones are left out.
    void put_time(int64_t time, int digits) noexcept
    {
        const int64_t seconds = time / client_units_a_second;
        put_number(seconds / 3600, 2);
        put(':');
        put_number(seconds / 60 % 60, 2);
        put(':');
        put_number(seconds % 60, 2);
        if (digits == 0)
            return;
        put('.');
        int64_t fraction = time % client_units_a_second;
        for (int n = digits; n < 7; n++)
            fraction /= 10;
        put_number(fraction, digits);
    }
};
} // namespace

// Whether SQLite, which computes with milliseconds and rounds, would not read the time exactly.
static bool my_needs_shortening(const client_server_type &type, int64_t time) noexcept
{
    if (type.scale < 4)
        return false;
    if (type.base == client_base::time)
        return time % client_units_a_millisecond >= client_units_a_millisecond / 2;
    return type.base == client_base::datetime2 && time >= client_units_a_day - client_units_a_millisecond / 2;
}

static int my_fraction_digits(const client_server_type &type) noexcept
{
    switch (type.base) {
    case client_base::datetime:
        return 3;
    case client_base::smalldatetime:
        return 0;
    case client_base::time:
        return type.scale;
    default:
        return type.scale == 1 || type.scale == 2 ? 3 : type.scale;
    }
}

client_reject client_write_moment(const client_server_type &type, const client_moment &moment, client_room &scratch,
                                  client_value &value) noexcept
{
    moment_text text{scratch.small};
    value.storage = client_storage::text;
    value.shortened = my_needs_shortening(type, moment.time);
    if (type.base != client_base::time)
        text.put_date(moment.days);
    if (type.base != client_base::time && type.base != client_base::date)
        text.put(' ');
    if (type.base != client_base::date)
        text.put_time(moment.time, value.shortened ? 3 : my_fraction_digits(type));
    if (type.base == client_base::datetimeoffset) {
        const int minutes = moment.offset < 0 ? -moment.offset : moment.offset;
        text.put(' ');
        text.put(moment.offset < 0 ? '-' : '+');
        text.put_number(minutes / 60, 2);
        text.put(':');
        text.put_number(minutes % 60, 2);
    }
    value.bytes = {scratch.small, static_cast<size_t>(text.at - scratch.small)};
    return client_reject::none;
}

void client_carry_days(client_moment &moment) noexcept
{
    while (moment.time >= client_units_a_day) {
        moment.time -= client_units_a_day;
        moment.days++;
    }
    while (moment.time < 0) {
        moment.time += client_units_a_day;
        moment.days--;
    }
}

int64_t client_time_of_ticks(int64_t ticks) noexcept
{
    return (ticks * 10 + 1) / 3 * client_units_a_millisecond;
}

client_reject client_moment_flaw(client_base base) noexcept
{
    if (base == client_base::date)
        return client_reject::not_a_date;
    return base == client_base::time ? client_reject::not_a_time : client_reject::not_a_datetime;
}
