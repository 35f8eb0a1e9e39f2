// Impossible dates: they move into the next month, and every other value is answered as SQLite's own functions do.
// The expectations come from a plain connection of the same library, so the tests hold with a newer one too.
#include "counting_sqlite.hpp"
#include "kt_sqlite_dates.h"
#include "kt_sqlite_functions.h"
#include "kt_test.hpp"

#include <cstdarg>
#include <cstdio>
#include <random>
#include <sqlite3.h>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int read_write_create = 6;

// Formats whose parts come from every field that a text may fill.
const char *const formats[] = {
    "'%Y-%m-%d'",
    "'%Y-%m-%d %H:%M'",
    "'%Y-%m-%dT%H:%M:%S'",
    "'%Y-%m-%d %H:%M:%f'",
    "'%H:%M:%f'",
    "'%j %J %s %w %W %%'",
    "'%d nothing else'",
    "''",
    "NULL",
    "x'2559'",
    "17",
    "'%Q'",
};

class DatesTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        ASSERT_EQ(sqlite->open_plain(":memory:", &plain, read_write_create), SQLITE_OK);
        ASSERT_EQ(sqlite->open(":memory:", &replaced, read_write_create), SQLITE_OK);
    }
    void TearDown() override
    {
        EXPECT_EQ(sqlite->close(plain), SQLITE_OK);
        EXPECT_EQ(sqlite->close(replaced), SQLITE_OK);
        ContextTest::TearDown();
    }
    // The value of an SQL expression with its type, e.g. "text '2024-03-01'".
    static std::string value_of(sqlite3 *connection, const std::string &expression)
    {
        const std::string sql = "SELECT typeof(v) || ' ' || quote(v) FROM (SELECT " + expression + " AS v)";
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            return sqlite3_errmsg(connection);
        const bool has_row = sqlite3_step(statement) == SQLITE_ROW;
        const std::string value =
            has_row ? reinterpret_cast<const char *>(sqlite3_column_text(statement, 0)) : sqlite3_errmsg(connection);
        sqlite3_finalize(statement);
        return value;
    }
    void expect_same(const std::string &value)
    {
        const std::string date = "date(" + value + ")";
        ASSERT_EQ(value_of(replaced, date), value_of(plain, date)) << value;
        for (const char *format : formats) {
            const std::string strftime = std::string("strftime(") + format + ", " + value + ")";
            ASSERT_EQ(value_of(replaced, strftime), value_of(plain, strftime)) << value;
        }
    }

    const KT_sqlite_functions *sqlite = tov__get_sqlite_functions();
    sqlite3 *plain = nullptr;
    sqlite3 *replaced = nullptr;
};

KT_PRINTF(1, 2) std::string printed(const char *format, ...)
{
    char text[100];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

int days_in_month(int year, int month)
{
    if (month == 2)
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

} // namespace

struct moved_case {
    const char *name;
    const char *expression;
    const char *expected;
};
static const moved_case moved_cases[] = {
    {"February 30th of a leap year", "date('2024-02-30')", "text '2024-03-01'"},
    {"February 29th of a common year", "date('2023-02-29')", "text '2023-03-01'"},
    {"February 29th of a century", "date('1900-02-29')", "text '1900-03-01'"},
    {"February 29th of a leap year stays", "date('2000-02-29')", "text '2000-02-29'"},
    {"a 31st of a month of 30 days", "date('2024-04-31')", "text '2024-05-01'"},
    {"a day 0", "date('2024-01-00')", "null NULL"},
    {"a day that ends in no digit", "date('2024-01-1/')", "null NULL"},
    {"a date and a time, asked for the date", "date('2024-02-30 01:02:03')", "text '2024-03-01'"},
    {"strftime of a date and a time", "strftime('%Y-%m-%d %H:%M:%S', '2024-02-30 01:02:03')",
     "text '2024-03-01 01:02:03'"},
    {"with a T between them", "strftime('%Y-%m-%dT%H:%M', '2024-02-31T01:02')", "text '2024-03-02T01:02'"},
    {"with a fraction", "strftime('%Y-%m-%d %H:%M:%f', '2023-02-30 01:02:03.125')", "text '2023-03-02 01:02:03.125'"},
    {"in the zone that shifts nothing", "date('2024-02-30 01:00Z')", "text '2024-03-01'"},
    {"a format that shows no day", "strftime('%m', '2024-06-31')", "text '07'"},
    {"a year before 0", "date('-0001-02-29')", "text '-0001-03-01'"},
    {"day 32 is not a date", "date('2024-01-32')", "null NULL"},
    {"month 13 is not a date", "date('2024-13-01')", "null NULL"},
    {"the last fraction of a day stays in it", "date('2024-01-15 23:59:59.9999999')", "text '2024-01-15'"},
    {"a time alone", "strftime('%H:%M:%f', '23:59:59.9999999')", "text '23:59:59.999'"},
};

TEST_F(DatesTest, ImpossibleDatesMoveAndOthersStay)
{
    for (const moved_case &c : moved_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(value_of(replaced, c.expression), c.expected);
    }
}

// SQLite itself says which day an impossible one is: the first of the month and so many days.
TEST_F(DatesTest, ADayThatNoMonthHasIsNoDate)
{
    for (int month = 1; month <= 12; month++)
        EXPECT_EQ(value_of(replaced, printed("date('2024-%02d-32')", month)), "null NULL") << month;
}

TEST_F(DatesTest, EveryDayOfEveryMonthOfManyYears)
{
    const int years[] = {1, 4, 100, 400, 1582, 1600, 1752, 1899, 1900, 1999, 2000, 2023, 2024, 2100, 9996, 9999};
    for (int year : years) {
        for (int month = 1; month <= 12; month++) {
            for (int day = 28; day <= 31; day++) {
                const std::string date = printed("%04d-%02d-%02d", year, month, day);
                const std::string first = printed("date('%04d-%02d-01', '+%d days')", year, month, day - 1);
                const std::string expected = value_of(plain, first);
                EXPECT_EQ(value_of(replaced, "date('" + date + "')"), expected) << date;
                EXPECT_EQ(value_of(replaced, "strftime('%Y-%m-%d', '" + date + "')"), expected) << date;
                EXPECT_EQ(value_of(replaced, "date('" + date + "') = '" + date + "'"),
                          day <= days_in_month(year, month) ? "integer 1" : "integer 0");
            }
        }
    }
}

TEST_F(DatesTest, PossibleDatesAreAnsweredAsBefore)
{
    std::mt19937 random{20240230};
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const char *const separators[] = {" ", "T", "  ", ""};
    const char *const zones[] = {"", "", "", "Z", " z", "+02:00", "-11:30", " +14:00", "+15:00", " ", "x"};
    const char *const fractions[] = {"", ".5", ".9994", ".9995", ".9999999", ".000", ".", ".123456789012345678"};
    for (int n = 0; n < 3000; n++) {
        const int year = below(10) == 0 ? below(10000) : 1990 + below(60);
        const int month = 1 + below(12);
        const int day = 1 + below(days_in_month(year, month));
        std::string text = printed("%s%04d-%02d-%02d", below(20) == 0 ? "-" : "", year, month, day);
        if (below(4) != 0) {
            // Hours up to 25 and minutes up to 61, so that some are none.
            text += separators[below(below(8) == 0 ? 4 : 2)];
            text += printed("%02d:%02d", below(26), below(62));
            if (below(3) != 0)
                text += printed(":%02d", below(61)) + fractions[below(8)];
            text += zones[below(11)];
        }
        expect_same("'" + text + "'");
    }
}

TEST_F(DatesTest, OddTextsAreAnsweredAsBefore)
{
    const char *const values[] = {
        "NULL",
        "''",
        "' '",
        "'abc'",
        "x''",
        "x'323032342d30312d3031'",
        "zeroblob(10)",
        "0",
        "0.5",
        "-1",
        "2460000",
        "2460000.5",
        "2460000.123456789",
        "5373484.5",
        "5373485",
        "1e300",
        "-1e300",
        "9223372036854775807",
        "'2460000.5'",
        "'2460000'",
        "' 2460000.5'",
        "'2024-01-15 24:00'",
        "'2024-01-31 24:00:00'",
        "'24:00'",
        "'12:00'",
        "'12:34:56.789'",
        "'23:59:60'",
        "'2024-01-15 23:59:60'",
        "'2024-01-15T'",
        "'2024-01-15 '",
        "'2024-01-15 12'",
        "'2024-1-5'",
        "'20240115'",
        "'2024-00-15'",
        "'2024-13-15'",
        "'2024-01-00'",
        "'2024-01-32'",
        "'2024/01/15'",
        "'2024-01-1x'",
        "'-024-01-15'",
        "CAST('2024-01-15' AS BLOB) || ''",
        "'2024-01-1' || char(0)",
        "'2024-01-15 12:00+00:00'",
        "'2024-01-31 23:00-02:00'",
        "'2024-02-30 01:00+02:00'",
        "'2024-03-01 00:00:00.0000001'",
        "'-4713-11-24 12:00'",
        "'-4713-11-24'",
        "'-4713-11-23'",
        "'-9999-01-01'",
        "'0000-01-01'",
        "'0000-12-31'",
        "'9999-12-31 23:59:59.999'",
        "'9999-12-31 23:59:59.9999'",
        "'10000-01-01'",
        "CAST('2024-01-15' AS BLOB)",
        "'2024-01-15' || char(0) || 'x'",
        "'\xEF\xBC\x92'",
        "'NaN'",
        "'1e3'",
        "'2024-01-15 12:00:00.'",
        "'2024-02-29 12:00 +01:00 '",
        "'today'",
        "'now '",
        "'localtime'",
    };
    for (const char *value : values)
        expect_same(value);
}

TEST_F(DatesTest, NowIsAnswered)
{
    EXPECT_EQ(value_of(replaced, "abs(strftime('%s', 'now') - strftime('%s', 'now', '+0 days')) <= 1"), "integer 1");
    EXPECT_EQ(value_of(replaced, "date('now') BETWEEN date('now', '-1 days') AND date('now', '+1 days')"), "integer 1");
}

TEST_F(DatesTest, OtherNumbersOfArgumentsAreNotReplaced)
{
    for (const char *expression :
         {"date('2024-02-30', '+1 days')", "strftime('%Y', '2024-02-30', 'start of year')",
          "time('2024-02-30 01:02:03')", "julianday('2024-02-30')", "length(date())", "length(strftime('%Y'))"})
        EXPECT_EQ(value_of(replaced, expression), value_of(plain, expression)) << expression;
}

TEST_F(DatesTest, WorksInTriggersAndIndexesOfUntrustedSchemas)
{
    ASSERT_EQ(sqlite->exec(replaced, "PRAGMA trusted_schema=OFF;"
                                     "CREATE TABLE t (d text);"
                                     "CREATE INDEX i ON t (date(d));"
                                     "CREATE TRIGGER r BEFORE INSERT ON t BEGIN"
                                     "  SELECT CASE WHEN date(NEW.d) != NEW.d OR strftime('%Y-%m-%d', NEW.d) != NEW.d"
                                     "  THEN RAISE(ABORT, 'no such day') END;"
                                     "END;"),
              SQLITE_OK)
        << sqlite->message(replaced);
    EXPECT_EQ(sqlite->exec(replaced, "INSERT INTO t VALUES ('2024-02-29')"), SQLITE_OK);
    EXPECT_EQ(sqlite->exec(replaced, "INSERT INTO t VALUES ('2024-02-30')"), SQLITE_CONSTRAINT);
    EXPECT_STREQ(sqlite->message(replaced), "no such day");
    EXPECT_EQ(value_of(replaced, "(SELECT group_concat(d) FROM t)"), "text '2024-02-29'");
}

TEST_F(DatesTest, WorksInDatabasesOfUtf16)
{
    ASSERT_EQ(sqlite->exec(replaced, "PRAGMA encoding='UTF-16le'; CREATE TABLE t (d text, f text);"
                                     "INSERT INTO t VALUES ('2024-02-30', '\xC3\xA4 %d');"),
              SQLITE_OK);
    EXPECT_EQ(value_of(replaced, "(SELECT date(d) || strftime(f, d) FROM t)"), "text '2024-03-01\xC3\xA4 01'");
}

TEST_F(DatesTest, AskingTwiceIsHarmless)
{
    EXPECT_EQ(value_of(replaced, "date('2024-02-30')"), "text '2024-03-01'");
    KT_sqlite__normalise_dates(ctx, sqlite, replaced);
    EXPECT_OK(ctx);
    EXPECT_EQ(value_of(replaced, "date('2024-02-30')"), "text '2024-03-01'");
    KT_sqlite__normalise_dates(ctx, sqlite, plain);
    EXPECT_OK(ctx);
    EXPECT_EQ(value_of(plain, "date('2024-02-30')"), "text '2024-03-01'");
}

TEST_F(DatesTest, LeavesNoMemoryBehind)
{
    const int64_t before = sqlite3_memory_used();
    sqlite3 *connection = nullptr;
    ASSERT_EQ(sqlite->open(":memory:", &connection, read_write_create), SQLITE_OK);
    EXPECT_EQ(value_of(connection, "date('2024-02-30') || strftime('%d', '2024-02-30')"), "text '2024-03-0101'");
    ASSERT_EQ(sqlite->close(connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_memory_used(), before);
}

TEST_F(DatesTest, SeveralThreadsMayOpenAndAskAtOnce)
{
    std::vector<std::thread> threads;
    for (int n = 0; n < 4; n++)
        threads.emplace_back([this] {
            for (int turn = 0; turn < 20; turn++) {
                sqlite3 *own = nullptr;
                EXPECT_EQ(sqlite->open(":memory:", &own, read_write_create), SQLITE_OK);
                EXPECT_EQ(value_of(own, "date('2024-02-30 00:00')"), "text '2024-03-01'");
                EXPECT_EQ(sqlite->close(own), SQLITE_OK);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}

// A table whose entries fail on demand; the rest goes to the linked library.
static KT_sqlite_functions failing;
static int calls_until_failure;
static int failing_code;

static int failure()
{
    return --calls_until_failure == 0 ? failing_code : SQLITE_OK;
}

class FailingDatesTest : public DatesTest {
  protected:
    void SetUp() override
    {
        DatesTest::SetUp();
        failing = *sqlite;
        calls_until_failure = 0;
        failing_code = SQLITE_NOMEM;
    }
    // Replaces the functions through the table `failing`, whatever the linked library does by itself.
    void replace(sqlite3 *connection)
    {
        static int version = 3900000;
        version++;
        failing.libversion_number = [] { return version; };
        failing.column_text = [](sqlite3_stmt *, int) -> const char * { return "2024-02-30 00:00:00"; };
        KT_sqlite__normalise_dates(ctx, &failing, connection);
        failing.column_text = sqlite->column_text;
    }
    // The calls of an expression on a fresh connection that fail, one after another.
    int count_failures(const char *expression)
    {
        for (int failures = 0;; failures++) {
            sqlite3 *connection = nullptr;
            EXPECT_EQ(sqlite->open_plain(":memory:", &connection, read_write_create), SQLITE_OK);
            replace(connection);
            EXPECT_OK(ctx);
            calls_until_failure = failures + 1;
            const std::string value = value_of(connection, expression);
            const bool failed = calls_until_failure <= 0;
            calls_until_failure = 0;
            if (failed) {
                EXPECT_EQ(value, sqlite3_errstr(failing_code)) << failures;
            }
            // A failure is gone with its call.
            EXPECT_NE(value_of(connection, expression).find("01'"), std::string::npos) << failures;
            EXPECT_EQ(sqlite->close(connection), SQLITE_OK);
            if (!failed)
                return failures;
        }
    }
};

TEST_F(FailingDatesTest, EachFailureIsTheResultOfTheCall)
{
    failing.open_plain = [](const char *name, sqlite3 **connection, int flags) {
        const int code = failure();
        return code ? code : tov__get_sqlite_functions()->open_plain(name, connection, flags);
    };
    failing.prepare = [](sqlite3 *connection, const char *sql, sqlite3_stmt **statement) {
        const int code = failure();
        return code ? code : tov__get_sqlite_functions()->prepare(connection, sql, statement);
    };
    failing.bind_value = [](sqlite3_stmt *statement, int index, const sqlite3_value *value) {
        const int code = failure();
        return code ? code : sqlite3_bind_value(statement, index, value);
    };
    failing.step = [](sqlite3_stmt *statement) {
        const int code = failure();
        return code ? code : sqlite3_step(statement);
    };
    // A library that corrects such dates itself is asked once: opened, prepared, bound and stepped. Others twice.
    const int least = value_of(plain, "date('2024-02-30')").find("2024-03-01") != std::string::npos ? 4 : 7;
    const int64_t before = sqlite3_memory_used();
    for (const char *expression : {"date('2024-02-30')", "strftime('%d', '2024-02-30')"}) {
        for (const int code : kt_sqlite_failures) {
            failing_code = code;
            EXPECT_GE(count_failures(expression), least);
        }
    }
    EXPECT_EQ(sqlite3_memory_used(), before);
}

TEST_F(FailingDatesTest, AFailureWhileAddingIsReported)
{
    static int adds;
    static int failing_add;
    failing.create_function = [](sqlite3 *connection, const char *name, int count, int flags, void *data,
                                 void (*function)(sqlite3_context *, int, sqlite3_value **), void (*release)(void *)) {
        if (++adds == failing_add)
            name = "a name that is far too long for a function of SQLite, which takes 255 bytes at most: "
                   "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123"
                   "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123";
        return tov__get_sqlite_functions()->create_function(connection, name, count, flags, data, function, release);
    };
    const int64_t before = sqlite3_memory_used();
    for (failing_add = 1; failing_add <= 2; failing_add++) {
        adds = 0;
        sqlite3 *connection = nullptr;
        ASSERT_EQ(sqlite->open_plain(":memory:", &connection, read_write_create), SQLITE_OK);
        replace(connection);
        EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_MISUSE));
        reset();
        EXPECT_EQ(sqlite->close(connection), SQLITE_OK);
    }
    EXPECT_EQ(sqlite3_memory_used(), before);
    failing.allocate = [](uint64_t) -> void * { return nullptr; };
    replace(plain);
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_NOMEM));
    reset();
}

// Another version number stands for another library, which has not been looked at yet.
TEST_F(FailingDatesTest, AFailureWhileLookingIsReportedAndNotRemembered)
{
    static int version = 3000000;
    failing.libversion_number = [] { return version; };
    failing.prepare = [](sqlite3 *connection, const char *sql, sqlite3_stmt **statement) {
        const int code = failure();
        return code ? code : tov__get_sqlite_functions()->prepare(connection, sql, statement);
    };
    failing.step = [](sqlite3_stmt *statement) {
        const int code = failure();
        return code ? code : sqlite3_step(statement);
    };
    for (int n = 1; n <= 2; n++) {
        calls_until_failure = n;
        KT_sqlite__normalise_dates(ctx, &failing, plain);
        EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_NOMEM));
        reset();
    }
    calls_until_failure = 3;
    KT_sqlite__normalise_dates(ctx, &failing, plain);
    EXPECT_OK(ctx);
    EXPECT_EQ(calls_until_failure, 1) << "it looked once more";
    calls_until_failure = 0;
    EXPECT_EQ(value_of(plain, "date('2024-02-30')"), "text '2024-03-01'");
    // The linked library is looked at again.
    KT_sqlite__normalise_dates(ctx, sqlite, plain);
    EXPECT_OK(ctx);
}

// A library that moves such dates is left alone: its table is not asked to add anything.
TEST_F(FailingDatesTest, ANewerLibraryKeepsItsOwnFunctions)
{
    failing.libversion_number = [] { return 3999000; };
    failing.column_text = [](sqlite3_stmt *, int) -> const char * { return "2024-03-01 00:00:00"; };
    failing.allocate = [](uint64_t) -> void * { return nullptr; };
    const std::string before = value_of(plain, "date('2024-02-30')");
    KT_sqlite__normalise_dates(ctx, &failing, plain);
    EXPECT_OK(ctx);
    EXPECT_EQ(value_of(plain, "date('2024-02-30')"), before);
    KT_sqlite__normalise_dates(ctx, sqlite, replaced);
    EXPECT_OK(ctx);
}
