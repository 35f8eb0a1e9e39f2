// Defaults that the schema module drops: which of them are kept, and what SQLite makes of them.
#include "host_test.hpp"

#include "sqlite_database.hpp"

#include <cstdlib>
#include <ctime>

class HostSecondDefaultTest : public HostTest {
  protected:
    void TearDown() override
    {
        set_zone(nullptr);
        HostTest::TearDown();
    }
    static void set_zone(const char *zone)
    {
        if (zone)
            setenv("TZ", zone, 1);
        else
            unsetenv("TZ");
        tzset();
    }
    // The default of a column that may be NULL; empty when it has none.
    std::string import_default(const std::string &type, const std::string &sizes, const std::string &definition,
                               const tov_host_options *options = nullptr)
    {
        const std::string more =
            R"("is_nullable":true,"default":{"kind":"constraint","id":5,"name":"DF","definition":")" + definition +
            R"("})" + (sizes.empty() ? "" : ',' + sizes);
        import_file(an_export(a_table(7, "T", a_col(1, "C", type, more))), options);
        EXPECT_OK(ctx);
        KT_bool has_default = 0;
        const char *name = nullptr;
        const char *expr = nullptr;
        tov_schema__get_colcon_defval(ctx, schema, "7", "1", &has_default, &name, &expr);
        return expr ? expr : "";
    }
    // What the default gives a row of a real table.
    std::string value_of(const std::string &expr)
    {
        sqlite_database db;
        db.run("CREATE TABLE T (A int, C DEFAULT " + expr + "); INSERT INTO T (A) VALUES (1)");
        return db.ask("SELECT quote(C) FROM T");
    }
};

TEST_F(HostSecondDefaultTest, Constants)
{
    const struct {
        const char *type;
        const char *sizes;
        const char *definition;
        const char *expr; // empty: dropped
    } cases[] = {
        {"bit", "", "(CONVERT([bit],(0)))", "0"},
        {"bit", "", "(CONVERT([bit],(7)))", "1"},
        {"int", "", "(CONVERT([bit],(7)))", "1"},
        {"int", "", "(CONVERT([int],'42'))", "42"},
        {"int", "", "(CONVERT([tinyint],(256)))", ""},
        {"bigint", "", "(CONVERT([int],(2147483648)))", ""},
        {"int", "", "(CONVERT([int],(1.5)))", ""},
        {"int", "", "(CAST(5 AS int))", "5"},
        {"int", "", "((60)*(60)*(24))", "86400"},
        {"int", "", "((1)+(2)-(7))", "-4"},
        {"int", "", "((2147483647)+(1))", ""},
        {"int", "", "(-(1))", "-1"},
        {"int", "", "((7)/(2))", ""},
        {"varchar", R"("max_length":9)", "((1)+'a')", ""},
        {"decimal", R"("precision":18,"scale":2)", "(CONVERT([decimal](18,2),(1.25)))", "125"},
        {"decimal", R"("precision":18,"scale":2)", "(CONVERT([decimal](18),(1.25)))", ""},
        {"decimal", R"("precision":18,"scale":2)", "(CONVERT([money],(1.25)))", "125"},
        {"money", "", "(CONVERT([float],(1.25)))", ""},
        {"float", "", "(CONVERT([float],(1.25)))", "1.25"},
        {"nvarchar", R"("max_length":20)", "(N'it'+N'''s')", "'it''s'"},
        {"nvarchar", R"("max_length":4)", "(N'it'+N'''s')", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](3),'abc'))", "'abc'"},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](2),'abc'))", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([char](5),'abc'))", ""},
        {"char", R"("max_length":5)", "(CONVERT([char](5),'abc'))", "'abc  '"},
        {"uniqueidentifier", "", "('6f9619ff-8b86-d011-b42d-00c04fc964ff')", "x'FF19966F868B11D0B42D00C04FC964FF'"},
        {"uniqueidentifier", "", "(CONVERT([uniqueidentifier],'{6F9619FF-8B86-D011-B42D-00C04FC964FF}'))",
         "x'FF19966F868B11D0B42D00C04FC964FF'"},
        {"uniqueidentifier", "", "('6F9619FF-8B86-D011-B42D-00C04FC964FG')", ""},
        {"uniqueidentifier", "", "('6F9619FF8B86D011B42D00C04FC964FF')", ""},
        {"varbinary", R"("max_length":4)", "(CONVERT([varbinary](4),0x0A))", "x'0A'"},
        {"binary", R"("max_length":4)", "(CONVERT([binary](2),0x0A))", ""},
        {"datetime", R"("scale":3)", "((0))", "'1900-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "((36524))", "'2000-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "((-53690))", "'1753-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "((-53691))", ""},
        {"datetime2", R"("scale":0)", "((0))", ""},
        {"datetime", R"("scale":3)", "('')", "'1900-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('19991231')", "'1999-12-31 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('19991231 12:30')", "'1999-12-31 12:30:00.000'"},
        {"datetime", R"("scale":3)", "('1/1/1900')", "'1900-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('October 20, 2015 11am')", "'2015-10-20 11:00:00.000'"},
        {"datetime", R"("scale":3)", "('Oct 20 2015 12:05:07.120 AM')", "'2015-10-20 00:05:07.120'"},
        {"datetime", R"("scale":3)", "('1-JAN-1900')", "'1900-01-01 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('31 Dec 2019 12:30PM ')", "'2019-12-31 12:30:00.000'"},
        {"datetime", R"("scale":3)", "('31 Dezember 2019')", ""},
        {"datetime", R"("scale":3)", "('30 Feb 2019')", ""},
        {"datetime", R"("scale":3)", "('Dec 31 2019 13pm')", ""},
        {"datetime", R"("scale":3)", "('Dec 31 2019 am')", ""},
        {"datetime", R"("scale":3)", "('Dec 31 2019 1:30ampm')", ""},
        {"datetime", R"("scale":3)", "('1-Jan 1900')", ""},
        {"datetime", R"("scale":3)", "('20151020 1:30PM')", "'2015-10-20 13:30:00.000'"},
        {"date", "", "('1 May, 2020')", "'2020-05-01'"},
        {"time", R"("scale":0)", "('11:30 pm')", "'23:30:00'"},
        {"datetime", R"("scale":3)", "('12/31/9999')", "'9999-12-31 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('31.12.9999')", "'9999-12-31 00:00:00.000'"},
        {"datetime", R"("scale":3)", "('1/2/1900')", ""},
        {"datetime", R"("scale":3)", "('13/13/1900')", ""},
        {"datetime", R"("scale":3)", "('19000230')", ""},
        {"datetime2", R"("scale":7)", "(CONVERT([datetime2],'0001-01-01'))", "'0001-01-01 00:00:00.0000000'"},
        {"datetime2", R"("scale":7)", "(CONVERT([datetime2](0),'0001-01-01'))", ""},
        {"date", "", "(CONVERT([date],'19000101'))", "'1900-01-01'"},
        {"int", "", "([dbo].[f]())", ""},
        {"int", "", "((1) (2))", ""},
        {"int", "", "(((1))", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.type) + ' ' + c.definition);
        EXPECT_EQ(import_default(c.type, c.sizes, c.definition), c.expr);
        EXPECT_EQ(codes().empty(), *c.expr != '\0') << codes();
    }
    const std::string deep(100000, '(');
    EXPECT_EQ(import_default("int", "", deep), "");
}

// A default is dropped where a conversion may change its value, and where it is none of the server's.
TEST_F(HostSecondDefaultTest, Conversions)
{
    const struct {
        const char *name;
        const char *type;
        const char *sizes;
        const char *definition;
        const char *expr; // empty: dropped
    } cases[] = {
        {"the least of a small type", "int", "", "(CONVERT([smallint],(-32768)))", "-32768"},
        {"more than a small type holds", "int", "", "(CONVERT([smallint],(32768)))", ""},
        {"a number for a string", "nvarchar", R"("max_length":20)", "(CONVERT([int],(3)))", ""},
        {"a string for a number", "int", "", "(CONVERT([varchar](5),'12'))", ""},
        {"a decimal that keeps its digits", "float", "", "(CONVERT([decimal](9,2),(1.25)))", "1.25"},
        {"a decimal that is rounded", "float", "", "(CONVERT([decimal](9,2),(1.255)))", ""},
        {"a number with an exponent", "float", "", "(CONVERT([float],(1e3)))", ""},
        {"letters beyond ASCII", "varchar", R"("max_length":20)", "(CONVERT([varchar](20),N'\u00E4'))", ""},
        {"a string without a length", "varchar", R"("max_length":40)", "(CONVERT([varchar],'abc'))", "'abc'"},
        {"a string without a limit", "varchar", R"("max_length":-1)", "(CONVERT([varchar](max),'abc'))", "'abc'"},
        {"a string of fixed width", "nchar", R"("max_length":10)", "(CONVERT([nchar](5),'abc'))", "'abc  '"},
        {"as many bytes as the column", "binary", R"("max_length":4)", "(CONVERT([binary](4),0x0A0B0C0D))",
         "x'0A0B0C0D'"},
        {"bytes that are cut off", "varbinary", R"("max_length":4)", "(CONVERT([varbinary](1),0x0A0B))", ""},
        {"bytes for a guid", "uniqueidentifier", "", "(CONVERT([uniqueidentifier],0x00))", ""},
        {"a type of the database", "int", "", "(CONVERT([dbo].[Mine],(5)))", ""},
        {"a style that does nothing", "int", "", "(CONVERT([int],(5),(1)))", ""},
        {"a conversion of a conversion", "varchar", R"("max_length":9)",
         "(CONVERT([varchar](9),CAST('a' AS [char](3))))", ""},
        {"a conversion without a comma", "int", "", "(CONVERT([int] (5)))", ""},
        {"a conversion without parentheses", "int", "", "(CONVERT [int])", ""},
        {"a cast without a type", "int", "", "(CAST((5)))", ""},
        {"signs", "int", "", "(-(+(-(5))))", "5"},
        {"a sign before a conversion", "int", "", "(-CONVERT([int],(5)))", ""},
        {"a sign before a string", "int", "", "(-'5')", ""},
        {"strings that are subtracted", "nvarchar", R"("max_length":20)", "(N'a'-N'b')", ""},
        {"a sum that ends early", "int", "", "((1)+)", ""},
        {"a product that ends early", "int", "", "((2)*)", ""},
        {"a word", "int", "", "([five])", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(import_default(c.type, c.sizes, c.definition), c.expr);
        EXPECT_EQ(codes().empty(), *c.expr != '\0') << codes();
    }
}

// What is not a call of the server's in the form that it keeps, or one that SQLite may compute otherwise.
TEST_F(HostSecondDefaultTest, CallsThatAreDropped)
{
    const char *const definitions[] = {
        "(dateadd(fortnight,(1),getdate()))",
        "(dateadd(day (1),getdate()))",
        "(dateadd(day,getdate()))",
        "(dateadd(day,[dbo].[f](),getdate()))",
        "(dateadd(day,'1',getdate()))",
        "(dateadd(day,(1) getdate()))",
        "(dateadd(day,(1),[dbo].[f]()))",
        "(dateadd(day,(1),(2)))",
        "(dateadd(day,(1),getdate(),(2)))",
        "(dateadd(hour,(1000001),getdate()))",
        "(dateadd(hour,(-1000001),getdate()))",
        "(dateadd(day,(-100001),getdate()))",
        "(dateadd(hour,datediff(day,(0),getdate()),(0)))",
        "(dateadd(day,datediff(day,(0),getdate()),(1)))",
        "(dateadd(day,datediff(day,(0),getdate()),'0'))",
        "(dateadd(day,datediff(fortnight,(0),getdate()),(0)))",
        "(dateadd(day,datediff(hour,(0),getdate()),(0)))",
        "(dateadd(day,datediff(day (0),getdate()),(0)))",
        "(dateadd(day,datediff(day,[dbo].[f](),getdate()),(0)))",
        "(dateadd(day,datediff(day,'0',getdate()),(0)))",
        "(dateadd(day,datediff(day,(1),getdate()),(0)))",
        "(dateadd(day,datediff(day,(0) getdate()),(0)))",
        "(dateadd(day,datediff(day,(0),[dbo].[f]()),(0)))",
        "(dateadd(day,datediff(day,(0),(0)),(0)))",
        "(dateadd(day,datediff(day,(0),getdate(),(0)),(0)))",
        "(getdate()*(2))",
        "(getdate()+'2')",
        "(getdate()+[dbo].[f]())",
        "(-getdate())",
        "(CONVERT([datetime],getdate())+(1))",
        "(getdate(1))",
        "(floor((1)))",
    };
    for (const char *definition : definitions) {
        SCOPED_TRACE(definition);
        EXPECT_EQ(import_default("datetime", R"("scale":3)", definition), "");
        EXPECT_EQ(codes(), "default-dropped dbo.T.C");
    }
    for (const char *definition :
         {"(datepart(fortnight,getdate()))", "(datepart(year getdate()))", "(datepart(year,(5)))",
          "(datepart(year,[dbo].[f]()))", "(datepart(year,getdate(),(1)))", "(year((5)))", "(year(getdate(),(1)))"}) {
        SCOPED_TRACE(definition);
        EXPECT_EQ(import_default("int", "", definition), "");
        EXPECT_EQ(codes(), "default-dropped dbo.T.C");
    }
}

// Each gives a value of the column's form; # in it stands for a digit.
TEST_F(HostSecondDefaultTest, Clocks)
{
    const struct {
        const char *type;
        const char *sizes;
        const char *definition;
        const char *form; // empty: dropped
    } cases[] = {
        {"datetime", R"("scale":3)", "(getdate())", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(CURRENT_TIMESTAMP)", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(getdate()+(1))", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(sysdatetime()+(1))", ""},
        {"datetime", R"("scale":3)", "(dateadd(day,(-30),getutcdate()))", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(dateadd(day,(1000000),getdate()))", ""},
        {"datetime", R"("scale":3)", "(dateadd(month,(1),getdate()))", ""},
        {"datetime", R"("scale":3)", "(dateadd(day,datediff(day,(0),getdate()),(0)))", "####-##-## 00:00:00.000"},
        {"datetime", R"("scale":3)", "(CONVERT([date],getdate()))", "####-##-## 00:00:00.000"},
        {"datetime", R"("scale":3)", "(datediff(day,(0),getdate()))", ""},
        {"smalldatetime", R"("scale":0)", "(getdate())", "####-##-## ##:##:00"},
        {"datetime2", R"("scale":0)", "(sysdatetime())", "####-##-## ##:##:##"},
        {"datetime2", R"("scale":1)", "(sysdatetime())", "####-##-## ##:##:##.#00"},
        {"datetime2", R"("scale":7)", "(sysdatetime())", "####-##-## ##:##:##.###0000"},
        {"datetime2", R"("scale":7)", "(CONVERT([datetime2],getdate()))", "####-##-## ##:##:##.###0000"},
        {"datetime2", R"("scale":7)", "(CONVERT([datetime2](0),getdate()))", ""},
        {"date", "", "(getdate())", "####-##-##"},
        {"date", "", "(CONVERT([date],sysutcdatetime()))", "####-##-##"},
        {"time", R"("scale":7)", "(sysdatetime())", "##:##:##.###0000"},
        {"datetimeoffset", R"("scale":7)", "(sysdatetimeoffset())", "####-##-## ##:##:##.###0000 -03:30"},
        {"datetimeoffset", R"("scale":0)", "(sysutcdatetime())", "####-##-## ##:##:## +00:00"},
        {"int", "", "(datepart(year,getdate()))", "20##"},
        {"int", "", "(year(getdate()))", "20##"},
        {"int", "", "(datepart(week,getdate()))", ""},
        {"int", "", "(getdate())", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](10),getdate(),(120)))", "####-##-##"},
        {"char", R"("max_length":8)", "(CONVERT([char](8),getdate(),(112)))", "########"},
        {"char", R"("max_length":9)", "(CONVERT([char](8),getdate(),(112)))", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](20),getdate()))", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](20),getdate(),(100)))", ""},
        {"varchar", R"("max_length":20)", "(getdate())", ""},
        {"datetime", R"("scale":3)", "(getdate()-(1))", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(dateadd(wk,(1),getdate()))", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(dateadd(hh,(-1),getdate()))", "####-##-## ##:##:##.##[037]"},
        {"datetime", R"("scale":3)", "(dateadd(n,(30),getdate()))", "####-##-## ##:##:##.##[037]"},
        {"date", "", "(newid())", ""},
        {"tinyint", "", "(month(getdate()))", "#*"},
        {"tinyint", "", "(year(getdate()))", ""},
        {"smallint", "", "(day(getdate()))", "#*"},
        {"bit", "", "(month(getdate()))", ""},
        {"float", "", "(getdate())", ""},
        {"nvarchar", R"("max_length":20)", "(CONVERT([varchar](10),getdate(),(120)))", "####-##-##"},
        {"varchar", R"("max_length":-1)", "(CONVERT([varchar](10),getdate(),(120)))", "####-##-##"},
        {"varchar", R"("max_length":9)", "(CONVERT([varchar](10),getdate(),(120)))", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](10),getdate(),'120'))", ""},
        {"varchar", R"("max_length":20)", "(CONVERT([varchar](10),getdate(),[dbo].[f]()))", ""},
        {"char", R"("max_length":12)", "(CONVERT([char](12),getdate(),(112)))", ""},
        {"nchar", R"("max_length":16)", "(CONVERT([nchar](8),getdate(),(112)))", "########"},
    };
    tov_host_options options{};
    options.clock = TOV_HOST_CLOCK_LOCAL;
    set_zone("NST3:30");
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.type) + ' ' + c.definition);
        const std::string expr = import_default(c.type, c.sizes, c.definition, &options);
        EXPECT_EQ(expr.empty(), !*c.form) << expr;
        if (!*c.form)
            continue;
        std::string form = c.form;
        for (size_t at = form.find('#'); at != std::string::npos; at = form.find('#'))
            form.replace(at, 1, "[0-9]");
        sqlite_database db;
        EXPECT_EQ(db.ask("SELECT trim(" + value_of(expr) + ",'''') GLOB '" + form + "'"), "1") << value_of(expr);
    }
}

TEST_F(HostSecondDefaultTest, LocalAndUniversalTime)
{
    const std::string type = "datetimeoffset", sizes = R"("scale":0)", definition = "(sysdatetimeoffset())";
    tov_host_options options{};
    for (const auto &[zone, offset] :
         {std::pair("IST-5:30", " +05:30'"), {"NST3:30", " -03:30'"}, {"UTC0", " +00:00'"}}) {
        set_zone(zone);
        options.clock = TOV_HOST_CLOCK_LOCAL;
        EXPECT_TRUE(value_of(import_default(type, sizes, definition, &options)).ends_with(offset)) << zone;
        options.clock = TOV_HOST_CLOCK_UTC;
        EXPECT_TRUE(value_of(import_default(type, sizes, definition, &options)).ends_with(" +00:00'")) << zone;
    }
    options.clock = TOV_HOST_CLOCK_UTC;
    EXPECT_EQ(import_default("date", "", "(getdate())", &options), "(date('now'))");
    options.clock = TOV_HOST_CLOCK_LOCAL;
    EXPECT_EQ(import_default("date", "", "(getdate())", &options), "(date('now','localtime'))");
    EXPECT_EQ(import_default("date", "", "(getutcdate())", &options), "(date('now'))");
}

TEST_F(HostSecondDefaultTest, ALocalClockThatNobodyAskedForIsAFinding)
{
    import_default("date", "", "(getdate())");
    EXPECT_EQ(lines(),
              "default-clock: dbo.T.C: kept: it is the local time of the machine where the row is written, not "
              "of the server: (getdate())");
    import_default("date", "", "(getutcdate())");
    EXPECT_EQ(codes(), "");
}

TEST_F(HostSecondDefaultTest, GuidsAsStrings)
{
    const std::string expr = import_default("nvarchar", R"("max_length":72)", "(CONVERT([nvarchar](36),newid()))");
    sqlite_database db;
    EXPECT_EQ(db.ask("SELECT length(" + expr + ")"), "36");
    EXPECT_EQ(import_default("nvarchar", R"("max_length":70)", "(newid())"), "");
    EXPECT_EQ(import_default("char", R"("max_length":36)", "(newid())"), expr);
    EXPECT_EQ(import_default("nvarchar", R"("max_length":72)", "(CONVERT([nvarchar](20),newid()))"), "");
}

TEST_F(HostSecondDefaultTest, WhatTheCallerSaysOfTheSession)
{
    const char *const items[] = {"suser_sname=app", "DB_NAME=Shop'"};
    tov_host_options options{};
    options.constants = {items, 2};
    EXPECT_EQ(import_default("nvarchar", R"("max_length":20)", "(suser_sname())", &options), "'app'");
    EXPECT_EQ(import_default("nvarchar", R"("max_length":20)", "(db_name())", &options), "'Shop'''");
    EXPECT_EQ(import_default("nvarchar", R"("max_length":20)", "(host_name())", &options), "");
    for (const char *const wrong : {"suser_sname", "getdate=now", "=x"}) {
        options.constants = {&wrong, 1};
        import_file(an_export(""), &options);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        KT_context__err_reset(ctx);
    }
}

TEST_F(HostSecondDefaultTest, ASequenceThatNumbersTheKeyBecomesTheRowid)
{
    const std::string defval =
        R"x("default":{"kind":"constraint","id":5,"name":"DF","definition":"(NEXT VALUE FOR [dbo].[S])"})x";
    import_tables(a_table(7, "T", a_col(1, "C", "int", defval) + ',' + a_col(2, "D", "int"), a_pk("PK", "C")));
    EXPECT_EQ(codes(), "identity-numbering dbo.T.C");
    EXPECT_EQ(defin("7", "1"), R"("C" integer primary key NOT NULL)");
    import_tables(a_table(7, "T", a_col(1, "C", "int", defval) + ',' + a_col(2, "D", "int"), a_pk("PK", "C D")));
    EXPECT_EQ(codes(), "default-dropped dbo.T.C");
    import_tables(a_table(7, "T", a_col(1, "C", "nvarchar", defval), a_pk("PK", "C")));
    EXPECT_EQ(codes(), "default-dropped dbo.T.C\ncomparison-approximate dbo.T.C");
    for (const char *definition :
         {"(NEXT ROW FOR [dbo].[S])", "(NEXT VALUE OF [dbo].[S])", "(THE VALUE FOR [dbo].[S])"}) {
        const std::string other =
            R"("default":{"kind":"constraint","id":5,"name":"DF","definition":")" + std::string(definition) + "\"}";
        import_tables(a_table(7, "T", a_col(1, "C", "int", other), a_pk("PK", "C")));
        EXPECT_EQ(codes(), "default-dropped dbo.T.C") << definition;
    }
}
