// Memory runs out while a source is read, at every allocation in turn.
#include "chunk_ends.hpp"
#include "failing_alloc.hpp"
#include "failing_new.hpp"
#include "host_test.hpp"
#include "package_builder.hpp"

#include <cstring>

namespace {

constexpr std::string_view script = R"(SET QUOTED_IDENTIFIER ON
GO
CREATE SCHEMA [Sales and more]
GO
CREATE TYPE dbo.Flag FROM bit NOT NULL
GO
CREATE TABLE [Sales and more].[Orders that are long enough] ([Id] int IDENTITY CONSTRAINT [PK of orders] PRIMARY KEY,
    [Placed] datetime2(3) NOT NULL CONSTRAINT [DF of the date placed] DEFAULT (sysdatetime()), [Paid] dbo.Flag,
    [Total] decimal(9, 2) CHECK ([Total] >= 0), [Twice] AS [Total] * 2)
CREATE UNIQUE INDEX [Index of the orders] ON [Sales and more].[Orders that are long enough] (Placed DESC) WHERE Id > 1
DECLARE @sql nvarchar(max) = N'CREATE TABLE Lines (Id int REFERENCES [Sales and more].[Orders that are long enough])'
IF OBJECT_ID('Lines') IS NULL EXEC (@sql)
IF EXISTS (SELECT * FROM sys.tables WHERE name = 'Nowhere to be found') DROP TABLE Lines
EXEC sp_rename 'Lines', 'The lines of the orders'
ALTER TABLE Missing ADD A int
GO
CREATE VIEW V AS SELECT 1 AS A
)";

// What is read a second time for SQLite: checks, filters and defaults, and what is said of their comparisons.
constexpr std::string_view conditions = R"(CREATE TABLE dbo.Translated (
    Id uniqueidentifier NOT NULL DEFAULT newid() PRIMARY KEY,
    Code nvarchar(40) COLLATE Latin1_General_CI_AS NOT NULL DEFAULT (upper('a') + N'b') UNIQUE,
    Zip char(5) COLLATE SQL_Latin1_General_CP1_CI_AS CHECK (Zip LIKE '[0-9][0-9][^x]__' OR len(Zip) > 3),
    Rate decimal(9, 4) DEFAULT ((1.5)) CHECK (Rate * 2 >= 0.25 AND abs(Rate) < 7),
    At datetime2(3) DEFAULT dateadd(day, 7, getdate()), Till smalldatetime DEFAULT '19700101',
    CHECK (Code IN ('a fairly long string', 'another long string') AND At > '20200101 10:00' AND year(At) < 2100),
    CHECK (CASE WHEN Zip IS NULL THEN 1 ELSE 0 END = 1 OR Till < At), CHECK (Rate > dbo.f(Rate)))
CREATE UNIQUE INDEX IX ON dbo.Translated (Zip) WHERE Code <> N'x' AND Id <> '6F9619FF-8B86-D011-B42D-00C04FC964FF')";

std::string a_small_package()
{
    const std::string type = an_element("SqlTypeSpecifier", "", references("Type", "[int]", "BuiltIns"));
    const std::string col =
        an_element("SqlSimpleColumn", "[dbo].[A table of a package].[Id]",
                   a_property("IsNullable", "False") + a_relationship("TypeSpecifier", "<Entry>" + type + "</Entry>"));
    return a_package(an_element("SqlTable", "[dbo].[A table of a package]",
                                a_relationship("Columns", "<Entry>" + col + "</Entry>")));
}

// Something of all that becomes a fact or a finding, after a table that holds a padding in both.
std::string a_full_export(const std::string &padding)
{
    std::string text = R"json({"format":"sqlserver-catalogue","format_version":1,
"database":{"name":"Shop","collation":"Latin1_General_CI_AS","code_page":1252},
"sequences":[{"schema":"dbo","name":"Numbers","type":"bigint","start":"1","increment":"1"}],
"objects":[{"kind":"views","name":"dbo.V"}],
"tables":[
{"id":7,"schema":"dbo","name":"Padded","description":"PADDING","pk":{"name":"PK","columns":[{"name":"B"}]},"columns":[
 {"id":1,"name":"A","system_type":"nvarchar","max_length":40,"is_nullable":true,
  "default":{"kind":"constraint","id":1,"name":"DF","definition":"([dbo].[f]('PADDING'))"}},
 {"id":2,"name":"B","system_type":"int","max_length":4,"is_nullable":false}]},
{"id":8,"schema":"dbo","name":"Full","description":"all of it","temporal_type":2,"row_count":5,"columns":[
 {"id":1,"name":"Id","system_type":"int","max_length":4,"is_nullable":false,"is_identity":true,
  "identity":{"seed":"7","increment":"3"}},
 {"id":2,"name":"Code","system_type":"nvarchar","max_length":40,"is_nullable":true,"collation":"Latin1_General_CI_AS",
  "code_page":1252,"comparison_style":196609},
 {"id":3,"name":"Total","system_type":"decimal","max_length":9,"precision":9,"scale":2,"is_nullable":true,
  "is_sparse":true,"description":"in euros"},
 {"id":4,"name":"Twice","system_type":"decimal","max_length":9,"is_nullable":true,"is_computed":true,
  "computed":{"definition":"([Total]*(2))"}},
 {"id":5,"name":"Row","system_type":"uniqueidentifier","max_length":16,"is_nullable":false,"is_rowguidcol":true,
  "default":{"kind":"constraint","id":2,"name":"DF2","definition":"(newid())"}},
 {"id":6,"name":"Since","system_type":"datetime2","max_length":8,"scale":7,"is_nullable":false,
  "generated_always_type":1,"is_hidden":true},
 {"id":7,"name":"Other","system_type":"int","max_length":4,"is_nullable":true,"rule":"CREATE RULE r AS @x > 0"},
 {"id":8,"name":"Place","system_type":"geography","max_length":-1,"is_nullable":true,"is_assembly_type":true},
 {"id":9,"name":"Alias","system_type":"int","user_type":"Flag","user_type_schema":"dbo","is_user_type":true,
  "max_length":4,"is_nullable":true,"default":{"kind":"constraint","id":3,"name":"DF3","definition":"((1)+(1))"}},
 {"id":10,"name":"At","system_type":"datetime","max_length":8,"scale":3,"is_nullable":true,
  "default":{"kind":"constraint","id":4,"name":"DF4","definition":"(getdate())"}}],
 "pk":{"name":"PK","columns":[{"name":"Id"}]},
 "uniques":[{"name":"UQ","columns":[{"name":"Code"}]},
  {"name":"UQ2","is_disabled":true,"columns":[{"name":"Total"}]},
  {"name":"UQ3","columns":[{"name":"Twice"}]},
  {"name":"IX0","kind":"index","is_clustered":true,"filter":"([Code]<>[Row])","columns":[{"name":"Code"}]}],
 "indexes":[{"name":"IX","filter":"([Total]>(1))","columns":[{"name":"Total","descending":true},{"name":"Other"}],
   "included":[{"name":"Code"}]},
  {"name":"IX2","is_disabled":true,"is_clustered":true,"columns":[{"name":"Other"}]},
  {"name":"IX3","kind":"XML","columns":[{"name":"Code"}]},
  {"name":"IX4","columns":[{"name":"Twice"}]}],
 "checks":[{"name":"CK","definition":"([Total]>(0))","column":"Total"},
  {"name":"CK2","definition":"([dbo].[f]([Id])=(1))"},{"name":"CK3","is_disabled":true,"definition":"([Id]>(0))"},
  {"name":"CK4"},{"name":"CK5","definition":"([Id]>[Other])"},{"name":"CK6","definition":"([Twice]>(0))"}],
 "fks":[{"name":"FK","id":9,"ref_table_id":7,"ref_schema":"dbo","ref_table":"Padded","ref_key":"PK",
   "on_delete":"CASCADE","on_update":"SET_NULL","columns":[{"column":"Other","ref_column":"B"}]},
  {"name":"FK2","id":10,"is_disabled":true,"ref_table_id":8,"ref_schema":"dbo","ref_table":"Full",
   "on_delete":"NO_ACTION","on_update":"NO_ACTION","columns":[{"column":"Other","ref_column":"Id"}]},
  {"name":"FK3","id":11,"ref_table_id":99,"ref_schema":"dbo","ref_table":"Gone",
   "on_delete":"NO_ACTION","on_update":"NO_ACTION","columns":[{"column":"Other","ref_column":"Id"}]}]},
{"id":9,"schema":"dbo","name":"Keyless","pk":{"name":"PK9","columns":[{"name":"N"}]},"columns":[
 {"id":1,"name":"N","system_type":"bigint","max_length":8,"is_nullable":false,
  "default":{"kind":"constraint","id":5,"name":"DF5","definition":"(NEXT VALUE FOR [dbo].[Numbers])"}}]},
{"id":10,"schema":"dbo","name":"None","columns":[
 {"id":1,"name":"X","system_type":"int","max_length":4,"is_nullable":true,"is_computed":true}]}]})json";
    for (size_t at = text.find("PADDING"); at != std::string::npos; at = text.find("PADDING"))
        text.replace(at, std::strlen("PADDING"), padding);
    return text;
}

class HostMemoryTest : public HostTest {
  protected:
    // Imports until no allocation fails any more. An import that fails says why, and gives nothing.
    void sweep(std::string_view source)
    {
        size_t failures = 0;
        bool is_over = false;
        for (size_t turn = 1; !is_over; turn++) {
            forget();
            allocations_to_failure = turn;
            tov_host__import(ctx, source.data(), source.size(), nullptr, &schema, &findings);
            is_over = std::exchange(allocations_to_failure, 0) > 0;
            const bool is_imported = !KT_context__has_err(ctx);
            ASSERT_EQ(schema != nullptr, is_imported) << turn;
            if (is_imported)
                continue;
            failures++;
            ASSERT_EQ(KT_context__err_code(ctx), KT_ERR_OUT_OF_MEMORY) << turn << KT_context__err_description(ctx);
            ASSERT_EQ(findings, nullptr) << turn;
            KT_context__err_reset(ctx);
        }
        EXPECT_NE(schema, nullptr);
        EXPECT_GT(failures, 50u);
    }
};

TEST_F(HostMemoryTest, Scripts)
{
    sweep(script);
}

TEST_F(HostMemoryTest, Conditions)
{
    sweep(conditions);
    EXPECT_TRUE(has("GLOB")) << document();
}

TEST_F(HostMemoryTest, Packages)
{
    sweep(a_small_package());
}

TEST_F(HostMemoryTest, TheMemoryOfTheRuntimeMayRunOutToo)
{
    const std::string package = a_small_package();
    for (const std::string_view source : {script, conditions, std::string_view(package)}) {
        for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
            import_file(source);
            const bool is_imported = !KT_context__has_err(ctx);
            EXPECT_EQ(is_imported, schema != nullptr);
            forget();
            EXPECT_EQ(fault.leaked(), 0u);
            if (!fault.fired()) {
                EXPECT_TRUE(is_imported);
                break;
            }
        }
    }
}

// Wherever a record, a fact or a finding needs a new chunk, the import fails as a whole.
TEST_F(HostMemoryTest, EachCallThatAddsToATreeMayFail)
{
    import_file(a_full_export(""));
    ASSERT_OK(ctx);
    const std::string whole_document = document();
    const std::string whole_findings = codes();
    std::string source;
    const auto prepare = [&](const std::string &padding) { source = a_full_export(padding); };
    at_each_chunk_end(32, prepare, [&] {
        import_file(source);
        const bool failed = KT_context__has_err(ctx);
        EXPECT_EQ(failed, schema == nullptr);
        EXPECT_EQ(failed, findings == nullptr);
        if (failed) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        KT_context__err_reset(ctx);
        return failed;
    });
    import_file(a_full_export(""));
    EXPECT_EQ(document(), whole_document);
    EXPECT_EQ(codes(), whole_findings);
}

} // namespace
