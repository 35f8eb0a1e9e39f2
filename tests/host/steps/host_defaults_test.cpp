// Defaults: kept, left out, hidden.
#include "host_test.hpp"

class HostDefaultsTest : public HostTest {
  protected:
    void import_default(const char *type, const std::string &defval, const std::string &more = "")
    {
        import_tables(a_table(7, "T", a_col(1, "C", type, R"("default":)" + defval + more)));
    }
    // The default's expression.
    std::string expr_of_default()
    {
        KT_bool has = 0;
        const char *name = nullptr;
        const char *expr = nullptr;
        tov_schema__get_colcon_defval(ctx, schema, "7", "1", &has, &name, &expr);
        return expr ? expr : "";
    }
};

static std::string constraint(const std::string &definition)
{
    return R"({"kind":"constraint","id":5,"name":"DF_C","definition":")" + definition + R"("})";
}

TEST_F(HostDefaultsTest, Kept)
{
    const struct {
        const char *type;
        std::string defval;
        const char *record;
    } cases[] = {
        {"int", constraint("((0))"), R"({"expr":"0","name":"DF_C"})"},
        {"date", constraint("('2024-12-31')"), R"({"expr":"'2024-12-31'","name":"DF_C"})"},
        {"datetime", constraint("('2024-12-31 23:59:59')"), R"({"expr":"'2024-12-31 23:59:59.000'","name":"DF_C"})"},
        {"datetime", constraint("('2024-12-31')"), R"({"expr":"'2024-12-31 00:00:00.000'","name":"DF_C"})"},
        {"time", constraint("('23:59:59')"), R"({"expr":"'23:59:59'","name":"DF_C"})"},
        {"int", constraint("(NULL)"), R"({"expr":"NULL","name":"DF_C"})"},
        {"ntext", constraint("(N'a''b')"), R"({"expr":"'a''b'","name":"DF_C"})"},
        {"money", constraint("((2.5))"), R"({"expr":"25000","name":"DF_C"})"},
        {"bit", constraint("('True')"), R"({"expr":"1","name":"DF_C"})"},
        {"datetime2", constraint("(sysutcdatetime())"), R"x({"expr":"(datetime('now'))","name":"DF_C"})x"},
        {"uniqueidentifier", constraint("(newid())"), R"x({"expr":"(randomblob(16))","name":"DF_C"})x"},
        {"varbinary", constraint("(0x0A)"), R"({"expr":"x'0A'","name":"DF_C"})"},
        {"int", R"({"kind":"bound","id":5,"name":"zero","definition":"-- AS 1\nCREATE DEFAULT zero AS 0\r\n"})",
         R"({"expr":"0"})"},
        {"varchar", R"({"kind":"bound","id":5,"name":"d","definition":"create default d as 'as';"})",
         R"({"expr":"'as'"})"},
        {"int", R"x({"definition":"((7))"})x", R"({"expr":"7"})"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.defval);
        import_default(c.type, c.defval);
        EXPECT_TRUE(has(R"("defval":)" + std::string(c.record))) << document();
        EXPECT_EQ(codes(), "");
    }
}

TEST_F(HostDefaultsTest, LeftOut)
{
    const struct {
        const char *type;
        std::string defval;
        const char *line;
    } cases[] = {
        {"datetime", constraint("(dbo.f())"),
         "default-dropped: dbo.T.C: left out: SQLite has no default that means the same; the column is NOT NULL, so "
         "inserts must give a value: "
         "(dbo.f())"},
        {"int", constraint("(NEXT VALUE FOR [dbo].[Numbers])"),
         "default-dropped: dbo.T.C: left out: SQLite has no sequences; the column is NOT NULL, so inserts must give a "
         "value: (NEXT VALUE FOR [dbo].[Numbers])"},
        {"tinyint", constraint("((256))"),
         "default-dropped: dbo.T.C: left out: SQLite has no default that means the same; the column is NOT NULL, so "
         "inserts must give a value: "
         "((256))"},
        {"uniqueidentifier", constraint("('00000000-0000-0000-0000-00000000000')"),
         "default-dropped: dbo.T.C: left out: SQLite has no default that means the same; the column is NOT NULL, so "
         "inserts must give a value: "
         "('00000000-0000-0000-0000-00000000000')"},
        {"int", R"({"kind":"bound","id":5,"definition":"CREATE DEFAULT d"})",
         "default-dropped: dbo.T.C: left out: SQLite has no default that means the same; the column is NOT NULL, so "
         "inserts must give a value: "
         "CREATE DEFAULT d"},
        {"money", constraint("((1.23456))"),
         "default-refused: dbo.T.C: left out: it is not a value of the column's type: problem with decimal string for "
         "scale=4: 1.23456; the column is NOT NULL, so inserts must give a value: ((1.23456))"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.defval);
        import_default(c.type, c.defval);
        EXPECT_EQ(lines(), c.line);
        EXPECT_FALSE(has(R"("defval")")) << document();
        EXPECT_NE(everything().find(R"("defvals":{"7":{"1":")"), std::string::npos) << everything();
    }
}

TEST_F(HostDefaultsTest, LeftOutOfAColumnThatMayBeNull)
{
    const std::string more = R"("is_nullable":true,"default":)" + constraint("(dbo.f())");
    import_tables(a_table(7, "T", a_col(1, "C", "datetime", more)));
    EXPECT_EQ(lines(), "default-dropped: dbo.T.C: left out: SQLite has no default that means the same: (dbo.f())");
}

TEST_F(HostDefaultsTest, WhatTheTypeCheckRefusesIsAFindingAndTheImportGoesOn)
{
    import_tables(a_table(7, "T",
                          a_col(1, "A", "int", R"("default":)" + constraint("('abc')")) + ',' +
                              a_col(2, "B", "date", R"("default":)" + constraint("('2020-02-30')")) + ',' +
                              a_col(3, "C", "int", R"("default":)" + constraint("((3))"))));
    EXPECT_EQ(codes(), "default-refused dbo.T.A\ndefault-refused dbo.T.B");
    EXPECT_NE(lines().find("type mismatch"), std::string::npos) << lines();
    EXPECT_NE(lines().find("invalid date"), std::string::npos) << lines();
    EXPECT_TRUE(has(R"("defval":{"expr":"3","name":"DF_C"})")) << document();
}

TEST_F(HostDefaultsTest, TheHostsTextIsKeptAsItStands)
{
    import_default("int", constraint("(( 1 ))"));
    EXPECT_NE(everything().find(R"x("defvals":{"7":{"1":"(( 1 ))"}})x"), std::string::npos) << everything();
    import_default("int", R"({"kind":"bound","definition":"CREATE DEFAULT d AS 0"})");
    EXPECT_NE(everything().find(R"("defvals":{"7":{"1":"CREATE DEFAULT d AS 0"}})"), std::string::npos) << everything();
}

TEST_F(HostDefaultsTest, AHiddenDefaultIsNotNoDefault)
{
    import_default("int", R"({"kind":"constraint","id":5,"name":"DF_C"})");
    EXPECT_EQ(lines(), "default-hidden: dbo.T.C: left out: default hidden from this login: DF_C");
    import_default("int", R"({"kind":"bound","id":5})");
    EXPECT_EQ(lines(), "default-hidden: dbo.T.C: left out: default hidden from this login");
}

TEST_F(HostDefaultsTest, AnUnpreparedColumnKeepsTheHostsTextOnly)
{
    import_tables(a_table(
        7, "T", a_col(1, "A", "int") + ',' + a_col(2, "C", "sql_variant", R"("default":)" + constraint("((0))"))));
    EXPECT_EQ(codes(), "type-unsupported dbo.T.C");
    EXPECT_NE(everything().find(R"x("defvals":{"7":{"2":"((0))"}})x"), std::string::npos) << everything();
    EXPECT_EQ(everything().find(R"("defval":)"), std::string::npos) << everything();
}

// SQLite's date functions give NULL for these, and the column's check lets NULL pass.
TEST_F(HostDefaultsTest, WhatIsNotADateIsNotADefault)
{
    const std::pair<const char *, const char *> cases[] = {
        {"date", "01/02/1900"},
        {"date", "1900-13-01"},
        {"date", "1900-01-32"},
        {"date", "aaaaaaaaaa"},
        {"time", "aaaaaaaa"},
        {"time", "25:00:00"},
        {"time", "12:60:00"},
        {"datetime", "01/02/1900 00:00:00"},
        {"datetime", "1900-01-01 24:00:61"},
        {"datetime", "1900-01-01x00:00:00"},
        {"datetime", "aaaaaaaaaa"},
    };
    for (const auto &[type, text] : cases) {
        SCOPED_TRACE(std::string(type) + ' ' + text);
        import_default(type, constraint("('" + std::string(text) + "')"));
        EXPECT_EQ(codes(), "default-refused dbo.T.C");
        EXPECT_FALSE(has(R"("defval":)")) << document();
    }
    import_default("date", constraint("('01/02/1900')"));
    EXPECT_EQ(
        lines(),
        "default-refused: dbo.T.C: left out: it is not a value of the column's type: it is not a moment of "
        "the calendar in a form that is known; the column is NOT NULL, so inserts must give a value: ('01/02/1900')");
}

// What the database itself makes has the form of what is loaded.
TEST_F(HostDefaultsTest, AreInTheFormOfTheColumnsValues)
{
    const struct {
        const char *type;
        const char *sizes; // members of the column
        const char *definition;
        const char *expr; // empty: refused
    } cases[] = {
        {"datetime", R"("scale":3)", "('1970-01-01')", "'1970-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('1970-01-01T12:30')", "'1970-01-01 12:30:00.000'"},
        {"datetime", R"("scale":3)", "('1970-01-01 12:30:45.998')", "'1970-01-01 12:30:45.997'"},
        {"datetime", R"("scale":3)", "('1970-01-01 12:30:45.999')", "'1970-01-01 12:30:46.000'"},
        {"datetime", R"("scale":3)", "('1752-12-31')", ""},
        {"datetime", R"("scale":3)", "('1970-02-29')", ""},
        {"datetime", R"("scale":3)", "('1970-01-01 23:59:59.999')", ""},
        {"datetime", R"("scale":3)", "(getutcdate())",
         "(substr(strftime('%Y-%m-%d "
         "%H:%M:%f','now'),1,22)||substr('0033377777',substr(strftime('%f','now'),-1)+1,1))"},
        {"smalldatetime", R"("scale":0)", "('1970-01-01 12:30:30')", "'1970-01-01 12:31:00'"},
        {"smalldatetime", R"("scale":0)", "('2079-06-07')", ""},
        {"smalldatetime", R"("scale":0)", "(getutcdate())", "(strftime('%Y-%m-%d %H:%M:00','now','+30 seconds'))"},
        {"datetime2", R"("scale":7)", "('0001-01-01')", "'0001-01-01 00:00:00.0000000'"},
        {"datetime2", R"("scale":1)", "('2024-12-31 12:00:00.5')", ""},
        {"datetime2", R"("scale":1)", "('2024-12-31 12:00:00.500')", "'2024-12-31 12:00:00.500'"},
        {"datetime2", R"("scale":1)", "('2024-12-31 12:00:00.123')", ""},
        {"datetime2", R"("scale":0)", "(sysutcdatetime())", "(datetime('now'))"},
        {"datetime2", R"("scale":2)", "(sysutcdatetime())", "(substr(strftime('%Y-%m-%d %H:%M:%f','now'),1,22)||'0')"},
        {"datetime2", R"("scale":3)", "(sysutcdatetime())", "(strftime('%Y-%m-%d %H:%M:%f','now'))"},
        {"datetime2", R"("scale":7)", "(sysutcdatetime())", "(strftime('%Y-%m-%d %H:%M:%f','now')||'0000')"},
        {"date", "", "(getutcdate())", "(date('now'))"},
        {"time", R"("scale":2)", "('12:30:00')", "'12:30:00.00'"},
        {"time", R"("scale":7)", "(sysutcdatetime())", "(strftime('%H:%M:%f','now')||'0000')"},
        {"time", R"("scale":1)", "(sysutcdatetime())", "(substr(strftime('%H:%M:%f','now'),1,10))"},
        {"datetimeoffset", R"("scale":0)", "('2024-12-31 12:00:00 +02:00')", "'2024-12-31 12:00:00 +02:00'"},
        {"datetimeoffset", R"("scale":7)", "('2024-12-31')", "'2024-12-31 00:00:00.0000000 +00:00'"},
        {"datetimeoffset", R"("scale":7)", "('yesterday')", ""},
        {"datetimeoffset", R"("scale":7)", "((0))", ""},
        {"char", R"("max_length":12)", "('UNKNOWN')", "'UNKNOWN     '"},
        {"char", R"("max_length":5)", "((0))", "'0    '"},
        {"char", R"("max_length":3)", "('it''s')", ""},
        {"char", R"("max_length":4)", "('it''s')", "'it''s'"},
        {"char", R"("max_length":4,"collation":"C","code_page":65001)", "('é')", "'é  '"},
        {"char", R"("max_length":4,"collation":"C","code_page":932)", "('日')", "'日  '"},
        {"nchar", R"("max_length":10)", "(N'😀x')", "'😀x  '"},
        {"varchar", R"("max_length":3)", "('abcd')", ""},
        {"varchar", R"("max_length":-1)", "('abcd')", "'abcd'"},
        {"binary", R"("max_length":4)", "(0x0A)", "x'0A000000'"},
        {"real", "", "((0.1))", "0.10000000149011612"},
        {"real", "", "((1))", "1"},
        {"real", "", "((1e-1))", "0.10000000149011612"},
        {"real", "", "((16777217))", "16777216.0"},
        {"real", "", "((1.0e39))", ""},
        {"datetimeoffset", R"("scale":7)", "('2024-12-31 12:00:00.123456789012345 +02:00')", ""},
        {"datetime", R"("scale":3)", "('1970-01-01 12:30:45.9984')", ""},
        {"smalldatetime", R"("scale":0)", "('1970-01-01 12:30:29.998')", "'1970-01-01 12:30:00'"},
        {"smalldatetime", R"("scale":0)", "('1970-01-01 12:30:29.999')", "'1970-01-01 12:31:00'"},
        {"char", R"("max_length":4,"collation":"C","code_page":932)", "('ｱｱ')", "'ｱｱ  '"},
        {"char", R"("max_length":4,"collation":"C","code_page":932)", "('ｱｱｱ日')", ""},
        {"char", R"("max_length":4,"collation":"C","code_page":936)", "('€')", "'€   '"},
        {"char", R"("max_length":5)", "((007))", "'7    '"},
        {"char", R"("max_length":5)", "((-0.50))", "'-0.50'"},
        {"char", R"("max_length":5)", "((1e0))", ""},
        {"char", R"("max_length":5,"is_nullable":true)", "(null)", "null"},
        {"varchar", R"("max_length":3)", "((1234))", ""},
        {"varchar", R"("max_length":-1)", "((1234))", "'1234'"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.type) + " " + c.definition);
        const std::string sizes = *c.sizes ? "," + std::string(c.sizes) : "";
        import_default(c.type, constraint(c.definition), sizes);
        const bool is_refused = codes().find("default-refused") != std::string::npos;
        EXPECT_EQ(is_refused, !*c.expr) << lines();
        if (*c.expr)
            EXPECT_EQ(expr_of_default(), c.expr) << document();
        else
            EXPECT_FALSE(has(R"("defval")")) << document();
    }
}
