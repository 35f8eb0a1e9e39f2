// EXEC: procedures that change tables, strings, and how both are written.
#include "script_test.hpp"

namespace {

const script_case exec_cases[] = {
    {"types are renamed",
     "create type Code from int exec sp_rename 'Code', 'Num', 'USERDATATYPE' create table T (A Num)",
     "dbo.T: A Num/4/10/0 null"},
    {"what is not of tables is renamed",
     "create table T (A int) exec sp_rename 'Shop', 'Store', 'DATABASE' exec "
     "sp_rename 'S', 'R', 'STATISTICS'",
     "dbo.T: A int/4/10/0 null"},
    {"constraints of every kind are renamed",
     "create table T (A int constraint P primary key, B int constraint D default 1, constraint F foreign key (B) "
     "references T, constraint C check (B > 0), constraint U unique (B)) exec sp_rename 'F', 'F2' exec sp_rename 'D', "
     "'D2', 'OBJECT' exec sp_rename N'[dbo].[U]', N'U2' exec sp_rename 'T.U2', 'U3', 'INDEX'",
     "dbo.T: A int/4/10/0, B int/4/10/0 null constraint D2 ((1)); pk P(A) clustered; unique U3(B); fk F2(B) dbo.T(A); "
     "check C ([B]>(0))"},
    {"a name with quotes within", "create table [a]]b] (A int) exec sp_rename '[a]]b]', 'T'",
     "dbo.T: A int/4/10/0 null"},
    {"renaming in other letter case only",
     "create table t (A int) exec sp_rename 't', 'T' exec sp_rename 'T.A', 'a', "
     "'COLUMN'",
     "dbo.T: a int/4/10/0 null"},
    {"defaults of types hold for their columns",
     "create default Z as 0\ngo\ncreate type Code from int create table T (A "
     "Code, B Code default 7, C int) exec sp_bindefault 'Z', 'Code'",
     "dbo.T: A Code/4/10/0 null bound Z create default Z as 0, B Code/4/10/0 null constraint ((7)), C int/4/10/0 null"},
    {"or for those to come",
     "create rule R as @v > 0\ngo\ncreate type Code from int create table T (A Code) exec "
     "sp_bindrule 'R', 'Code', 'futureonly' alter table T add B Code",
     "dbo.T: A Code/4/10/0 null, B Code/4/10/0 null rule create rule R as @v > 0"},
    {"and are taken off again",
     "create rule R as @v > 0\ngo\ncreate type Code from int create table T (A Code) exec "
     "sp_bindrule @rulename = 'dbo.R', @objname = 'dbo.Code' exec sp_unbindrule 'Code'",
     "dbo.T: A Code/4/10/0 null"},
    {"a default that a constraint is before",
     "create default Z as 0\ngo\ncreate table T (A int default 1) exec "
     "sp_bindefault 'Z', 'T.A' exec sp_unbindefault 'dbo.T.A'",
     "dbo.T: A int/4/10/0 null constraint ((1))"},
    {"a type by its parts",
     "exec sp_addtype @typename = 'Code', @phystype = 'decimal(9,2)', @nulltype = 'NULL' create "
     "table T (A Code)",
     "dbo.T: A Code/5/9/2 null"},
    {"a description is dropped",
     "create table T (A int) exec sp_addextendedproperty 'MS_Description', 'x', 'SCHEMA', 'dbo', 'TABLE', 'T' exec "
     "sp_addextendedproperty 'MS_Description', 'y', 'SCHEMA', 'dbo', 'TABLE', 'T', 'COLUMN', 'A' exec "
     "sp_dropextendedproperty 'MS_Description', 'SCHEMA', 'dbo', 'TABLE', 'T'",
     "dbo.T: A int/4/10/0 null -- y"},
    {"a description of nothing",
     "create table T (A int) exec sp_addextendedproperty 'MS_Description', null, 'SCHEMA', 'dbo', 'TABLE', 'T' exec "
     "sp_addextendedproperty 'MS_Description', 'x', 'SCHEMA', 'dbo', 'TABLE', 'Z' exec sp_addextendedproperty "
     "'MS_Description', 'x', 'SCHEMA', 'dbo', 'TABLE', 'T', 'INDEX', 'I' exec sp_addextendedproperty 'MS_Description', "
     "'x', 'SCHEMA', 'dbo', 'VIEW', 'T'",
     "dbo.T: A int/4/10/0 null"},
    {"procedures of the server's do nothing to tables",
     "create table T (A int) exec sp_configure 'show advanced options', 1 exec xp_cmdshell 'dir' execute "
     "master.dbo.sp_who "
     "exec sp_tableoption 'T', 'text in row', '7000' with recompile exec sp_help;1 exec sp_a -1, 0x2F, default, @b",
     "dbo.T: A int/4/10/0 null"},
    {"another login", "execute as user = 'Ada' create table T (A int) revert", "dbo.T: A int/4/10/0 null"},
    {"on another server", "create table T (A int) exec ('drop table T') at Elsewhere", "dbo.T: A int/4/10/0 null"},
    {"a string that a variable gave up",
     "declare @a varchar(99) = 'drop table T' create table T (A int) exec @a = "
     "sp_who",
     "dbo.T: A int/4/10/0 null"},
    {"a string under a condition that does not hold",
     "create table T (A int) if 1 = 2 exec ('drop table T') if 1 = 2 "
     "exec sp_executesql N'drop table T'",
     "dbo.T: A int/4/10/0 null"},
    {"without EXEC where a batch begins", "create table T (A int)\ngo\nsp_rename 'T', 'U'", "dbo.U: A int/4/10/0 null"},
    {"a string of another's statement", "exec sp_executesql @statement = N'create table T (A int)'",
     "dbo.T: A int/4/10/0 null"},
};

TEST_F(ScriptTest, Exec)
{
    expect_tables(exec_cases);
}

const script_case unread_cases[] = {
    {"a procedure in a variable", "declare @p varchar(9) = 'P'\nexec @p", "statement-not-read a.sql:2:1 exec @p"},
    {"a string that is not there", "exec sp_executesql", "statement-not-read a.sql:1:1 exec sp_executesql"},
    {"one that is put together", "exec sp_executesql @sql", "statement-not-read a.sql:1:1 exec sp_executesql @sql"},
    {"for each table", "exec sp_MSforeachtable 'drop table ?'",
     "statement-not-read a.sql:1:1 exec sp_MSforeachtable 'drop table ?'"},
    {"a long statement is cut between characters",
     "exec P "
     "'xäääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääää'",
     "statement-not-read a.sql:1:1 exec P 'x"
     "äääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääääää ..."},
};

TEST_F(ScriptTest, WhatIsExecutedAndNotFollowed)
{
    for (const script_case &c : unread_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_OK(ctx);
        EXPECT_EQ(lines(), c.expected);
        reset();
    }
}

const script_case drop_cases[] = {
    {"a schema that goes", "create schema s\ngo\ndrop schema s if schema_id('s') is not null create table T (A int)",
     ""},
    {"a type that goes and another of its name",
     "create type Code from int create table T (A Code) drop type Code create type Code from bit create table U (A "
     "Code)",
     "dbo.T: A Code/4/10/0 null\ndbo.U: A Code/1/1/0 null"},
    {"a default that goes after it was bound",
     "create default Z as 0\ngo\ncreate table T (A int) exec sp_bindefault 'Z', 'T.A' exec sp_unbindefault 'T.A' drop "
     "default Z",
     "dbo.T: A int/4/10/0 null"},
    {"a table that others refer to, made anew",
     "create table P (A int primary key, B int unique) create table T (A int references P (B), C int references P) "
     "drop "
     "table P create table P (B int unique, A int primary key)",
     "dbo.T: A int/4/10/0 null, C int/4/10/0 null; fk(A) dbo.P(B); fk(C) dbo.P(A)\n"
     "dbo.P: B int/4/10/0 null, A int/4/10/0; pk(A) clustered; unique(B)"},
    {"names of constraints go with their table",
     "create table T (A int constraint P primary key constraint D default 1 constraint C check (A > 0), constraint F "
     "foreign key (A) references T) drop table T create table U (A int constraint P primary key constraint D default 2 "
     "constraint C check (A > 1) constraint F references U)",
     "dbo.U: A int/4/10/0 constraint D ((2)); pk P(A) clustered; fk F(A) dbo.U(A); check C ([A]>(1))"},
    {"of several tables", "create table T (A int) create table U (A int) create table #V (A int) drop table T, U, #V",
     ""},
    {"a view is not a table",
     "create table T (A int)\ngo\ncreate view V as select A from T\ngo\ndrop view T drop table V",
     "dbo.T: A int/4/10/0 null"},
    {"triggers of the database",
     "create table T (A int)\ngo\ncreate trigger TR on database for create_table as return\n"
     "go\ndrop trigger TR on database drop trigger if exists X",
     "dbo.T: A int/4/10/0 null"},
    {"users, statistics and the like",
     "create table T (A int) drop user U drop statistics T.S drop login L drop "
     "fulltext index on T",
     "dbo.T: A int/4/10/0 null"},
    {"a name that is known by then",
     "create table T (A int) if exists (select 1 from sys.objects where name = 'T') drop "
     "table T if exists (select 1 from sys.objects where name = 'T') create table U (B "
     "int) drop table Z",
     ""},
};

TEST_F(ScriptTest, Drop)
{
    expect_tables(drop_cases);
}

// Words that begin a statement, within another one. Each leaves exactly one table, T (A int).
const char *const long_statements[] = {
    "alter table T add constraint X default 1 for A alter table T drop X",
    "alter role R drop member Ada alter role R add member Ada",
    "alter event session S on server drop event a.b, add target c.d",
    "alter credential C with identity = 'x' alter login L drop credential C",
    "alter server audit A with (state = on)",
    "alter database D set single_user with rollback immediate alter database D modify file (name = x)",
    "alter fulltext index on T drop (A) alter xml schema collection X add 'y'",
    "alter symmetric key K drop encryption by password = 'x'",
    "update T set A = 1 from T inner merge join U on T.A = U.A",
    "; with q as (select 1 as A) insert into T (A) select A from q union all select 2 except select 3",
    "insert into T exec sp_who insert T execute P2 insert T (A) values (1), (2)",
    "; with q as (select 1 as A) update T set A = 2 from q where T.A = q.A",
    "select A from T order by A offset 0 rows fetch next 5 rows only",
    "declare c insensitive cursor for select A from T for update of A fetch next from c into @a close c deallocate c",
    "grant select, update (A), execute on T to Ada with grant option deny alter on T to Ada revoke all from Ada",
    "bulk insert T from 'x.csv' with (fieldterminator = ',')",
    "merge T as t using U as u on t.A = u.A when matched then update set A = 1 when not matched then insert values "
    "(1);",
    "begin try insert T values (1) end try begin catch; throw end catch",
    "waitfor delay '00:00:01' save transaction X rollback transaction X kill 5 checkpoint",
    "raiserror ('x', 16, 1) with nowait print case when 1 = 1 then 'a' else 'b' end dbcc checkident ('T', reseed, 0)",
    "enable trigger TR on T disable trigger all on database",
    "set @a = case 1 when 1 then case 2 when 2 then 3 else 4 end end set identity_insert T on set identity_insert T "
    "off",
    "print $ truncate table T; ; goto x x: backup database D to disk = 'x' restore database D from disk = 'x'",
    "if @a = 1 print 1; else print 2 while @a < 2 begin set @a += 1 if @a = 5 break continue end while 1 = 2 drop "
    "table T",
    "begin conversation timer (@h) timeout = 5 end conversation @h begin end conversation @h with cleanup end send on "
    "conversation @h receive top (1) * from Q",
    "drop table if exists X update statistics T with fullscan, norecompute create statistics S on T (A)",
    "declare @x xml = '<a/>' set @x.modify('insert <b/> into /a[1]') select @x.value('(/a)[1]', 'int')",
    "select 1 as A into #t insert into @t select 1 select A into U2 from T drop table U2",
};

TEST_F(ScriptTest, StatementsEndWhereTheNextBegins)
{
    for (const char *statement : long_statements) {
        SCOPED_TRACE(statement);
        read(std::string("create table T (A int) ") + statement + " alter table T add Last int");
        EXPECT_OK(ctx);
        const std::string tables = shown();
        EXPECT_EQ(tables, "dbo.T: A int/4/10/0 null, Last int/4/10/0 null");
        EXPECT_EQ(lines(), "");
        reset();
    }
}

} // namespace
