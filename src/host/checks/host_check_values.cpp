// Where SQLite and the server agree about values, and where they part.
//
// Numbers: a literal with a fraction is exact on the server and a double in SQLite. Against whole numbers and doubles
// 15 digits are safe; against 32-bit reals only what such a real holds exactly is, since the server rounds the literal
// to one. Decimals and money are scaled integers here, so only their sign can be asked for. An overflow is an error on
// the server and none in SQLite; that difference is accepted for sums of whole numbers, whose rows the server refuses.
//
// Texts: the server ignores blanks at the end, and by its collation the case of every letter, accents and forms of
// width; SQLite compares bytes, or the case of ASCII letters. They agree on equality where the value cannot have
// blanks that the literal lacks, and the literal is plain ASCII. Full-width and superscript forms, which the server
// takes for the plain ones, are disregarded.
//
// Dates are texts of one form here and compare well with one another; date-times and times have several forms.
#include "checks/host_check_values.hpp"

#include "steps/host_collation.hpp"
#include "steps/host_import.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <charconv>

using kind = host_value_kind;

struct host_kind_of_type {
    std::string_view host_name;
    host_value_kind kind;
};

static constexpr host_kind_of_type kinds[] = {
    {"int", kind::integer},
    {"smallint", kind::integer},
    {"tinyint", kind::tinyint},
    {"bigint", kind::bigint},
    {"bit", kind::bit},
    {"float", kind::real8},
    {"real", kind::real4},
    {"decimal", kind::scaled},
    {"numeric", kind::scaled},
    {"money", kind::scaled},
    {"smallmoney", kind::scaled},
    {"char", kind::text},
    {"varchar", kind::text},
    {"nchar", kind::text},
    {"nvarchar", kind::text},
    {"date", kind::date},
    {"time", kind::moment},
    {"datetime", kind::moment},
    {"datetime2", kind::moment},
    {"smalldatetime", kind::moment},
    {"uniqueidentifier", kind::guid},
};

host_value host_column_value(const host_column &col)
{
    const std::string_view name = host_type_name(col);
    for (const host_kind_of_type &type : kinds) {
        if (type.host_name == name)
            return {type.kind, &col, {}};
    }
    return {kind::opaque, &col, {}};
}

// The significant digits of a decimal number.
static size_t my_count_digits(std::string_view number)
{
    number.remove_prefix(std::min(number.find_first_not_of("0."), number.size()));
    return number.size() - static_cast<size_t>(std::count(number.begin(), number.end(), '.'));
}

static constexpr size_t double_digits = 15;

host_value host_number_value(std::string_view number)
{
    const bool is_whole = number.find('.') == std::string_view::npos && my_count_digits(number) < 10;
    return {is_whole ? kind::whole_literal : kind::number_literal, nullptr, number};
}

static bool my_is_whole(kind of)
{
    return of == kind::integer || of == kind::tinyint || of == kind::bigint || of == kind::bit ||
           of == kind::whole_literal;
}

static bool my_is_number_literal(kind of)
{
    return of == kind::whole_literal || of == kind::number_literal;
}

static bool my_is_zero(const host_value &value)
{
    return my_is_number_literal(value.kind) && my_count_digits(value.literal) == 0;
}

// Whether a 32-bit real holds the literal exactly.
static bool my_fits_real4(std::string_view literal)
{
    double value = 0;
    std::from_chars(literal.data(), literal.data() + literal.size(), value);
    return static_cast<double>(static_cast<float>(value)) == value;
}

static const char *my_refuse_number(const host_value &value, const host_value &literal)
{
    if (value.kind == kind::scaled)
        return my_is_zero(literal) ? nullptr
                                   : "a decimal or money value, which is a scaled integer here, is compared with "
                                     "something other than 0";
    if (my_count_digits(literal.literal) > double_digits)
        return "a number has more digits than SQLite compares exactly";
    if (value.kind == kind::real4 && !my_fits_real4(literal.literal))
        return "a 32-bit real is compared with a number that it does not hold exactly";
    if (value.kind == kind::real8 || value.kind == kind::real4 || my_is_whole(value.kind))
        return nullptr;
    return "a number is compared with something that is not a number";
}

static bool my_is_plain_ascii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

static bool my_has_letter(std::string_view text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char byte) { return (byte | 0x20) >= 'a' && (byte | 0x20) <= 'z'; });
}

static bool my_is_fixed_width(const host_column &col)
{
    const std::string_view name = host_type_name(col);
    return name == "char" || name == "nchar";
}

static bool my_is_unicode(const host_column &col)
{
    return host_type_name(col)[0] == 'n';
}

static const char *my_refuse_text(const host_column &col, std::string_view literal)
{
    const host_collation_rules rules = host_read_collation(col.collation, col.comparison_style);
    const std::string text = host_unquoted_literal(literal);
    const int64_t width = my_is_unicode(col) ? col.max_length / 2 : col.max_length;
    if (!my_is_plain_ascii(text))
        return "a text is compared with letters beyond ASCII, which SQLite compares by their bytes";
    if (rules.noaccent && my_has_letter(text))
        return "a text is compared without regard to accents, which SQLite does not know";
    // SQLite ignores blanks at the end of fixed-width texts, but only where it minds the case.
    if (my_is_fixed_width(col) && (!rules.nocase || static_cast<int64_t>(text.size()) == width))
        return nullptr;
    return "a text is compared that may end in blanks: they do not count on the server, and count in SQLite";
}

// What two values of the same kind can be asked for.
static const char *my_refuse_same_kind(kind of, bool is_equality)
{
    switch (of) {
    case kind::real8:
    case kind::real4:
    case kind::date:
        return nullptr;
    case kind::guid:
        return is_equality ? nullptr : "guids are ordered, which SQLite does by other bytes first";
    case kind::scaled:
        return "a decimal or money value, which is a scaled integer here, is compared with something other than 0";
    case kind::text:
        return "texts are compared with one another: the server ignores blanks at their end, SQLite does not";
    case kind::moment:
        return "dates with a time, or times, are compared, which are texts of several forms in SQLite";
    default:
        return "values of a type are compared that SQLite compares differently";
    }
}

// Whether the server turns one of the two into a double, as SQLite does, without losing anything.
static bool my_meet_as_doubles(kind left, kind right)
{
    return left == kind::real8 && (right == kind::integer || right == kind::tinyint);
}

const char *host_refuse_comparison(const host_value &left, const host_value &right, bool is_equality)
{
    if (left.kind == kind::truth || right.kind == kind::truth)
        return "a condition is used as a value";
    if (my_is_whole(left.kind) && my_is_whole(right.kind))
        return nullptr;
    if (my_meet_as_doubles(left.kind, right.kind) || my_meet_as_doubles(right.kind, left.kind))
        return nullptr;
    if (my_is_number_literal(right.kind))
        return my_refuse_number(left, right);
    if (my_is_number_literal(left.kind))
        return my_refuse_number(right, left);
    const host_value &other = left.kind == kind::text_literal ? right : left;
    if (left.kind == kind::text_literal || right.kind == kind::text_literal) {
        if (other.kind == kind::date || other.kind == kind::moment || other.kind == kind::guid)
            return "a date, time or guid is compared with a literal";
        if (other.kind != kind::text)
            return "a text is compared with something that is not a string";
        return is_equality ? my_refuse_text(*other.col, left.kind == kind::text ? right.literal : left.literal)
                           : "texts are ordered, which SQLite does by their bytes";
    }
    return left.kind == right.kind ? my_refuse_same_kind(left.kind, is_equality)
                                   : "values of different types are compared";
}

const char *host_refuse_arithmetic(const host_value &left, const host_value &right, char operation)
{
    const auto is_operand = [](kind of) {
        return of == kind::integer || of == kind::tinyint || of == kind::whole_literal;
    };
    if (left.kind == kind::text || right.kind == kind::text || left.kind == kind::text_literal ||
        right.kind == kind::text_literal)
        return "texts are joined by +";
    if (!is_operand(left.kind) || !is_operand(right.kind))
        return "it computes with values other than whole numbers of up to 32 bits";
    if (left.kind == kind::tinyint && right.kind == kind::tinyint)
        return "it computes with two tinyint values, whose result has to be one on the server";
    const bool divides = operation == '/' || operation == '%';
    if (divides && (right.kind != kind::whole_literal || my_is_zero(right)))
        return "it divides by something that may be 0, which is NULL in SQLite";
    return nullptr;
}

const char *host_refuse_like(const host_value &left, const host_value &pattern)
{
    if (left.kind != kind::text || !left.col || pattern.kind != kind::text_literal)
        return "LIKE is used on something other than a text column, or without a literal";
    const host_collation_rules rules = host_read_collation(left.col->collation, left.col->comparison_style);
    const std::string text = host_unquoted_literal(pattern.literal);
    if (text.find('[') != std::string_view::npos)
        return "LIKE is used with brackets, which SQLite takes for themselves";
    if (!my_is_plain_ascii(text))
        return "LIKE is used with letters beyond ASCII, whose case SQLite does not know";
    if (my_has_letter(text) && (rules.noaccent || !rules.nocase))
        return "LIKE is used with letters where case or accents count in another way than in SQLite";
    if (my_is_unicode(*left.col) && text.find('_') != std::string_view::npos)
        return "LIKE is used with _, which counts code units on the server and characters in SQLite";
    if (!text.ends_with('%') && (!my_is_unicode(*left.col) || my_is_fixed_width(*left.col)))
        return "LIKE is used on a text that may end in blanks: they do not count on the server, and count in SQLite";
    return nullptr;
}
