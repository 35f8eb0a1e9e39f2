// A pattern is split into elements: characters, sets, _ and %. Each becomes its form in GLOB, where it has one.
//
// Sets and ranges of a server hold more than they name: accented letters are between a and z, in an order that depends
// on the collation. So only ranges of digits are taken, and any where the collation compares bytes.
#include "checks/host_like_pattern.hpp"

#include "tsql/host_tsql_words.hpp"

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

enum class like_kind { character, set, any, run };

struct like_element {
    like_kind kind = like_kind::character;
    std::string chars = {};  // the character, or those of a set, ranges taken apart
    bool is_negated = false; // a set of all others

    // Whether it stands for characters that are not named.
    bool is_open() const
    {
        return kind == like_kind::any || (kind == like_kind::set && is_negated);
    }
};

struct like_reader {
    std::string_view rest;
    char escape;
    const host_like_rules &rules;
    const char *refusal = nullptr;
    std::vector<like_element> elements = {};
};

} // namespace

static bool my_is_ascii_letter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

static void my_add_char(like_reader &reader, std::string &chars, char byte)
{
    const bool is_letter = my_is_ascii_letter(byte);
    if (byte < ' ' || byte > '~')
        reader.refusal = "LIKE is used with characters beyond ASCII, whose case and order SQLite does not know";
    else if (is_letter && !reader.rules.knows_letters)
        reader.refusal = "LIKE is used with letters where case or accents count in another way than in SQLite";
    chars += byte;
    if (is_letter && reader.rules.ignores_case)
        chars += static_cast<char>(byte ^ 0x20);
}

static void my_add_range(like_reader &reader, std::string &chars, char first, char last)
{
    const bool is_known = host_is_digit(first) ? host_is_digit(last)
                                               : my_is_ascii_letter(first) && my_is_ascii_letter(last) &&
                                                     reader.rules.is_binary && ((first ^ last) & 0x20) == 0;
    if (!is_known || first > last) {
        reader.refusal = my_is_ascii_letter(first)
                             ? "LIKE is used with a range of letters, which holds accented ones too on the server"
                             : "LIKE is used with a range other than of digits, whose order depends on the collation";
        return;
    }
    for (char byte = first; byte <= last; byte++)
        my_add_char(reader, chars, byte);
}

// After the opening bracket.
static void my_read_set(like_reader &reader)
{
    constexpr const char *unclear = "LIKE is used with brackets whose meaning is not clear";
    const size_t close = reader.rest.find(']');
    std::string_view inside = reader.rest.substr(0, close);
    like_element set{like_kind::set};
    set.is_negated = inside.starts_with('^');
    inside.remove_prefix(set.is_negated ? 1 : 0);
    if (close == std::string_view::npos || inside.empty() ||
        (reader.escape && inside.find(reader.escape) != std::string_view::npos)) {
        reader.refusal = unclear;
        return;
    }
    for (size_t n = 0; n < inside.size(); n++) {
        const bool is_range = n + 2 < inside.size() && inside[n + 1] == '-';
        if (is_range) {
            my_add_range(reader, set.chars, inside[n], inside[n + 2]);
            n += 2;
        } else if (inside[n] == '-' && n > 0 && n + 1 < inside.size()) {
            reader.refusal = unclear;
        } else {
            my_add_char(reader, set.chars, inside[n]);
        }
    }
    reader.rest.remove_prefix(close + 1);
    reader.elements.push_back(std::move(set));
}

static void my_read_element(like_reader &reader)
{
    const char byte = reader.rest.front();
    reader.rest.remove_prefix(1);
    if (reader.escape && byte == reader.escape) {
        if (reader.rest.empty()) {
            reader.refusal = "LIKE is used with a pattern that ends in its escape character";
            return;
        }
        like_element one;
        my_add_char(reader, one.chars, reader.rest.front());
        reader.rest.remove_prefix(1);
        reader.elements.push_back(std::move(one));
        return;
    }
    if (byte == '[')
        return my_read_set(reader);
    like_element one{byte == '%' ? like_kind::run : byte == '_' ? like_kind::any : like_kind::character};
    if (one.kind == like_kind::character)
        my_add_char(reader, one.chars, byte);
    reader.elements.push_back(std::move(one));
}

static bool my_is_range(std::string_view chars)
{
    const bool is_known = host_is_digit(chars.front())
                              ? host_is_digit(chars.back())
                              : my_is_ascii_letter(chars.front()) && my_is_ascii_letter(chars.back());
    return is_known && chars.back() - chars.front() == static_cast<int>(chars.size()) - 1;
}

// The characters of a set, in order, with ranges for four and more that follow each other.
static std::string my_with_ranges(std::string_view chars)
{
    constexpr size_t least = 4;
    std::string text;
    while (!chars.empty()) {
        size_t count = 1;
        while (count < chars.size() && my_is_range(chars.substr(0, count + 1)))
            count++;
        text += count < least ? std::string(chars.substr(0, count)) : std::string{chars.front(), '-', chars[count - 1]};
        chars.remove_prefix(count);
    }
    return text;
}

// In a set of GLOB "]" comes first, "^" not first and "-" last.
static std::string my_set(const like_element &element)
{
    std::string chars = element.chars;
    std::sort(chars.begin(), chars.end());
    chars.erase(std::unique(chars.begin(), chars.end()), chars.end());
    const auto has = [&chars](char byte) { return chars.find(byte) != std::string::npos; };
    std::string plain;
    std::copy_if(chars.begin(), chars.end(), std::back_inserter(plain),
                 [](char byte) { return byte != ']' && byte != '^' && byte != '-'; });
    std::string inside = (has(']') ? "]" : "") + my_with_ranges(plain);
    inside += has('^') ? "^" : "";
    inside += has('-') ? "-" : "";
    if (!element.is_negated && inside.starts_with('^'))
        return inside == "^" ? "^" : "[-^]";
    return (element.is_negated ? "[^" : "[") + inside + "]";
}

static std::string my_glob(const like_element &element)
{
    switch (element.kind) {
    case like_kind::run:
        return "*";
    case like_kind::any:
        return "?";
    case like_kind::set:
        return my_set(element);
    default:
        break;
    }
    const bool is_special =
        element.chars.size() > 1 || element.chars == "*" || element.chars == "?" || element.chars == "[";
    return is_special ? "[" + element.chars + "]" : element.chars;
}

// A character of two units matches one _ in GLOB and two on the server. Only beside a % it makes no difference, if
// there is no other one that it may match.
static bool my_counts_alike(const std::vector<like_element> &elements)
{
    for (size_t n = 0; n < elements.size();) {
        size_t opens = 0;
        size_t runs = 0;
        for (; n < elements.size() && (elements[n].kind == like_kind::run || elements[n].is_open()); n++)
            (elements[n].is_open() ? opens : runs)++;
        if (opens > 1 || (opens == 1 && runs == 0))
            return false;
        n++;
    }
    return true;
}

static bool my_may_be_blank(const like_element &element)
{
    const bool has_blank = element.chars.find(' ') != std::string::npos;
    return element.kind == like_kind::any || has_blank != element.is_negated;
}

host_like_pattern host_read_like(std::string_view pattern, char escape, const host_like_rules &rules)
{
    constexpr size_t longest = 4000; // SQLite has a limit for the pattern, in bytes
    like_reader reader{pattern, escape, rules};
    while (!reader.rest.empty() && !reader.refusal)
        my_read_element(reader);
    const std::vector<like_element> &elements = reader.elements;
    host_like_pattern like{reader.refusal};
    for (const like_element &element : elements) {
        like.glob += my_glob(element);
        like.has_percent |= element.kind == like_kind::run;
    }
    like.length = elements.size();
    like.ends_in_percent = !elements.empty() && elements.back().kind == like_kind::run;
    like.may_end_in_blank = !elements.empty() && my_may_be_blank(elements.back());
    if (!like.refusal && rules.counts_units && !my_counts_alike(elements))
        like.refusal = "LIKE is used with _ or [^...], which count code units on the server and characters in SQLite";
    if (!like.refusal && like.glob.size() > longest)
        like.refusal = "LIKE is used with a pattern that is too long";
    return like;
}
