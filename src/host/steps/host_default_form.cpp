#include "steps/host_default_form.hpp"

#include "defaults/host_clock.hpp"
#include "kt_string.h"
#include "steps/host_import.hpp"
#include "steps/host_moment_literal.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <charconv>

// What the schema module makes of the clocks.
static constexpr std::string_view clocks[] = {"(date('now'))", "(time('now'))", "(datetime('now'))"};

static bool my_is_clock(std::string_view expr)
{
    return expr == clocks[0] || expr == clocks[1] || expr == clocks[2];
}

static bool my_is_literal(std::string_view expr)
{
    return expr.size() >= 2 && expr.front() == '\'' && expr.back() == '\'';
}

static bool my_is_moment(std::string_view type)
{
    for (const std::string_view moment : {"date", "time", "smalldatetime", "datetime", "datetime2", "datetimeoffset"}) {
        if (type == moment)
            return true;
    }
    return false;
}

// Whether a character beyond ASCII takes one byte in a double-byte code page: half-width katakana in Japanese, the euro
// sign in Chinese.
static bool my_is_single(int64_t code_page, std::string_view utf8)
{
    return (code_page == 932 && utf8 >= "\xEF\xBD\xA1" && utf8 <= "\xEF\xBE\x9F") ||
           (code_page == 936 && utf8 == "\xE2\x82\xAC");
}

// The width of a text in the unit of the column: UTF-16, bytes of UTF-8 or of a double-byte code page, or characters.
static int64_t my_measure(const host_column &col, std::string_view text, bool is_unicode)
{
    const bool is_double = col.code_page == 932 || col.code_page == 936 || col.code_page == 949 || col.code_page == 950;
    int64_t width = 0;
    for (size_t n = 0; n < text.size(); n++) {
        const auto byte = static_cast<unsigned char>(text[n]);
        const bool begins = (byte & 0xC0) != 0x80;
        const bool is_twice =
            is_unicode ? byte >= 0xF0 : is_double && byte >= 0xC0 && !my_is_single(col.code_page, text.substr(n, 3));
        width += begins || (!is_unicode && col.code_page == host_utf_8_page) ? 1 : 0;
        width += is_twice ? 1 : 0;
    }
    return width;
}

static bool my_are_digits(std::string_view text)
{
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

static bool my_is_number(std::string_view expr)
{
    return !expr.empty() && (my_are_digits(expr.substr(0, 1)) || expr[0] == '-' || expr[0] == '+' || expr[0] == '.');
}

// The text that the server makes of a number without an exponent: of -007 it is -7, of .50 it is 0.50. Empty for
// others.
static std::string my_number_text(std::string_view expr)
{
    const bool is_negative = expr.starts_with('-');
    expr.remove_prefix(is_negative || expr.starts_with('+') ? 1 : 0);
    const size_t point = std::min(expr.find('.'), expr.size());
    std::string_view whole = expr.substr(0, point);
    const std::string_view fraction = point < expr.size() ? expr.substr(point + 1) : "";
    if (!my_are_digits(whole) || !my_are_digits(fraction) || whole.size() + fraction.size() == 0)
        return "";
    whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
    const bool is_zero = whole.empty() && fraction.find_first_not_of('0') == std::string_view::npos;
    return (is_negative && !is_zero ? "-" : "") + (whole.empty() ? "0" : std::string(whole)) +
           (fraction.empty() ? "" : "." + std::string(fraction));
}

static host_stored_default my_store_text(const host_column &col, std::string_view type, std::string_view expr)
{
    const bool is_unicode = type.front() == 'n';
    const bool is_fixed = type == "char" || type == "nchar";
    const int64_t width = is_unicode ? col.max_length / 2 : col.max_length;
    const bool is_literal = my_is_literal(expr);
    if (!is_literal && !my_is_number(expr))
        return {std::string(expr), ""};
    std::string text = is_literal ? host_unquoted_literal(expr) : my_number_text(expr);
    if (text.empty() && !is_literal)
        return {"", "it is a floating-point number, which only the server writes as a string"};
    if (col.max_length <= 0)
        return {host_quoted(text), ""};
    const int64_t size = my_measure(col, text, is_unicode);
    if (size > width)
        return {"", "it is longer than the column"};
    if (is_fixed)
        text.append(static_cast<size_t>(width - size), ' ');
    return {host_quoted(text), ""};
}

// x'0A' of a binary(4) gets its zeros, as on the server.
static host_stored_default my_store_binary(const host_column &col, std::string_view expr)
{
    std::string stored(expr);
    const auto width = static_cast<size_t>(std::max<int64_t>(col.max_length, 0)) * 2 + 3;
    if (expr.starts_with("x'") && stored.size() < width)
        stored.insert(stored.size() - 1, width - stored.size(), '0');
    return {stored, ""};
}

// A real is the double of the value that has 32 bits. An integer that is one of these stays as it is written.
static host_stored_default my_store_real(std::string_view expr)
{
    float value = 0;
    double exact = 0;
    const char *end_of_expr = expr.data() + expr.size();
    const auto [stop, error] = std::from_chars(expr.data(), end_of_expr, value);
    if (stop == end_of_expr && error == std::errc::result_out_of_range)
        return {"", "it is out of the range of a real"};
    const bool is_number = error == std::errc() && stop == end_of_expr;
    std::from_chars(expr.data(), end_of_expr, exact);
    if (!is_number || (expr.find_first_of(".eE") == std::string_view::npos && static_cast<double>(value) == exact))
        return {std::string(expr), ""};
    char shown[64];
    auto *const end = std::to_chars(shown, shown + sizeof shown, static_cast<double>(value)).ptr;
    std::string stored(shown, end);
    if (stored.find_first_of(".e") == std::string::npos)
        stored += ".0";
    return {stored, ""};
}

host_stored_default host_store_default(const host_column &col, std::string_view expr)
{
    const std::string_view type = host_type_name(col);
    if (KT_stricmp(std::string(expr).c_str(), "NULL") == 0)
        return {std::string(expr), ""};
    if (my_is_moment(type) && my_is_clock(expr))
        return {host_clock_expression(type, col.scale, ""), ""};
    if (my_is_moment(type) && my_is_literal(expr))
        return host_store_moment(col, host_unquoted_literal(expr));
    if (type == "datetimeoffset") // to the schema module it is a text, which may be anything
        return {"", "it is not a moment with an offset"};
    if (type == "char" || type == "nchar" || type == "varchar" || type == "nvarchar")
        return my_store_text(col, type, expr);
    if (type == "binary")
        return my_store_binary(col, expr);
    return type == "real" ? my_store_real(expr) : host_stored_default{std::string(expr), ""};
}
