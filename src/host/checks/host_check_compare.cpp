// Comparisons: which values SQLite compares as the server does.
#include "checks/host_check_values.hpp"

#include "defaults/host_guid.hpp"

#include <charconv>

using kind = host_value_kind;

// Whether a 32-bit real holds the literal exactly.
static bool my_fits_real4(std::string_view literal)
{
    double value = 0;
    std::from_chars(literal.data(), literal.data() + literal.size(), value);
    return static_cast<double>(static_cast<float>(value)) == value;
}

static const char *my_refuse_number(const host_value &value, const host_value &literal)
{
    if (host_count_digits(literal.literal) > host_double_digits)
        return "a number has more digits than SQLite compares exactly";
    if (value.kind == kind::real4 && !my_fits_real4(literal.literal))
        return "a 32-bit real is compared with a number that it does not hold exactly";
    if (value.kind == kind::real8 || value.kind == kind::real4 || host_is_whole(value.kind) ||
        host_is_number_literal(value.kind))
        return nullptr;
    return "a number is compared with something that is not a number";
}

static const char *my_compare_guid(host_check_changes &changes, const host_value &literal, bool is_equality)
{
    const std::string bytes = host_guid_literal(host_literal_text(literal.literal));
    if (!is_equality)
        return "guids are ordered, which SQLite does by other bytes first";
    if (bytes.empty())
        return "a guid is compared with something that is not one";
    host_change(changes, literal.place, bytes);
    return nullptr;
}

// What two values of the same kind can be asked for.
static const char *my_refuse_same_kind(kind of, bool is_equality)
{
    switch (of) {
    case kind::real8:
    case kind::real4:
        return nullptr;
    case kind::guid:
        return is_equality ? nullptr : "guids are ordered, which SQLite does by other bytes first";
    default:
        return "values of a type are compared that SQLite compares differently";
    }
}

// Whether the server turns one of the two into a double, as SQLite does, without losing anything.
static bool my_meet_as_doubles(kind left, kind right)
{
    return left == kind::real8 && (right == kind::integer || right == kind::tinyint);
}

static const char *my_compare_numbers(const host_value &left, const host_value &right, bool is_equality)
{
    if (host_is_whole(left.kind) && host_is_whole(right.kind))
        return nullptr;
    if (my_meet_as_doubles(left.kind, right.kind) || my_meet_as_doubles(right.kind, left.kind))
        return nullptr;
    if (host_is_number_literal(right.kind))
        return my_refuse_number(left, right);
    if (host_is_number_literal(left.kind))
        return my_refuse_number(right, left);
    return left.kind == right.kind ? my_refuse_same_kind(left.kind, is_equality)
                                   : "values of different types are compared";
}

static const char *my_compare(host_check_changes &changes, host_value &left, host_value &right, std::string_view sign)
{
    const bool is_equality = sign == "=" || sign == "<>" || sign == "!=" || sign == "IN";
    const auto either_is = [&](kind of) { return left.kind == of || right.kind == of; };
    if (either_is(kind::truth))
        return "a condition is used as a value";
    if (either_is(kind::units))
        return host_compare_units(changes, left, right, sign);
    if (either_is(kind::guid) && either_is(kind::text_literal))
        return my_compare_guid(changes, left.kind == kind::guid ? right : left, is_equality);
    if (either_is(kind::date) || either_is(kind::moment))
        return host_compare_moments(changes, left, right);
    if (either_is(kind::text) || either_is(kind::text_literal))
        return host_compare_texts(changes, left, right, is_equality);
    if (either_is(kind::scaled))
        return host_compare_scaled(changes, left, right);
    return my_compare_numbers(left, right, is_equality);
}

const char *host_compare(host_check_changes &changes, host_value &left, host_value &right, std::string_view sign)
{
    const char *refusal = my_compare(changes, left, right, sign);
    left.is_compared = true;
    return refusal;
}
