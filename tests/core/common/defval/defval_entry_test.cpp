// The translation by a schema's column, and by a host type code.

#include "failing_alloc.hpp"
#include "schema_test.hpp"

class FixColDefval : public SchemaTest {
  protected:
    void SetUp() override
    {
        SchemaTest::SetUp();
        tov_schema__add_tbl(ctx, schema, "T", "Things", 1);
        tov_schema__add_col(ctx, schema, "T", "C", "Col", 1, 0, 0);
        ASSERT_OK(ctx);
    }
    std::string fix(const char *host_text)
    {
        char *result = nullptr;
        tov_schema__fix_mssql_defval(ctx, schema, "t", "c", host_text, &result);
        EXPECT_OK(ctx);
        const std::string text = result ? result : "(none)";
        _kt_free(ctx, result);
        return text;
    }
};

TEST_F(FixColDefval, ReadsTheScaleOfADecimal)
{
    tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 10, 2);
    EXPECT_EQ(fix("((12.5))"), "1250");
    tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 10, 0);
    EXPECT_EQ(fix("((1.5))"), "15");
    tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 10, 255);
    EXPECT_EQ(fix("((0))"), "0");
}

TEST_F(FixColDefval, GivesMoneyFourDecimals)
{
    for (const char *type : {"money8", "money4"}) {
        tov_schema__set_col_type_simple(ctx, schema, "t", "c", type);
        EXPECT_EQ(fix("((2.5))"), "25000") << type;
    }
}

TEST_F(FixColDefval, FollowsTheRecordedType)
{
    tov_schema__set_col_type_identity(ctx, schema, "t", "c", nullptr);
    EXPECT_EQ(fix("((1))"), "(none)");
    EXPECT_EQ(fix("(NULL)"), "NULL");
    tov_schema__set_col_type_blob(ctx, schema, "t", "c", 0, 10);
    EXPECT_EQ(fix("(0x0A1B)"), "x'0A1B'");
    tov_schema__set_col_type_datetime(ctx, schema, "t", "c", 7, "datetime");
    EXPECT_EQ(fix("(getutcdate())"), "(datetime('now'))");
    tov_schema__set_col_type_text(ctx, schema, "t", "c", nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, 1, 10);
    EXPECT_EQ(fix("(N'abc')"), "'abc'");
    tov_schema__set_col_type_unsuported(ctx, schema, "t", "c", "xml");
    EXPECT_EQ(fix("(N'abc')"), "'abc'");
}

TEST_F(FixColDefval, LooksAtTheLow32BitsOfAScale)
{
    load(R"({"tbls":{"t":{"cols":{"c":{"name":"C","type":{"name":"decimal","scale":4294967298}}}}}})");
    EXPECT_EQ(fix("((12.5))"), "1250");
}

struct failure_case {
    const char *name;
    const char *json;
    const char *tbl_id;
    const char *host_text;
    uint64_t code;
};

static const failure_case failure_cases[] = {
    {"no such table", R"({"tbls":{}})", "t", "(1)", KT_ERR_NOT_FOUND},
    {"no such column", R"({"tbls":{"t":{"cols":{}}}})", "t", "(1)", KT_ERR_NOT_FOUND},
    {"a column without a type", R"({"tbls":{"t":{"cols":{"c":{}}}}})", "t", "(1)", KT_ERR_KEY_NOT_FOUND},
    {"a type that is not a record", R"({"tbls":{"t":{"cols":{"c":{"type":1}}}}})", "t", "(1)", KT_ERR_WRONG_TYPE},
    {"a type without a name", R"({"tbls":{"t":{"cols":{"c":{"type":{}}}}}})", "t", "(1)", KT_ERR_KEY_NOT_FOUND},
    {"a type whose name is a number", R"({"tbls":{"t":{"cols":{"c":{"type":{"name":1}}}}}})", "t", "(1)",
     KT_ERR_WRONG_TYPE},
    {"a decimal without a scale", R"({"tbls":{"t":{"cols":{"c":{"type":{"name":"decimal"}}}}}})", "t", "(NULL)",
     KT_ERR_KEY_NOT_FOUND},
    {"a literal that the type refuses", R"({"tbls":{"t":{"cols":{"c":{"type":{"name":"sint32"}}}}}})", "t", "('abc')",
     KT_ERR_SQLITE(19)},
};

TEST_F(FixColDefval, ReportsWhatIsMissing)
{
    for (const failure_case &c : failure_cases) {
        SCOPED_TRACE(c.name);
        load(c.json);
        char untouched[] = "untouched";
        char *result = untouched;
        tov_schema__fix_mssql_defval(ctx, schema, c.tbl_id, "c", c.host_text, &result);
        EXPECT_FAILED(ctx, c.code);
        EXPECT_EQ(result, untouched);
        const uint32_t count = KT_context__count_err_stackframes(ctx);
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, count - 1, &file, &line);
        EXPECT_GE(count, 2u);
        EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
        reset();
    }
}

TEST_F(FixColDefval, ChangesNothingInTheSchema)
{
    tov_schema__set_col_type_simple(ctx, schema, "t", "c", "sint32");
    const std::string before = everything();
    EXPECT_EQ(fix("((- 5))"), "- 5");
    EXPECT_EQ(everything(), before);
}

TEST_F(FixColDefval, SurvivesEveryFailingAllocation)
{
    tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 10, 2);
    for (kt_failing_alloc fault; fault.next(); reset()) {
        char *result = nullptr;
        tov_schema__fix_mssql_defval(ctx, schema, "T", "C", "((12.5))", &result);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            EXPECT_STREQ(result, "1250");
            _kt_free(ctx, result);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(result, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}

struct legit_case {
    int32_t type_code;
    const char *legit;
    const char *not_legit;
    uint32_t scale = 0;
};

static const legit_case legit_cases[] = {
    {36, "(newid())", "('00000000-0000-0000-0000-000000000000')"},
    {40, "('2020-02-29')", "('2020-02-30')"},
    {41, "('12:34:56')", "('24:00:00')"},
    {42, "(sysutcdatetime())", "(sysdatetime())"},
    {58, "(getutcdate())", "(getdate())"},
    {61, "('2020-02-29 12:34:56')", "('12:34:56')"},
    {48, "((255))", "((256))"},
    {52, "((-32768))", "((-32769))"},
    {56, "((2147483647))", "((2147483648))"},
    {59, "((1.5))", "('abc')"},
    {60, "((1.0005))", "((1.00005))"},
    {62, "((1.5))", "(pi())"},
    {104, "('True')", "('yes')"},
    {106, "((12.5))", "((12.555))", 2},
    {108, "((12.5))", "('abc')", 1},
    {122, "((1.5))", "((1e3))"},
    {127, "((9223372036854775807))", "((9223372036854775808))"},
    {165, "(0x12)", "('abc')"},
    {173, "(0x12)", "((5))"},
    {240, "(0x12)", "(0x123)"},
    {167, "('abc')", "(user_name())"},
    {175, "('abc')", "(('a')+('b'))"},
    {231, "(N'abc')", "(n'abc')"},
    {239, "(N'abc')", "((1)"},
};

TEST(IsDefvalLegit, SaysWhetherADefaultIsCarriedOver)
{
    for (const legit_case &c : legit_cases) {
        SCOPED_TRACE(c.type_code);
        EXPECT_EQ(tov_is_defval_legit(c.legit, c.type_code, c.scale), 1);
        EXPECT_EQ(tov_is_defval_legit(c.not_legit, c.type_code, c.scale), 0);
        EXPECT_EQ(tov_is_defval_legit("(NULL)", c.type_code, c.scale), 1);
    }
}

TEST(IsDefvalLegit, KnowsNoOtherType)
{
    for (int32_t code = -1; code <= 300; code++) {
        bool is_known = false;
        for (const legit_case &c : legit_cases)
            is_known = is_known || c.type_code == code;
        EXPECT_EQ(tov_is_defval_legit("(NULL)", code, 0), is_known) << code;
    }
}

TEST(IsDefvalLegit, SaysNoWhenMemoryIsShort)
{
    for (kt_failing_alloc fault; fault.next();) {
        const KT_bool legit = tov_is_defval_legit("((5))", 56, 0);
        EXPECT_EQ(fault.leaked(), 0u);
        EXPECT_EQ(legit, !fault.fired());
        if (!fault.fired())
            break;
    }
}
