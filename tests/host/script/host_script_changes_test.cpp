// What changes tables after they are made, and what does not.
#include "script_test.hpp"

namespace {

const script_case change_cases[] = {
    {"columns are added", "create table T (A int) alter table T add B int not null default 5, C as A + 1",
     "dbo.T: A int/4/10/0 null, B int/4/10/0 constraint ((5)), C as ([A]+(1))"},
    {"constraints are added",
     "create table T (A int not null) alter table dbo.T with check add constraint P primary key (A), constraint C "
     "check "
     "(A > 0), constraint D default 1 for A",
     "dbo.T: A int/4/10/0 constraint D ((1)); pk P(A) clustered; check C ([A]>(0))"},
    {"constraints that are not checked",
     "create table P (I int primary key) create table T (A int) alter table T with nocheck add constraint F foreign "
     "key (A) "
     "references P alter table T nocheck constraint F",
     "dbo.P: I int/4/10/0; pk(I) clustered\ndbo.T: A int/4/10/0 null; fk F(A) dbo.P(I) disabled untrusted"},
    {"all constraints off, on and checked",
     "create table T (A int, constraint C check (A > 0)) alter table T nocheck constraint all alter table T check "
     "constraint "
     "all alter table T with check check constraint C",
     "dbo.T: A int/4/10/0 null; check C ([A]>(0))"},
    {"enabled again without a check",
     "create table T (A int, constraint C check (A > 0)) alter table T nocheck constraint C "
     "alter table T check constraint C",
     "dbo.T: A int/4/10/0 null; check C ([A]>(0)) untrusted"},
    {"columns are altered",
     "create table T (A int default 1, B varchar(5) not null) alter table T alter column A bigint not "
     "null alter table T alter column B nvarchar(7)",
     "dbo.T: A bigint/8/19/0 constraint ((1)), B nvarchar/14/0/0 null"},
    {"attributes of columns", "create table T (A uniqueidentifier) alter table T alter column A add rowguidcol",
     "dbo.T: A uniqueidentifier/16/0/0 null rowguidcol"},
    {"columns and constraints are dropped",
     "create table T (A int, B int constraint D default 1, C int) alter table T drop constraint D, column B alter "
     "table T drop "
     "column if exists X, C",
     "dbo.T: A int/4/10/0 null"},
    {"indexes",
     "create table T (A int, B int) create unique nonclustered index U on dbo.T (A asc, B desc) include (B) where A is "
     "not null "
     "with (drop_existing = off) on [PRIMARY] create index I on T(B) alter index U on T disable",
     "dbo.T: A int/4/10/0 null, B int/4/10/0 null; unique index U(A,B-) disabled where ([A] IS NOT NULL); index I(B)"},
    {"indexes are replaced and dropped",
     "create table T (A int, B int) create index I on T (A) create unique index I on T (B) with (drop_existing = on) "
     "create "
     "index J on T (A) drop index J on T create index K on T (A) drop index T.K drop index if exists L on T",
     "dbo.T: A int/4/10/0 null, B int/4/10/0 null; unique index I(B)"},
    {"tables, columns and constraints are renamed",
     "create table Old (A int constraint P primary key, B int, constraint C check (B > 0)) exec sp_rename 'dbo.Old', "
     "'New' exec "
     "sp_rename '[New].A', 'Id', 'COLUMN' exec sp_rename @objname = N'P', @newname = 'PK' exec sys.sp_rename "
     "'dbo.New.PK', "
     "'PK_New', 'INDEX' execute sp_rename 'C', 'CK', 'OBJECT'",
     "dbo.New: Id int/4/10/0, B int/4/10/0 null; pk PK_New(Id) clustered; check CK ([B]>(0))"},
    {"references follow renaming",
     "create table P (I int primary key) create table C (A int references P) exec sp_rename 'P', 'Q' exec sp_rename "
     "'Q.I', "
     "'J', 'column'",
     "dbo.Q: J int/4/10/0; pk(J) clustered\ndbo.C: A int/4/10/0 null; fk(A) dbo.Q(J)"},
    {"tables go to another schema", "create table T (A int) alter schema s transfer dbo.T", "s.T: A int/4/10/0 null"},
    {"a schema keeps the case that it was made in",
     "create table P (A int primary key)\ngo\ncreate schema Sales\ngo\ncreate table SALES.T (A int references DBO.p) "
     "create table sales.U (A int) alter schema SALES transfer dbo.P",
     "Sales.P: A int/4/10/0; pk(A) clustered\nSales.T: A int/4/10/0 null; fk(A) Sales.P(A)\n"
     "Sales.U: A int/4/10/0 null"},
    {"what renaming a column leaves as it was: checks, computed columns, filters",
     "create table T (A int check (A > 0), B as A + 1) create unique index I on T (A) where A > 5 "
     "exec sp_rename 'T.A', 'C', 'COLUMN'",
     "dbo.T: C int/4/10/0 null, B as ([A]+(1)); unique index I(C) where ([A]>(5)); check ([A]>(0))"},
    {"a schema with its table", "create schema s authorization dbo create table T (A int)", "s.T: A int/4/10/0 null"},
    {"tables are dropped", "create table T (A int) create table U (A int) drop table if exists T, X drop table Y",
     "dbo.U: A "
     "int/4/10/0 "
     "null"},
    {"and made anew", "create table T (A int) drop table T create table T (B int)", "dbo.T: B int/4/10/0 null"},
    {"defaults and rules are bound",
     "create table T (A int, B int)\ngo\n-- zero\ncreate default Z as 0\ngo\ncreate rule R as @v > 0\ngo\nexec "
     "sp_bindefault 'Z', "
     "'dbo.T.A' exec sp_bindrule 'R', 'T.B'",
     "dbo.T: A int/4/10/0 null bound Z -- zero\ncreate default Z as 0, B int/4/10/0 null rule create rule R as @v > 0"},
    {"to types too, and taken off again",
     "create default Z as 0\ngo\nexec sp_addtype Flag, 'bit', 'not null' exec sp_bindefault Z, Flag create table T (A "
     "Flag, B "
     "Flag) exec sp_unbindefault 'T.B'",
     "dbo.T: A Flag/1/1/0 bound Z create default Z as 0, B Flag/1/1/0"},
    {"descriptions",
     "create table T (A int, B int) exec sp_addextendedproperty 'MS_Description', N'it''s', 'SCHEMA', dbo, 'TABLE', T "
     "exec "
     "sys.sp_addextendedproperty @name = N'MS_Description', @level2name = N'A', @value = N'one', @level0type = 'user', "
     "@level0name = 'dbo', @level1type = 'table', @level1name = 'T', @level2type = 'column' exec "
     "sp_addextendedproperty "
     "'Caption', 'x', 'SCHEMA', 'dbo', 'TABLE', 'T' exec sp_updateextendedproperty 'MS_Description', 'two', 'SCHEMA', "
     "'dbo', "
     "'TABLE', 'T', 'COLUMN', 'A'",
     "dbo.T: A int/4/10/0 null -- two, B int/4/10/0 null -- it's"},
    {"versioning is switched on", "create table T (A int primary key) alter table T set (system_versioning = on)",
     "dbo.T: A int/4/10/0; pk(A) clustered; temporal"},
    {"strings in variables are executed",
     "declare @n int = 1, @sql nvarchar(max) = N'create table T ', @end varchar(9)\nset @end = '(A int)'\n"
     "set @sql = @sql + @end exec (@sql)\ngo\n"
     "declare @a as nvarchar(100) select @a = 'create table U' set @a += ' (B int)' exec sp_executesql @a\n"
     "set @a = 'alter table U ' exec (@a + 'add C int') exec sys.sp_executesql @stmt = N'alter table U add D int'",
     "dbo.T: A int/4/10/0 null\ndbo.U: B int/4/10/0 null, C int/4/10/0 null, D int/4/10/0 null"},
    {"strings are executed",
     "exec('create table A (X int)') exec ('create ' + 'table B (X int)') exec sp_executesql N'create "
     "table C (X int)' exec sys.sp_executesql @stmt = N'alter table C add Y int'",
     "dbo.A: X int/4/10/0 null\ndbo.B: X int/4/10/0 null\ndbo.C: X int/4/10/0 null, Y int/4/10/0 null"},
};

TEST_F(ScriptTest, Changes)
{
    expect_tables(change_cases);
}

// All of these leave exactly one table, T (A int).
const struct {
    const char *name;
    const char *script;
} flow_cases[] = {
    {"comments nest",
     "/* create table X (A int) /* inner */ still */ create table T (A int) -- create table Y (A int)"},
    {"GO ends a batch", "create table T (A int)\nGO\nprint 'x'\n  go 2\ngo -- next\nGo"},
    {"GO in a string or comment does not",
     "create table T (A int) print '\ngo\n' /*\ngo\n*/ print 'create table X (A int)'"},
    {"statements need no terminator",
     "set nocount on create table T (A int) insert T values (1) update T set A = 2 print 'x'"},
    {"modules are read to the end of their batch",
     "create table T (A int)\ngo\ncreate procedure P as create table X (A int) exec('create table Y (A int)')\ngo\n"
     "create or alter view V as select 'create table Z (' as A\ngo\ncreate trigger TR on T after insert as begin drop "
     "table T end"},
    {"an IF is decided by what is there",
     "if object_id('T') is null create table T (A int)\nif object_id('dbo.T', 'U') is null "
     "create table T (B int) else print 'there'"},
    {"and by what is not", "create table T (A int) if object_id('X') is not null begin alter table T add B int end"},
    {"existence is asked in many ways",
     "if not exists (select * from sys.tables where name = 'T' and schema_id = schema_id('dbo')) create table T (A "
     "int)\n"
     "if not exists (select 1 from sys.objects where object_id = object_id(N'[dbo].[T]') and type in (N'U')) drop "
     "table T\n"
     "if not exists (select 1 from information_schema.tables where table_schema = 'dbo' and table_name = 't') drop "
     "table T\n"
     "if exists (select * from dbo.sysobjects where id = object_id('X') and objectproperty(id, N'IsUserTable') = 1) "
     "drop table T\n"
     "if col_length('T', 'B') is not null drop table T\n"
     "if exists (select * from sys.columns where object_id = object_id('T') and name = 'B') drop table T\n"
     "if exists (select * from sys.columns c join sys.tables t on t.object_id = c.object_id where t.name = 'T' and "
     "c.name = "
     "'B') drop table T\n"
     "if schema_id('nowhere') is not null or type_id('X') is not null drop table T\n"
     "if not exists (select * from sys.schemas where name = 'dbo') drop table T\n"
     "if columnproperty(object_id('T'), 'A', 'ColumnId') is null drop table T"},
    {"ELSE and CATCH are not run",
     "if 1 = 1 create table T (A int); else drop table T\nbegin try print 'x' end try begin catch "
     "drop table T end catch"},
    {"RETURN ends the batch",
     "create table T (A int) if object_id('T') is not null return drop table T\ngo\nprint 'x'"},
    {"queries, cursors and grants are skipped",
     "create table T (A int); with q as (select 1 as x) select * from q declare c cursor for select A from T for "
     "update grant "
     "select, insert, execute on T to public revoke create table from x merge T using T as s on 1 = 0 when matched "
     "then delete "
     "when not matched then insert (A) values (1); declare @t table (A int) update statistics T"},
    {"a table made by SELECT and dropped again",
     "create table T (A int) select 1 as x into G from T alter table G add y int drop "
     "table G select 1 as x into #t from T"},
    {"counts of what there is",
     "if (select count(*) from sys.tables where name = 'T') = 0 create table T (A int)\n"
     "if (select count(1) from sys.columns where object_id = object_id('T') and name = 'A') < 1 drop table T\n"
     "if (select count(*) from sys.objects where name = 'X') > 0 drop table T\n"
     "if (select count(*) from sys.tables where name = 'T') >= 1 print 'x' else drop table T"},
    {"what is only parsed does not run",
     "create table T (A int)\ngo\nset noexec on\ngo\ndrop table T\ngo\ncreate table U (A int)\ngo\nset noexec off "
     "alter table T add B int alter table T drop column B"},
    {"labels and GOTO", "goto done done: create table T (A int)"},
    {"CASE has an END of its own",
     "create table T (A int) if case when 1 = 1 then 1 else 2 end = 3 print 'x' set @x = case when 1 "
     "= 1 then 2 end print 'y'"},
    {"transactions", "begin tran create table T (A int) commit transaction begin distributed transaction rollback"},
    {"databases",
     "create database D on primary (name = 'x', filename = 'y') log on (name = 'z')\ngo\nalter database D set "
     "recovery full with rollback immediate\ngo\nuse D create table D.dbo.T (A int)"},
};

TEST_F(ScriptTest, Flow)
{
    for (const auto &c : flow_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_OK(ctx);
        EXPECT_EQ(shown(), "dbo.T: A int/4/10/0 null");
        EXPECT_EQ(lines(), "");
        reset();
    }
}

TEST_F(ScriptTest, QuotesAreNamesOrStrings)
{
    read("set quoted_identifier off create table T (A varchar(5) default \"it's\")\ngo\nset quoted_identifier on "
         "create table "
         "\"U\" (A int)");
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: A varchar/5/0/0 null constraint ('it''s')\ndbo.U: A int/4/10/0 null");
}

const script_case finding_cases[] = {
    {"a statement that is put together", "declare @s nvarchar(9)\nexec(@s)", "statement-not-read a.sql:2:1 exec(@s)"},
    {"a condition that nobody can decide", "create table T (A int)\nif @@version like 'x' alter table T add B int",
     "statement-not-read a.sql:2:23 alter table T add B int"},
    {"a string that a variable may hold, or another",
     "declare @s varchar(9) = 'drop table T' if @@version like 'x' set @s = 'print 1' exec (@s)",
     "statement-not-read a.sql:1:81 exec (@s)"},
    {"a variable that a query, a cursor or a procedure fills",
     "declare @a varchar(9) = 'print 1', @b varchar(9) = 'x', @c varchar(9) = 'y' select @a = name from sys.tables\n"
     "fetch next from d into @b exec sp_p @c output exec (@a)\nexec (@b)\nexec (@c)",
     "statement-not-read a.sql:2:47 exec (@a)\nstatement-not-read a.sql:3:1 exec (@b)\n"
     "statement-not-read a.sql:4:1 exec (@c)"},
    {"a variable of another batch", "declare @s varchar(9) = 'print 1'\ngo\nexec (@s)",
     "statement-not-read a.sql:3:1 exec (@s)"},
    {"a loop", "create table T (A int) while @n < 3 begin drop table T end",
     "statement-not-read a.sql:1:43 drop table T"},
    {"a table that the script does not make", "\n  alter table X add B int",
     "statement-not-read a.sql:2:3 alter table X add B int"},
    {"a table made by SELECT", "select 1 as A\ninto T", "statement-not-read a.sql:1:1 SELECT ... INTO dbo.T"},
    {"a procedure that may do anything", "exec dbo.Change 'x'", "statement-not-read a.sql:1:1 exec dbo.Change 'x'"},
    {"a string in a string", "exec('exec(@s)')", "statement-not-read a.sql:1:5 exec(@s)"},
    {"a column that is there already", "create table T (A int) alter table T add A int",
     "statement-not-read a.sql:1:24 alter table T add A int"},
    {"a variable that nobody defines", "print '$(Name)' print '$(Name)'", "variable-undefined a.sql:1:8 Name"},
};

TEST_F(ScriptTest, Findings)
{
    for (const script_case &c : finding_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_OK(ctx);
        EXPECT_EQ(lines(), c.expected);
        reset();
    }
}

TEST_F(ScriptTest, OfSeveralDatabasesTheFirstIsRead)
{
    read("use master\ngo\nuse Empty\ngo\nuse Shop create table T (A int)\ngo\nuse Other\ngo\ncreate table T (B int)\n"
         "create table U (A int) exec sp_rename 'T.A', 'C', 'COLUMN' drop table T create table Shop.dbo.V (A int)\n"
         "use Shop alter table T add D int create table Other.dbo.W (A int)");
    EXPECT_OK(ctx);
    EXPECT_STREQ(catalogue.name, "Shop");
    EXPECT_EQ(shown(), "dbo.T: A int/4/10/0 null, D int/4/10/0 null");
    EXPECT_EQ(lines(), "statement-not-read a.sql:9:1 create table T (B int)\n"
                       "statement-not-read a.sql:11:34 create table Other.dbo.W (A int)");
}

TEST_F(ScriptTest, WhatASchemaHasNoPlaceForIsNoted)
{
    read(
        "create view V as select 1 as A\ngo\ncreate proc dbo.P as return\ngo\ncreate function s.F() returns int as "
        "begin return 1 "
        "end\ngo\ncreate synonym S for V\ncreate sequence N as int start with 5 increment by -1 no cache\ndrop view V");
    ASSERT_OK(ctx);
    ASSERT_EQ(catalogue.left_objects.size(), 3u);
    EXPECT_STREQ(catalogue.left_objects[0].kind, "procedures");
    EXPECT_STREQ(catalogue.left_objects[0].name, "dbo.P");
    EXPECT_STREQ(catalogue.left_objects[2].kind, "synonyms");
    ASSERT_EQ(catalogue.sequences.size(), 1u);
    EXPECT_STREQ(catalogue.sequences[0].name, "N");
    EXPECT_STREQ(catalogue.sequences[0].start, "5");
    EXPECT_STREQ(catalogue.sequences[0].increment, "-1");
}

} // namespace
