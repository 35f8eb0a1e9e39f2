// CREATE TABLE in all its forms.
#include "script_test.hpp"

namespace {

const script_case table_cases[] = {
    {"a column", "create table T (A int)", "dbo.T: A int/4/10/0 null"},
    {"with a schema and every kind of quotes", "create table [a b].\"T\"\"x\" ([c]]d] [int] not null)",
     "a b.T\"x: c]d int/4/10/0"},
    {"types with sizes",
     "create table T (A varchar(10), B nvarchar(20), C decimal(9,2), D datetime2(3), E varbinary(max), F char, G "
     "float(24))",
     "dbo.T: A varchar/10/0/0 null, B nvarchar/40/0/0 null, C decimal/5/9/2 null, D datetime2/7/23/3 null, "
     "E varbinary/-1/0/0 null, F char/1/0/0 null, G real/4/24/0 null"},
    {"types of several words",
     "create table T (A national character varying(5), B double precision, C character varying(3), D dec(4), E "
     "integer)",
     "dbo.T: A nvarchar/10/0/0 null, B float/8/53/0 null, C varchar/3/0/0 null, D decimal/5/4/0 null, E int/4/10/0 "
     "null"},
    {"xml with a schema collection", "create table T (A xml(CONTENT [dbo].[S]))", "dbo.T: A xml/-1/0/0 null"},
    {"sysname and rowversion are not nullable", "create table T (A sysname, B rowversion, C timestamp)",
     "dbo.T: A sysname/256/0/0, B timestamp/8/0/0, C timestamp/8/0/0"},
    {"attributes in any order",
     "create table T (A int default 1 identity(5,-2) not null rowguidcol constraint P primary key)",
     "dbo.T: A int/4/10/0 identity(5,-2) rowguidcol constraint ((1)); pk P(A) clustered"},
    {"a key makes its columns not nullable", "create table T (A int, B int, primary key nonclustered (B, A desc))",
     "dbo.T: A int/4/10/0, B int/4/10/0; pk(B,A-)"},
    {"another clustered key leaves the primary key none", "create table T (A int primary key, B int unique clustered)",
     "dbo.T: A int/4/10/0, B int/4/10/0 null; pk(A); unique(B) clustered"},
    {"options of keys",
     "create table T (A int primary key with (fillfactor = 80) on [PRIMARY], B int unique with fillfactor = 9)",
     "dbo.T: A int/4/10/0, B int/4/10/0 null; pk(A) clustered; unique(B)"},
    {"a constraint without a comma before it", "create table T (A int not null constraint P primary key (A), B int)",
     "dbo.T: A int/4/10/0, B int/4/10/0 null; pk P(A) clustered"},
    {"a comma at the end", "create table T (A int,)", "dbo.T: A int/4/10/0 null"},
    {"defaults",
     "create table T (A int default 0, B varchar(5) constraint D default ('x') not null, C datetime default getdate())",
     "dbo.T: A int/4/10/0 null constraint ((0)), B varchar/5/0/0 constraint D ('x'), "
     "C datetime/8/23/3 null constraint (getdate())"},
    {"declarations that others repeat, with and without the rest of the line",
     "create table T (\nA int CONSTRAINT [D1] DEFAULT ((0)),\nB int CONSTRAINT [D2] DEFAULT ((0)),\n"
     "C int CONSTRAINT [D3] DEFAULT ((0)) not null,\nD int CONSTRAINT [D4] DEFAULT ((0)) not null,\n"
     "E int CONSTRAINT [D5] DEFAULT ((0)),\nF int,\nG int,\nH int\n)",
     "dbo.T: A int/4/10/0 null constraint D1 ((0)), B int/4/10/0 null constraint D2 ((0)), "
     "C int/4/10/0 constraint D3 ((0)), D int/4/10/0 constraint D4 ((0)), E int/4/10/0 null constraint D5 ((0)), "
     "F int/4/10/0 null, G int/4/10/0 null, H int/4/10/0 null"},
    {"what is changed of one column is not changed of those declared like it",
     "create table T (\nA int,\nB int,\nC int,\nprimary key (B)\n)",
     "dbo.T: A int/4/10/0 null, B int/4/10/0, C int/4/10/0 null; pk(B) clustered"},
    {"checks",
     "create table T (A int check (A > 0), B int, constraint C check not for replication (A < B or B is null))",
     "dbo.T: A int/4/10/0 null, B int/4/10/0 null; check ([A]>(0)); check C ([A]<[B] OR [B] IS NULL) untrusted"},
    {"a check that is not understood is kept", "create table T (A int check (A in (select 1)))",
     "dbo.T: A int/4/10/0 null; check (A in (select 1))"},
    {"computed columns", "create table T (A int, B as A * 2, C as (upper('x')) persisted not null)",
     "dbo.T: A int/4/10/0 null, B as ([A]*(2)), C as (upper('x')) persisted"},
    {"references to a table before and after",
     "create table P (I int primary key) create table C (A int references P, B int references L(I) on delete set null "
     "null, "
     "constraint F foreign key (A) references dbo.P (I) on update cascade on delete no action) create table L (I int "
     "unique)",
     "dbo.P: I int/4/10/0; pk(I) clustered\n"
     "dbo.C: A int/4/10/0 null, B int/4/10/0 null; fk(A) dbo.P(I); fk(B) dbo.L(I) delete SET NULL; fk F(A) dbo.P(I) "
     "update "
     "CASCADE\ndbo.L: I int/4/10/0 null; unique(I)"},
    {"a table that refers to itself", "create table T (A int primary key, B int references T)",
     "dbo.T: A int/4/10/0, B int/4/10/0 null; pk(A) clustered; fk(B) dbo.T(A)"},
    {"names in other case", "create table T (Abc int, constraint P primary key (ABC)) create index X on t (aBC)",
     "dbo.T: Abc int/4/10/0; pk P(Abc) clustered; index X(Abc)"},
    {"inline indexes", "create table T (A int index I1 unique, B int, index I2 nonclustered (B desc) where B > 0)",
     "dbo.T: A int/4/10/0 null, B int/4/10/0 null; unique index I1(A); index I2(B-)"},
    {"columns of other kinds",
     "create table T (A int sparse, B xml column_set for all_sparse_columns, C varbinary(max) filestream, D "
     "nvarchar(9) "
     "encrypted with (encryption_type = deterministic), E int masked with (function = 'default()') null)",
     "dbo.T: A int/4/10/0 null sparse, B xml/-1/0/0 null column_set, C varbinary/-1/0/0 null filestream, D "
     "nvarchar/18/0/0 "
     "null encrypted, E int/4/10/0 null"},
    {"a temporal table and its history",
     "create table H (A int, S datetime2, E datetime2) create table T (A int primary key, S datetime2 generated always "
     "as row "
     "start hidden, E datetime2 generated always as row end hidden not null, period for system_time (S, E)) with "
     "(system_versioning = on (history_table = dbo.H, data_consistency_check = on))",
     "dbo.H: A int/4/10/0 null, S datetime2/8/27/7 null, E datetime2/8/27/7 null; history\n"
     "dbo.T: A int/4/10/0, S datetime2/8/27/7 generated1 hidden, E datetime2/8/27/7 generated2 hidden; pk(A) "
     "clustered; "
     "temporal"},
    {"one whose history is made first, with storage options between",
     "create table H (A int) create table T (A int primary key) on [PRIMARY] textimage_on [PRIMARY] with "
     "(system_versioning = "
     "on (history_table = [dbo].[H]))",
     "dbo.H: A int/4/10/0 null; history\ndbo.T: A int/4/10/0; pk(A) clustered; temporal"},
    {"a table in memory",
     "create table T (A int primary key nonclustered hash with (bucket_count = 8)) with (memory_optimized = "
     "on, durability = schema_only)",
     "dbo.T: A int/4/10/0; pk(A); in memory"},
    {"an external table", "create external table T (A int) with (location = '/x', data_source = S)",
     "dbo.T: A int/4/10/0 null; external"},
    {"temporary tables are none", "create table #T (A int) create table ##U (A int) create table tempdb..V (A int)",
     ""},
    {"alias types", "create type Code from nvarchar(10) not null create table T (A Code, B dbo.Code null, C [Code])",
     "dbo.T: A Code/20/0/0, B Code/20/0/0 null, C Code/20/0/0"},
    {"types that nothing makes are kept by name", "create table T (A dbo.Unheard)", "dbo.T: A unheard/0/0/0 null"},
    {"attributes in the old manner",
     "create table T (A int identity not for replication not null, B datetime2 generated always as row start, C "
     "datetime2 generated always as row end hidden, D bigint generated always as transaction_id start, E int hidden, F "
     "int constraint N not null, G int default 1 with values)",
     "dbo.T: A int/4/10/0 identity(1,1), B datetime2/8/27/7 generated1, C datetime2/8/27/7 generated2 hidden, D "
     "bigint/8/19/0 generated7, E int/4/10/0 null hidden, F int/4/10/0, G int/4/10/0 null constraint ((1))"},
    {"columns that are declared alike, on lines of their own",
     "create table T (\n    A nvarchar(9) not null, \r\n    B int,\n    C decimal(9, 2) not null,\n    D int)\ncreate "
     "table U (\n    A nvarchar(9) not null, \r\n    X int,\n    C decimal(9, 2) not null,\n    D int)",
     "dbo.T: A nvarchar/18/0/0, B int/4/10/0 null, C decimal/5/9/2, D int/4/10/0 null\n"
     "dbo.U: A nvarchar/18/0/0, X int/4/10/0 null, C decimal/5/9/2, D int/4/10/0 null"},
    {"columns that say nothing of NULL are as the settings have them",
     "set ansi_null_dflt_off on create table T (\nA int,\nB int)\nset ansi_null_dflt_on on create table U (\nA int,\nB "
     "int) set ansi_defaults on",
     "dbo.T: A int/4/10/0, B int/4/10/0\ndbo.U: A int/4/10/0 null, B int/4/10/0 null"},
    {"actions of every kind",
     "create table P (A int primary key) create table T (A int references P on delete set default on update no action "
     "not for replication, B int foreign key references P on delete cascade)",
     "dbo.P: A int/4/10/0; pk(A) clustered\ndbo.T: A int/4/10/0 null, B int/4/10/0 null; fk(A) dbo.P(A) delete SET "
     "DEFAULT untrusted; fk(B) dbo.P(A) delete CASCADE"},
    {"storage in every form",
     "create table T (A int not null, B int, primary key (A) with fillfactor = 90, pad_index on PS (A), unique (B) "
     "with "
     "(ignore_dup_key = on) on [PRIMARY]) on PS (A) textimage_on [PRIMARY] filestream_on F with (data_compression = "
     "page "
     "on partitions (1, 2), system_versioning = off)",
     "dbo.T: A int/4/10/0, B int/4/10/0 null; pk(A) clustered; unique(B)"},
    {"indexes of every kind within the table",
     "create table T (A int, B int, index I (A) include (B) where A > 1 with (fillfactor = 80), index C clustered "
     "columnstore, index N nonclustered columnstore (A, B), index H unique nonclustered hash (A) with (bucket_count = "
     "8))",
     "dbo.T: A int/4/10/0 null, B int/4/10/0 null; unique index H(A); index C(); index I(A); index N(A,B)"},
    {"nodes and edges of a graph",
     "create table N (A int) as node create table E as edge create table F (W int) as edge",
     "dbo.N: A int/4/10/0 null\ndbo.E: \ndbo.F: W int/4/10/0 null"},
    {"definitions that are not understood are kept",
     "create table T (A int, B as (A B), C int default (1 2)) create index I on T (A) where A in (select "
     "1)",
     "dbo.T: A int/4/10/0 null, B as (A B), C int/4/10/0 null constraint (1 2); index I(A)"},
    {"a column that is named like its type", "create table T (timestamp, A int)",
     "dbo.T: timestamp timestamp/8/0/0, A int/4/10/0 null"},
};

TEST_F(ScriptTest, Tables)
{
    for (const script_case &c : table_cases) {
        SCOPED_TRACE(c.name);
        read(c.script);
        EXPECT_OK(ctx);
        EXPECT_EQ(shown(), c.expected);
        reset();
    }
}

TEST_F(ScriptTest, CollationsAreThoseOfTheColumnOrTheDatabase)
{
    read("create table T (A varchar(5), B char(1) collate Polish_CS_AS, C nchar(1) collate database_default, D int)\n"
         "alter database X collate Latin1_General_CI_AS");
    EXPECT_OK(ctx);
    EXPECT_EQ(shown(),
              "dbo.T: A varchar/5/0/0 null Latin1_General_CI_AS, B char/1/0/0 null Polish_CS_AS, C nchar/2/0/0 null "
              "Latin1_General_CI_AS, D int/4/10/0 null");
    EXPECT_EQ(catalogue.code_page, 1252);
    EXPECT_EQ(catalogue.tables[0].cols[1].code_page, 1250);
}

} // namespace
