// Validation statements at work: values that a trigger lets into a real table, and values that it refuses.

#include "ddl_test.hpp"

#include <string_view>

namespace {

// A table without a declared type, so that a value reaches the trigger as it was written.
class DdlValues : public DdlTest {
  protected:
    void check_column_of(const char *abstract_type, int32_t width, int32_t precision)
    {
        KT_string *text = nullptr;
        tov_schema__get_validation_expression(ctx, abstract_type, width, precision, 0, 0, "C", &text);
        ASSERT_OK(ctx);
        const std::string statement = take(ctx, text);
        ASSERT_EQ(db.run("DROP TABLE IF EXISTS T; CREATE TABLE T (C)"), "");
        ASSERT_EQ(db.run(std::string("CREATE TRIGGER ti BEFORE INSERT ON T BEGIN ") + statement + "; END"), "");
    }

    sqlite_database db;
};

struct value_case {
    const char *abstract_type;
    int32_t width;
    int32_t precision;
    const char *value;
    const char *message; // "" when the value is let in
};

constexpr char width_10[] = "[C] constraint violation: width exceeded: 10";
constexpr char bad_date[] = "[C] constraint violation: invalid date (YYYY-MM-DD)";
constexpr char bad_time[] = "[C] constraint violation: invalid time";
constexpr char bad_datetime[] = "[C] constraint violation: invalid datetime";
constexpr char bad_guid[] = "[C] constraint violation: must be 16 bytes (uniqueidentifier)";

const value_case value_cases[] = {
    {"sint64", 0, 0, "NULL", ""},
    {"sint64", 0, 0, "9223372036854775807", ""},
    {"sint64", 0, 0, "-9223372036854775808", ""},
    {"sint64", 0, 0, "1.0", "[C] constraint violation: type mismatch: sint64(integer)"},
    {"sint64", 0, 0, "'1'", "[C] constraint violation: type mismatch: sint64(integer)"},
    {"sint64", 0, 0, "x'31'", "[C] constraint violation: type mismatch: sint64(integer)"},
    {"sint32", 0, 0, "2147483647", ""},
    {"sint32", 0, 0, "-2147483648", ""},
    {"sint32", 0, 0, "2147483648", "[C] constraint violation: out of range: sint32"},
    {"sint32", 0, 0, "-2147483649", "[C] constraint violation: out of range: sint32"},
    {"sint32", 0, 0, "'abc'", "[C] constraint violation: type mismatch: sint32(integer)"},
    {"sint16", 0, 0, "32767", ""},
    {"sint16", 0, 0, "-32768", ""},
    {"sint16", 0, 0, "32768", "[C] constraint violation: out of range: sint16"},
    {"sint16", 0, 0, "-32769", "[C] constraint violation: out of range: sint16"},
    {"uint8", 0, 0, "0", ""},
    {"uint8", 0, 0, "255", ""},
    {"uint8", 0, 0, "-1", "[C] constraint violation: out of range: uint8"},
    {"uint8", 0, 0, "256", "[C] constraint violation: out of range: uint8"},
    {"uint1", 0, 0, "0", ""},
    {"uint1", 0, 0, "1", ""},
    {"uint1", 0, 0, "2", "[C] constraint violation: out of range: uint1"},
    {"uint1", 0, 0, "-1", "[C] constraint violation: out of range: uint1"},
    {"money4", 0, 0, "2147483647", ""},
    {"money4", 0, 0, "2147483648", "[C] constraint violation: out of range: money4"},
    {"money4", 0, 0, "-2147483649", "[C] constraint violation: out of range: money4"},
    {"money8", 0, 0, "9223372036854775807", ""},
    {"money8", 0, 0, "1.5", "[C] constraint violation: type mismatch: money8(integer)"},

    {"real8", 0, 0, "1.5", ""},
    {"real8", 0, 0, "3", ""},
    {"real8", 0, 0, "-9007199254740992", ""},
    {"real8", 0, 0, "9007199254740993", "[C] constraint violation: type mismatch: real8(real)"},
    {"real8", 0, 0, "'1.5'", "[C] constraint violation: type mismatch: real8(real)"},
    {"real4", 0, 0, "3", ""},
    {"real4", 0, 0, "1e300", ""},
    {"real4", 0, 0, "x'00'", "[C] constraint violation: type mismatch: real4(real)"},

    {"decimal", 0, 5, "12345", ""},
    {"decimal", 0, 5, "-12345", ""},
    {"decimal", 0, 5, "123456", "[C] constraint violation: precision exceeded (5)"},
    {"decimal", 0, 5, "-123456", "[C] constraint violation: precision exceeded (5)"},
    {"decimal", 0, 5, "1.5", "[C] constraint violation: type mismatch: decimal(integer)"},
    {"decimal", 0, 18, "999999999999999999", ""},
    {"decimal", 0, 18, "1000000000000000000", "[C] constraint violation: precision exceeded (18)"},

    {"text", 10, 0, "'0123456789'", ""},
    {"text", 10, 0, "''", ""},
    {"text", 10, 0, "'01234567890'", width_10},
    {"text", 10, 0, "'äöüäöüäöüä'", ""},
    {"text", 10, 0, "'äöüäöüäöüäö'", width_10},
    {"text", 10, 0, "5", "[C] constraint violation: type mismatch: text(text)"},
    {"text", 0, 0, "'01234567890'", ""},
    {"text", -1, 0, "'01234567890'", ""},
    {"blob", 10, 0, "zeroblob(10)", ""},
    {"blob", 10, 0, "zeroblob(11)", width_10},
    {"blob", -1, 0, "zeroblob(11)", ""},
    {"blob", 10, 0, "'a'", "[C] constraint violation: type mismatch: blob(blob)"},
    {"guid", 0, 0, "zeroblob(16)", ""},
    {"guid", 0, 0, "zeroblob(15)", bad_guid},
    {"guid", 0, 0, "zeroblob(17)", bad_guid},
    {"guid", 0, 0, "'0123456789abcdef'", "[C] constraint violation: type mismatch: guid(blob)"},

    {"identity", 0, 0, "'anything'", ""},
    {"loose/int", 0, 0, "'anything'", ""},
    {"loose/real", 0, 0, "x'00'", ""},
    {"loose/text", 10, 0, "'01234567890'", ""},
    {"loose/blob", 10, 0, "5", ""},
    {"host", 0, 0, "NULL", ""},
    {"host", 0, 0, "5", "[C] constraint violation: type mismatch: host()"},
    {"host", 0, 0, "''", "[C] constraint violation: type mismatch: host()"},

    {"date", 0, 0, "'2024-02-29'", ""},
    {"date", 0, 0, "'0001-01-01'", ""},
    {"date", 0, 0, "'9999-12-31'", ""},
    {"date", 0, 0, "'2024-02-30'", bad_date},
    {"date", 0, 0, "'2023-02-29'", bad_date},
    {"date", 0, 0, "'0000-12-31'", bad_date},
    {"date", 0, 0, "'2024-13-01'", ""}, // no date at all is null to SQLite, and null is not unequal
    {"date", 0, 0, "'not a dat'", bad_date},
    {"date", 0, 0, "'2024-2-29'", bad_date},
    {"date", 0, 0, "'2024-02-29 '", bad_date},
    {"date", 0, 0, "20240229", "[C] constraint violation: type mismatch: date(text)"},

    {"time", 0, 0, "'00:00:00'", ""},
    {"time", 0, 0, "'23:59:59'", ""},
    {"time", 0, 0, "'12:30:15.5'", ""},
    {"time", 0, 0, "'12:30:15.123'", ""},
    {"time", 0, 0, "'12:30:15.1234567'", ""},
    {"time", 0, 0, "'12:30:15.12345678'", bad_time},
    {"time", 0, 0, "'24:00:00'", bad_time},
    {"time", 0, 0, "'12:60:00'", bad_time},
    {"time", 0, 0, "'12:30:60'", bad_time},
    {"time", 0, 0, "'12:30'", bad_time},
    {"time", 0, 0, "'12-30-15'", bad_time},
    {"time", 0, 0, "'12:30-15'", bad_time},
    {"time", 0, 0, "''", bad_time},

    {"datetime", 0, 0, "'2024-01-02'", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04'", ""},
    {"datetime", 0, 0, "'2024-01-02T03:04'", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04:05'", ""},
    {"datetime", 0, 0, "'2024-01-02T03:04:05'", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04:05.123'", ""},
    {"datetime", 0, 0, "'2024-01-02T03:04:05.123'", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04:05.1234'", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04:05.1234567'", ""},
    {"datetime", 0, 0, "'2024-01-02T03:04:05.1234567'", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04:05.1234567   '", ""},
    {"datetime", 0, 0, "'2024-01-02  '", ""},
    {"datetime", 0, 0, "'2024-01-02 03:04:05.12345678'", bad_datetime},
    {"datetime", 0, 0, "'2024-01-02 03:04:05.1'", bad_datetime},
    {"datetime", 0, 0, "'2024-02-30'", bad_datetime},
    {"datetime", 0, 0, "'2024-02-30 03:04:05'", bad_datetime},
    {"datetime", 0, 0, "'2024-02-30T03:04:05.123'", bad_datetime},
    {"datetime", 0, 0, "'2024-02-30 03:04:05.1234567'", bad_datetime},
    {"datetime", 0, 0, "'2024-01-02 25:00:00'", bad_datetime},
    {"datetime", 0, 0, "'2024-01-02 03:04:60'", bad_datetime},
    {"datetime", 0, 0, "'now'", bad_datetime},
    {"datetime", 0, 0, "''", bad_datetime},
    {"datetime", 0, 0, "5", "[C] constraint violation: type mismatch: datetime(text)"},
};

TEST_F(DdlValues, ATriggerDecides)
{
    for (const value_case &c : value_cases) {
        SCOPED_TRACE(std::string(c.abstract_type) + " " + c.value);
        check_column_of(c.abstract_type, c.width, c.precision);
        EXPECT_EQ(db.run(std::string("INSERT INTO T VALUES (") + c.value + ")"), c.message);
        EXPECT_EQ(db.ask("SELECT count(*) FROM T"), *c.message ? "0" : "1");
    }
}

// Only a time is compared with 23. Older versions of SQLite leave an hour 24 of a moment as it is, newer ones make the
// next day of it, and then the value is not what they give back.
TEST_F(DdlValues, AnHourOf24IsWhatSqliteMakesOfIt)
{
    const std::string made = db.ask("SELECT strftime('%Y-%m-%d %H:%M:%S', '2024-01-02 24:00:00')");
    check_column_of("datetime", 0, 0);
    EXPECT_EQ(db.run("INSERT INTO T VALUES ('2024-01-02 24:00:00')"),
              made == "2024-01-02 24:00:00" ? "" : bad_datetime);
    EXPECT_TRUE(made == "2024-01-02 24:00:00" || made == "2024-01-03 00:00:00") << made;
}

// The text with a parenthesis in the place of every opening of a call.
std::string with_parentheses_for(std::string_view text, std::string_view opening)
{
    std::string result;
    for (size_t at = text.find(opening); at != std::string_view::npos; at = text.find(opening)) {
        result.append(text.substr(0, at)).append("(");
        text.remove_prefix(at + opening.size());
    }
    return result.append(text);
}

TEST_F(DdlValues, ValuesThatPassGiveOne)
{
    KT_string *text = nullptr;
    tov_schema__get_validation_expression(ctx, "time", -1, -1, -1, 0, "C", &text);
    // The same expression outside a trigger: a table of the name NEW stands in, and RAISE, which only a trigger has,
    // becomes the message: RAISE(ABORT, 'text') is ('text').
    const std::string statement = with_parentheses_for(take(ctx, text), "RAISE(ABORT, ");
    EXPECT_EQ(db.run("CREATE TABLE NEW (C)"), "");
    EXPECT_EQ(db.run("INSERT INTO NEW VALUES ('12:30:15')"), "");
    EXPECT_EQ(db.ask(statement + " FROM NEW"), "1");
    EXPECT_EQ(db.run("UPDATE NEW SET C = NULL"), "");
    EXPECT_EQ(db.ask(statement + " FROM NEW"), "1");
    EXPECT_EQ(db.run("UPDATE NEW SET C = '12:30:75'"), "");
    EXPECT_EQ(db.ask(statement + " FROM NEW"), bad_time);
}

} // namespace
