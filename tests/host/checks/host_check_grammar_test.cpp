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
        add("D", "decimal");
        add("M", "money");
        add("V", "varchar").max_length = 20;
        add("C", "char").max_length = 2;
        add("N", "nchar").max_length = 4;
        add("W", "nvarchar").max_length = 40;
        add("Cs", "char").comparison_style = 196608;
        add("Ai", "char").comparison_style = 196611;
        add("VCs", "varchar").comparison_style = 196608;
        add("VAi", "varchar").comparison_style = 196611;
        add("Day", "date");
        add("Day2", "date");
        add("At", "datetime");
        add("At2", "datetime");
        add("Clock", "time");
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
        "(ABS([I]-[J])<(5))",
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
    }
}

TEST_F(HostCheckGrammarTest, Refused)
{
    const char *const unread = "SQLite lacks this or reads it differently";
    const char *const scaled =
        "a decimal or money value, which is a scaled integer here, is compared with something other than 0";
    const char *const blanks =
        "a text is compared that may end in blanks: they do not count on the server, and count in SQLite";
    const char *const literal = "a date, time or guid is compared with a literal";
    const char *const computed = "it computes with values other than whole numbers of up to 32 bits";
    const struct {
        const char *definition;
        const char *refusal;
        const char *detail = "";
    } cases[] = {
        // words that SQLite lacks or reads differently
        {"([At]<getdate())", unread, "getdate"},
        {"(len([V])>(5))", unread, "len"},
        {"(CONVERT([int],[V])>(5))", unread, "CONVERT"},
        {"(CAST([V] AS int)>(5))", unread, "CAST"},
        {"([dbo].[f]([I])=(1))", "it names a column that the table lacks", "dbo"},
        {"(I>(0))", unread, "I"},
        {"([V]=N'x')", unread, "N'x'"},
        {"([V]=\"x\")", unread, "\"x\""},
        {"([I]&(1)=(1))", unread, "&"},
        {"([I]!<(1))", unread, "!<"},
        {"([I]=(1e3))", unread, "1e3"},
        {"([I]=0x10)", unread, "0x10"},
        {"([I]=NULL)", unread, "NULL"},
        {"([I] IN (select [J]))", unread, "select"},
        {"([V] LIKE 'a%' ESCAPE '!')", unread, "ESCAPE"},
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
        {"(-[M]<(0))", "CASE or ABS is used with values other than whole numbers of up to 32 bits"},
        // reals
        {"([R]<(0.1))", "a 32-bit real is compared with a number that it does not hold exactly"},
        {"([R]<(16777217))", "a 32-bit real is compared with a number that it does not hold exactly"},
        {"([F]<(0.1234567890123456))", "a number has more digits than SQLite compares exactly"},
        {"([F]+(1)>(0))", computed},
        {"([R]<[F])", "values of different types are compared"},
        {"([R]<[I])", "values of different types are compared"},
        // scaled integers
        {"([M]>(1))", scaled},
        {"([D]<=(0.5))", scaled},
        {"([D]<[D])", scaled},
        {"([D]<[I])", "values of different types are compared"},
        // dates and guids
        {"([Day]>'2020-01-01')", literal},
        {"('20200101'<[At])", literal},
        {"([Clock]>'12:00')", literal},
        {"([G]<>'00000000-0000-0000-0000-000000000000')", literal},
        {"([At]<=[At2])", "dates with a time, or times, are compared, which are texts of several forms in SQLite"},
        {"([Day]<=[At])", "values of different types are compared"},
        {"([G]<[G2])", "guids are ordered, which SQLite does by other bytes first"},
        // texts
        {"([V]+[W]='ab')", "texts are joined by +"},
        {"('a'+[V]='ab')", "texts are joined by +"},
        {"([V]<>'')", blanks},
        {"([C]='A')", blanks},
        {"([Ai]='AB')", "a text is compared without regard to accents, which SQLite does not know"},
        {"([C]='\xC3\xA4')", "a text is compared with letters beyond ASCII, which SQLite compares by their bytes"},
        {"([C]>'AB')", "texts are ordered, which SQLite does by their bytes"},
        {"([C]=[Cs])", "texts are compared with one another: the server ignores blanks at their end, SQLite does not"},
        {"([V]>(0))", "a number is compared with something that is not a number"},
        {"([Bin]=[Bin])", "values of a type are compared that SQLite compares differently"},
        // LIKE
        {"([V] LIKE '[0-9]%')", "LIKE is used with brackets, which SQLite takes for themselves"},
        {"([V] LIKE '\xC3\xA4%')", "LIKE is used with letters beyond ASCII, whose case SQLite does not know"},
        {"([VCs] LIKE 'a%')", "LIKE is used with letters where case or accents count in another way than in SQLite"},
        {"([VAi] LIKE 'a%')", "LIKE is used with letters where case or accents count in another way than in SQLite"},
        {"([W] LIKE '_%')", "LIKE is used with _, which counts code units on the server and characters in SQLite"},
        {"([V] LIKE '%.com')",
         "LIKE is used on a text that may end in blanks: they do not count on the server, and count in SQLite"},
        {"([I] LIKE '1%')", "LIKE is used on something other than a text column, or without a literal"},
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
