// Dates and times of row parts, and of the bytes in scripts of older tools.
#include "rows/convert/client_calendar.hpp"
#include "rows/convert/client_moment_form.hpp"
#include "rows/convert/client_numbers.hpp"

static size_t my_time_size(int scale) noexcept
{
    return scale <= 2 ? 3 : (scale <= 4 ? 4 : 5);
}

static int64_t my_native_time(std::string_view bytes, int scale) noexcept
{
    auto time = static_cast<int64_t>(client_read_little(bytes));
    for (int n = scale; n < 7; n++)
        time *= 10;
    return time;
}

static client_reject my_write_checked(const client_server_type &type, const client_moment &moment, client_room &scratch,
                                      client_value &value) noexcept
{
    const bool held =
        moment.days >= 0 && moment.days <= client_last_day && moment.time >= 0 && moment.time < client_units_a_day;
    return held ? client_write_moment(type, moment, scratch, value) : client_reject::out_of_range;
}

// Days since 1900 and 1/300 seconds, or minutes, since midnight.
static client_reject my_native_old(const client_server_type &type, uint64_t days, uint64_t since_midnight,
                                   client_room &scratch, client_value &value) noexcept
{
    const bool is_small = type.base == client_base::smalldatetime;
    if (since_midnight >= (is_small ? 1440U : 86400U * 300U))
        return client_reject::out_of_range;
    const auto time = static_cast<int64_t>(since_midnight);
    const auto of_1900 = is_small ? static_cast<int32_t>(days) : static_cast<int32_t>(static_cast<uint32_t>(days));
    if (of_1900 > client_last_day || of_1900 < -client_days_to_1900)
        return client_reject::out_of_range;
    const client_moment moment{client_days_to_1900 + of_1900,
                               is_small ? time * client_units_a_minute : client_time_of_ticks(time)};
    const int32_t first = is_small ? client_days_to_1900 : client_first_datetime_day;
    const int32_t last = is_small ? client_last_smalldatetime_day : client_last_day;
    if (moment.days < first || moment.days > last)
        return client_reject::out_of_range;
    return my_write_checked(type, moment, scratch, value);
}

client_reject client_read_native_moment(const client_server_type &type, std::string_view bytes, client_room &scratch,
                                        client_value &value) noexcept
{
    const size_t half = bytes.size() / 2;
    if (type.base == client_base::datetime || type.base == client_base::smalldatetime) {
        if (bytes.size() != (type.base == client_base::datetime ? 8U : 4U))
            return client_reject::bad_row;
        const std::string_view time = bytes.substr(half);
        return my_native_old(type, client_read_little(bytes.substr(0, half)), client_read_little(time), scratch, value);
    }
    const size_t time_size = type.base == client_base::date ? 0 : my_time_size(type.scale);
    const size_t date_size = type.base == client_base::time ? 0 : 3;
    const size_t offset_size = type.base == client_base::datetimeoffset ? 2 : 0;
    if (bytes.size() != time_size + date_size + offset_size)
        return client_reject::bad_row;
    client_moment moment;
    moment.time = time_size ? my_native_time(bytes.substr(0, time_size), type.scale) : 0;
    moment.days = static_cast<int32_t>(client_read_little(bytes.substr(time_size, date_size)));
    if (moment.time < 0 || moment.time >= client_units_a_day)
        return client_reject::out_of_range;
    if (offset_size) { // the bytes hold UTC
        moment.offset = static_cast<int16_t>(client_read_little(bytes.substr(time_size + date_size)));
        if (moment.offset < -14 * 60 || moment.offset > 14 * 60)
            return client_reject::out_of_range;
        moment.time += moment.offset * client_units_a_minute;
        client_carry_days(moment);
    }
    return my_write_checked(type, moment, scratch, value);
}

static uint64_t my_read_big(std::string_view bytes) noexcept
{
    uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

// The two old types have their high byte first; the newer ones are as in row parts, after a byte with their scale.
client_reject client_read_binary_moment(const client_server_type &type, std::string_view bytes, client_room &scratch,
                                        client_value &value) noexcept
{
    const size_t half = bytes.size() / 2;
    if (type.base == client_base::datetime || type.base == client_base::smalldatetime) {
        if (bytes.size() != (type.base == client_base::datetime ? 8U : 4U))
            return client_moment_flaw(type.base);
        return my_native_old(type, my_read_big(bytes.substr(0, half)), my_read_big(bytes.substr(half)), scratch, value);
    }
    if (type.base == client_base::date && bytes.size() == 4 && bytes[3] == 0)
        return client_read_native_moment(type, bytes.substr(0, 3), scratch, value);
    if (type.base == client_base::date || bytes.empty() || static_cast<unsigned char>(bytes[0]) != type.scale)
        return client_moment_flaw(type.base);
    return client_read_native_moment(type, bytes.substr(1), scratch, value);
}
