// What the server takes and refuses under a check, value by value, and what a table in SQLite with the check that was
// imported does. The verdicts are those of the server, from its documentation.
#include "host_test.hpp"

#include "sqlite_database.hpp"

class HostCheckTruthTest : public HostTest {
  protected:
    // Creates a table of two columns of a type, C and D, with a check.
    void create(sqlite_database &db, const std::string &type, const std::string &sizes, const std::string &check)
    {
        const std::string more = R"("is_nullable":true)" + (sizes.empty() ? "" : ',' + sizes);
        import_tables(a_table(7, "T", a_col(1, "C", type, more) + ',' + a_col(2, "D", type, more),
                              R"("checks":[{"name":"CK","definition":")" + check + R"("}])"));
        ASSERT_EQ(codes().find("check-left-out"), std::string::npos) << lines();
        std::string columns = defin("7", "1") + ',' + defin("7", "2");
        if (has(R"("check":{"CK":)")) { // it is the table's
            const char *constraint = nullptr;
            tov_schema__get_check_defin(ctx, schema, "7", "CK", &constraint);
            ASSERT_OK(ctx);
            columns += std::string(",") + constraint;
        }
        ASSERT_NE(columns.find("CHECK"), std::string::npos);
        ASSERT_EQ(db.run("CREATE TABLE T (" + columns + ")"), "");
    }
    // C, or C and D.
    static bool takes(sqlite_database &db, const std::string &values)
    {
        const bool are_two = values.find(';') != std::string::npos;
        std::string both = are_two ? values : values + ";NULL";
        both[both.find(';')] = ',';
        const std::string message = db.run("INSERT INTO T (C, D) VALUES (" + both + ")");
        EXPECT_TRUE(message.empty() || message.starts_with("CHECK constraint failed")) << message;
        return message.empty();
    }
};

static const char *const ci = R"("max_length":20,"collation":"Latin1_General_CI_AS","code_page":1252)";
static const char *const cs = R"("max_length":20,"collation":"Latin1_General_CS_AS","code_page":1252)";
static const char *const ci_fixed = R"("max_length":3,"collation":"SQL_Latin1_General_CP1_CI_AS","code_page":1252)";
static const char *const bin = R"("max_length":20,"collation":"Latin1_General_BIN2","code_page":1252)";

TEST_F(HostCheckTruthTest, Verdicts)
{
    const struct {
        const char *type;
        const char *sizes;
        const char *check;
        std::vector<const char *> taken;
        std::vector<const char *> refused;
    } cases[] = {
        // decimals are stored times 10^scale
        {"decimal",
         R"("precision":9,"scale":2)",
         "([C]>(12.5))",
         {"1251", "NULL", "999999999"},
         {"1250", "0", "-1251"}},
        {"decimal", R"("precision":9,"scale":2)", "([C]<(12.505))", {"1250", "-1"}, {"1251"}},
        {"decimal", R"("precision":9,"scale":2)", "([C]<>(12.505))", {"1250", "1251"}, {}},
        {"decimal", R"("precision":9,"scale":2)", "([C]=(12.505))", {"NULL"}, {"1250", "1251"}},
        {"decimal", R"("precision":9,"scale":2)", "([C]>=(-0.5) AND [C]<=(.5))", {"-50", "50"}, {"-51", "51"}},
        {"decimal", R"("precision":9,"scale":2)", "([C] IN ((1),(2.5)))", {"100", "250"}, {"1", "25", "101"}},
        {"decimal",
         R"("precision":9,"scale":2)",
         "(NOT [C] BETWEEN (1) AND (2))",
         {"99", "201", "NULL"},
         {"100", "200"}},
        {"decimal", R"("precision":9,"scale":2)", "([C]+(1)<=[D])", {"100;200", "NULL;1"}, {"101;200"}},
        {"decimal", R"("precision":9,"scale":2)", "([C]*(2)<=(10))", {"500"}, {"501"}},
        {"decimal", R"("precision":38,"scale":20)", "([C]<(1))", {"9223372036854775807"}, {}},
        {"decimal",
         R"("precision":38,"scale":2)",
         "([C]<(92233720368547758.07))",
         {"9223372036854775806"},
         {"9223372036854775807"}},
        {"money", "", "([C]>=(6.50) AND [C]<=(200.00))", {"65000", "2000000"}, {"64999", "2000001", "6", "200"}},
        {"money", "", "(abs([C])<=(1.5))", {"15000", "-15000", "NULL"}, {"15001", "-15001", "-9223372036854775807"}},
        {"int", "", "(abs([C]-[D])<=(3))", {"1;4", "4;1", "NULL;1"}, {"1;5", "5;1"}},
        {"money", "", "([C]>=[D])", {"1;1", "2;1"}, {"1;2"}},
        {"smallmoney", "", "([C]<(214748))", {"2147479999"}, {"2147480000"}},
        // dates and times, in the form of their type
        {"date", "", "([C]>='1930-01-01')", {"'1930-01-01'", "'9999-12-31'"}, {"'1929-12-31'", "'0001-01-01'"}},
        {"date", "", "([C]<='20201231' OR [C] IS NULL)", {"'2020-12-31'", "NULL"}, {"'2021-01-01'"}},
        {"datetime", R"("scale":3)", "([C]>='1/1/1900')", {"'1900-01-01 00:00:00.000'"}, {"'1899-12-31 23:59:59.997'"}},
        {"datetime",
         R"("scale":3)",
         "([C]<='20201231 23:59:59.998')",
         {"'2020-12-31 23:59:59.997'"},
         {"'2021-01-01 00:00:00.000'"}},
        {"datetime",
         R"("scale":3)",
         "([D]>=[C] OR [D] IS NULL)",
         {"'2020-01-01 00:00:00.000';NULL", "'2020-01-01 00:00:00.000';'2020-01-01 00:00:00.003'"},
         {"'2020-01-01 00:00:00.003';'2020-01-01 00:00:00.000'"}},
        {"smalldatetime",
         R"("scale":0)",
         "([C]<'2013-07-13 12:30:29.998')",
         {"'2013-07-13 12:29:00'"},
         {"'2013-07-13 12:30:00'"}},
        {"datetime2",
         R"("scale":7)",
         "([C]<='2020-01-01 23:59:59.9990000')",
         {"'2020-01-01 23:59:59.999'", "'2020-01-01 23:59:59.9990000'"},
         {"'2020-01-01 23:59:59.9990001'"}},
        {"datetime2",
         R"("scale":7)",
         "([C]=[D])",
         {"'2020-01-01 23:59:59.999';'2020-01-01 23:59:59.9990000'"},
         {"'2020-01-01 23:59:59.999';'2020-01-01 23:59:59.9990001'"}},
        {"datetime2", R"("scale":0)", "([C]<>'2020-01-01')", {"'2020-01-01 00:00:01'"}, {"'2020-01-01 00:00:00'"}},
        {"time",
         R"("scale":7)",
         "([C]>='08:00' AND [C]<'17:30:00.5')",
         {"'08:00:00.0000000'", "'17:30:00.4999999'"},
         {"'07:59:59.999'", "'17:30:00.5000000'"}},
        {"date",
         "",
         "(year([C])>=(2000) AND month([C])=(2) AND day([C])<=(9))",
         {"'2000-02-09'", "NULL"},
         {"'1999-02-09'", "'2000-03-09'", "'2000-02-10'"}},
        // guids
        {"uniqueidentifier",
         "",
         "([C]<>'6F9619FF-8B86-D011-B42D-00C04FC964FF')",
         {"x'6F9619FF8B86D011B42D00C04FC964FF'", "NULL"},
         {"x'FF19966F868B11D0B42D00C04FC964FF'"}},
        // texts: blanks at the end do not count, and case where the collation ignores it
        {"varchar", ci, "([C]<>'')", {"'a'", "NULL"}, {"''", "'   '"}},
        {"varchar", ci, "([C]='ab' OR [C]='c ')", {"'AB'", "'ab  '", "'C'", "NULL"}, {"'a'", "' ab'", "''"}},
        {"varchar", ci, "([C] NOT IN ('a','b'))", {"'c'", "' a'"}, {"'A'", "'b  '"}},
        {"varchar", cs, "([C]='Ab')", {"'Ab'", "'Ab '"}, {"'ab'", "'AB'"}},
        {"varchar", cs, "(upper([C])='AB')", {"'Ab'", "'ab '", "'AB'"}, {"'abc'", "''"}},
        {"varchar", cs, "(lower([C])<>'ab')", {"'b'"}, {"'Ab'", "'AB  '"}},
        {"varchar", bin, "([C]='a')", {"'a'", "'a '"}, {"'A'"}},
        {"char", ci_fixed, "([C]='a' OR [C]='xyz')", {"'A  '", "'XyZ'"}, {"'ab '", "'xy '"}},
        {"char", ci_fixed, "(upper([C])='A')", {"'a  '", "'A  '"}, {"'aa '"}},
        {"nvarchar", ci, "([C]=N'x')", {"'X'", "'x   '"}, {"'y'"}},
        {"varchar", ci, "(isnull([C],'')<>'')", {"'a'"}, {"NULL", "' '"}},
        {"varchar", ci, "(ltrim(rtrim([C]))<>'')", {"' a '", "NULL"}, {"'  '"}},
        // lengths
        {"varchar", ci, "(len([C])>(2))", {"'abc'", "' ab'", "NULL"}, {"'ab'", "'ab  '", "''"}},
        {"nvarchar",
         ci,
         "(len([C])=(2))",
         {"'ab'", "'ab '", "'äö'", "char(128512)"},
         {"'a'", "'abc'", "'a'||char(128512)"}},
        {"nvarchar",
         ci,
         "(len([C])>=(3))",
         {"'abc'", "'a'||char(128512)", "char(128512)||char(128512)"},
         {"char(128512)", "char(128512)||' '", "'ab'"}},
        {"nvarchar", ci, "(len([C])<(3))", {"'ab'", "char(128512)", "''", "NULL"}, {"'a'||char(128512)", "'abc'"}},
        {"nvarchar", ci, "(len([C])<=(2))", {"'ab'", "char(128512)", "''"}, {"'a'||char(128512)", "'abc'"}},
        {"nvarchar", ci, "(len([C])>(0))", {"'a'", "char(128512)", "NULL"}, {"''", "'  '"}},
        {"nvarchar", ci, "(NOT len([C])<>(1))", {"'a'", "'a '", "NULL"}, {"''", "'ab'", "char(128512)"}},
        {"varchar", ci, "(datalength([C])>(2))", {"'ab '", "'äöü'"}, {"'ab'"}},
        {"nvarchar", ci, "(datalength([C])>=(4))", {"'a '", "char(128512)"}, {"'a'", "''"}},
        {"varbinary", R"("max_length":20)", "(datalength([C])=(2))", {"x'0001'", "NULL"}, {"x''", "x'000000'"}},
        // JSON: objects and arrays
        {"nvarchar",
         ci,
         "(isjson([C])=(1))",
         {"'{}'", "' [1]'", "NULL", "'{\"a\":1}'"},
         {"'1'", "'true'", "'{'", "''", "'[1'"}},
        {"nvarchar", ci, "(isjson([C])>(0) OR [C]='none')", {"'[]'", "'NONE '"}, {"'null'", "'x'"}},
        // LIKE: blanks at the end do not count in char and varchar, and count in nchar and nvarchar
        {"varchar", ci, "([C] like '[0-9][0-9]')", {"'12'", "'12  '"}, {"'1'", "'123'", "' 12'", "'a1'", "''"}},
        {"nvarchar", ci, "([C] like '[0-9][0-9]')", {"'12'", "NULL"}, {"'12  '", "'1'"}},
        {"varchar", ci, "([C] like '[AB][^0-9]%')", {"'ax'", "'B-1'"}, {"'cx'", "'a1'", "'a'"}},
        {"varchar", cs, "([C] like '[AB]%')", {"'Ax'"}, {"'ax'"}},
        {"varchar", cs, "([C] like 'a_c')", {"'abc'", "'a c '"}, {"'Abc'", "'ac'", "'abcd'"}},
        {"varchar", ci, "(NOT [C] like '%[^0-9]%')", {"'123'", "''", "NULL"}, {"'12a'", "'1 2'", "'1 '"}},
        {"varchar", ci, "([C] like '___')", {"'abc'", "'a  '", "'abc   '", "'   '"}, {"'ab'", "'abcd'"}},
        {"varchar", ci, "([C] like 'a ')", {"'a '", "'A  '"}, {"'a'", "'ab'"}},
        {"varchar", ci, "([C] like '')", {"''", "'  '"}, {"'a'"}},
        {"varchar", ci, "([C] like '%.com')", {"'X.COM'", "'.com '"}, {"'.comx'"}},
        {"varchar", ci, "([C] like '%[%]')", {"'5%'", "'% '"}, {"'5'"}},
        {"varchar", ci, "([C] like '[[]%')", {"'[a'"}, {"'a'"}},
        {"varchar", ci, "([C] like '[*?]%')", {"'*'", "'?x'"}, {"'x'"}},
        {"varchar", ci, "([C] like '[-+][0-9]%')", {"'-1'", "'+12'"}, {"',1'", "'1'"}},
        {"varchar", ci, "([C] like '[^-]%')", {"'a'", "'^'"}, {"'-a'", "''"}},
        {"varchar", ci, "([C] like '[a^]%')", {"'^'", "'A'"}, {"'b'"}},
        {"varchar", ci, "([C] like '[0-9.-]')", {"'5'", "'.'", "'-'"}, {"'/'", "'a'"}},
        {"varchar", cs, "([C] like 'a*b?c[%]')", {"'a*b?c%'"}, {"'axbxc%'", "'a*b?cx'"}},
        {"varchar", ci, "([C] like '10!%%' ESCAPE '!')", {"'10%'", "'10% off'"}, {"'100'"}},
        {"nvarchar", ci, "([C] like '%_@_%')", {"'a@b'", "char(128512)||'@'||char(128512)"}, {"'@b'", "'a@'"}},
        {"varchar", bin, "([C] like '[a-c]x')", {"'ax'", "'cx '"}, {"'Ax'", "'dx'"}},
        {"varchar", cs, "(upper([C]) like 'A[12]%')", {"'a1'", "'A2x'"}, {"'b1'", "'a3'"}},
        // NULL: a check passes
        {"int", "", "([C]>(0) AND [D]>(0))", {"NULL;1", "1;NULL", "1;1"}, {"NULL;0", "0;NULL"}},
        {"int", "", "(isnull([C],(0))>(0))", {"1"}, {"NULL", "0"}},
        {"bit", "", "(isnull([C],(1))=(1))", {"1", "NULL"}, {"0"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.type) + ' ' + c.check);
        sqlite_database db;
        create(db, c.type, c.sizes, c.check);
        for (const char *values : c.taken)
            EXPECT_TRUE(takes(db, values)) << values << ": the server takes it; " << document();
        for (const char *values : c.refused)
            EXPECT_FALSE(takes(db, values)) << values << ": the server refuses it; " << document();
    }
}

TEST_F(HostCheckTruthTest, AFilterIsTranslatedToo)
{
    const std::string cols = a_col(1, "C", "varchar", ci) + ',' + a_col(2, "D", "datetime", R"("scale":3)");
    import_tables(a_table(7, "T", cols,
                          R"x("indexes":[{"name":"I","columns":[{"name":"D"}],)x"
                          R"x("filter":"([C]<>'' AND [D]>='20200101')"}])x"));
    EXPECT_EQ(codes(), "");
    EXPECT_TRUE(has(R"x("where":"(rtrim([C]) COLLATE NOCASE<>'' AND [D]>='2020-01-01 00:00:00.000')")x")) << document();
}
