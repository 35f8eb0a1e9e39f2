// The calls that constants are made of: clocks, parts of moments, conversions, and names of the session.
#include "defaults/host_constant_reader.hpp"

#include "tsql/host_tsql_type.hpp"

#include <algorithm>

using kind = host_constant_kind;

namespace {

struct clock_call {
    std::string_view name;
    bool is_local;
    bool has_offset;
    bool is_datetime;
};

struct moment_unit {
    std::string_view names[4]; // as the server knows it
    std::string_view modifier; // of SQLite; empty where the two may not agree, such as on a month after 31 January
    int64_t factor;
    std::string_view part; // the format of strftime()
};

struct print_style {
    std::string_view numbers[4];
    std::string_view format;
    size_t length;
};

} // namespace

static constexpr clock_call clocks[] = {
    {"getdate", true, false, true},          {"current_timestamp", true, false, true},
    {"getutcdate", false, false, true},      {"sysdatetime", true, false, false},
    {"sysutcdatetime", false, false, false}, {"sysdatetimeoffset", true, true, false},
};

static constexpr moment_unit units[] = {
    {{"year", "yy", "yyyy"}, "", 0, "%Y"},       {{"month", "mm", "m"}, "", 0, "%m"},
    {{"day", "dd", "d"}, "days", 1, "%d"},       {{"week", "wk", "ww"}, "days", 7, ""},
    {{"hour", "hh"}, "hours", 1, "%H"},          {{"minute", "mi", "n"}, "minutes", 1, "%M"},
    {{"second", "ss", "s"}, "seconds", 1, "%S"},
};

// The styles whose digits SQLite prints as well. Their fractions are cut off by the length that is asked for.
static constexpr print_style styles[] = {
    {{"101"}, "%m/%d/%Y", 10},
    {{"102"}, "%Y.%m.%d", 10},
    {{"103"}, "%d/%m/%Y", 10},
    {{"104"}, "%d.%m.%Y", 10},
    {{"105"}, "%d-%m-%Y", 10},
    {{"110"}, "%m-%d-%Y", 10},
    {{"111"}, "%Y/%m/%d", 10},
    {{"112"}, "%Y%m%d", 8},
    {{"23"}, "%Y-%m-%d", 10},
    {{"8", "108", "24"}, "%H:%M:%S", 8},
    {{"20", "120"}, "%Y-%m-%d %H:%M:%S", 19},
};

// What the server knows of the session and SQLite does not; the caller may say it.
static constexpr std::string_view session_names[] = {
    "db_name",  "user_name",   "suser_name",  "suser_sname",  "original_login", "host_name",
    "app_name", "schema_name", "system_user", "session_user", "current_user",   "user",
};

template <class Table> static auto *my_find_named(const Table &table, std::string_view name)
{
    const auto found = std::find_if(std::begin(table), std::end(table), [name](const auto &row) {
        return std::any_of(std::begin(row.names), std::end(row.names),
                           [name](std::string_view one) { return !one.empty() && host_same_text(one, name); });
    });
    return found == std::end(table) ? nullptr : &*found;
}

// Takes the name of a unit, which is no constant.
static const moment_unit *my_take_unit(host_constant_reader &reader)
{
    const moment_unit *unit = my_find_named(units, reader.cursor.token.text);
    reader.cursor.advance();
    return unit;
}

static host_maybe_constant my_clock(const clock_call &call, const host_constant_options &options)
{
    host_constant clock{kind::clock};
    clock.is_local = call.is_local;
    clock.has_offset = call.has_offset;
    clock.is_datetime = call.is_datetime;
    clock.modifiers = call.is_local && !options.is_utc ? ",'localtime'" : "";
    return clock;
}

host_maybe_constant host_shift_clock(const host_constant &clock, std::string_view unit, int64_t count)
{
    constexpr int64_t most = 1'000'000;
    if (unit.empty() || count > most || count < -most || (unit == "days" && (count > most / 10 || count < -most / 10)))
        return {};
    host_constant shifted = clock;
    shifted.modifiers +=
        std::string(",'") + (count < 0 ? "" : "+") + std::to_string(count) + ' ' + std::string(unit) + "'";
    return shifted;
}

static host_constant my_at_midnight(host_constant moment, bool is_datetime)
{
    moment.kind = kind::clock;
    moment.modifiers += ",'start of day'";
    moment.is_datetime = is_datetime;
    return moment;
}

// DATEADD(unit, count, moment). DATEADD(day, DATEDIFF(day, 0, moment), 0) is how midnight is often written.
static host_maybe_constant my_read_dateadd(host_constant_reader &reader)
{
    const moment_unit *unit = my_take_unit(reader);
    if (!unit || !reader.cursor.take(','))
        return {};
    const host_maybe_constant count = host_read_constant_sum(reader);
    if (!count || !reader.cursor.take(','))
        return {};
    const host_maybe_constant moment = host_read_constant_sum(reader);
    if (!moment || !reader.cursor.take(')'))
        return {};
    if (count->kind == kind::days && moment->text == "0" && moment->kind == kind::number && unit->part == "%d")
        return my_at_midnight(*count, true);
    const std::optional<int64_t> number = host_whole_number(*count);
    return number && moment->kind == kind::clock ? host_shift_clock(*moment, unit->modifier, *number * unit->factor)
                                                 : std::nullopt;
}

static host_maybe_constant my_read_datediff(host_constant_reader &reader)
{
    const moment_unit *unit = my_take_unit(reader);
    if (!unit || unit->part != "%d" || !reader.cursor.take(','))
        return {};
    const host_maybe_constant from = host_read_constant_sum(reader);
    if (!from || from->kind != kind::number || from->text != "0" || !reader.cursor.take(','))
        return {};
    host_maybe_constant moment = host_read_constant_sum(reader);
    if (!moment || moment->kind != kind::clock || !reader.cursor.take(')'))
        return {};
    moment->kind = kind::days;
    return moment;
}

static host_maybe_constant my_read_part_of(host_constant_reader &reader, const moment_unit *unit)
{
    host_maybe_constant moment = host_read_constant_sum(reader);
    if (!unit || unit->part.empty() || !moment || moment->kind != kind::clock || !reader.cursor.take(')'))
        return {};
    moment->kind = kind::part;
    moment->text = unit->part;
    return moment;
}

// The styles are numbers, perhaps in parentheses.
static const print_style *my_read_style(host_constant_reader &reader)
{
    const host_maybe_constant style = host_read_constant_sum(reader);
    if (!style || style->kind != kind::number)
        return nullptr;
    const auto found = std::find_if(std::begin(styles), std::end(styles), [&](const print_style &one) {
        return std::find(std::begin(one.numbers), std::end(one.numbers), style->text) != std::end(one.numbers);
    });
    return found == std::end(styles) ? nullptr : &*found;
}

static bool my_is_string(std::string_view type)
{
    return type == "char" || type == "varchar" || type == "nchar" || type == "nvarchar";
}

// A moment as a string, of which a style says the form and the type's length how much of it is kept.
static host_maybe_constant my_print(host_constant moment, std::string_view type, int64_t length,
                                    const print_style &style)
{
    const auto printed = static_cast<int64_t>(style.length);
    const bool is_fixed = type == "char" || type == "nchar";
    if (is_fixed && length > printed)
        return {};
    moment.kind = kind::print;
    moment.text = style.format;
    moment.type = type;
    moment.length = std::min(length, printed);
    return moment;
}

// The digits after the point that a type has; -1 for types that have none.
static int64_t my_scale(const host_tsql_type &type)
{
    const std::string_view name = type.system_name;
    if (name == "decimal" || name == "numeric")
        return type.second.value_or(0);
    return name == "time" || name == "datetime2" || name == "datetimeoffset" ? type.first.value_or(7) : -1;
}

// What a conversion leaves as it is: a value that the type holds, in the form of the type. The final word has the
// column, which must be of the type.
static host_maybe_constant my_convert(host_constant value, const host_tsql_type &type, const print_style *style)
{
    const std::string_view name = type.system_name;
    const int64_t length = type.first.value_or(type.is_max ? INT32_MAX : 30);
    if (value.kind == kind::null)
        return value;
    if (value.kind == kind::clock && style && my_is_string(name))
        return my_print(std::move(value), name, length, *style);
    if (value.kind == kind::clock && name == "date" && !style)
        return my_at_midnight(std::move(value), false);
    const bool is_kept = value.kind == kind::number || value.kind == kind::text || value.kind == kind::binary ||
                         value.kind == kind::clock || value.kind == kind::guid;
    if (!type.is_system() || style || !is_kept || (value.kind == kind::text && !value.type.empty()))
        return {};
    value.type = name;
    value.length = length;
    value.scale = my_scale(type);
    return value;
}

host_maybe_constant host_read_constant_conversion(host_constant_reader &reader)
{
    const bool is_cast = reader.cursor.token.is(host_word::cast);
    reader.cursor.advance();
    if (!reader.cursor.take('('))
        return {};
    host_maybe_constant value;
    host_tsql_type type;
    const print_style *style = nullptr;
    if (is_cast) {
        value = host_read_constant_sum(reader);
        if (!reader.cursor.take(host_word::as))
            return {};
        type = host_read_type(reader.cursor);
    } else {
        type = host_read_type(reader.cursor);
        if (!reader.cursor.take(','))
            return {};
        value = host_read_constant_sum(reader);
        if (reader.cursor.take(',') && !(style = my_read_style(reader)))
            return {};
    }
    return value && reader.cursor.take(')') && !reader.cursor.failed() ? my_convert(std::move(*value), type, style)
                                                                       : std::nullopt;
}

bool host_is_session_name(std::string_view name)
{
    return std::any_of(std::begin(session_names), std::end(session_names),
                       [name](std::string_view one) { return host_same_text(one, name); });
}

// The value of an option NAME=VALUE.
static host_maybe_constant my_find_name(const host_constant_options &options, std::string_view name)
{
    for (size_t n = 0; n < options.names.count; n++) {
        const std::string_view item = options.names.items[n];
        const size_t equals = item.find('=');
        if (host_same_text(item.substr(0, equals), name))
            return host_constant{kind::text, std::string(item.substr(equals + 1))};
    }
    return {};
}

static host_maybe_constant my_read_without_arguments(host_constant_reader &reader, std::string_view name)
{
    if (host_same_text(name, "newid") || host_same_text(name, "newsequentialid"))
        return host_constant{kind::guid, "newid"};
    for (const clock_call &call : clocks) {
        if (host_same_text(name, call.name))
            return my_clock(call, reader.options);
    }
    return my_find_name(reader.options, name);
}

host_maybe_constant host_read_constant_call(host_constant_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const std::string_view name = cursor.token.text;
    if (cursor.token.is(host_word::convert) || cursor.token.is(host_word::cast))
        return host_read_constant_conversion(reader);
    if (cursor.token.kind != host_tsql_kind::word)
        return {};
    cursor.advance();
    if (!cursor.take('(') || cursor.take(')'))
        return my_read_without_arguments(reader, name);
    if (host_same_text(name, "dateadd"))
        return my_read_dateadd(reader);
    if (host_same_text(name, "datediff"))
        return my_read_datediff(reader);
    if (host_same_text(name, "datepart")) {
        const moment_unit *unit = my_take_unit(reader);
        return cursor.take(',') ? my_read_part_of(reader, unit) : std::nullopt;
    }
    const bool is_part = host_same_text(name, "year") || host_same_text(name, "month") || host_same_text(name, "day");
    return is_part ? my_read_part_of(reader, my_find_named(units, name)) : std::nullopt;
}
