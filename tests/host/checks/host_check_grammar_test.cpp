// Which checks mean the same in SQLite.
#include "checks/host_check_grammar.hpp"

#include <gtest/gtest.h>

// A table with a column of every kind; X is left out of the table.
class HostCheckGrammarTest : public ::testing::Test {
  protected:
    HostCheckGrammarTest()
    {
        add("I", "int");
        add("J", "smallint");
        add("Tiny", "tinyint");
        add("Tiny2", "tinyint");
        add("Big", "bigint");
        add("Bit", "bit");
        add("F", "float");
        add("R", "real");
        add_decimal("D", 9, 2);
        add_decimal("D4", 9, 4);
        add_decimal("Wide", 38, 2);
        add("M", "money");
        add("Sm", "smallmoney");
        add("V", "varchar").max_length = 20;
        add("C", "char").max_length = 2;
        add("N", "nchar").max_length = 4;
        add("W", "nvarchar").max_length = 40;
        add("Cs", "char").comparison_style = 196608;
        add("Ai", "char").comparison_style = 196611;
        add("VCs", "varchar").comparison_style = 196608;
        add("Bin2", "varchar").collation = "Latin1_General_BIN2";
        add("Tr", "varchar").collation = "Turkish_CI_AS";
        add("Tr2", "varchar").collation = "SQL_Latin1_General_CP1254_CI_AS";
        add("Sc", "nvarchar").collation = "Latin1_General_100_CI_AS_SC";
        add("Utf", "varchar").code_page = 65001;
        add("Unknown", "varchar").comparison_style = -1;
        add("Jp", "varchar").code_page = 932;
        add("VAi", "varchar").comparison_style = 196611;
        add("Day", "date");
        add("Day2", "date");
        add("At", "datetime").scale = 3;
        add("At2", "datetime").scale = 3;
        add("Small", "smalldatetime");
        add("Since", "datetime2");
        add("Till", "datetime2").scale = 7;
        add("Clock", "time").scale = 7;
        add("Off", "datetimeoffset").scale = 7;
        add("G", "uniqueidentifier");
        add("G2", "uniqueidentifier");
        add("Bin", "varbinary");
        add("X", "int").prepared = false;
    }
    host_column &add(const char *name, const char *type)
    {
        host_column &col = table.cols.emplace_back();
        col.name = name;
        col.system_type = type;
        col.max_length = 2;
        col.comparison_style = 196609;
        return col;
    }

    void add_decimal(const char *name, uint8_t precision, uint8_t scale)
    {
        host_column &col = add(name, "decimal");
        col.precision = precision;
        col.scale = scale;
    }

    host_table table;
};

TEST_F(HostCheckGrammarTest, Kept)
{
    const char *const cases[] = {
        // whole numbers
        "([I]>(0))",
        "([I]>=(-5) AND [I]<=(+5))",
        "([i]<>(0))",
        "([I]!=[J])",
        "([Big]<(123456789012345))",
        "([Bit]=(1) OR [Bit]=(0))",
        "([I] BETWEEN (1) AND (5))",
        "([I] NOT BETWEEN (1) AND (5))",
        "([I] IN ((1),(2),(3)))",
        "([I] not in (1,2))",
        "([I]>(0.5))",
        "((0)<[I])",
        "([I]<(2147483647))",
        "((1)=(1))",
        // arithmetic
        "([I]+[J]*(2)-(1)<=(100))",
        "([I]/(2)=(1))",
        "([I]%(2)=(0))",
        "([Tiny]-(1)<[Tiny2])",
        "(-[I]<(5))",
        "(abs([I])<(5))",
        // reals
        "([F]>=(0) AND [F]<=(1))",
        "([F]<(0.1))",
        "([F]>[I])",
        "([R]>=(0) AND [R]<=(1))",
        "([R]<(0.25))",
        // scaled integers
        "([D]>(0))",
        "([M]>=(0.00))",
        "((0)<=[M])",
        "([M]<=(-0))",
        // NULL
        "([V] IS NULL)",
        "([Bin] IS NOT NULL OR [G] IS NULL)",
        "(NOT [I] IS NULL)",
        "(not not [I]=(1))",
        "(NOT ([I]=(1) AND [J]=(2)))",
        // CASE
        "((case when [V] IS NULL then (0) else (1) end+case when [W] IS NULL then (0) else (1) end)=(1))",
        "(CASE WHEN [Bit]=(1) THEN [I] END>(0))",
        // dates and guids among themselves
        "([Day]<=[Day2])",
        "([G]<>[G2])",
        // texts of fixed width
        "([C]='AB' OR [C]='CD')",
        "([C] IN ('AB','c'''))",
        "([N]<>'12')",
        "([Cs]='A')",
        "([Cs]='')",
        "([Ai]='12')",
        // LIKE
        "([V] like 'A%')",
        "([V] NOT LIKE 'a_c%')",
        "([W] like '%.com')",
        "([VCs] like '%@%')",
        "([VAi] like '12%')",
    };
    for (const char *definition : cases) {
        const host_check_reading reading = host_read_check(table, definition);
        EXPECT_EQ(reading.refusal, nullptr) << definition << ": " << reading.refusal << " " << reading.detail;
        EXPECT_EQ(reading.condition, definition) << "as it is written";
    }
}

TEST_F(HostCheckGrammarTest, WrittenDifferently)
{
    const struct {
        const char *definition;
        const char *condition;
    } cases[] = {
        // decimals
        {"([M]>(1))", "([M]>(10000))"},
        {"([M]>=(6.50) AND [M]<=(200.00))", "([M]>=(65000) AND [M]<=(2000000))"},
        {"([D]<=(-0.5))", "([D]<=(-50))"},
        {"([D]<(0.125))", "([D]<(12.5))"},
        {"([D] BETWEEN (1) AND (99.99))", "([D] BETWEEN (100) AND (9999))"},
        {"((0.5)<[D4])", "((5000)<[D4])"},
        {"([D]<[D4])", "(([D])*100<[D4])"},
        {"([D]>=[I])", "([D]>=([I])*100)"},
        {"([D]+[D]<=[M])", "(([D]+[D])*100<=[M])"},
        {"([D]+(1)<=(2))", "([D]+(100)<=(200))"},
        {"([D]*[J]<=(2))", "([D]*[J]<=(200))"},
        {"([J]*[D]<=(2))", "([J]*[D]<=(200))"},
        {"([M]+[M]<=(2))", "([M]+[M]<=(20000))"},
        {"([M]*(3)<=(2))", "([M]*(3)<=(20000))"},
        {"((3)*[M]<=(2))", "((3)*[M]<=(20000))"},
        {"((1)+[D]<=(2))", "((100)+[D]<=(200))"},
        {"([D]*[D4]<=(2))", "([D]*[D4]<=(2000000))"},
        {"(-[M]<(2))", "(-[M]<(20000))"},
        {"(abs([M])<(2))", "(max([M],-([M]))<(20000))"},
        {"(ABS([I]-[J])<(5))", "(max([I]-[J],-([I]-[J]))<(5))"},
        {"([Wide]<(99999999999999999999))", "([Wide]<(9999999999999999999900))"},
        {"([D]<(0.0000000000000001))", "([D]<(0.00000000000001))"},
        // dates
        {"([Till] BETWEEN '2020-01-02' AND [Since])",
         "(substr([Till]||'0000',1,27) BETWEEN '2020-01-02 00:00:00.0000000' AND [Since]||'.0000000')"},
        {"([Day]>'20200131')", "([Day]>'2020-01-31')"},
        {"([At]>='1753-01-01')", "([At]>='1753-01-01 00:00:00.000')"},
        {"([At] BETWEEN '1/1/2000' AND '20991231')",
         "([At] BETWEEN '2000-01-01 00:00:00.000' AND '2099-12-31 00:00:00.000')"},
        {"('20200102'<[Small])", "('2020-01-02 00:00:00'<[Small])"},
        {"([Clock]>'12:00')", "(substr([Clock]||'0000',1,16)>'12:00:00.0000000')"},
        {"([Till]<'2020-02-01')", "(substr([Till]||'0000',1,27)<'2020-02-01 00:00:00.0000000')"},
        {"([Since]<[Till])", "([Since]||'.0000000'<substr([Till]||'0000',1,27))"},
        {"([Small]<=[At])", "([Small]||'.000'<=[At])"},
        {"([Day]<=[Since])", "([Day]||' 00:00:00'<=[Since])"},
        {"(year([At])>=(2000) AND month([Day])<>(12))",
         "(CAST(substr([At],1,4) AS INTEGER)>=(2000) AND CAST(substr([Day],6,2) AS INTEGER)<>(12))"},
        // guids
        {"([G]<>'00000000-0000-0000-0000-000000000001')", "([G]<>x'00000000000000000000000000000001')"},
        // texts
        {"([V]<>'')", "(rtrim([V]) COLLATE NOCASE<>'')"},
        {"([V]=N'x ')", "(rtrim([V]) COLLATE NOCASE='x')"},
        {"([C]='A' OR [C]='AB')", "(rtrim([C]) COLLATE NOCASE='A' OR [C]='AB')"},
        {"([V] IN ('a','b'))", "(rtrim([V]) COLLATE NOCASE IN ('a','b'))"},
        {"([V]NOT IN ('a','b'))", "(rtrim([V]) COLLATE NOCASE NOT IN ('a','b'))"},
        {"([VCs]='Ab')", "(rtrim([VCs])='Ab')"},
        {"(upper([V])='A' OR [V] IS NULL)", "(rtrim([V]) COLLATE NOCASE='A' OR [V] IS NULL)"},
        {"(lower([VCs])='a')", "(rtrim([VCs]) COLLATE NOCASE='a')"},
        {"(ltrim(rtrim([V]))<>'')", "(rtrim(ltrim(rtrim([V]))) COLLATE NOCASE<>'')"},
        {"(isnull([V],'')<>'')", "(rtrim(ifnull([V],'')) COLLATE NOCASE<>'')"},
        {"(coalesce([I],(0))>=(0))", "(ifnull([I],(0))>=(0))"},
        {"(isnull([Bit],(1))=(1))", "(ifnull([Bit],(1))=(1))"},
        {"(isnull([I],[J])>=(0))", "(ifnull([I],[J])>=(0))"},
        {"(trim([V])<>'')", "(rtrim(trim([V])) COLLATE NOCASE<>'')"},
        {"(day([Day])<(15))", "(CAST(substr([Day],9,2) AS INTEGER)<(15))"},
        {"([Bin2]='a')", "(rtrim([Bin2])='a')"},
        // lengths
        {"(len([V])>=(3))", "(length(rtrim([V]))>=(3))"},
        {"(len([Sc])>=(3))", "(length(rtrim([Sc]))>=(3))"},
        {"(datalength([V])>(3))", "(length([V])>(3))"},
        {"(datalength([Utf])>(3))", "(length(CAST([Utf] AS BLOB))>(3))"},
        {"(datalength([Bin])>(3))", "(length([Bin])>(3))"},
        {"(isjson([W])>(0))",
         "((CASE WHEN [W] IS NOT NULL THEN json_valid([W]) AND ltrim([W],char(9,10,13,32)) GLOB '[[{]*' END)>(0))"},
        // LIKE
        {"([V] LIKE '[0-9]%')", "([V] GLOB '[0-9]*')"},
        {"([V] NOT like '%[^0-9]%')", "([V] NOT GLOB '*[^0-9]*')"},
        {"([V] like 'a[xy]')", "(rtrim([V]) GLOB '[aA][XYxy]')"},
        {"([VCs] LIKE 'a%')", "([VCs] GLOB 'a*')"},
        {"([V] like '%.com')", "(rtrim([V]) like '%.com')"},
        {"([V] like '___')", "(substr([V],1,3)||rtrim(substr([V],4)) like '___')"},
        {"([V] like '!%*%' escape '!')", "([V] GLOB '%[*]*')"},
        {"([W] like N'%@%')", "([W] like '%@%')"},
        {"([N] like '12')", "([N] like '12')"},
        {"(upper([VCs]) like 'A[12]')", "(rtrim([VCs]) GLOB '[Aa][12]')"},
        {"([Bin2] like '[a-c]%')", "([Bin2] GLOB '[abc]*')"},
    };
    for (const auto &c : cases) {
        const host_check_reading reading = host_read_check(table, c.definition);
        EXPECT_EQ(reading.refusal, nullptr) << c.definition << ": " << reading.refusal << " " << reading.detail;
        EXPECT_EQ(reading.condition, c.condition);
    }
}

TEST_F(HostCheckGrammarTest, Refused)
{
    const char *const unread = "SQLite lacks this or reads it differently";
    const char *const types =
        "dates or times of different types are compared, of which the server may round one or have none";
    const char *const literal =
        "a date or time is compared with a literal that is not a value of its type in a form that is known";
    const char *const language =
        "a text is compared without regard to accents, or by the rules of a language, which SQLite does not know";
    const char *const letters = "LIKE is used with letters where case or accents count in another way than in SQLite";
    const char *const units =
        "LIKE is used with _ or [^...], which count code units on the server and characters in SQLite";
    const char *const brackets = "LIKE is used with brackets whose meaning is not clear";
    const char *const wide = "decimals are compared or computed that may not fit 64 bits with one scale";
    const char *const length = "the length of a Unicode text is compared with something other than a number";
    const char *const computed = "it computes with values other than whole numbers of up to 32 bits, or decimals";
    const char *const not_text = "a function is used on something other than a text";
    const char *const no_date = "YEAR, MONTH or DAY is used on something other than a date";
    const char *const converted = "ISNULL or COALESCE is used with values that the server may convert";
    const char *const converted_text = "ISNULL or COALESCE is used with a text that the server may change";
    const char *const scaled_only =
        "a decimal or money value, which is a scaled integer here, meets something that is not one";
    const char *const rounded = "decimals are multiplied in a way that the server rounds";
    const struct {
        const char *definition;
        const char *refusal;
        const char *detail = "";
    } cases[] = {
        // words that SQLite lacks or reads differently
        {"(CONVERT([int],[V])>(5))", unread, "CONVERT"},
        {"(CAST([V] AS int)>(5))", unread, "CAST"},
        {"([dbo].[f]([I])=(1))", "it names a column that the table lacks", "dbo"},
        {"(I>(0))", unread, "I"},
        {"([V]=\"x\")", unread, "\"x\""},
        {"([I]&(1)=(1))", unread, "&"},
        {"([I]!<(1))", unread, "!<"},
        {"([I]=(1e3))", unread, "1e3"},
        {"([I]=0x10)", unread, "0x10"},
        {"([I]=NULL)", unread, "NULL"},
        {"([I] IN (select [J]))", unread, "select"},
        {"([I]>(0)) -- positive", unread, "--"},
        {"(CASE [I] WHEN (1) THEN (1) END=(1))", unread, "I"},
        // no whole condition
        {"", "it ends too early"},
        {"([I]>(0)", "it ends too early"},
        {"([I]>", "it ends too early"},
        {"([I]>(0)))", unread, ")"},
        {"(CASE [I] END=(1))", unread, "I"},
        {"(CASE WHEN [I]=(1) END=(1))", unread, "END"},
        {"(CASE WHEN [Nope]=(1) THEN (1) END=(1))", "it names a column that the table lacks", "Nope"},
        {"(CASE WHEN [I]=(1) THEN [Nope] END=(1))", "it names a column that the table lacks", "Nope"},
        {"(CASE WHEN [I]=(1) THEN (1) ELSE [Nope] END=(1))", "it names a column that the table lacks", "Nope"},
        {"(CASE WHEN [I]=(1) THEN (1) OR (2) END=(1))", unread, "OR"},
        {"(ABS [I]=(1))", unread, "I"},
        {"([I] BETWEEN (1) OR (2))", unread, "OR"},
        {"([I] BETWEEN [Nope] AND (2))", "it names a column that the table lacks", "Nope"},
        {"([I] IN (1)", "it ends too early"},
        {"([I] IN (1 2))", unread, "2"},
        {"([I] IN 1)", unread, "1"},
        {"([I])", "it is not a condition"},
        {"([I] AND [J]=(1))", "a value is used as a condition"},
        {"(NOT [I])", "a value is used as a condition"},
        {"(([I]=(1))=(1))", "a condition is used as a value"},
        {"(CASE WHEN [I] THEN (1) END=(1))", "a value is used as a condition"},
        {"([I] IS (1))", unread, "("},
        {"(([I]=(1)) IS NULL)", unread, "NULL"},
        // columns
        {"([Nope]>(0))", "it names a column that the table lacks", "Nope"},
        {"([X]>(0))", "it uses a column that is left out of the table", "X"},
        // whole numbers
        {"([Big]<(9223372036854775807))", "a number has more digits than SQLite compares exactly"},
        {"([I]+[Big]>(0))", computed},
        {"([Bit]+[Bit]=(1))", computed},
        {"([Tiny]-[Tiny2]<(5))", "it computes with two tinyint values, whose result has to be one on the server"},
        {"([I]/[J]=(1))", "it divides by something that may be 0, which is NULL in SQLite"},
        {"([I]%(0)=(1))", "it divides by something that may be 0, which is NULL in SQLite"},
        {"([I]='1')", "a text is compared with something that is not a string"},
        {"(abs([Big])<(5))", "CASE or ABS is used with values other than whole numbers of up to 32 bits"},
        // reals
        {"([R]<(0.1))", "a 32-bit real is compared with a number that it does not hold exactly"},
        {"([R]<(16777217))", "a 32-bit real is compared with a number that it does not hold exactly"},
        {"([F]<(0.1234567890123456))", "a number has more digits than SQLite compares exactly"},
        {"([F]+(1)>(0))", computed},
        {"([R]<[F])", "values of different types are compared"},
        {"([R]<[I])", "values of different types are compared"},
        // scaled integers
        {"([Wide]<[D4])", wide},
        {"([Wide]+(1)<(2))", wide},
        {"([Wide]*[I]<(2))", wide},
        {"([M]*[M]<(2))", rounded},
        {"([D]*(1.5)<(2))", rounded},
        {"((1.5)*[D]<(2))", rounded},
        {"([D]*[F]<(2))", rounded},
        {"([V]*[D]<(2))", rounded},
        {"([D]+(0.125)<(2))", "a number with more decimals than the decimal that it is added to"},
        {"((0.125)-[D]<(2))", "a number with more decimals than the decimal that it is added to"},
        {"([D]+[Big]<(2))", scaled_only},
        {"([Wide]+[Wide]<(2))", wide},
        {"([I]>[Sm])", "a smallmoney is compared with numbers beyond its range, which is an error on the server"},
        {"([Sm]<(9999999999))",
         "a smallmoney is compared with a number beyond its range, which is an error on the server"},
        {"((1)+[Sm]<(2))", "it computes with smallmoney, whose result has to be one on the server"},
        {"([D]/(2)<(2))", "it divides decimals, which the server rounds"},
        {"([D]<[Big])", scaled_only},
        {"([D]<[F])", scaled_only},
        {"([Sm]<[I])", "a smallmoney is compared with numbers beyond its range, which is an error on the server"},
        {"([Sm]<(214749))", "a smallmoney is compared with a number beyond its range, which is an error on the server"},
        {"([Sm]+[Sm]<(2))", "it computes with smallmoney, whose result has to be one on the server"},
        {"([D] BETWEEN [D] AND [D4])", "decimals of several scales are compared in one BETWEEN or IN"},
        {"([D]<(99999999999999.0001))", "a number has more digits than SQLite compares exactly"},
        // dates and guids
        {"([Day]<=[At])", types},
        {"([At]<=[Till])", types},
        {"([Day]<=[Small])", types},
        {"([Clock]<=[At])", types},
        {"([Off]<=[Off])", "values of a type are compared that SQLite compares differently"},
        {"([At]<[I])", "values of different types are compared"},
        {"([At]>'2020-01-02')",
         "a datetime is compared with a date that the server reads by the language of the session"},
        {"([At]>'1/2/2020')", literal},
        {"([At]>'1752-12-31')", literal},
        {"([Day]>'2020-02-30')", literal},
        {"([Since]>'2020-01-01 12:00:00.5')", literal},
        {"([Since] BETWEEN [Day] AND [Till])", "dates or times of several forms are compared in one BETWEEN or IN"},
        {"([G]='x')", "a guid is compared with something that is not one"},
        {"([G]<'00000000-0000-0000-0000-000000000000')", "guids are ordered, which SQLite does by other bytes first"},
        {"([At]<getdate())", "it asks for the time, which SQLite does not tell a check", "getdate"},
        {"([Day]<dateadd(day,(1),[Day2]))", unread, "dateadd"},
        {"([G]<[G2])", "guids are ordered, which SQLite does by other bytes first"},
        // texts
        {"([V]+[W]='ab')", "texts are joined by +"},
        {"('a'+[V]='ab')", "texts are joined by +"},
        {"([Ai]='AB')", language},
        {"([C]='\xC3\xA4')", "a text is compared with letters beyond ASCII, which SQLite compares by their bytes"},
        {"([C]>'AB')", "texts are ordered, which SQLite does by their bytes"},
        {"([C]=[Cs])", "texts are compared with one another, of which SQLite knows the letters of ASCII only"},
        {"([Tr]='i')", language},
        {"([Tr2]='i')", language},
        {"([Unknown]='i')", "a text is compared with letters, and its collation is not known"},
        {"([Unknown] LIKE 'i%')", letters},
        {"(upper([VCs])='a')", "UPPER() or LOWER() is compared with letters of the other case"},
        {"(upper([I])='a')", not_text, "UPPER or LOWER"},
        {"(isnull([V],[W])='a')", converted},
        {"(isnull([Tiny],(0))=(1))", converted},
        {"(isnull([C],'')='a')", converted_text},
        {"(len([W])>[I])", length},
        {"((3)<len([W]))", length},
        {"(len([W])>(-1))", length},
        {"(datalength([W])=(3))", length},
        {"(len([W]) BETWEEN (1) AND (2))", "the length of a Unicode text is used in BETWEEN or IN"},
        {"(len([W]) IS NULL)", unread, "NULL"},
        {"(len([W])+(1)>(3))", computed},
        {"(datalength([Jp])>(3))", "DATALENGTH is used where SQLite counts other bytes"},
        {"(isjson([I])>(0))", not_text, "ISJSON"},
        // functions
        {"(len([I])=(3))", not_text, "LEN"},
        {"(len([Utf])=(3))", "the length of a text in UTF-8 is used, which the server may count in units"},
        {"(datalength([I])>(3))", "DATALENGTH is used where SQLite counts other bytes"},
        {"(datalength((5))>(3))", "DATALENGTH is used where SQLite counts other bytes"},
        {"(lower(upper([VCs]))='a')", not_text, "UPPER or LOWER"},
        {"(ltrim([I])='a')", not_text, "TRIM"},
        {"(rtrim(upper([VCs]))='A')", not_text, "TRIM"},
        {"(trim(upper([VCs]))='A')", not_text, "TRIM"},
        {"(year([I])=(1))", no_date},
        {"(month([F])=(1))", no_date},
        {"(day([Clock])=(1))", no_date},
        {"(isnull([V],'\xC3\xA4')='a')", converted_text},
        {"(isnull([V],'more than twenty letters')='a')", converted_text},
        {"(isnull([Bit],(2))=(1))", converted},
        {"(isnull([Bit],-(1))=(1))", converted},
        {"(isnull([F],(1))=(1))", converted},
        {"(isnull(upper([V]),'')='A')", converted},
        {"(isnull([I])=(1))", unread, ")"},
        {"(isnull([Nope],(1))=(1))", "it names a column that the table lacks", "Nope"},
        {"(abs([I],[J])=(1))", unread, ","},
        {"([V]>(0))", "a number is compared with something that is not a number"},
        {"([Bin]=[Bin])", "values of a type are compared that SQLite compares differently"},
        // LIKE
        {"([V] LIKE '\xC3\xA4%')",
         "LIKE is used with characters beyond ASCII, whose case and order SQLite does not know"},
        {"([VAi] LIKE 'a%')", "LIKE is used with letters where case or accents count in another way than in SQLite"},
        {"([I] LIKE '1%')", "LIKE is used on something other than a text column, or without a literal"},
        {"([VAi] LIKE '[ab]%')", letters},
        {"([Tr] LIKE 'i%')", letters},
        {"([V] LIKE '[a-z]%')", "LIKE is used with a range of letters, which holds accented ones too on the server"},
        {"([V] LIKE '[0-z]%')", "LIKE is used with a range other than of digits, whose order depends on the collation"},
        {"([V] LIKE '[9-0]%')", "LIKE is used with a range other than of digits, whose order depends on the collation"},
        {"([V] LIKE '[]%')", brackets},
        {"([V] LIKE '[a%')", brackets},
        {"([V] LIKE '[0-9-x]%')", brackets},
        {"([V] LIKE '[a!b]' ESCAPE '!')", brackets},
        {"([V] LIKE 'a!' ESCAPE '!')", "LIKE is used with a pattern that ends in its escape character"},
        {"([V] LIKE 'a%' ESCAPE [V])", "LIKE is used with an escape that is not one character"},
        {"([V] LIKE 'a%' ESCAPE '')", "LIKE is used with an escape that is not one character"},
        {"([V] LIKE '%_')",
         "LIKE is used on a text that may end in blanks: they do not count on the server, and count in SQLite"},
        {"([W] LIKE '__%')", units},
        {"([W] LIKE '[^0-9]')", units},
        {"(upper([VCs]) LIKE 'a%')", "UPPER() or LOWER() is compared with letters of the other case"},
        {"([V] LIKE [W])", "LIKE is used on something other than a text column, or without a literal"},
        {"([V] LIKE 'a'+'%')", "texts are joined by +"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.definition);
        const host_check_reading reading = host_read_check(table, c.definition);
        EXPECT_STREQ(reading.refusal, c.refusal);
        EXPECT_EQ(reading.detail, c.detail);
    }
}

TEST_F(HostCheckGrammarTest, ColumnsInOrderEachOnce)
{
    const host_check_reading reading = host_read_check(table, "([J]>(0) AND [I]>[J] AND [j]<(9))");
    EXPECT_EQ(reading.cols, (std::vector<const host_column *>{&table.cols[1], &table.cols[0]}));
    EXPECT_FALSE(reading.unprepared);
}

TEST_F(HostCheckGrammarTest, AColumnThatIsLeftOutIsNamed)
{
    const host_check_reading reading = host_read_check(table, "([I]>(0) OR [x]>(0))");
    EXPECT_TRUE(reading.unprepared);
    EXPECT_EQ(reading.detail, "x");
}

TEST_F(HostCheckGrammarTest, Enclosed)
{
    EXPECT_TRUE(host_read_check(table, " ([I]>(0)) ").is_enclosed);
    EXPECT_TRUE(host_read_check(table, "(([I])>(0))").is_enclosed);
    EXPECT_FALSE(host_read_check(table, "[I]>(0)").is_enclosed);
    EXPECT_FALSE(host_read_check(table, "([I])>(0)").is_enclosed);
}

TEST_F(HostCheckGrammarTest, DeepNestingIsRefused)
{
    const auto nested = [](size_t depth) { return std::string(depth, '(') + "[I]=1" + std::string(depth, ')'); };
    EXPECT_EQ(host_read_check(table, nested(99)).refusal, nullptr);
    EXPECT_STREQ(host_read_check(table, nested(100)).refusal, "it is nested too deep");
    EXPECT_STREQ(host_read_check(table, nested(1000000)).refusal, "it is nested too deep");
    std::string nots = "(";
    for (int n = 0; n < 100000; n++)
        nots += "NOT ";
    EXPECT_EQ(host_read_check(table, nots + "[I]=1)").refusal, nullptr);
}
