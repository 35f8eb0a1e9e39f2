// What becomes of host defaults, by abstract type.

#include "counting_sqlite.hpp"
#include "defval/defval_translation.hpp"
#include "failing_alloc.hpp"
#include "kt_test.hpp"
#include "tov_parse_defin.h"

#include <sqlite3.h>

class DefvalTranslation : public ContextTest {
  protected:
    void TearDown() override
    {
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        ContextTest::TearDown();
    }
    // Translates, and takes over the result; null as "(none)". Fails the test when the result of a failure is touched.
    std::string fix(const char *abstract_type, uint32_t scale, const char *host_text)
    {
        char untouched[] = "untouched";
        char *result = untouched;
        tov_fix_mssql_defval(ctx, abstract_type, scale, host_text, &result);
        if (KT_context__has_err(ctx)) {
            EXPECT_EQ(result, untouched);
            return "(failed)";
        }
        const std::string text = result ? result : "(none)";
        _kt_free(ctx, result);
        return text;
    }

    kt_counting_sqlite sqlite;
};

static const char *const every_type[] = {
    "identity", "sint64",     "sint32",  "sint16",     "uint8",  "uint1", "loose/int", "real8",
    "real4",    "loose/real", "decimal", "money8",     "money4", "date",  "datetime",  "time",
    "text",     "loose/text", "blob",    "loose/blob", "guid",   "host",
};

struct translation_case {
    const char *abstract_type;
    const char *host_text;
    const char *expected; // null for no default
    uint32_t scale = 0;
};

static const translation_case translation_cases[] = {
    {"sint32", "((0))", "0"},
    {"sint32", "((-1))", "-1"},
    {"sint32", "(( - 1))", "- 1"},
    {"sint32", "((2147483647))", "2147483647"},
    {"sint32", "((2147483648))", nullptr},
    {"sint32", "((-2147483648))", "-2147483648"},
    {"sint32", "((-2147483649))", nullptr},
    {"sint32", "((5.0))", "5.0"},
    {"sint32", "('5')", "'5'"},
    {"sint32", "((1)+(2))", nullptr},
    {"sint32", "(newid())", nullptr},
    {"sint32", "(0x10)", nullptr},
    {"sint16", "((-32768))", "-32768"},
    {"sint16", "((-32769))", nullptr},
    {"sint16", "((32767))", "32767"},
    {"sint16", "((32768))", nullptr},
    {"uint8", "((255))", "255"},
    {"uint8", "((256))", nullptr},
    {"uint8", "((-1))", nullptr},
    {"uint8", "((0))", "0"},
    {"sint64", "((9223372036854775807))", "9223372036854775807"},
    {"sint64", "((-9223372036854775808))", "-9223372036854775808"},
    {"loose/int", "((9223372036854775807))", "9223372036854775807"},
    {"loose/int", "('abc')", "'abc'"},
    {"loose/int", "((99999999999999999999))", "99999999999999999999"},

    {"uint1", "((1))", "1"},
    {"uint1", "((0))", "0"},
    {"uint1", "((2))", nullptr},
    {"uint1", "((-1))", nullptr},
    {"uint1", "('True')", "1"},
    {"uint1", "('false')", "0"},
    {"uint1", "(N'TRUE')", "1"},
    {"uint1", "('1')", "'1'"},
    {"uint1", "(x'46616C7365')", "0"},
    {"uint1", "(getdate())", nullptr},

    {"real8", "((1.5))", "1.5"},
    {"real8", "((1))", "1"},
    {"real4", "((-1e5))", "-1e5"},
    {"real4", "(pi())", nullptr},
    {"loose/real", "('abc')", "'abc'"},
    {"loose/real", "(rand())", nullptr},

    {"money8", "((2.5))", "25000"},
    {"money8", "((1.5))", "15000", 2},
    {"money8", "((922337203685477.5807))", "9223372036854775807"},
    {"money4", "((-0.0001))", "-1"},
    {"money4", "(getdate())", nullptr},
    {"decimal", "((12.5))", "1250", 2},
    {"decimal", "((7))", "7000", 3},
    {"decimal", "((1.5))", "15", 0},
    {"decimal", "((1.5))", "15", 256},
    {"decimal", "((0))", "0", 255},
    {"decimal", "(getdate())", nullptr, 2},

    {"text", "(N'a''b')", "'a''b'"},
    {"text", "('x')", "'x'"},
    {"text", "((5))", "5"},
    {"text", "((1)+(2))", nullptr},
    {"text", "(user_name())", nullptr},
    {"text", "(CURRENT_TIMESTAMP)", nullptr},
    {"text", "", nullptr},
    {"loose/text", "('x')", "'x'"},
    {"loose/text", "(f())", nullptr},

    {"guid", "(newid())", "(randomblob(16))"},
    {"guid", "(NewSequentialID())", "(randomblob(16))"},
    {"guid", "(getdate())", nullptr},
    {"guid", "([newid]())", nullptr},
    {"guid", "(newid(1))", nullptr},
    {"guid", "()", nullptr},
    {"guid", "('00000000-0000-0000-0000-000000000000')", nullptr},
    {"guid", "(x'000102030405060708090A0B0C0D0E0F')", nullptr},

    {"date", "(getutcdate())", "(date('now'))"},
    {"date", "(sysutcdatetime())", "(date('now'))"},
    {"date", "('2020-02-29')", "'2020-02-29'"},
    {"datetime", "(GetUtcDate())", "(datetime('now'))"},
    {"datetime", "(sysutcdatetime())", "(datetime('now'))"},
    {"datetime", "(getdate())", nullptr},
    {"datetime", "(sysdatetime())", nullptr},
    {"datetime", "(dateadd(day,(1),getutcdate()))", nullptr},
    {"datetime", "(CURRENT_TIMESTAMP)", nullptr},
    {"datetime", "('2020-01-02 03:04:05')", "'2020-01-02 03:04:05'"},
    {"time", "(getutcdate())", "(time('now'))"},
    {"time", "(sysutcdatetime())", "(time('now'))"},
    {"time", "('12:34:56')", "'12:34:56'"},

    {"blob", "((0x0A1B))", "x'0A1B'"},
    {"blob", "(0x0A1)", nullptr},
    {"blob", "(0xABC)", nullptr},
    {"blob", "(0xZZ12)", "x'ZZ12'"},
    {"blob", "(0X12)", nullptr},
    {"blob", "(x'0A')", nullptr},
    {"blob", "('abc')", nullptr},
    {"blob", "(0x)", nullptr},
    {"loose/blob", "(0x00)", "x'00'"},
    {"loose/blob", "((5))", nullptr},

    {"host", "('x')", "'x'"},
    {"host", "(f())", nullptr},
    {"Sint32", "('abc')", "'abc'"},
    {"decimal ", "('abc')", "'abc'"},
    {"", "((1.5))", "1.5"},
};

TEST_F(DefvalTranslation, FollowsTheTypesRule)
{
    for (const translation_case &c : translation_cases) {
        SCOPED_TRACE(std::string(c.abstract_type) + " " + c.host_text);
        EXPECT_EQ(fix(c.abstract_type, c.scale, c.host_text), c.expected ? c.expected : "(none)");
        EXPECT_OK(ctx);
        reset();
    }
}

TEST_F(DefvalTranslation, KeepsNullAsWrittenWhateverTheType)
{
    for (const char *type : every_type) {
        SCOPED_TRACE(type);
        EXPECT_EQ(fix(type, 2, "(NULL)"), "NULL");
        EXPECT_EQ(fix(type, 2, "((null))"), "null");
    }
    EXPECT_EQ(sqlite.calls(kt_sqlite_entry::open), 0);
}

TEST_F(DefvalTranslation, GivesAnIdentityNoDefault)
{
    for (const char *text : {"((1))", "('abc')", "(newid())", "(0x12)", "((1)", ""})
        EXPECT_EQ(fix("identity", 0, text), "(none)") << text;
}

TEST_F(DefvalTranslation, DropsUnbalancedParenthesesWhateverTheType)
{
    for (const char *type : every_type)
        for (const char *text : {"((1)", "(1))", "(newid()", "getutcdate())", "(0x12", "0x12)", "('2020-02-29'"})
            EXPECT_EQ(fix(type, 2, text), "(none)") << type << " " << text;
}

TEST_F(DefvalTranslation, TriesPlainIntegersWithoutADatabase)
{
    EXPECT_EQ(fix("sint32", 0, "((5))"), "5");
    EXPECT_EQ(sqlite.calls(kt_sqlite_entry::open), 0);
    EXPECT_EQ(fix("sint32", 0, "((- 5))"), "- 5");
    EXPECT_EQ(sqlite.calls(kt_sqlite_entry::open), 1);
}

struct refused_case {
    const char *abstract_type;
    const char *host_text;
    uint32_t scale;
    uint64_t code;
    const char *description; // null for any
};

static const refused_case refused_cases[] = {
    {"sint32", "('abc')", 0, KT_ERR_SQLITE(19),
     "constraint failed: [v] constraint violation: type mismatch: sint32(integer)"},
    {"sint64", "((99999999999999999999))", 0, KT_ERR_SQLITE(19),
     "constraint failed: [v] constraint violation: type mismatch: sint64(integer)"},
    {"uint8", "((256.0))", 0, KT_ERR_SQLITE(19), "constraint failed: [v] constraint violation: out of range: uint8"},
    {"uint1", "('yes')", 0, KT_ERR_SQLITE(19),
     "constraint failed: [v] constraint violation: type mismatch: uint1(integer)"},
    {"uint1", "((2.0))", 0, KT_ERR_SQLITE(19), "constraint failed: [v] constraint violation: out of range: uint1"},
    {"uint1", "('')", 0, KT_ERR_SQLITE(19), nullptr},
    {"real8", "('abc')", 0, KT_ERR_SQLITE(19),
     "constraint failed: [v] constraint violation: type mismatch: real8(real)"},
    {"date", "('2020-02-30')", 0, KT_ERR_SQLITE(19),
     "constraint failed: [v] constraint violation: invalid date (YYYY-MM-DD)"},
    {"datetime", "('')", 0, KT_ERR_SQLITE(19), "constraint failed: [v] constraint violation: invalid datetime"},
    {"time", "('24:00:00')", 0, KT_ERR_SQLITE(19), "constraint failed: [v] constraint violation: invalid time"},
    {"decimal", "((1.005))", 2, KT_ERR_NOT_FOUND, "problem with decimal string for scale=2: 1.005"},
    {"decimal", "('abc')", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"decimal", "(( - 1))", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"money8", "((1.00005))", 0, KT_ERR_NOT_FOUND, "problem with decimal string for scale=4: 1.00005"},
    {"money8", "((1e3))", 0, KT_ERR_BAD_NUMBER, nullptr},
    {"money4", "(x'00')", 0, KT_ERR_BAD_NUMBER, nullptr},
    {"money4", "((9999999999999999999999999999999999999999999999.5))", 0, KT_ERR_BAD_NUMBER, nullptr},
};

static void expect_module_frames(KT_context *ctx)
{
    const uint32_t count = KT_context__count_err_stackframes(ctx);
    EXPECT_GE(count, 2u);
    const char *file = nullptr;
    int32_t line = 0;
    KT_context__get_nth_err_stackframe(ctx, count - 1, &file, &line);
    EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
    EXPECT_GT(line, 0);
}

TEST_F(DefvalTranslation, RaisesWhatTheTypeRefuses)
{
    for (const refused_case &c : refused_cases) {
        SCOPED_TRACE(std::string(c.abstract_type) + " " + c.host_text);
        EXPECT_EQ(fix(c.abstract_type, c.scale, c.host_text), "(failed)");
        EXPECT_FAILED(ctx, c.code);
        if (c.description) {
            EXPECT_STREQ(KT_context__err_description(ctx), c.description);
        }
        expect_module_frames(ctx);
        reset();
    }
}

// What a failure says: the code's text and the connection's message, where there is a connection.
static std::string description_of(kt_sqlite_entry entry, int code)
{
    const std::string text = sqlite3_errstr(code);
    return entry == kt_sqlite_entry::open ? text : text + ": " + text;
}

// Each with the calls that it makes of an entry; the result is the ordinary one, the trial's error, or nothing.
TEST_F(DefvalTranslation, LeavesNothingOpenWhicheverCallFails)
{
    struct {
        const char *abstract_type;
        const char *host_text;
        const char *expected;
    } const cases[] = {
        {"real8", "((1.5))", "1.5"},
        {"date", "('2020-02-29')", "'2020-02-29'"},
        {"sint32", "(- 1)", "- 1"},
        {"uint1", "('True')", "1"},
    };
    int failed_calls = 0;
    for (const auto &c : cases) {
        std::string result;
        const auto translate = [&] { result = fix(c.abstract_type, 0, c.host_text); };
        const auto judge = [&](kt_sqlite_entry entry, int turn, int code) {
            SCOPED_TRACE(std::string(c.host_text) + ", entry " + std::to_string(static_cast<int>(entry)) + ", call " +
                         std::to_string(turn) + ", code " + std::to_string(code));
            EXPECT_EQ(sqlite.open_statements(), 0);
            EXPECT_EQ(sqlite.open_connections(), 0);
            if (result == "(failed)") {
                // Of a text that is not a number the trial says so, unless the failure comes first.
                const bool is_refused = KT_context__err_code(ctx) == KT_ERR_SQLITE(SQLITE_CONSTRAINT);
                EXPECT_TRUE(is_refused || (code && KT_context__err_code(ctx) == KT_ERR_SQLITE(code)));
                if (!is_refused) {
                    EXPECT_EQ(KT_context__err_description(ctx), description_of(entry, code));
                }
            } else if (result != c.expected) {
                EXPECT_EQ(entry, kt_sqlite_entry::changes);
            }
            reset();
        };
        failed_calls += kt_sweep_sqlite(sqlite, translate, judge);
    }
    EXPECT_GT(failed_calls, 4 * 6 * 10);
    RecordProperty("failed calls", failed_calls);
}

TEST_F(DefvalTranslation, KeepsTheRefusalWhenTheTruthValueCannotBeRead)
{
    struct {
        kt_sqlite_entry entry;
        int turn; // past the calls of the trial itself
    } const failures[] = {
        {kt_sqlite_entry::open, 2},        {kt_sqlite_entry::prepare, 6},     {kt_sqlite_entry::step, 6},
        {kt_sqlite_entry::column_type, 1}, {kt_sqlite_entry::column_text, 1},
    };
    for (const auto &failure : failures) {
        SCOPED_TRACE(static_cast<int>(failure.entry));
        sqlite.fail(failure.entry, failure.turn);
        EXPECT_EQ(fix("uint1", 0, "('True')"), "(failed)");
        EXPECT_TRUE(sqlite.fired());
        EXPECT_ERROR(ctx, KT_ERR_SQLITE(19),
                     "constraint failed: [v] constraint violation: type mismatch: uint1(integer)");
        reset();
    }
}

TEST_F(DefvalTranslation, ReadsATruthValueAfterATrialThatCouldNotRun)
{
    sqlite.fail(kt_sqlite_entry::open, 1);
    EXPECT_EQ(fix("uint1", 0, "('True')"), "1");
    EXPECT_TRUE(sqlite.fired());
}

TEST_F(DefvalTranslation, SurvivesEveryFailingAllocation)
{
    const translation_case cases[] = {
        {"sint32", "((5))", "5"},
        {"sint32", "(NULL)", "NULL"},
        {"sint32", "(- 5)", "- 5"},
        {"uint1", "('True')", "1"},
        {"real8", "((1.5))", "1.5"},
        {"date", "('2020-02-29')", "'2020-02-29'"},
        {"date", "(getutcdate())", "(date('now'))"},
        {"money8", "((1.5))", "15000"},
        {"decimal", "((00000000000000000000000000000000000001.5))", "150", 2},
        {"text", "(N'abc')", "'abc'"},
        {"guid", "(newid())", "(randomblob(16))"},
        {"blob", "(0x12)", "x'12'"},
    };
    for (const translation_case &c : cases) {
        SCOPED_TRACE(std::string(c.abstract_type) + " " + c.host_text);
        int swept = 0;
        for (kt_failing_alloc fault; fault.next(); reset(), swept++) {
            char *result = nullptr;
            tov_fix_mssql_defval(ctx, c.abstract_type, c.scale, c.host_text, &result);
            EXPECT_EQ(sqlite.open_statements(), 0);
            EXPECT_EQ(sqlite.open_connections(), 0);
            if (result) {
                // What only a rollback or an evaluated trial lacked is not missed.
                EXPECT_OK(ctx);
                EXPECT_STREQ(result, c.expected);
                _kt_free(ctx, result);
            } else {
                EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            }
            EXPECT_EQ(fault.leaked(), 0u);
            if (!fault.fired()) {
                EXPECT_OK(ctx);
                break;
            }
        }
        EXPECT_GE(swept, 1);
    }
}

TEST_F(DefvalTranslation, RunsOutOfMemoryAltogether)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    for (int turn = 0; fault.next(); turn++) {
        char *result = nullptr;
        tov_fix_mssql_defval(ctx, "uint1", 0, "('yes')", &result);
        EXPECT_EQ(result, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired()) {
            EXPECT_FAILED(ctx, KT_ERR_SQLITE(19));
            EXPECT_GT(turn, 3);
            reset();
            break;
        }
        EXPECT_TRUE(KT_context__has_err(ctx));
        reset();
    }
}

TEST_F(DefvalTranslation, CopiesBytesIntoAText)
{
    char *copy = nullptr;
    kt_copy_alloc_buf_len(ctx, "abcdef", 3, &copy);
    EXPECT_OK(ctx);
    EXPECT_STREQ(copy, "abc");
    _kt_free(ctx, copy);
    kt_copy_alloc_buf_len(ctx, "abcdef", 0, &copy);
    EXPECT_STREQ(copy, "");
    _kt_free(ctx, copy);
}

// What a translation gives stands in a CREATE TABLE and is applied there.
TEST_F(DefvalTranslation, GivesDefaultsThatSQLiteApplies)
{
    struct {
        const char *abstract_type;
        const char *host_text;
        uint32_t scale;
        const char *stored; // as SQLite's quote() writes it
    } const cases[] = {
        {"sint32", "(( - 1))", 0, "-1"},
        {"sint32", "((5.0))", 0, "5"},
        {"uint1", "('True')", 0, "1"},
        {"real8", "((2))", 0, "2.0"},
        {"decimal", "((-12.5))", 2, "-1250"},
        {"money8", "((1.5))", 0, "15000"},
        {"text", "(N'a''b')", 0, "'a''b'"},
        {"blob", "(0x0A1B)", 0, "X'0A1B'"},
        {"date", "('2020-02-29')", 0, "'2020-02-29'"},
        {"guid", "(NULL)", 0, "NULL"},
    };
    const KT_sqlite_functions *fns = tov__get_sqlite_functions();
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.abstract_type) + " " + c.host_text);
        KT_string *defin = nullptr;
        const std::string defval = fix(c.abstract_type, c.scale, c.host_text);
        KT_string__alloc(ctx, &defin);
        const bool is_number =
            std::string_view("sint32 uint1 decimal money8").find(c.abstract_type) != std::string::npos;
        const char *decl = is_number ? "int" : c.abstract_type == std::string_view("real8") ? "real" : "text";
        KT_string__append__format(ctx, defin, "CREATE TABLE t (a int, v %s DEFAULT %s)",
                                  c.abstract_type == std::string_view("blob") ? "blob" : decl, defval.c_str());
        sqlite3 *connection = nullptr;
        fns->open(":memory:", &connection, 6);
        for (const char *sql : {KT_string__sz(defin), "INSERT INTO t (a) VALUES (1)"}) {
            sqlite3_stmt *statement = nullptr;
            EXPECT_EQ(fns->prepare(connection, sql, &statement), 0) << fns->message(connection);
            EXPECT_EQ(fns->step(statement), 101) << fns->message(connection);
            fns->finalize(statement);
        }
        sqlite3_stmt *statement = nullptr;
        fns->prepare(connection, "SELECT quote(v) FROM t", &statement);
        EXPECT_EQ(fns->step(statement), 100);
        EXPECT_STREQ(fns->column_text(statement, 0), c.stored);
        fns->finalize(statement);
        fns->close(connection);
        KT_string__free(ctx, defin);
    }
}
