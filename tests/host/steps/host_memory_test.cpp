// Memory runs out while a source is read, at every allocation in turn.
#include "failing_alloc.hpp"
#include "failing_new.hpp"
#include "host_test.hpp"
#include "package_builder.hpp"

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

} // namespace
