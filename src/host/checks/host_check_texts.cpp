// Texts: what the collation of a column says, and SQLite's own means say alike.
//
// The server ignores blanks at the end; SQLite takes them off. Letters of ASCII are compared by SQLite where the
// collation minds accents and its language has no letters of two of them.
#include "checks/host_check_values.hpp"

#include "checks/host_like_pattern.hpp"
#include "steps/host_collation.hpp"
#include "steps/host_import.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>

using kind = host_value_kind;

static bool my_has_letter(std::string_view text, char least, char most)
{
    return std::any_of(text.begin(), text.end(), [=](char byte) { return byte >= least && byte <= most; });
}

static bool my_has_letter(std::string_view text)
{
    return my_has_letter(text, 'a', 'z') || my_has_letter(text, 'A', 'Z');
}

// In other languages two letters may count as one, or i may not be the small letter of I, which is so in code page
// 1254.
static bool my_has_plain_letters(std::string_view locale)
{
    static constexpr std::string_view plain[] = {"Latin1_General", "SQL_Latin1_General",
                                                 "French",         "German_PhoneBook",
                                                 "Modern_Spanish", "Polish",
                                                 "Japanese",       "Chinese",
                                                 "Korean",         "Greek",
                                                 "Hebrew",         "Cyrillic_General",
                                                 "Arabic",         "Thai"};
    if (locale.ends_with("1254"))
        return false;
    return locale.empty() || std::any_of(std::begin(plain), std::end(plain),
                                         [locale](std::string_view name) { return locale.starts_with(name); });
}

// A script may leave it to the database that it is run in.
static bool my_has_collation(const host_value &value)
{
    return value.col->collation || value.col->comparison_style >= 0;
}

static host_like_rules my_rules(const host_value &value)
{
    const host_collation_rules rules = host_read_collation(value.col->collation, value.col->comparison_style);
    host_like_rules like;
    like.is_binary = rules.binary && value.letters == host_case::as_is;
    like.ignores_case = rules.nocase || value.letters != host_case::as_is;
    like.knows_letters =
        my_has_collation(value) && (rules.binary || (!rules.noaccent && my_has_plain_letters(rules.locale)));
    like.counts_units = !rules.sc;
    return like;
}

// A text that UPPER() made never has a small letter. Where case does not count, that does not matter.
static bool my_may_equal(const host_value &value, std::string_view text)
{
    const host_collation_rules rules = host_read_collation(value.col->collation, value.col->comparison_style);
    if (rules.nocase || value.letters == host_case::as_is)
        return true;
    return value.letters == host_case::upper ? !my_has_letter(text, 'a', 'z') : !my_has_letter(text, 'A', 'Z');
}

static bool my_is_national(std::string_view literal)
{
    return !literal.starts_with('\'');
}

// A column of fixed width is compared as it is where all of the width is given, or where SQLite ignores blanks too.
static bool my_stays(const host_value &value, std::string_view text)
{
    const host_column &col = *value.col;
    const int64_t width = host_is_unicode(col) ? col.max_length / 2 : col.max_length;
    const bool ignores_case = host_read_collation(col.collation, col.comparison_style).nocase;
    return value.expr == value.place && value.letters == host_case::as_is && host_is_fixed_width(col) &&
           (!ignores_case || static_cast<int64_t>(text.size()) == width);
}

const char *host_compare_texts(host_check_changes &changes, host_value &left, host_value &right, bool is_equality)
{
    host_value &value = left.kind == kind::text ? left : right;
    const host_value &literal = left.kind == kind::text ? right : left;
    if (value.kind != kind::text || literal.kind != kind::text_literal) {
        if (left.kind == kind::text && right.kind == kind::text)
            return "texts are compared with one another, of which SQLite knows the letters of ASCII only";
        return left.kind == kind::text_literal || right.kind == kind::text_literal
                   ? "a text is compared with something that is not a string"
                   : "a number is compared with something that is not a number";
    }
    if (!is_equality)
        return "texts are ordered, which SQLite does by their bytes";
    std::string text = host_literal_text(literal.literal);
    const host_like_rules rules = my_rules(value);
    if (!host_is_plain_ascii(text))
        return "a text is compared with letters beyond ASCII, which SQLite compares by their bytes";
    if (my_has_letter(text) && !my_has_collation(value))
        return "a text is compared with letters, and its collation is not known";
    if (my_has_letter(text) && !rules.knows_letters)
        return "a text is compared without regard to accents, or by the rules of a language, which SQLite does not "
               "know";
    if (!my_may_equal(value, text))
        return "UPPER() or LOWER() is compared with letters of the other case";
    if (my_stays(value, text)) {
        if (my_is_national(literal.literal))
            host_change(changes, literal.place, host_quoted(text));
        return nullptr;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    host_change(changes, value.place, "rtrim(" + value.expr + ")" + (rules.ignores_case ? " COLLATE NOCASE" : ""));
    if (host_quoted(text) != literal.literal)
        host_change(changes, literal.place, host_quoted(text));
    return nullptr;
}

// The value to match, so that blanks at its end count where they count on the server: for Unicode only.
static std::string my_matched(const host_value &value, const host_like_pattern &like, bool is_unicode)
{
    if (is_unicode || like.ends_in_percent)
        return value.expr;
    if (!like.may_end_in_blank)
        return "rtrim(" + value.expr + ")";
    const std::string length = std::to_string(like.length);
    return "substr(" + value.expr + ",1," + length + ")||rtrim(substr(" + value.expr + "," +
           std::to_string(like.length + 1) + "))";
}

const char *host_match(host_check_changes &changes, const host_value &left, const host_value &pattern,
                       const host_value *escape, std::string_view word)
{
    if (left.kind != kind::text || pattern.kind != kind::text_literal)
        return "LIKE is used on something other than a text column, or without a literal";
    const std::string text = host_literal_text(pattern.literal);
    const std::string mark = escape && escape->kind == kind::text_literal ? host_literal_text(escape->literal) : "";
    if (escape && mark.size() != 1)
        return "LIKE is used with an escape that is not one character";
    const bool is_unicode = host_is_unicode(*left.col) || my_is_national(pattern.literal);
    host_like_rules rules = my_rules(left);
    rules.counts_units = rules.counts_units && (host_is_unicode(*left.col) || left.col->code_page == host_utf_8_page);
    const host_like_pattern like = host_read_like(text, escape ? mark[0] : '\0', rules);
    if (like.refusal)
        return like.refusal;
    if (!my_may_equal(left, text))
        return "UPPER() or LOWER() is compared with letters of the other case";
    if (!is_unicode && !like.ends_in_percent && like.may_end_in_blank && like.has_percent)
        return "LIKE is used on a text that may end in blanks: they do not count on the server, and count in SQLite";
    const bool is_alike = !escape && text.find('[') == std::string::npos &&
                          (rules.ignores_case || !my_has_letter(text)) && left.letters == host_case::as_is;
    const std::string matched = my_matched(left, like, is_unicode);
    if (matched != left.place)
        host_change(changes, left.place, matched);
    if (is_alike && my_is_national(pattern.literal))
        host_change(changes, pattern.place, host_quoted(text));
    if (is_alike)
        return nullptr;
    host_change(changes, word, "GLOB");
    const char *end =
        escape ? escape->place.data() + escape->place.size() : pattern.place.data() + pattern.place.size();
    host_change(changes, {pattern.place.data(), end}, host_quoted(like.glob));
    return nullptr;
}

// Whether a text has at least so many UTF-16 units. Where it has fewer characters, as many as are missing must be of
// two units.
static std::string my_has_units(const host_value &value, int64_t count)
{
    const std::string missing = std::to_string(count) + "-length(" + value.expr + ")";
    return value.expr + " GLOB replace(hex(zeroblob(" + missing +
           ")),'00','*['||char(65536)||'-'||char(1114111)||']')||'*'";
}

const char *host_compare_units(host_check_changes &changes, const host_value &left, const host_value &right,
                               std::string_view sign)
{
    constexpr int64_t most = 4000;
    const int64_t number = host_small_number(right);
    const int64_t count = left.is_bytes ? number / 2 : number;
    if (left.kind != kind::units || number < 0 || count > most || left.is_compared || (left.is_bytes && number % 2))
        return "the length of a Unicode text is compared with something other than a number";
    const std::string_view all(left.extent.data(), right.extent.data() + right.extent.size());
    const std::string least = my_has_units(left, count);
    const std::string more = my_has_units(left, count + 1);
    if (sign == ">=" || sign == ">")
        host_change(changes, all, "(" + (sign == ">=" ? least : more) + ")");
    else if (sign == "<" || sign == "<=")
        host_change(changes, all, "(NOT " + (sign == "<" ? least : more) + ")");
    else if (sign == "=")
        host_change(changes, all, "(" + least + " AND NOT " + more + ")");
    else if (sign == "<>" || sign == "!=")
        host_change(changes, all, "(NOT " + least + " OR " + more + ")");
    else
        return "the length of a Unicode text is used in BETWEEN or IN";
    return nullptr;
}
