// Decimals and money, which are scaled integers in SQLite, among themselves and with other numbers.
//
// What is compared, added or subtracted gets one scale: literals are written with it, and a value of a smaller scale is
// multiplied, if the product is sure to fit 64 bits.
#include "checks/host_check_values.hpp"

#include "steps/host_import.hpp"

#include <algorithm>

using kind = host_value_kind;

static constexpr int64_t most_digits = 18; // that are sure to fit
static constexpr int64_t money_digits = 19;
static constexpr const char *too_wide = "decimals are compared or computed that may not fit 64 bits with one scale";

static bool my_is_type(const host_value &value, std::string_view type)
{
    return value.col && host_type_name(*value.col) == type;
}

// A positive literal times 10^scale, as exactly as it is written.
static std::string my_scaled(std::string_view literal, int64_t scale)
{
    const size_t point = std::min(literal.find('.'), literal.size());
    std::string digits(literal.substr(0, point));
    std::string fraction(literal.substr(std::min(point + 1, literal.size())));
    const auto wanted = static_cast<size_t>(scale);
    if (fraction.size() < wanted)
        fraction.append(wanted - fraction.size(), '0');
    digits += fraction.substr(0, wanted);
    fraction.erase(0, wanted);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return (digits.empty() ? "0" : digits) + (fraction.empty() ? "" : "." + fraction);
}

// A number between two scaled integers is a double in SQLite, and on the right side of both if it has few digits.
static const char *my_scale_literal(host_check_changes &changes, const host_value &value, const host_value &literal)
{
    constexpr int64_t most_smallmoney = 214'748;
    const std::string scaled = my_scaled(literal.literal, value.scale);
    if (my_is_type(value, "smallmoney") && literal.literal.find('.') == std::string_view::npos &&
        (literal.kind != kind::whole_literal || std::stoll(std::string(literal.literal)) > most_smallmoney))
        return "a smallmoney is compared with a number beyond its range, which is an error on the server";
    if (scaled.find('.') != std::string::npos && host_count_digits(scaled) > host_double_digits)
        return "a number has more digits than SQLite compares exactly";
    if (scaled != "0")
        host_change(changes, literal.place, scaled);
    return nullptr;
}

// Multiplies a value so that it has a greater scale.
static const char *my_raise(host_check_changes &changes, host_value &value, int64_t scale)
{
    const int64_t more = scale - value.scale;
    if (more == 0)
        return nullptr;
    if (value.is_compared)
        return "decimals of several scales are compared in one BETWEEN or IN";
    if (value.digits + more > most_digits)
        return too_wide;
    const std::string text = host_changed_text(changes, value.place);
    host_change(changes, value.place, "(" + text + ")*1" + std::string(static_cast<size_t>(more), '0'));
    value.digits += more;
    value.scale = scale;
    return nullptr;
}

static bool my_is_operand(const host_value &value)
{
    return value.kind == kind::scaled || value.kind == kind::integer || value.kind == kind::tinyint ||
           value.kind == kind::bit || host_is_number_literal(value.kind);
}

// A whole number becomes a smallmoney on the server, which has six digits before the point.
static bool my_is_beyond_smallmoney(const host_value &money, const host_value &other)
{
    return my_is_type(money, "smallmoney") && other.kind == kind::integer && other.digits > 5;
}

// Brings two values to one scale.
static const char *my_meet(host_check_changes &changes, host_value &left, host_value &right)
{
    if (!my_is_operand(left) || !my_is_operand(right))
        return "a decimal or money value, which is a scaled integer here, meets something that is not one";
    if (my_is_beyond_smallmoney(left, right) || my_is_beyond_smallmoney(right, left))
        return "a smallmoney is compared with numbers beyond its range, which is an error on the server";
    if (host_is_number_literal(right.kind))
        return my_scale_literal(changes, left, right);
    if (host_is_number_literal(left.kind))
        return my_scale_literal(changes, right, left);
    const int64_t scale = std::max(left.scale, right.scale);
    if (const char *refusal = my_raise(changes, left, scale))
        return refusal;
    return my_raise(changes, right, scale);
}

const char *host_compare_scaled(host_check_changes &changes, host_value &left, host_value &right)
{
    return my_meet(changes, left, right);
}

static host_value my_result(int64_t scale, int64_t digits, const host_column *col)
{
    host_value value{kind::scaled, col};
    value.scale = scale;
    value.digits = digits;
    return value;
}

// A sum or product of money that overflows is an error on the server.
static bool my_stays_money(const host_value &money, const host_value &other)
{
    return my_is_type(money, "money") &&
           (my_is_type(other, "money") || host_is_whole(other.kind) || other.kind == kind::whole_literal);
}

static const char *my_add(host_check_changes &changes, host_value &left, host_value &right, host_value &sum)
{
    const host_value &scaled = left.kind == kind::scaled ? left : right;
    const host_value &other = left.kind == kind::scaled ? right : left;
    if (other.kind == kind::number_literal && my_scaled(other.literal, scaled.scale).find('.') != std::string::npos)
        return "a number with more decimals than the decimal that it is added to";
    if (const char *refusal = my_meet(changes, left, right))
        return refusal;
    const int64_t literal_digits = host_is_number_literal(other.kind) ? other.digits + scaled.scale : other.digits;
    const int64_t digits = std::max(scaled.digits, literal_digits) + 1;
    const bool is_money = my_stays_money(left, right) || my_stays_money(right, left);
    if (!is_money && digits > most_digits)
        return too_wide;
    sum = my_result(scaled.scale, is_money ? money_digits : digits, is_money ? scaled.col : nullptr);
    return nullptr;
}

static const char *my_multiply(const host_value &left, const host_value &right, host_value &product)
{
    const bool is_money = my_stays_money(left, right) || my_stays_money(right, left);
    const bool is_product_of_money = my_is_type(left, "money") && my_is_type(right, "money");
    const int64_t digits = left.digits + right.digits;
    if (!my_is_operand(left) || !my_is_operand(right) || left.kind == kind::number_literal ||
        right.kind == kind::number_literal || is_product_of_money)
        return "decimals are multiplied in a way that the server rounds";
    if (!is_money && digits > most_digits)
        return too_wide;
    product = my_result(left.scale + right.scale, is_money ? money_digits : digits,
                        is_money ? (left.kind == kind::scaled ? left.col : right.col) : nullptr);
    return nullptr;
}

host_value host_compute_scaled(host_check_changes &changes, host_value &left, host_value &right, char operation,
                               const char *&refusal)
{
    host_value result;
    if (my_is_type(left, "smallmoney") || my_is_type(right, "smallmoney"))
        refusal = "it computes with smallmoney, whose result has to be one on the server";
    else if (operation == '+' || operation == '-')
        refusal = my_add(changes, left, right, result);
    else if (operation == '*')
        refusal = my_multiply(left, right, result);
    else
        refusal = "it divides decimals, which the server rounds";
    return refusal ? host_value{} : result;
}
