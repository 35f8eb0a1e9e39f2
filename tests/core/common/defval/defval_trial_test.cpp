// Trials of default values: what passes, what is refused, and that nothing stays open whatever fails.

#include "counting_sqlite.hpp"
#include "defval/defval_trial.hpp"
#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <cerrno>
#include <sqlite3.h>

class DefvalTrial : public ContextTest {
  protected:
    void TearDown() override
    {
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        ContextTest::TearDown();
    }
    int opened() const
    {
        return sqlite.calls(kt_sqlite_entry::open);
    }

    kt_counting_sqlite sqlite;
};

struct accepted_case {
    const char *name;
    const char *abstract_type;
    const char *literal;
};

static const accepted_case accepted_cases[] = {
    {"a real", "real8", "1.5"},
    {"an integer as a real", "real4", "3"},
    {"an exponent", "real8", "-1e-3"},
    {"an integer with a space after the minus", "sint32", "- 1"},
    {"a text that SQLite turns into an integer", "sint32", "'5'"},
    {"a date", "date", "'2020-02-29'"},
    {"a time", "time", "'12:34:56'"},
    {"a date and time", "datetime", "'2020-02-29T12:34:56.789'"},
    {"a text", "text", "'it''s'"},
    {"a text of percent signs", "text", "'%s%n%d'"},
    {"a blob", "blob", "x'0A'"},
    {"a guid of 16 bytes", "guid", "x'000102030405060708090A0B0C0D0E0F'"},
    {"null for any type", "guid", "NULL"},
    {"anything for a loose type", "loose/int", "'abc'"},
    {"an identity", "identity", "5"},
    {"a decimal null", "decimal", "NULL"},
};

TEST_F(DefvalTrial, AcceptsWhatTheTypeCheckLetsPass)
{
    for (const accepted_case &c : accepted_cases) {
        SCOPED_TRACE(c.name);
        KT_bool ok = -1;
        _tov_is_valid_constant(ctx, c.abstract_type, c.literal, &ok);
        EXPECT_OK(ctx);
        EXPECT_EQ(ok, 1);
        reset();
    }
}

struct refused_case {
    const char *name;
    const char *abstract_type;
    const char *literal;
    int code;
    const char *description;
};

static const refused_case refused_cases[] = {
    {"a text in an integer column", "sint32", "'abc'", 19,
     "constraint failed: [v] constraint violation: type mismatch: sint32(integer)"},
    {"a text in a real column", "real8", "'abc'", 19,
     "constraint failed: [v] constraint violation: type mismatch: real8(real)"},
    {"a fraction in an integer column", "sint32", "5.5", 19,
     "constraint failed: [v] constraint violation: type mismatch: sint32(integer)"},
    {"a number out of range", "uint8", "256", 19, "constraint failed: [v] constraint violation: out of range: uint8"},
    {"a date that does not exist", "date", "'2020-02-30'", 19,
     "constraint failed: [v] constraint violation: invalid date (YYYY-MM-DD)"},
    {"a date and time that does not exist", "datetime", "'2021-02-29 00:00:00'", 19,
     "constraint failed: [v] constraint violation: invalid datetime"},
    {"an hour that does not exist", "time", "'24:00:00'", 19,
     "constraint failed: [v] constraint violation: invalid time"},
    {"a guid as text", "guid", "'00000000-0000-0000-0000-000000000000'", 19,
     "constraint failed: [v] constraint violation: type mismatch: guid(blob)"},
    {"anything in a column of an unknown type", "host", "1", 19,
     "constraint failed: [v] constraint violation: type mismatch: host()"},
    {"a text in an identity column", "identity", "'abc'", 20, "datatype mismatch: datatype mismatch"},
    {"a name", "text", "abc", 1, "SQL logic error: no such column: abc"},
    {"malformed SQL", "text", "'abc", 1, "SQL logic error: unrecognized token: \"'abc);\""},
};

TEST_F(DefvalTrial, RaisesTheErrorOfTheTypeCheck)
{
    for (const refused_case &c : refused_cases) {
        SCOPED_TRACE(c.name);
        KT_bool ok = -1;
        _tov_is_valid_constant(ctx, c.abstract_type, c.literal, &ok);
        EXPECT_ERROR(ctx, KT_ERR_SQLITE(c.code), c.description);
        EXPECT_EQ(ok, -1);
        for (uint32_t n = 0; n < KT_context__count_err_stackframes(ctx); n++) {
            const char *file = nullptr;
            int32_t line = 0;
            KT_context__get_nth_err_stackframe(ctx, n, &file, &line);
            EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
            EXPECT_GT(line, 0);
        }
        EXPECT_GE(KT_context__count_err_stackframes(ctx), 3u);
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        reset();
    }
}

TEST_F(DefvalTrial, OpensOneDatabaseAndRunsFiveStatements)
{
    KT_bool ok = 0;
    _tov_is_valid_constant(ctx, "real8", "1.5", &ok);
    EXPECT_EQ(opened(), 1);
    EXPECT_EQ(sqlite.calls(kt_sqlite_entry::close), 1);
    EXPECT_EQ(sqlite.calls(kt_sqlite_entry::prepare), 5); // BEGIN, table, trigger, INSERT, ROLLBACK
    EXPECT_EQ(sqlite.calls(kt_sqlite_entry::finalize), 5);
}

struct range_case {
    const char *name;
    const char *literal;
    const char *abstract_type;
    int64_t low;
    int64_t high;
    KT_bool expected;
    int databases;
};

static const range_case range_cases[] = {
    {"above the range, without a database", "300", "uint8", 0, 255, 0, 0},
    {"below the range", "-1", "uint8", 0, 255, 0, 0},
    {"the low end", "-32768", "sint16", -32768, 32767, 1, 0},
    {"the high end", "32767", "sint16", -32768, 32767, 1, 0},
    {"below the low end", "-32769", "sint16", -32768, 32767, 0, 0},
    {"above the high end", "32768", "sint16", -32768, 32767, 0, 0},
    {"a blank and a plus are still a plain integer", " +5", "uint8", 0, 255, 1, 0},
    {"leading zeros are decimal", "0010", "uint8", 10, 10, 1, 0},
    {"the largest number", "9223372036854775807", "sint64", INT64_MIN, INT64_MAX, 1, 0},
    {"the smallest number", "-9223372036854775808", "sint64", INT64_MIN, INT64_MAX, 1, 0},
    {"a whole fraction goes to the trial", "5.0", "sint32", 0, 9, 1, 1},
    {"a text goes to the trial", "'5'", "sint32", 0, 9, 1, 1},
    {"a space after the minus goes to the trial", "- 5", "sint32", 0, 9, 1, 1},
    {"a hexadecimal number goes to the trial", "0x10", "sint32", 0, 9, 1, 1},
    {"what strtol cannot hold goes to the trial", "99999999999999999999", "loose/int", INT64_MIN, INT64_MAX, 1, 1},
};

TEST_F(DefvalTrial, ChecksTheRangeOfPlainIntegersItself)
{
    for (const range_case &c : range_cases) {
        SCOPED_TRACE(c.name);
        sqlite.fail(kt_sqlite_entry::none, 0);
        errno = ERANGE; // left over from elsewhere
        KT_bool ok = -1;
        _tov_int_default_valid(ctx, c.literal, c.abstract_type, c.low, c.high, &ok);
        EXPECT_OK(ctx);
        EXPECT_EQ(ok, c.expected);
        EXPECT_EQ(opened(), c.databases);
        reset();
    }
}

TEST_F(DefvalTrial, RefusesANumberThatBecomesARealInTheTrial)
{
    KT_bool ok = -1;
    _tov_int_default_valid(ctx, "99999999999999999999", "sint64", INT64_MIN, INT64_MAX, &ok);
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(19), "constraint failed: [v] constraint violation: type mismatch: sint64(integer)");
    EXPECT_EQ(ok, -1);
    reset();
}

// The calls of each entry that a trial of an accepted literal makes, and which of them it needs.
struct entry_case {
    const char *name;
    kt_sqlite_entry entry;
    int calls;  // in all
    int needed; // the first ones; a failure of any other is not noticed
};

static const entry_case entry_cases[] = {
    {"open", kt_sqlite_entry::open, 1, 1},
    {"prepare, of which the last is the rollback", kt_sqlite_entry::prepare, 5, 4},
    {"step, of which the last is the rollback", kt_sqlite_entry::step, 5, 4},
    {"finalize, of which the last is the rollback", kt_sqlite_entry::finalize, 5, 4},
    {"close", kt_sqlite_entry::close, 1, 0},
};

// What a failure says: the code's text and the connection's message, where there is a connection.
static std::string description_of(kt_sqlite_entry entry, int code)
{
    const std::string text = sqlite3_errstr(code);
    return entry == kt_sqlite_entry::open ? text : text + ": " + text;
}

TEST_F(DefvalTrial, LeavesNothingOpenWhicheverCallFails)
{
    KT_bool ok = -1;
    const auto try_it = [&] {
        ok = -1;
        _tov_is_valid_constant(ctx, "real8", "1.5", &ok);
    };
    const auto judge = [&](kt_sqlite_entry entry, int turn, int code) {
        SCOPED_TRACE(std::to_string(static_cast<int>(entry)) + ", call " + std::to_string(turn));
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        bool is_needed = false;
        for (const entry_case &c : entry_cases)
            is_needed = is_needed || (c.entry == entry && turn <= c.needed);
        if (is_needed) {
            EXPECT_ERROR(ctx, KT_ERR_SQLITE(code), description_of(entry, code).c_str());
            EXPECT_EQ(ok, -1);
        } else {
            EXPECT_OK(ctx);
            EXPECT_EQ(ok, entry == kt_sqlite_entry::changes ? 0 : 1);
        }
        reset();
    };
    kt_sweep_sqlite(sqlite, try_it, judge);
    for (const entry_case &c : entry_cases)
        EXPECT_EQ(sqlite.calls(c.entry), c.calls) << c.name;
}

TEST_F(DefvalTrial, AnswersNoWhenNoRowWasChanged)
{
    sqlite.fail(kt_sqlite_entry::changes, 1);
    KT_bool ok = -1;
    _tov_is_valid_constant(ctx, "real8", "1.5", &ok);
    EXPECT_OK(ctx);
    EXPECT_EQ(ok, 0);
}

TEST_F(DefvalTrial, RefusesEvenWithoutSQLitesWords)
{
    for (const kt_sqlite_entry entry : {kt_sqlite_entry::message, kt_sqlite_entry::errstr}) {
        sqlite.fail(entry, 1);
        KT_bool ok = -1;
        _tov_is_valid_constant(ctx, "sint32", "'abc'", &ok);
        EXPECT_TRUE(sqlite.fired());
        EXPECT_FAILED(ctx, KT_ERR_SQLITE(19));
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        reset();
    }
}

TEST_F(DefvalTrial, SurvivesEveryFailingAllocation)
{
    int swept = 0;
    for (kt_failing_alloc fault; fault.next(); reset(), swept++) {
        KT_bool ok = -1;
        _tov_int_default_valid(ctx, "5.0", "uint8", 0, 255, &ok);
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            EXPECT_EQ(ok, 1);
            break;
        }
        // The rollback's own memory is not missed.
        if (ok == -1) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        } else {
            EXPECT_OK(ctx);
        }
    }
    EXPECT_GE(swept, 5);
}

TEST_F(DefvalTrial, TakesNoMemoryForAPlainInteger)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    KT_bool ok = -1;
    _tov_int_default_valid(ctx, "5", "uint8", 0, 255, &ok);
    EXPECT_FALSE(fault.fired());
    EXPECT_EQ(ok, 1);
}

struct truth_case {
    const char *name;
    const char *query;
    const char *expected;
};

static const truth_case truth_cases[] = {
    {"true", "SELECT typeof('True'), ('True')", "1"},
    {"false in capitals", "SELECT typeof('FALSE'), ('FALSE')", "0"},
    {"a blob that spells it", "SELECT typeof(x'54727565'), (x'54727565')", "1"},
    {"another text", "SELECT typeof('yes'), ('yes')", nullptr},
    {"a text with a blank", "SELECT typeof('True '), ('True ')", nullptr},
    {"a number", "SELECT typeof(1), (1)", nullptr},
    {"null", "SELECT typeof(NULL), (NULL)", nullptr},
    {"no row", "SELECT 'text', 'True' WHERE 0", nullptr},
    {"a first column that is not a string", "SELECT 1, 'True'", nullptr},
};

TEST_F(DefvalTrial, ReadsTruthValues)
{
    for (const truth_case &c : truth_cases) {
        SCOPED_TRACE(c.name);
        const char *bit = "untouched";
        _tov_read_truth(ctx, c.query, &bit);
        EXPECT_OK(ctx);
        EXPECT_STREQ(bit, c.expected);
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        reset();
    }
}

TEST_F(DefvalTrial, ReportsATruthQueryThatFails)
{
    for (const kt_sqlite_entry entry : {kt_sqlite_entry::open, kt_sqlite_entry::prepare, kt_sqlite_entry::step}) {
        sqlite.fail(entry, 1);
        const char *bit = "untouched";
        _tov_read_truth(ctx, "SELECT typeof('True'), ('True')", &bit);
        EXPECT_TRUE(sqlite.fired());
        EXPECT_FAILED(ctx, KT_ERR_SQLITE(kt_counting_sqlite::failure_code));
        EXPECT_STREQ(bit, "untouched");
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        reset();
    }
}
