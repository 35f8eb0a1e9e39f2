// Every form is read into days and units of 10^-7 seconds, and written from there in the one form of the column's type.
//
// What a type cannot hold is refused before anything is rounded; a datetime then goes to the nearest 1/300 second and a
// smalldatetime to the nearest minute, which may carry into the next day, as the server does it.
#include "rows/convert/client_moments.hpp"

#include "rows/convert/client_numbers.hpp"

#include <algorithm>

namespace {
// What a text says; what it leaves out is told by the flags.
struct parsed_moment {
    int year = 1;
    int month = 1;
    int day = 1;
    int64_t time = 0; // in units
    int digits = 0;   // of the fraction that are not trailing zeros
    int offset = 0;   // minutes
    bool has_date = false;
    bool has_time = false;
    bool has_offset = false;
};

struct civil_date {
    int year;
    int month;
    int day;
};
} // namespace

static constexpr int days_of_month[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
static constexpr int32_t last_day = 3652058;              // 9999-12-31
static constexpr int32_t first_datetime_day = 639905;     // 1753-01-01
static constexpr int32_t last_smalldatetime_day = 759130; // 2079-06-06
static constexpr int64_t units_a_millisecond = 10'000;
static constexpr int64_t units_a_minute = 60 * client_units_a_second;

static bool my_is_leap(int year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

static bool my_is_date(const civil_date &date) noexcept
{
    if (date.year < 1 || date.year > 9999 || date.month < 1 || date.month > 12 || date.day < 1)
        return false;
    const bool longer = date.month == 2 && my_is_leap(date.year);
    return date.day <= days_of_month[date.month - 1] + (longer ? 1 : 0);
}

// Years begin in March here, so that the leap day is the last of one.
static int32_t my_days(const civil_date &date) noexcept
{
    const int year = date.month <= 2 ? date.year - 1 : date.year;
    const int era = year / 400;
    const int of_era = year % 400;
    const int of_year = (153 * (date.month + (date.month > 2 ? -3 : 9)) + 2) / 5 + date.day - 1;
    return era * 146097 + of_era * 365 + of_era / 4 - of_era / 100 + of_year - 306;
}

static civil_date my_civil(int32_t days) noexcept
{
    days += 306;
    const int era = days / 146097;
    const int of_era = days % 146097;
    const int year_of_era = (of_era - of_era / 1460 + of_era / 36524 - of_era / 146096) / 365;
    const int of_year = of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const int shifted = (5 * of_year + 2) / 153;
    const int month = shifted < 10 ? shifted + 3 : shifted - 9;
    return {year_of_era + era * 400 + (month <= 2 ? 1 : 0), month, of_year - (153 * shifted + 2) / 5 + 1};
}

// Reading texts.

static bool my_is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

static size_t my_count_digits(std::string_view text) noexcept
{
    size_t count = 0;
    while (count < text.size() && my_is_digit(text[count]))
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
static bool my_take_iso_date(std::string_view &text, parsed_moment &moment) noexcept
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

// 7/4/1996, 1962/2/18, 06/12/94: a year of four digits says where it stands itself.
static bool my_take_marked_date(std::string_view &text, client_date_order order, parsed_moment &moment) noexcept
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

// The digits behind the point; from the eighth on they must be zeros to be counted at all.
static bool my_take_fraction(std::string_view &text, parsed_moment &moment) noexcept
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

static bool my_take_time(std::string_view &text, bool literal, parsed_moment &moment) noexcept
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
    moment.time += hour * 60 * units_a_minute + minute * units_a_minute + second * client_units_a_second;
    return hour < 24 && minute < 60 && second < 60;
}

static bool my_take_offset(std::string_view &text, parsed_moment &moment) noexcept
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

static bool my_parse(std::string_view text, bool literal, client_date_order order, parsed_moment &moment) noexcept
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
        if (!my_is_date({moment.year, moment.month, moment.day}))
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
    parsed_moment parsed;
    if (!my_parse(text, false, client_date_order::mdy, parsed))
        return false;
    moment = {my_days({parsed.year, parsed.month, parsed.day}), parsed.time, parsed.offset};
    return true;
}

// Writing kept forms.

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
        const civil_date date = my_civil(days);
        put_number(date.year, 4);
        put('-');
        put_number(date.month, 2);
        put('-');
        put_number(date.day, 2);
    }
    // With so many digits of fraction; what is behind them is left out.
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

// Whether SQLite, which computes with milliseconds and rounds, would not read the time as it stands.
static bool my_needs_shortening(const client_server_type &type, int64_t time) noexcept
{
    if (type.scale < 4)
        return false;
    if (type.base == client_base::time)
        return time % units_a_millisecond >= units_a_millisecond / 2;
    return type.base == client_base::datetime2 && time >= client_units_a_day - units_a_millisecond / 2;
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

static client_reject my_write(const client_server_type &type, const client_moment &moment, client_room &scratch,
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

static void my_carry(client_moment &moment) noexcept
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

// The server counts 1/300 seconds and prints the milliseconds nearest to them.
static int64_t my_time_of_ticks(int64_t ticks) noexcept
{
    return (ticks * 10 + 1) / 3 * units_a_millisecond;
}

static int64_t my_ticks(int64_t time) noexcept
{
    return (time / units_a_millisecond * 3 + 5) / 10;
}

static client_reject my_round_datetime(client_moment &moment) noexcept
{
    moment.time = my_time_of_ticks(my_ticks(moment.time));
    my_carry(moment);
    const bool held = moment.days >= first_datetime_day && moment.days <= last_day;
    return held ? client_reject::none : client_reject::out_of_range;
}

static client_reject my_round_smalldatetime(client_moment &moment) noexcept
{
    const int64_t ticks = my_ticks(moment.time);
    moment.time = (ticks + 30 * 300) / (60 * 300) * units_a_minute;
    my_carry(moment);
    const bool held = moment.days >= client_days_to_1900 && moment.days <= last_smalldatetime_day;
    return held ? client_reject::none : client_reject::out_of_range;
}

static client_reject my_flaw(client_base base) noexcept
{
    if (base == client_base::date)
        return client_reject::not_a_date;
    return base == client_base::time ? client_reject::not_a_time : client_reject::not_a_datetime;
}

// Whether the parts that the text has are those of the type. A datetimeoffset without its offset is UTC.
static bool my_has_right_parts(client_base base, const parsed_moment &moment) noexcept
{
    if (moment.has_offset && base != client_base::datetimeoffset)
        return false;
    return moment.has_date == (base != client_base::time);
}

client_reject client_read_moment(const client_server_type &type, const client_field &field, client_date_order order,
                                 client_room &scratch, client_value &value) noexcept
{
    parsed_moment parsed;
    const bool literal = field.form == client_form::literal;
    if (!my_parse(field.bytes, literal, order, parsed) || !my_has_right_parts(type.base, parsed))
        return my_flaw(type.base);
    client_moment moment{my_days({parsed.year, parsed.month, parsed.day}), parsed.time, parsed.offset};
    if (type.base == client_base::date)
        return parsed.time != 0 || parsed.digits > 0 ? client_reject::time_of_day
                                                     : my_write(type, moment, scratch, value);
    const bool is_old = type.base == client_base::datetime || type.base == client_base::smalldatetime;
    if (parsed.digits > (is_old ? 3 : type.scale))
        return client_reject::too_precise;
    client_reject reject = client_reject::none;
    if (is_old)
        reject = type.base == client_base::datetime ? my_round_datetime(moment) : my_round_smalldatetime(moment);
    if (reject != client_reject::none)
        return reject;
    return my_write(type, moment, scratch, value);
}

// Native bytes.

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
        moment.days >= 0 && moment.days <= last_day && moment.time >= 0 && moment.time < client_units_a_day;
    return held ? my_write(type, moment, scratch, value) : client_reject::out_of_range;
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
    if (of_1900 > last_day || of_1900 < -client_days_to_1900)
        return client_reject::out_of_range;
    const client_moment moment{client_days_to_1900 + of_1900,
                               is_small ? time * units_a_minute : my_time_of_ticks(time)};
    const int32_t first = is_small ? client_days_to_1900 : first_datetime_day;
    const int32_t last = is_small ? last_smalldatetime_day : last_day;
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
        moment.time += moment.offset * units_a_minute;
        my_carry(moment);
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

// The two old types stand high byte first; the newer ones as in row parts, behind a byte with their scale.
client_reject client_read_binary_moment(const client_server_type &type, std::string_view bytes, client_room &scratch,
                                        client_value &value) noexcept
{
    const size_t half = bytes.size() / 2;
    if (type.base == client_base::datetime || type.base == client_base::smalldatetime) {
        if (bytes.size() != (type.base == client_base::datetime ? 8U : 4U))
            return my_flaw(type.base);
        return my_native_old(type, my_read_big(bytes.substr(0, half)), my_read_big(bytes.substr(half)), scratch, value);
    }
    if (type.base == client_base::date && bytes.size() == 4 && bytes[3] == 0)
        return client_read_native_moment(type, bytes.substr(0, 3), scratch, value);
    if (type.base == client_base::date || bytes.empty() || bytes[0] != type.scale)
        return my_flaw(type.base);
    return client_read_native_moment(type, bytes.substr(1), scratch, value);
}
