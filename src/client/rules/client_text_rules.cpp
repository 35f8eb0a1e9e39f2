// Widths in the unit that the server counts in, and characters that a code page has.
//
// SQLite counts characters. Those that take two of the server's units belong to a class (beyond 65535 in UTF-16, all
// but a few in a double-byte code page), and SQLite cannot count them; but a pattern with the class n times finds
// whether there are n of them. Only texts that may be too long are asked for that: a text never has more units than
// bytes in UTF-8.
//
// SQLite takes patterns of 50,000 bytes. Those of the class fit where the width is 4,000, but not where it is 8,000:
// the fewer of the two are counted there, those that count twice or the others.
//
// To length() and GLOB a text ends at a NUL: what is after one is measured and looked at only when it is loaded.
#include "rows/convert/client_utf8.hpp"
#include "rules/client_rule_parts.hpp"

namespace {

// How the server counts the width of a text.
struct width_unit {
    std::string doubles; // the class of characters that count twice; empty when none does
    std::string singles; // that of the others, where there may be too many of the first for a pattern
    bool bytes = false;  // the bytes of UTF-8 are counted
    std::string name;    // in messages; empty for characters
};

} // namespace

static void my_append_range(std::string &pattern, uint32_t first, uint32_t last)
{
    client_append_utf8(pattern, first);
    if (last > first + 1)
        pattern += '-';
    if (last > first)
        client_append_utf8(pattern, last);
}

// The characters that are not in the ranges, from a first one on, as the inside of a class of GLOB.
static std::string my_class_of_others(uint32_t first, const std::vector<client_char_range> &ranges)
{
    static constexpr uint32_t last_char = 0x10FFFF;
    std::string others;
    for (const client_char_range &range : ranges) {
        if (range.first > first)
            my_append_range(others, first, range.first - 1);
        if (range.last >= first)
            first = range.last + 1;
    }
    my_append_range(others, first, last_char);
    return others;
}

// ASCII and the characters in the ranges, as the inside of a class.
static std::string my_class_of_singles(const std::vector<client_char_range> &ranges)
{
    std::string singles;
    my_append_range(singles, 1, 0x7F);
    for (const client_char_range &range : ranges)
        my_append_range(singles, range.first, range.last);
    return singles;
}

static bool my_is_known_page(uint16_t page) noexcept
{
    return page == client_utf_8_page || client_is_single_byte_page(page) || client_is_double_byte_page(page);
}

// The width of a page that is not known is taken for one of UTF-16, as conversion does.
static width_unit my_unit_of(const client_server_type &type, client_code_pages &pages)
{
    static constexpr client_char_range bmp{0, 0xFFFF};
    if (client_is_unicode(type.base) || !my_is_known_page(type.code_page))
        return {my_class_of_others(0, {bmp}), "", false, " (UTF-16 units)"};
    if (type.code_page == client_utf_8_page)
        return {"", "", true, " (bytes of UTF-8)"};
    if (client_is_single_byte_page(type.code_page))
        return {};
    const std::vector<client_char_range> &singles = pages.single_bytes(type.code_page);
    return {my_class_of_others(0x80, singles), my_class_of_singles(singles), false,
            " (bytes of code page " + std::to_string(type.code_page) + ")"};
}

// Whether at least so many characters of the class are in the value; count is an expression.
static std::string my_has(const std::string &value, const std::string &characters, const std::string &count)
{
    return value + " GLOB replace(hex(zeroblob(" + count + ")),'00','*[" + characters + "]')||'*'";
}

// Whether at least so many characters of the value count twice. If not, all but fewer of them count once.
static std::string my_has_doubles(const width_unit &unit, const std::string &value, const std::string &count)
{
    if (unit.singles.empty())
        return my_has(value, unit.doubles, count);
    const std::string others = client_about(value, "length(@)+1-(") + count + ")";
    return "CASE WHEN " + count + " <= " + others + " THEN " + my_has(value, unit.doubles, count) + " ELSE NOT " +
           my_has(value, unit.singles, others) + " END";
}

// How many characters SQLite's limit of patterns has room for.
static constexpr int32_t most_in_pattern = 4000;

// Whether a string that has more bytes than the width is too wide. One of so few characters that it cannot be so is
// found by the pattern, too, which then asks for more characters than there are.
static std::string my_too_wide(const width_unit &unit, const client_server_type &type, const std::string &value)
{
    if (unit.singles.empty() && type.length <= most_in_pattern)
        return my_has(value, unit.doubles, std::to_string(type.length + 1) + client_about(value, "-length(@)"));
    const std::string width = std::to_string(type.length);
    return client_about(value, "length(@)*2 > ") + width + " AND " +
           my_has_doubles(unit, value, width + client_about(value, "-length(@)+1"));
}

static void my_add_width(const width_unit &unit, const client_server_type &type, const std::string &value,
                         std::vector<client_rule> &rules)
{
    const std::string width = std::to_string(type.length);
    const std::string bytes = client_about(value, "length(CAST(@ AS BLOB))");
    const std::string message = "width exceeded: " + width + unit.name;
    const std::string is_wide = unit.bytes || unit.doubles.empty() ? "" : my_too_wide(unit, type, value);
    if (unit.bytes)
        rules.push_back({bytes + " > " + width, message, bytes + "<=" + width});
    else if (!is_wide.empty())
        rules.push_back({bytes + " > " + width + " AND " + is_wide, message});
}

// A char or nchar has its trailing blanks, as the server returns it.
static void my_add_fill(const width_unit &unit, const std::string &width, const std::string &value,
                        std::vector<client_rule> &rules)
{
    const std::string message = "width not filled with blanks: " + width + unit.name;
    const std::string spare = width + client_about(value, "-length(@)");
    const std::string is_short =
        client_about(value, unit.bytes ? "length(CAST(@ AS BLOB)) < " : "length(@) < ") + width;
    const std::string lacks_doubles = " AND (" + client_about(value, "length(@)*2 < ") + width + " OR NOT " +
                                      my_has_doubles(unit, value, spare) + ")";
    // To SQLite's length() a text ends at a NUL.
    rules.push_back(
        {is_short + (unit.doubles.empty() ? "" : lacks_doubles) + client_about(value, " AND instr(@,char(0)) = 0"),
         message});
}

// Texts of ASCII, which have as many bytes as characters, are in every code page.
static void my_add_page(uint16_t page, const std::string &value, client_code_pages &pages,
                        std::vector<client_rule> &rules)
{
    const std::vector<client_char_range> &chars = pages.single_bytes(page);
    if (chars.empty())
        return;
    const std::string others = my_class_of_others(0x80, chars);
    rules.push_back({client_about(value, "length(CAST(@ AS BLOB)) > length(@) AND @ GLOB '*[") + others + "]*'",
                     "a character that code page " + std::to_string(page) + " lacks"});
}

void client_add_text_rules(const client_server_type &type, const std::string &value, client_code_pages &pages,
                           std::vector<client_rule> &rules)
{
    if (!client_is_unicode(type.base) && client_is_single_byte_page(type.code_page))
        my_add_page(type.code_page, value, pages, rules);
    const bool is_counted =
        client_is_unicode(type.base) || my_is_known_page(type.code_page) || !client_is_wide_page(type.code_page);
    if (type.length <= 0 || !is_counted)
        return;
    const width_unit unit = my_unit_of(type, pages);
    const std::string width = std::to_string(type.length);
    my_add_width(unit, type, value, rules);
    if (type.base == client_base::fixed_char || type.base == client_base::fixed_nchar)
        my_add_fill(unit, width, value, rules);
}
