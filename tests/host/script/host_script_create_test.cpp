// CREATE and ALTER of everything but tables and indexes.
#include "script_test.hpp"

namespace {

struct name_case {
    const char *name;
    const char *script;
    const char *database;  // null: none
    const char *left = ""; // findings
};

const name_case database_cases[] = {
    {"a database", "create database Shop", "Shop"},
    {"in brackets", "create database [audit]", "audit"},
    {"the first of two", "create database A\ngo\ncreate database B", "A"},
    {"with its files and collation",
     "create database Shop on (name = 'a', filename = 'b') collate Latin1_General_CI_AS with trustworthy on", "Shop"},
    {"named like something within one", "create database Audit", "Audit"},
    {"named like that, and another statement", "create database Encryption print 'x'", "Encryption"},
    {"named like that, and its options", "create database Scoped containment = none on (name = 'a')", "Scoped"},
    {"an encryption key", "create database encryption key with algorithm = aes_256 encryption by server certificate C",
     nullptr},
    {"a scoped credential", "create database scoped credential C with identity = 'x', secret = 'y'", nullptr},
    {"one that is altered", "alter database Shop set recovery simple", nullptr},
    {"settings of the one in use", "alter database scoped configuration set maxdop = 1", nullptr},
    {"the one in use", "alter database current collate Polish_CS_AS", nullptr},
    {"one whose name is a variable", "alter database $(Db) set recovery simple", nullptr,
     "variable-undefined a.sql:1:16 Db"},
    {"under a condition that does not hold", "if 1 = 2 create database Shop", nullptr},
};

TEST_F(ScriptTest, TheDatabaseIsTheOneThatIsMade)
{
    for (const name_case &c : database_cases) {
        SCOPED_TRACE(c.name);
        read(std::string(c.script) + "\ngo\ncreate table T (A int)");
        EXPECT_OK(ctx);
        EXPECT_STREQ(catalogue.name, c.database);
        EXPECT_EQ(shown().substr(0, 22), "dbo.T: A int/4/10/0 nu");
        EXPECT_EQ(lines(), c.left);
        reset();
    }
}

const script_case create_cases[] = {
    {"types of assemblies", "create type Point external name [Geo].[Point] create table T (A Point)",
     "dbo.T: A Point/-1/0/0 null"},
    {"types of tables are none of columns", "create type L as table (A int) create table T (A int)",
     "dbo.T: A int/4/10/0 null"},
    {"an alias that takes NULL", "create type Code from int null create table T (A Code)", "dbo.T: A Code/4/10/0 null"},
    {"a type stays what it was made first",
     "create type Code from int create type Code from bit create type Point external name X create type Point external "
     "name Y create table T (A Code, B Point)",
     "dbo.T: A Code/4/10/0 null, B Point/-1/0/0 null"},
    {"modules that are made anew, and an index of a view",
     "create table T (A int)\ngo\ncreate view V as select A from T\ngo\ncreate or alter view V as select 1 as A\ngo\n"
     "create unique clustered index I on V (A) alter index I on Z disable",
     "dbo.T: A int/4/10/0 null"},
    {"defaults stay what they were made first",
     "create default Z as 0\ngo\ncreate default Z as 1\ngo\ncreate table T (A int) exec sp_bindefault 'Z', 'T.A'",
     "dbo.T: A int/4/10/0 null bound Z create default Z as 0"},
    {"a clustered columnstore", "create table T (A int) create clustered columnstore index CI on T with (maxdop = 1)",
     "dbo.T: A int/4/10/0 null; index CI()"},
    {"a key that comes after what refers to it",
     "create table P (I int) create table T (A int references P) alter table P add primary key (I)",
     "dbo.P: I int/4/10/0; pk(I) clustered\ndbo.T: A int/4/10/0 null; fk(A) dbo.P(I)"},
    {"constraints without commas", "create table T (A int, check (A > 0) check (A > 1) constraint U unique (A))",
     "dbo.T: A int/4/10/0 null; unique U(A); check ([A]>(0)); check ([A]>(1))"},
    {"the schema of an owner", "create schema authorization Ada create table T (A int)", "Ada.T: A int/4/10/0 null"},
    {"what belongs to a table is transferred with it",
     "create table T (A int constraint P primary key constraint D default 1 constraint C check (A > 0), constraint F "
     "foreign key (A) references T, constraint U unique (A)) alter schema s transfer object::dbo.T "
     "if object_id('s.D') is null or object_id('s.F') is null or object_id('s.P') is null drop table s.T",
     "s.T: A int/4/10/0 constraint D ((1)); pk P(A) clustered; unique U(A); fk F(A) s.T(A); check C ([A]>(0))"},
    {"types are transferred", "create type Code from int alter schema s transfer type::dbo.Code create table T (A int)",
     "dbo.T: A int/4/10/0 null"},
    {"sequences",
     "create sequence dbo.N as decimal(9) start with -5 increment by 10 minvalue -5 maxvalue 99 cycle cache 4 "
     "create table T (A int)",
     "dbo.T: A int/4/10/0 null"},
    {"an index of XML, of places and of texts",
     "create table T (A int primary key, X xml, G geography, N nvarchar(9)) create primary xml index XP on T (X) "
     "create "
     "xml index XS on T (X) using xml index XP for path create spatial index SG on T (G) using geography_auto_grid "
     "create fulltext index on T (N) key index P create fulltext catalog FC create nonclustered columnstore index CI "
     "on "
     "T (A)",
     "dbo.T: A int/4/10/0, X xml/-1/0/0 null, G geography/-1/0/0 null, N nvarchar/18/0/0 null; pk(A) clustered; index "
     "XP(X); index XS(X); index SG(G); index CI(A)"},
    {"statistics, logins and the like",
     "create statistics S on T (A) create login L with password = 'x' create user U for login L create table T (A int) "
     "create certificate C with subject = 'x' alter login L disable alter authorization on schema::s to U",
     "dbo.T: A int/4/10/0 null"},
};

TEST_F(ScriptTest, WhatIsCreated)
{
    for (const script_case &c : create_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_OK(ctx);
        EXPECT_EQ(shown(), c.expected);
        EXPECT_EQ(lines(), c.name == std::string("types are transferred")
                               ? "statement-not-read a.sql:1:27 alter schema s transfer type::dbo.Code"
                               : "");
        reset();
    }
}

// Statements that may change tables, under a condition that nobody decides: each is a finding, and changes nothing.
const char *const doubtful_statements[] = {
    "create type Code from int",
    "alter schema s transfer dbo.T",
    "create index I on T (A)",
    "alter index X on T disable",
    "drop index X on T",
    "drop table T",
    "create table V (A int)",
    "alter table T add B int",
    "exec sp_rename 'T', 'U'",
    "select 1 as A into V",
    "exec (@x)",
};

TEST_F(ScriptTest, WhatAConditionLeavesOpenIsTold)
{
    for (const char *statement : doubtful_statements) {
        SCOPED_TRACE(statement);
        read(std::string("create table T (A int) create index X on T (A)\nif @@version > 'x' ") + statement);
        EXPECT_OK(ctx);
        EXPECT_EQ(shown(), "dbo.T: A int/4/10/0 null; index X(A)");
        EXPECT_EQ(lines(), "statement-not-read a.sql:2:20 " + std::string(statement));
        reset();
    }
}

const char *const other_statements[] = {
    "exec ('create schema s')",         "create sequence N", "use Shop", "create synonym Y for T",
    "exec ('create rule R as @a > 0')",
};

// Nothing of this is run: the condition does not hold.
TEST_F(ScriptTest, WhatAConditionRulesOutIsLeftAlone)
{
    std::vector<const char *> statements(std::begin(doubtful_statements), std::end(doubtful_statements));
    statements.insert(statements.end(), std::begin(other_statements), std::end(other_statements));
    for (const char *statement : statements) {
        SCOPED_TRACE(statement);
        read(std::string("create table T (A int) create index X on T (A)\nif 1 = 2 ") + statement);
        EXPECT_OK(ctx);
        EXPECT_EQ(catalogue.name, nullptr);
        EXPECT_EQ(catalogue.sequences.size() + catalogue.left_objects.size(), 0u);
        EXPECT_EQ(shown(), "dbo.T: A int/4/10/0 null; index X(A)");
        EXPECT_EQ(lines(), "");
        reset();
    }
}

} // namespace
