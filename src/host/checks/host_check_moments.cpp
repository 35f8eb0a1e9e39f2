// Dates and times, which are texts in one form for each type: equal forms compare as the moments do.
#include "checks/host_check_values.hpp"

#include "defaults/host_plain_moment.hpp"
#include "steps/host_import.hpp"
#include "steps/host_moment_literal.hpp"

#include <algorithm>

using kind = host_value_kind;

static bool my_is_moment(const host_value &value)
{
    return value.kind == kind::date || value.kind == kind::moment;
}

static bool my_is_old(std::string_view type)
{
    return type == "datetime" || type == "smalldatetime";
}

static const char *my_compare_literal(host_check_changes &changes, const host_value &value, const host_value &literal)
{
    const std::string text = host_literal_text(literal.literal);
    if (my_is_old(host_type_name(*value.col)) && host_is_read_by_language(text))
        return "a datetime is compared with a date that the server reads by the language of the session";
    const host_stored_default stored = host_store_moment(*value.col, host_plain_moment(text));
    if (!stored.refusal.empty() || value.scale != host_column_value(*value.col).scale)
        return "a date or time is compared with a literal that is not a value of its type in a form that is known";
    host_change(changes, literal.place, stored.expr);
    return nullptr;
}

// What the server makes of both: one type, and the digits of a fraction.
static bool my_meet(std::string_view left, std::string_view right)
{
    if (left == right)
        return true;
    const auto are = [&](std::string_view a, std::string_view b) {
        return (left == a && right == b) || (left == b && right == a);
    };
    return are("smalldatetime", "datetime") || are("smalldatetime", "datetime2") || are("date", "datetime2");
}

static std::string my_zeros(int64_t count)
{
    return std::string(static_cast<size_t>(std::max<int64_t>(count, 0)), '0');
}

// A value of a time or datetime2 with more than three digits may have been shortened to three, so it is filled up.
static const char *my_fill(host_check_changes &changes, host_value &value, int64_t digits)
{
    constexpr int64_t shortened = 3;
    const std::string_view type = host_type_name(*value.col);
    const bool is_time = type == "time";
    const bool is_day = value.scale < 0;
    if (value.scale == digits && (digits <= shortened || value.is_compared))
        return nullptr;
    if (value.is_compared)
        return "dates or times of several forms are compared in one BETWEEN or IN";
    const std::string text = host_changed_text(changes, value.place);
    std::string filled = text + "||'" + (is_day ? " 00:00:00" : "");
    if (value.scale > shortened)
        filled = "substr(" + filled + my_zeros(digits - shortened) + "',1," +
                 std::to_string((is_time ? 9 : 20) + digits) + ")";
    else
        filled +=
            (value.scale <= 0 && digits > 0 ? "." : "") + my_zeros(digits - std::max<int64_t>(value.scale, 0)) + "'";
    host_change(changes, value.place, filled);
    value.scale = digits;
    return nullptr;
}

const char *host_compare_moments(host_check_changes &changes, host_value &left, host_value &right)
{
    if (left.kind == kind::text_literal || right.kind == kind::text_literal) {
        host_value &value = left.kind == kind::text_literal ? right : left;
        if (const char *refusal = my_fill(changes, value, value.scale))
            return refusal;
        return my_compare_literal(changes, value, left.kind == kind::text_literal ? left : right);
    }
    if (!my_is_moment(left) || !my_is_moment(right))
        return "values of different types are compared";
    if (!my_meet(host_type_name(*left.col), host_type_name(*right.col)))
        return "dates or times of different types are compared, of which the server may round one or have none";
    const int64_t digits = std::max(left.scale, right.scale);
    if (const char *refusal = my_fill(changes, left, digits))
        return refusal;
    return my_fill(changes, right, digits);
}
