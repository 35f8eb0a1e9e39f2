// ALTER TABLE in all its forms, and what it refuses.
#include "script_test.hpp"

namespace {

const script_case alter_cases[] = {
    {"a period is added",
     "create table T (A int primary key, S datetime2 not null, E datetime2 not null) alter table T add period for "
     "system_time (S, E)",
     "dbo.T: A int/4/10/0, S datetime2/8/27/7 generated1, E datetime2/8/27/7 generated2; pk(A) clustered"},
    {"and dropped", "create table T (A int, B int) alter table T drop period for system_time, column B",
     "dbo.T: A int/4/10/0 null"},
    {"attributes are added",
     "create table T (A int, B int, C int, D as A + 1) alter table T alter column A add sparse alter table T alter "
     "column B add hidden alter table T alter column D add persisted alter table T alter column C add masked with "
     "(function = 'default()') alter table T alter column C add not for replication",
     "dbo.T: A int/4/10/0 null sparse, B int/4/10/0 null hidden, C int/4/10/0 null, D as ([A]+(1)) persisted"},
    {"and dropped",
     "create table T (A int sparse, B uniqueidentifier rowguidcol) alter table T alter column A drop sparse alter "
     "table "
     "T alter column B drop rowguidcol",
     "dbo.T: A int/4/10/0 null, B uniqueidentifier/16/0/0 null"},
    {"a column's type with all that may follow it",
     "create table T (A varchar(5) not null, B int not null, C int sparse) alter table T alter column A varchar(9) "
     "collate Polish_CS_AS null alter table T alter column B bigint sparse null with (online = on) alter table T alter "
     "column C int masked with (function = 'default()') not null",
     "dbo.T: A varchar/9/0/0 null Polish_CS_AS, B bigint/8/19/0 null sparse, C int/4/10/0 sparse"},
    {"a column goes back to the database's collation",
     "create table T (A varchar(5) collate Polish_CS_AS) alter table T alter column A varchar(9) collate "
     "database_default",
     "dbo.T: A varchar/9/0/0 null"},
    {"an identity column stays one",
     "create table T (A int identity(2, 3)) alter table T alter column A bigint not null",
     "dbo.T: A bigint/8/19/0 identity(2,3)"},
    {"a column keeps its rule",
     "create table T (A int)\ngo\ncreate rule R as @v > 0\ngo\nexec sp_bindrule 'R', 'T.A' alter table T alter column "
     "A "
     "bigint",
     "dbo.T: A bigint/8/19/0 null rule create rule R as @v > 0"},
    {"a column keeps its description",
     "create table T (A int) exec sp_addextendedproperty 'MS_Description', 'x', 'SCHEMA', 'dbo', 'TABLE', 'T', "
     "'COLUMN', "
     "'A' alter table T alter column A bigint",
     "dbo.T: A bigint/8/19/0 null -- x"},
    {"constraints of every kind are dropped",
     "create table T (A int constraint P primary key with (fillfactor = 90), B int constraint D default 1 constraint C "
     "check (B > 0), constraint F foreign key (B) references T, constraint U unique (B)) alter table T drop constraint "
     "F, "
     "U, C, constraint D, P with (online = on)",
     "dbo.T: A int/4/10/0, B int/4/10/0 null"},
    {"constraints that are there may be made again",
     "create table T (A int constraint C check (A > 0)) alter table T drop constraint C alter table T add constraint C "
     "check (A > 1)",
     "dbo.T: A int/4/10/0 null; check C ([A]>(1))"},
    {"named constraints are switched",
     "create table T (A int, constraint C check (A > 0), constraint E check (A > 1), constraint F foreign key (A) "
     "references T, check (A > 2)) alter table T nocheck constraint C, F",
     "dbo.T: A int/4/10/0 null; fk F(A) dbo.T() disabled untrusted; check C ([A]>(0)) disabled untrusted; check E "
     "([A]>(1)); check ([A]>(2))"},
    {"versioning is switched off and on",
     "create table H (A int) create table T (A int primary key) with (system_versioning = on) alter table T set "
     "(system_versioning = off) alter table T set (system_versioning = on (history_table = dbo.H))",
     "dbo.H: A int/4/10/0 null; history\ndbo.T: A int/4/10/0; pk(A) clustered; temporal"},
    {"other options do not matter",
     "create table T (A int primary key) alter table T set (lock_escalation = auto) alter table T rebuild with "
     "(data_compression = page) alter table T enable trigger all alter table T disable trigger X alter table T switch "
     "to "
     "U alter table T enable change_tracking",
     "dbo.T: A int/4/10/0; pk(A) clustered"},
    {"a default with values for the rows that are there",
     "create table T (A int) alter table T add B int constraint D default 1 with values alter table T add constraint E "
     "default 2 for A with values",
     "dbo.T: A int/4/10/0 null constraint E ((2)), B int/4/10/0 null constraint D ((1))"},
};

TEST_F(ScriptTest, AlterTable)
{
    expect_tables(alter_cases);
}

// Columns that are declared alike share what was read of them, until one is changed.
const script_case shared_cases[] = {
    {"another type", "create table T (A [int] NULL,\nB [int] NULL,\nC [int] NULL)\nalter table T alter column B bigint",
     "dbo.T: A int/4/10/0 null, B bigint/8/19/0 null, C int/4/10/0 null"},
    {"a column of another table",
     "create table T (A [int] NULL,\nB bit)\ncreate table U (A [int] NULL,\nB bit)\n"
     "alter table U alter column A bigint",
     "dbo.T: A int/4/10/0 null, B bit/1/1/0 null\ndbo.U: A bigint/8/19/0 null, B bit/1/1/0 null"},
    {"a primary key", "create table T (A [int],\nB [int],\nC bit,\nprimary key (B))",
     "dbo.T: A int/4/10/0 null, B int/4/10/0, C bit/1/1/0 null; pk(B) clustered"},
    {"defaults with names",
     "create table T (A [int] CONSTRAINT [DA] DEFAULT ((1)),\nB [int] CONSTRAINT [DB] DEFAULT ((1)),\n"
     "C [int] CONSTRAINT [DC] DEFAULT ((1)),\nD bit)\nalter table T drop constraint DB",
     "dbo.T: A int/4/10/0 null constraint DA ((1)), B int/4/10/0 null, C int/4/10/0 null constraint DC ((1)), D "
     "bit/1/1/0 "
     "null"},
    {"strings that look like names of defaults",
     "create table T (A [varchar](50) DEFAULT (' CONSTRAINT [x] DEFAULT '),\n"
     "B [varchar](50) DEFAULT (' CONSTRAINT [y] DEFAULT '),\nC bit)",
     "dbo.T: A varchar/50/0/0 null constraint (' CONSTRAINT [x] DEFAULT '), B varchar/50/0/0 null constraint (' "
     "CONSTRAINT "
     "[y] DEFAULT '), C bit/1/1/0 null"},
};

TEST_F(ScriptTest, ColumnsThatAreDeclaredAlike)
{
    expect_tables(shared_cases);
}

TEST_F(ScriptTest, AColumnThatIsRefusedLeavesTheNameOfItsDefaultFree)
{
    read("create table T (A [int] CONSTRAINT [D1] DEFAULT ((1)),\nA [int] CONSTRAINT [D2] DEFAULT ((1)),\nB bit)\n"
         "create table U (A int CONSTRAINT [D2] DEFAULT ((1)))");
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(), "dbo.T: A int/4/10/0 null constraint D1 ((1)), B bit/1/1/0 null\n"
                       "dbo.U: A int/4/10/0 null constraint D2 ((1))");
    EXPECT_EQ(lines(), "statement-not-read a.sql:1:1 create table T (A [int] CONSTRAINT [D1] DEFAULT ((1)),\nA [int] "
                       "CONSTRAINT [D2] DEFAULT ((1)),\nB bit)");
    reset();
}

// Statements that the server would refuse: the table stays as it is, and a finding names them.
const struct {
    const char *name;
    const char *statement;
} refused_alterations[] = {
    {"a column that is not there", "alter table T alter column Z int"},
    {"a column that is there", "alter table T add A int"},
    {"a second primary key", "alter table T add primary key (B)"},
    {"a key of a column that is not there", "alter table T add constraint K unique (Z)"},
    {"a key whose name is taken", "alter table T add constraint C unique (B)"},
    {"a check whose name is taken", "alter table T add constraint P check (B > 1)"},
    {"a reference whose name is taken", "alter table T add constraint P foreign key (B) references T"},
    {"a reference of a column that is not there", "alter table T add foreign key (Z) references T"},
    {"a default of a column that is not there", "alter table T add default 1 for Z"},
    {"a second default", "alter table T add default 2 for B"},
    {"a default whose name is taken", "alter table T add constraint C default 1 for A"},
    {"an index whose name is taken", "create index I on T (B)"},
    {"an index of a column that is not there", "create index J on T (B) include (Z)"},
    {"dropping a column that a key uses", "alter table T drop column A"},
    {"dropping a column that is not there", "alter table T drop column Z"},
    {"dropping a constraint that is not there", "alter table T drop constraint Z"},
    {"dropping an index that is not there", "drop index Z on T"},
    {"an index of a table that is not there", "create index J on Z (A)"},
    {"renaming to a name that is taken", "exec sp_rename 'T', 'P'"},
    {"renaming a column to a name that is taken", "exec sp_rename 'T.A', 'B', 'COLUMN'"},
    {"renaming a column that is not there", "exec sp_rename 'T.Z', 'Y', 'COLUMN'"},
    {"renaming an index that is not there", "exec sp_rename 'T.Z', 'Y', 'INDEX'"},
    {"renaming a type that is not there", "exec sp_rename 'Z', 'Y', 'USERDATATYPE'"},
    {"renaming what is known only later", "exec sp_rename @a, 'Y'"},
    {"transferring what is not there", "alter schema s transfer dbo.Z"},
    {"binding what is not there", "exec sp_bindefault 'Z', 'T.A'"},
    {"unbinding from what is not there", "exec sp_unbindrule 'T.Z'"},
    {"binding what is known only later", "exec sp_bindrule @a, @b"},
    {"a type that is known only later", "exec sp_addtype Code, @a"},
    {"a type of a type that is none", "exec sp_addtype Code, 'Nothing'"},
    {"a table in another database", "create table Other.dbo.V (A int)"},
    {"a table as a query", "create table V as select 1 as A"},
    {"a script within the script", ":r other.sql"},
};

TEST_F(ScriptTest, WhatTheServerWouldRefuseChangesNothing)
{
    constexpr const char *table =
        "use Shop create table T (A int constraint P primary key, B int constraint D default 1 "
        "constraint C check (B > 0)) create index I on T (A)\n";
    for (const auto &c : refused_alterations) {
        SCOPED_TRACE(c.name);
        read(std::string(table) + c.statement);
        EXPECT_OK(ctx);
        EXPECT_EQ(shown(), "dbo.T: A int/4/10/0, B int/4/10/0 null constraint D ((1)); pk P(A) clustered; index I(A); "
                           "check C ([B]>(0))");
        EXPECT_EQ(lines(), "statement-not-read a.sql:2:1 " + std::string(c.statement));
        reset();
    }
}

const script_case malformed_cases[] = {
    {"ALTER TABLE", "create table T (A int)\nalter table T change A",
     "a.sql:2:15: expected ADD, ALTER COLUMN, DROP, CHECK, NOCHECK or SET, found 'change'"},
    {"a name that is missing", "alter table 5 add A int", "a.sql:1:13: expected a name, found '5'"},
    {"a type that is missing", "create table T (A int)\nalter table T alter column A (",
     "a.sql:2:30: expected a type, "
     "found '('"},
    {"a constraint to drop", "create table T (A int)\nalter table T drop constraint 5",
     "a.sql:2:31: expected a constraint, found '5'"},
    {"versioning", "create table T (A int)\nalter table T set (system_versioning = on (history_table = 5))",
     "a.sql:2:60: expected a name, found '5'"},
    {"a table without columns", "create table T on [PRIMARY]",
     "a.sql:1:28: expected '(' and the columns of the table, found the end"},
    {"something after a table", "create table T (A int) = 5",
     "a.sql:1:24: expected the end of the statement, found '='"},
    {"a constraint", "create table T (A int constraint C)", "a.sql:1:35: expected a constraint, found ')'"},
    {"a reference with a place for it", "create table T (A int references T on [PRIMARY])",
     "a.sql:1:36: expected ',' or ')', found 'on'"},
    {"a check", "create table T (A int check A > 0)", "a.sql:1:29: expected '(', found 'A'"},
    {"an identity", "create table T (A int identity (x, 1))", "a.sql:1:33: expected a number, found 'x'"},
    {"a generated column", "create table T (A int generated always as identity)",
     "a.sql:1:43: expected ROW START or ROW END, found 'identity'"},
    {"an index to drop", "drop index I", "a.sql:1:13: expected ON, found the end"},
    {"an index to alter", "alter index I T disable", "a.sql:1:15: expected ON, found 'T'"},
    {"a module", "create or alter table T (A int)",
     "a.sql:1:17: expected VIEW, PROCEDURE, FUNCTION or TRIGGER, found 'table'"},
    {"a default without AS", "create default Z 0", "a.sql:1:18: expected AS, found '0'"},
    {"a default with something", "create table T (A int default 1 with (x))",
     "a.sql:1:33: expected ',' or ')', found 'with'"},
    {"a view's name", "create view 5 as select 1", "a.sql:1:13: expected a name, found '5'"},
    {"a name to drop", "drop table 5", "a.sql:1:12: expected a name, found '5'"},
    {"an empty name", "create table [] (A int)", "a.sql:1:14: a name is empty"},
    {"END alone", "end", "a.sql:1:1: expected a statement, found 'end'"},
    {"an IF without a statement", "if 1 = 1", "a.sql:1:9: expected a statement after the condition, found the end"},
    {"an argument", "exec sp_rename 'a', =", "a.sql:1:21: expected an argument, found '='"},
    {"a TRY without a CATCH", "begin try print 1 end try print 2", "a.sql:1:27: expected BEGIN CATCH, found 'print'"},
    {"a module with a quote that does not end", "create view V as select 'x",
     "a.sql:1:25: expected T-SQL, found a quote that is not closed"},
    {"a reference to a column that is not there",
     "create table T (A int primary key)\ncreate table U (A int references T (B))",
     "a.sql:2:1: table dbo.U refers to column B, which dbo.T lacks"},
};

TEST_F(ScriptTest, MalformedStatements)
{
    for (const script_case &c : malformed_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        EXPECT_EQ(error(), c.expected);
        reset();
    }
}

} // namespace
