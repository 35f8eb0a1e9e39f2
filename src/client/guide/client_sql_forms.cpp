// Expressions for SQLite 3.38 and later. They compute with integers and texts only where digits must not be lost, and
// they are made of operators that give NULL for NULL.
#include "guide/client_guide.hpp"

#include <algorithm>
#include <string_view>

namespace {

// Puts the operand in the place of each @ of a pattern, and other texts in that of $.
std::string fill(std::string_view pattern, const std::string &operand, const std::string &other = "")
{
    std::string text;
    for (const char c : pattern) {
        if (c == '@')
            text += operand;
        else if (c == '$')
            text += other;
        else
            text.push_back(c);
    }
    return text;
}

// The most digits that a power of ten of 64 bits leaves after the point.
constexpr int most_divisible = 18;

} // namespace

static std::string my_zeros(int count)
{
    std::string zeros(static_cast<size_t>(count), '0');
    return zeros;
}

static int my_scale(const client_server_type &type) noexcept
{
    if (type.base == client_base::money || type.base == client_base::smallmoney)
        return 4;
    return type.base == client_base::decimal ? type.scale : 0;
}

// The sign is written on its own, since the whole part of -0.5 has none. Dividing before taking abs() is safe for the
// least integer, too.
static std::string my_show_scaled(int scale, const std::string &value)
{
    const std::string digits = std::to_string(scale);
    if (scale == 0)
        return value;
    if (scale > most_divisible)
        return fill("substr('-', 1, @ < 0) || '0.' || substr('$' || abs(@), -", value, my_zeros(scale)) + digits + ")";
    const std::string power = "1" + my_zeros(scale);
    return fill("substr('-', 1, @ < 0) || abs(@ / $) || '.' || ", value, power) +
           fill("substr('$' || abs(@ % ", value, my_zeros(scale)) + power + "), -" + digits + ")";
}

// 6F9619FF-8B86-D011-B42D-00C04FC964FF: the first three groups have their low byte first.
static std::string my_show_guid(const std::string &value)
{
    static constexpr struct {
        int from;
        int count;
        const char *before;
    } pieces[] = {{7, 2, ""}, {5, 2, ""},   {3, 2, ""},  {1, 2, ""},   {11, 2, "-"},
                  {9, 2, ""}, {15, 2, "-"}, {13, 2, ""}, {17, 4, "-"}, {21, 12, "-"}};
    std::string text;
    for (const auto &piece : pieces) {
        text += text.empty() ? "" : "||";
        if (*piece.before)
            text += "'-'||";
        text += "substr(hex(" + value + ")," + std::to_string(piece.from) + "," + std::to_string(piece.count) + ")";
    }
    return "CASE WHEN " + value + " IS NOT NULL THEN " + text + " END";
}

// One and two digits of a fraction are kept as three.
static bool my_is_filled(const client_server_type &type) noexcept
{
    const bool has_digits = type.base == client_base::datetime2 || type.base == client_base::datetimeoffset;
    return has_digits && (type.scale == 1 || type.scale == 2);
}

static std::string my_show_moment(const client_server_type &type, const std::string &value)
{
    if (!my_is_filled(type))
        return value;
    const std::string shown = fill("substr(@, 1, $)", value, std::to_string(20 + type.scale));
    return type.base == client_base::datetimeoffset ? shown + fill(" || substr(@, -7)", value) : shown;
}

std::string client_showing_expression(const client_server_type &type, const std::string &value)
{
    if (type.base == client_base::real) // with as many digits as the server shows
        return fill("CASE WHEN @ IS NOT NULL THEN CAST(printf('%.7g', @) AS REAL) END", value);
    if (type.base == client_base::guid)
        return my_show_guid(value);
    if (client_is_binary(type.base))
        return fill("CASE WHEN @ IS NOT NULL THEN '0x' || hex(@) END", value);
    if (client_is_moment(type.base))
        return my_show_moment(type, value);
    return my_show_scaled(my_scale(type), value);
}

// The digits with the point taken out and zeros put on. A number is compared with its text to see that the text is one
// through and through; what is not becomes a BLOB, which no such column takes.
static std::string my_store_scaled(int scale, const std::string &parameter)
{
    const std::string too_many(static_cast<size_t>(scale) + 1, '?');
    const std::string zeros = my_zeros(scale);
    if (scale == 0)
        return parameter;
    return fill("CASE WHEN CAST(@ AS NUMERIC) = @ AND @ NOT GLOB '*[^-+.0-9]*' AND @ NOT GLOB '*.$*'", parameter,
                too_many) +
           fill(" THEN CAST(replace(@, '.', '') || substr('$', length(@) - instr(@ || '.', '.') + 1) AS NUMERIC)"
                " ELSE CAST(@ AS BLOB) END",
                parameter, zeros);
}

// Taking away again what was added in the upper half rounds to the 24 bits that a real has.
static std::string my_store_real(const std::string &parameter)
{
    return fill("CASE WHEN CAST(@ AS REAL) = @ THEN @ * 536870913.0 - (@ * 536870913.0 - @) ELSE CAST(@ AS BLOB) END",
                parameter);
}

static std::string my_store_filled(const client_server_type &type, const std::string &parameter)
{
    if (type.base == client_base::datetime2)
        return fill("@ || substr('00', length(@) - 20)", parameter);
    return fill("substr(@, 1, length(@) - 7) || substr('00', length(@) - 27) || substr(@, -7)", parameter);
}

std::string client_storing_expression(const client_server_type &type, const std::string &parameter)
{
    const std::string width = std::to_string(type.length);
    if (my_is_filled(type))
        return my_store_filled(type, parameter);
    switch (type.base) {
    case client_base::fixed_char:
    case client_base::fixed_nchar:
        return fill("@ || substr(printf('%$s', ''), length(@) + 1)", parameter, width);
    case client_base::binary:
        return fill("CAST(@ || substr(zeroblob($), length(@) + 1) AS BLOB)", parameter, width);
    case client_base::real:
        return my_store_real(parameter);
    default:
        return my_store_scaled(my_scale(type), parameter);
    }
}

std::string client_storing_expression_of_text(const client_server_type &type, const std::string &parameter)
{
    if (type.base == client_base::guid)
        return fill("unhex(substr(@,7,2)||substr(@,5,2)||substr(@,3,2)||substr(@,1,2)||substr(@,12,2)||substr(@,10,2)||"
                    "substr(@,17,2)||substr(@,15,2)||substr(@,20,4)||substr(@,25,12))",
                    parameter);
    return client_is_binary(type.base) ? fill("unhex(substr(@, 3))", parameter) : "";
}
