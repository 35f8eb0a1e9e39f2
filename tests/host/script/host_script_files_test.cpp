// Files: their order, encodings, variables, and what is wrong in them.
#include "script_test.hpp"

#include <algorithm>

namespace {

TEST_F(ScriptTest, FilesAreReadInTheOrderOfTheirReferences)
{
    read({{"a.sql", "alter table T add B Code create table C (A int references T)"},
          {"b.sql", "create table T (A int primary key)"},
          {"c.sql", "create type Code from int"}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: A int/4/10/0, B Code/4/10/0 null; pk(A) clustered\n"
                       "dbo.C: A int/4/10/0 null; fk(A) dbo.T(A)");
    EXPECT_EQ(lines(), "");
}

TEST_F(ScriptTest, MigrationsKeepTheirOrder)
{
    read({{"2.sql", "drop table T"}, {"3.sql", "create table T (B int)"}, {"1.sql", "create table T (A int)"}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: B int/4/10/0 null");
}

// The type that a statement needs is made by a file that drops the statement's own table.
TEST_F(ScriptTest, ATableIsDroppedWhileItIsChanged)
{
    read({{"1.sql", "create table T (A int)\nGO\nalter table T add B Code\ncreate table U (A Code)"},
          {"2.sql", "create type Code from int\nGO\ndrop table T"}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.U: A Code/4/10/0 null");
}

TEST_F(ScriptTest, AProjectSaysTheCollation)
{
    read({{"D.sqlproj", "<Project><Name>D</Name><DefaultCollation>Polish_CS_AS</DefaultCollation></Project>"},
          {"t.sql", "create table T (A char)"}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: A char/1/0/0 null Polish_CS_AS");
    EXPECT_STREQ(catalogue.name, "D");
}

TEST_F(ScriptTest, ATableMadeTwiceNamesBothPlaces)
{
    read({{"a.sql", "create table T (A int)"}, {"b.sql", "\ncreate table dbo.t (A int)"}});
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    EXPECT_EQ(error(), "b.sql:2:1: table dbo.t already exists: it was made at a.sql:1:1");
    reset();
    read({{"a.sql", "print 1"}, {"a.sql", "print 2"}});
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    EXPECT_EQ(error(), "a.sql is read twice");
    reset();
}

const script_case error_cases[] = {
    {"all errors are listed", "create table T (A int B int)\nprint 'x'\ncreate index on X\ncreate table U (A in)",
     "a.sql:1:23: expected ',' or ')', found 'B'\na.sql:3:14: expected the name of an index, found 'on'\n"
     "a.sql:4:19: expected a type, found 'in'"},
    {"a string that does not end", "print 'x", "a.sql:1:7: expected T-SQL, found a quote that is not closed"},
    {"a comment that does not end", "print 1 /* x", "a.sql:1:9: expected T-SQL, found a comment that does not end"},
    {"a block that does not end", "begin print 'x'\ngo\nprint 'y'",
     "a.sql:2:1: expected END, found the end of the batch"},
    {"something else", "Dear reader", "a.sql:1:1: expected a statement, found 'Dear'"},
    {"backquotes", "create table `T` (`A` int)",
     "a.sql:1:14: expected a name, found '`'; this looks like a script for MySQL"},
    {"words of others", "create table T (A int auto_increment)",
     "a.sql:1:23: expected ',' or ')', found 'auto_increment'; this looks like a script for MySQL"},
    {"types of others", "create table T (A serial)", "a.sql:1:19: 'serial' is a type of PostgreSQL, not of T-SQL"},
    {"options of tables of others", "create table T (A int) engine=InnoDB",
     "a.sql:1:24: expected a statement, found 'engine'; this looks like a script for MySQL"},
    {"statements of others", "pragma foreign_keys=off;\ncreate table T (A integer primary key autoincrement);",
     "a.sql:1:1: expected a statement, found 'pragma'; this looks like a script for SQLite\n"
     "a.sql:2:39: expected ',' or ')', found 'autoincrement'; this looks like a script for SQLite"},
    {"types of others with sizes", "create table T (A number(10), B varchar2(30 char))",
     "a.sql:1:19: 'number' is a type of Oracle, not of T-SQL"},
    {"defaults of others", "create table T (A timestamp without time zone)",
     "a.sql:1:29: expected ',' or ')', found 'without'; this looks like a script for another database"},
    {"a page of the web", "<html><body>404</body></html>", "a.sql:1:1: expected a statement, found '<'"},
    {"a script that was cut off", "create table T (A int, B nvarchar(20", "a.sql:1:37: expected ')', found the end"},
    {"nothing", " -- nothing\ngo\n", "there is nothing to import: no package, no JSON document, no SQL statement"},
    {"a byte that is not UTF-8", "print '\xE4'", "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
};

TEST_F(ScriptTest, Errors)
{
    for (const script_case &c : error_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        EXPECT_EQ(error(), c.expected);
        reset();
    }
}

// Were each block that lacks its end read twice, this would take 2 to the 100th readings.
TEST_F(ScriptTest, BlocksThatLackTheirEndsAreReadOnce)
{
    std::string script;
    for (int n = 0; n < 100; n++)
        script += "begin try\n";
    for (int n = 0; n < 100; n++)
        script += "end\n";
    read(script);
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    EXPECT_TRUE(error().starts_with("a.sql:102:1: expected TRY, found 'end'")) << error();
    reset();
}

TEST_F(ScriptTest, TheListOfErrorsHasAnEnd)
{
    std::string script;
    for (int n = 0; n < 60; n++)
        script += "create table (\ngo\n";
    read(script);
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    const std::string all = error();
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 50);
    EXPECT_TRUE(all.ends_with("\nand 10 more")) << all;
    reset();
}

std::string utf16(std::string_view text, bool is_big)
{
    std::string wide;
    for (const char byte : text)
        wide += is_big ? std::string{'\0', byte} : std::string{byte, '\0'};
    return wide;
}

TEST_F(ScriptTest, Encodings)
{
    const std::string script = "create table T (A int)";
    for (const std::string &bytes : {"\xEF\xBB\xBF" + script, "\xFF\xFE" + utf16(script, false),
                                     "\xFE\xFF" + utf16(script, true), utf16(script, false), utf16(script, true)}) {
        read(bytes);
        EXPECT_OK(ctx);
        EXPECT_EQ(shown(), "dbo.T: A int/4/10/0 null");
        reset();
    }
    for (const bool is_big : {false, true}) {
        read(utf16(script, is_big).substr(0, 41));
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        EXPECT_EQ(error(), "a.sql:1:21: the file ends in the middle of a character: it was cut off");
        reset();
    }
    read({{"a.sql", "create table T (\x8A int)"}}, {"windows-1252", {}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: \xC5\xA0 int/4/10/0 null");
    read({{"a.sql", "print 1"}}, {"no-such-encoding", {}});
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    EXPECT_EQ(error(), "the encoding 'no-such-encoding' is not known");
    reset();
}

struct encoding_case {
    const char *name;
    std::string_view bytes;
    const char *encoding;
    const char *error; // null: none
};

const encoding_case encoding_cases[] = {
    {"characters of two, three and four bytes", "print '\u00E4\u20AC\U0001F600'", nullptr, nullptr},
    {"the first and the last of each length", "print '\x7F\u0080\u07FF\u0800\uFFFD\U00010000\U0010FFFF'", nullptr,
     nullptr},
    {"a long form of two bytes", "print '\xC1\xBF'", nullptr,
     "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"of three", "print '\xE0\x9F\xBF'", nullptr, "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"of four", "print '\xF0\x8F\xBF\xBF'", nullptr, "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"half a pair", "print '\xED\xA0\x80'", nullptr, "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"beyond the last", "print '\xF4\x90\x80\x80'", nullptr,
     "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"far beyond", "print '\xF5\x80\x80\x80'", nullptr, "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"cut off", "print '\xF0\x9F\x98", nullptr, "a.sql:1:8: the file is not UTF-8: say which encoding it has"},
    {"a NUL", {"print 'a\0b'", 11}, nullptr, "a.sql:1:9: a NUL byte: the file is not a script"},
    {"a byte that the encoding lacks", "print '\x81'", "windows-1252",
     "a.sql:1:8: what follows is not in the encoding "
     "windows-1252"},
    {"a mark goes before what is said", "\xEF\xBB\xBFprint '\u00E4'", "windows-1252", nullptr},
};

TEST_F(ScriptTest, BytesThatAreNoCharacters)
{
    for (const encoding_case &c : encoding_cases) {
        SCOPED_TRACE(c.name);
        read({{"a.sql", c.bytes}}, {c.encoding, {}});
        if (c.error)
            EXPECT_EQ(error(), c.error);
        else
            EXPECT_OK(ctx);
        reset();
    }
}

// Defaults and rules, views and types may be in any file: one is read when another needs it.
TEST_F(ScriptTest, WhatAnotherFileMakesIsReadFirst)
{
    read({{"a.sql", "create table T (A Code) exec sp_bindefault 'Z', 'T.A' create index I on V (A)"},
          {"b.sql", "-- ours\ncreate default Z as 0"},
          {"c.sql", "create view V as select 1 as A"},
          {"d.sql", "create type Code from int"},
          {"e.sql", "create unique clustered index U on W (A)"}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: A Code/4/10/0 null bound Z -- ours\ncreate default Z as 0");
    EXPECT_EQ(lines(), "statement-not-read a.sql:1:55 create index I on V (A)\n"
                       "statement-not-read e.sql:1:1 create unique clustered index U on W (A)");
}

TEST_F(ScriptTest, ATableOfAnotherFileIsTransferred)
{
    read({{"a.sql", "alter schema s transfer dbo.T print '$(no name)'"}, {"b.sql", "create table T (A int)"}});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "s.T: A int/4/10/0 null");
    EXPECT_EQ(lines(), "");
}

TEST_F(ScriptTest, SequencesComeInOrder)
{
    read("create sequence s.B create sequence a.Z as int create sequence s.A");
    ASSERT_OK(ctx);
    std::string names;
    for (const host_sequence &sequence : catalogue.sequences)
        names += std::string(sequence.schema_name) + '.' + sequence.name + ' ' + sequence.system_type + ' ';
    EXPECT_EQ(names, "a.Z int s.A bigint s.B bigint ");
}

TEST_F(ScriptTest, Variables)
{
    const host_script_define defines[] = {{"Name", "given"}, {"@schema", "s"}, {"{owner}", "dbo"}};
    read({{"a.sql",
           ":setvar Name set\n:setvar Col \"A b\"\n:on error exit\ncreate table @schema.[$(Name)] ([$(col)] int)\n"
           "create table {owner}.T (A int)"}},
         {nullptr, defines});
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "s.given: A b int/4/10/0 null\ndbo.T: A int/4/10/0 null");
    EXPECT_EQ(lines(), "");
}

TEST_F(ScriptTest, DeepNestingIsRefused)
{
    std::string blocks, ifs, conditions = "if ";
    for (int n = 0; n < 100000; n++) {
        blocks += "begin ";
        ifs += "if 1 = 1 ";
        conditions += "not ";
    }
    for (const std::string &script : {blocks, ifs, conditions + "1 = 1 print 1"}) {
        read(script);
        KT_context__err_reset(ctx);
        reset();
    }
    std::string strings = "create table T (A int)";
    for (int n = 0; n < 10; n++) {
        std::string quoted;
        for (const char byte : strings)
            quoted += byte == '\'' ? "''" : std::string(1, byte);
        strings = "exec('" + quoted + "')";
    }
    read(strings);
    EXPECT_OK(ctx);
    EXPECT_NE(lines(), "");
}

} // namespace
