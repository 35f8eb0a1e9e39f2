// Random values under random checks: what a plain model of the server says, and what SQLite says under the condition
// that the check becomes.
#include "checks/host_check_grammar.hpp"
#include "sqlite_database.hpp"

#include <cstdio>
#include <gtest/gtest.h>
#include <optional>
#include <random>

// True, false or neither, as in SQL.
using verdict = std::optional<bool>;

class HostCheckModelTest : public ::testing::Test {
  protected:
    host_column &add(const char *name, const char *type, int32_t length, uint8_t scale = 0)
    {
        host_column &col = table.cols.emplace_back();
        col.name = name;
        col.system_type = type;
        col.max_length = length;
        col.precision = 12;
        col.scale = scale;
        col.collation = "Latin1_General_CI_AS";
        col.code_page = 1252;
        return col;
    }
    size_t pick(size_t count)
    {
        return std::uniform_int_distribution<size_t>(0, count - 1)(random);
    }
    template <class Item, size_t Count> Item one_of(const Item (&items)[Count])
    {
        return items[pick(Count)];
    }
    std::string condition_of(const std::string &check)
    {
        const host_check_reading reading = host_read_check(table, check);
        EXPECT_EQ(reading.refusal, nullptr) << check;
        return reading.condition;
    }
    // Of a condition on C and D, which are given as SQL.
    std::string verdict_of(const std::string &condition, const std::string &c, const std::string &d = "NULL")
    {
        return db.ask("SELECT " + condition + " FROM (SELECT " + c + " AS C," + d + " AS D)");
    }
    static std::string text_of(verdict v)
    {
        return v ? *v ? "1" : "0" : "(null)";
    }
    static bool compare(const std::string &sign, int order)
    {
        return sign == "="    ? order == 0
               : sign == "<>" ? order != 0
               : sign == "<"  ? order < 0
               : sign == "<=" ? order <= 0
               : sign == ">"  ? order > 0
                              : order >= 0;
    }

    static constexpr const char *signs[] = {"=", "<>", "<", "<=", ">", ">="};
    static constexpr int rounds = 3000;
    std::mt19937 random{20261122};
    host_table table;
    sqlite_database db;
};

// An element of a pattern: the characters that it matches, all others when it is negated.
struct element {
    bool is_run = false;
    bool is_negated = false;
    std::string chars;
};

static char folded(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
}

static bool matches_one(const element &one, char byte)
{
    bool found = false;
    for (const char other : one.chars)
        found |= folded(other) == folded(byte);
    return found != one.is_negated;
}

static bool matches(const std::vector<element> &pattern, size_t at, const std::string &text, size_t from,
                    bool is_unicode)
{
    if (at == pattern.size()) // what is left may be blanks where they do not count
        return from == text.size() || (!is_unicode && text.find_first_not_of(' ', from) == std::string::npos);
    if (pattern[at].is_run) {
        for (size_t end = from; end <= text.size(); end++) {
            if (matches(pattern, at + 1, text, end, is_unicode))
                return true;
        }
        return false;
    }
    return from < text.size() && matches_one(pattern[at], text[from]) &&
           matches(pattern, at + 1, text, from + 1, is_unicode);
}

TEST_F(HostCheckModelTest, Like)
{
    add("C", "varchar", 20);
    add("D", "nvarchar", 40);
    static const std::pair<const char *, element> parts[] = {
        {"a", {false, false, "a"}},
        {"B", {false, false, "B"}},
        {"1", {false, false, "1"}},
        {" ", {false, false, " "}},
        {"*", {false, false, "*"}},
        {"?", {false, false, "?"}},
        {"]", {false, false, "]"}},
        {"^", {false, false, "^"}},
        {"-", {false, false, "-"}},
        {"[[]", {false, false, "["}},
        {"[%]", {false, false, "%"}},
        {"[_]", {false, false, "_"}},
        {"%", {true, false, ""}},
        {"%", {true, false, ""}},
        {"_", {false, true, ""}},
        {"[0-2]", {false, false, "012"}},
        {"[^0-9]", {false, true, "0123456789"}},
        {"[aB-]", {false, false, "aB-"}},
        {"[^-a]", {false, true, "-a"}},
        {"[b^*]", {false, false, "b^*"}},
        {"[?[]", {false, false, "?["}},
    };
    static constexpr char letters[] = {'a', 'A', 'b', 'B', '1', '2', ' ', '*', '?', '[', ']', '^', '-', '%', '_'};
    int kept = 0;
    for (int round = 0; round < rounds; round++) {
        std::string written;
        std::vector<element> pattern;
        for (size_t n = pick(5) + 1; n > 0; n--) {
            const auto &part = parts[pick(std::size(parts))];
            written += part.first;
            pattern.push_back(part.second);
        }
        const bool is_unicode = pick(2) == 0;
        const std::string check = std::string(is_unicode ? "([D]" : "([C]") + " LIKE '" + written + "')";
        const host_check_reading reading = host_read_check(table, check);
        if (reading.refusal)
            continue;
        kept++;
        for (int n = 0; n < 5; n++) {
            std::string text;
            for (size_t size = pick(6); size > 0; size--)
                text += one_of(letters);
            const verdict expected = matches(pattern, 0, text, 0, is_unicode);
            EXPECT_EQ(verdict_of(reading.condition, "'" + text + "'", "'" + text + "'"), text_of(expected))
                << check << " of '" << text << "': " << reading.condition;
        }
        EXPECT_EQ(verdict_of(reading.condition, "NULL"), "(null)");
    }
    EXPECT_GT(kept, rounds / 2);
}

TEST_F(HostCheckModelTest, Decimals)
{
    static constexpr int64_t powers[] = {1, 10, 100, 1000, 10000};
    for (int round = 0; round < rounds; round++) {
        table.cols.clear();
        const auto c_scale = static_cast<uint8_t>(pick(5)), d_scale = static_cast<uint8_t>(pick(5));
        add("C", "decimal", 9, c_scale);
        add("D", "decimal", 9, d_scale);
        const std::string sign = one_of(signs);
        std::uniform_int_distribution<int64_t> number(-300, 300);
        const int64_t c = number(random), d = number(random), literal = number(random);
        const auto literal_scale = static_cast<int64_t>(pick(5));
        char written[40];
        std::snprintf(written, sizeof written, "%s%d.%0*d", literal < 0 ? "-" : "",
                      static_cast<int>(std::abs(literal) / powers[literal_scale]),
                      static_cast<int>(std::max<int64_t>(literal_scale, 1)),
                      static_cast<int>(std::abs(literal) % powers[literal_scale]));
        // All of them times 10^4.
        const int64_t c4 = c * powers[4 - c_scale], d4 = d * powers[4 - d_scale];
        const int64_t literal4 = literal * powers[4 - literal_scale];
        const std::string with_literal = "([C]" + sign + "(" + written + "))";
        EXPECT_EQ(verdict_of(condition_of(with_literal), std::to_string(c)),
                  text_of(compare(sign, c4 < literal4 ? -1 : c4 > literal4)))
            << with_literal << " of " << c << " with scale " << c_scale << ": " << condition_of(with_literal);
        const std::string with_col = "([C]" + sign + "[D])";
        EXPECT_EQ(verdict_of(condition_of(with_col), std::to_string(c), std::to_string(d)),
                  text_of(compare(sign, c4 < d4 ? -1 : c4 > d4)))
            << condition_of(with_col) << " of " << c << ", " << d;
        EXPECT_EQ(verdict_of(condition_of(with_col), "NULL", std::to_string(d)), "(null)");
    }
}

TEST_F(HostCheckModelTest, Lengths)
{
    add("C", "nvarchar", 40);
    static const std::pair<const char *, int> chars[] = {
        {"a", 1}, {" ", 1}, {"\xC3\xA4", 1}, {"\xE2\x82\xAC", 1}, {"\xF0\x9F\x98\x80", 2}, {"\xF4\x8F\xBF\xBF", 2}};
    for (int round = 0; round < rounds; round++) {
        std::string text;
        int units = 0, length = 0;
        for (size_t size = pick(8); size > 0; size--) {
            const auto &[character, width] = chars[pick(std::size(chars))];
            text += character;
            units += width;
            length = *character == ' ' ? length : units;
        }
        const auto count = static_cast<int>(pick(12));
        const std::string sign = one_of(signs);
        const std::string check = "(len([C])" + sign + "(" + std::to_string(count) + "))";
        const int order = length < count ? -1 : length > count;
        EXPECT_EQ(verdict_of(condition_of(check), "'" + text + "'"), text_of(compare(sign, order)))
            << check << " of '" << text << "'";
        EXPECT_EQ(verdict_of(condition_of(check), "NULL"), "(null)");
        const std::string bytes = "(datalength([C])" + sign + "(" + std::to_string(count * 2) + "))";
        EXPECT_EQ(verdict_of(condition_of(bytes), "'" + text + "'"),
                  text_of(compare(sign, units < count ? -1 : units > count)))
            << bytes << " of '" << text << "'";
    }
}

// Moments of one day in units of 10^-7 seconds, and their forms.
TEST_F(HostCheckModelTest, Moments)
{
    static constexpr int64_t powers[] = {1, 10, 100, 1000, 10'000, 100'000, 1'000'000, 10'000'000};
    const auto form = [](int64_t time, int64_t scale, int64_t digits) {
        char text[64];
        const auto seconds = static_cast<int>(time / powers[7]);
        std::snprintf(text, sizeof text, "'2020-01-01 %02d:%02d:%02d.%07d", seconds / 3600, seconds / 60 % 60,
                      seconds % 60, static_cast<int>(time % powers[7]));
        const int64_t kept = digits ? 21 + digits : 20;
        (void)scale;
        return std::string(text, static_cast<size_t>(kept)) + "'";
    };
    for (int round = 0; round < rounds; round++) {
        table.cols.clear();
        const auto c_scale = static_cast<uint8_t>(pick(8)), d_scale = static_cast<uint8_t>(pick(8));
        add("C", "datetime2", 8, c_scale);
        add("D", "datetime2", 8, d_scale);
        const auto digits = [](int64_t scale) { return scale == 1 || scale == 2 ? 3 : scale; };
        const auto time = [&](int64_t scale) { // about the end of the day, where values may be shortened
            const auto below = static_cast<int64_t>(pick(4)) + 1;
            return int64_t{86400} * powers[7] - below * powers[7 - scale];
        };
        const int64_t c = time(c_scale), d = time(d_scale);
        const auto stored = [&](int64_t moment, int64_t scale) {
            const bool is_short = scale > 3 && moment % powers[4] == 0 && pick(2) == 0;
            return form(moment, scale, is_short ? 3 : digits(scale));
        };
        const std::string sign = one_of(signs);
        const std::string with_col = "([C]" + sign + "[D])";
        const int order = c < d ? -1 : c > d;
        const std::string c_text = stored(c, c_scale), d_text = stored(d, d_scale);
        EXPECT_EQ(verdict_of(condition_of(with_col), c_text, d_text), text_of(compare(sign, order)))
            << condition_of(with_col) << " of " << c_text << ", " << d_text;
        if (d_scale <= c_scale) {
            const std::string with_literal = "([C]" + sign + form(d, d_scale, d_scale) + ")";
            EXPECT_EQ(verdict_of(condition_of(with_literal), c_text), text_of(compare(sign, order)))
                << condition_of(with_literal) << " of " << c_text;
        }
    }
}

// Conditions on whole numbers that may be NULL, joined in every way.
TEST_F(HostCheckModelTest, ThreeValuedLogic)
{
    add("C", "int", 4);
    add("D", "decimal", 9, 2);
    struct expression {
        std::string text;
        verdict value;
    };
    for (int round = 0; round < rounds; round++) {
        const std::optional<int> c = pick(3) ? std::optional(static_cast<int>(pick(3))) : std::nullopt;
        const std::optional<int> d = pick(3) ? std::optional(static_cast<int>(pick(3))) : std::nullopt;
        const auto leaf = [&]() -> expression {
            const bool is_c = pick(2) == 0;
            const std::optional<int> &value = is_c ? c : d;
            const std::string name = is_c ? "[C]" : "[D]";
            const auto number = static_cast<int>(pick(3));
            if (pick(4) == 0)
                return {name + " IS NULL", !value};
            const std::string sign = one_of(signs);
            const int order = value ? *value < number ? -1 : *value > number : 0;
            return {name + sign + "(" + std::to_string(number) + ")",
                    value ? verdict(compare(sign, order)) : std::nullopt};
        };
        expression all = leaf();
        for (size_t n = pick(4); n > 0; n--) {
            const expression other = leaf();
            const bool is_and = pick(2) == 0;
            const bool decides = !is_and; // true decides OR, false decides AND
            verdict joined;
            if (all.value == verdict(decides) || other.value == verdict(decides))
                joined = decides;
            else if (all.value && other.value)
                joined = !decides;
            all = {"(" + all.text + ")" + (is_and ? " AND " : " OR ") + other.text, joined};
            if (pick(3) == 0)
                all = {"NOT (" + all.text + ")", all.value ? verdict(!*all.value) : std::nullopt};
        }
        const auto sql = [](std::optional<int> value, int factor) {
            return value ? std::to_string(*value * factor) : std::string("NULL");
        };
        EXPECT_EQ(verdict_of(condition_of(all.text), sql(c, 1), sql(d, 100)), text_of(all.value)) << all.text;
    }
}
