// tov-schema diff.

#include "run_command.hpp"
#include "sample.hpp"

#include <filesystem>

namespace {

class CommandDiffTest : public CommandTest {
  protected:
    // The sample with one text replaced by another.
    std::string changed(const std::string &from, const std::string &to)
    {
        std::string schema = sample_schema;
        schema.replace(schema.find(from), from.size(), to);
        return write("new.json", schema);
    }
    void SetUp() override
    {
        CommandTest::SetUp();
        old_schema = write("old.json", sample_schema);
    }
    std::string old_schema;
};

TEST_F(CommandDiffTest, TheSameSchemaIsSame)
{
    const command_result result = run({"diff", old_schema, changed("\"txid\":7", "\"txid\":8")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "same\n");
    EXPECT_EQ(run({"diff", old_schema, old_schema, "--format", "markdown"}).out, "The schemas are the same.\n");
    EXPECT_EQ(run({"diff", old_schema, old_schema, "--json"}).out, "{\"changes\":[],\"tables\":[]}\n");
}

// A column renamed and wider, a reference with another action, a table gone and one new.
class CommandDiffChangesTest : public CommandDiffTest {
  protected:
    void SetUp() override
    {
        CommandDiffTest::SetUp();
        std::string schema = sample_schema;
        replace(schema, R"("title":{"name":"Title")", R"("caption":{"name":"Caption")");
        replace(schema, R"("on_delete":"CASCADE")", R"("on_delete":"SET NULL")");
        replace(schema, R"("t1":)",
                R"("t0":{"name":"Extra","cols":{"x":{"name":"X|Y","type":{"name":"guid"}}}},"t1":)");
        new_schema = write("new.json", schema);
    }
    static void replace(std::string &text, const std::string &from, const std::string &to)
    {
        text.replace(text.find(from), from.size(), to);
    }
    std::string new_schema;
};

TEST_F(CommandDiffChangesTest, PrintsChangesByTable)
{
    const command_result result = run({"diff", old_schema, new_schema});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "~ Children\n"
                          "    ~ foreign key FK_P: on delete CASCADE -> SET NULL\n"
                          "+ Extra\n"
                          "    + column X|Y: guid\n"
                          "~ Parents\n"
                          "    ~ column Caption renamed from Title (a guess)\n"
                          "tables: 2 changed, 1 added, 0 removed\n");
    const command_result back = run({"diff", new_schema, old_schema, "--rename", "Parents.Caption=Title"});
    EXPECT_NE(back.out.find("- Extra\n    - column X|Y: guid\n"), std::string::npos) << back.out;
    EXPECT_NE(back.out.find("    ~ column Title renamed from Caption\n"), std::string::npos) << back.out;
}

TEST_F(CommandDiffChangesTest, PrintsMarkdown)
{
    const command_result result = run({"diff", old_schema, new_schema, "--format", "markdown"});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "## Children: changed\n\n"
                          "| | What | Old | New |\n|---|---|---|---|\n"
                          "| \\~ | foreign key FK\\_P: on delete | CASCADE | SET NULL |\n\n"
                          "## Extra: added\n\n"
                          "| | What | Old | New |\n|---|---|---|---|\n"
                          "| + | column X\\|Y |  | guid |\n\n"
                          "## Parents: changed\n\n"
                          "| | What | Old | New |\n|---|---|---|---|\n"
                          "| \\~ | column Caption renamed from Title (a guess) |  |  |\n");
}

TEST_F(CommandDiffChangesTest, PrintsJson)
{
    const command_result result = run({"diff", old_schema, new_schema, "--format", "json"});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out,
              R"({"changes":[],"tables":[{"name":"Children","change":"changed","old_id":"t2","new_id":"t2","changes":[)"
              R"({"kind":"foreign key","change":"changed","name":"FK_P","member":"on delete","old":"CASCADE",)"
              R"("new":"SET NULL"}]},{"name":"Extra","change":"added","new_id":"t0","changes":[{"kind":"column",)"
              R"("change":"added","name":"X|Y","new":"guid"}]},{"name":"Parents","change":"changed","old_id":"t1",)"
              R"("new_id":"t1","changes":[{"kind":"column","change":"renamed","name":"Caption","old_name":"Title",)"
              R"("guess":true}]}]})"
              "\n");
}

// What belongs to no table comes first.
TEST_F(CommandDiffTest, PrintsChangesOfTheWhole)
{
    const std::string newer = changed("\"compat_level\":1", "\"compat_level\":2");
    EXPECT_EQ(run({"diff", old_schema, newer}).out, "~ the schema as a whole\n"
                                                    "    ~ compatibility level: 1 -> 2\n"
                                                    "tables: 0 changed, 0 added, 0 removed\n");
    EXPECT_EQ(run({"diff", old_schema, newer, "--format", "markdown"}).out,
              "## The schema as a whole\n\n"
              "| | What | Old | New |\n|---|---|---|---|\n"
              "| \\~ | compatibility level | 1 | 2 |\n");
}

TEST_F(CommandDiffTest, MarkdownShowsNamesAsTheyAre)
{
    const std::string newer = changed("\"Children\"", "\"<b>&Co|\"");
    EXPECT_EQ(run({"diff", old_schema, newer, "--format", "markdown"}).out,
              "## &lt;b>&amp;Co\\|: renamed from Children (a guess)\n");
}

TEST_F(CommandDiffChangesTest, MarkdownShowsWhatIsGone)
{
    const std::string out = run({"diff", new_schema, old_schema, "--format", "markdown"}).out;
    EXPECT_NE(out.find("## Extra: removed\n\n"
                       "| | What | Old | New |\n|---|---|---|---|\n"
                       "| &minus; | column X\\|Y | guid |  |\n"),
              std::string::npos)
        << out;
}

TEST_F(CommandDiffTest, ComparesWhatImportReads)
{
    const std::string source = write("export.json", sample_catalogue);
    const command_result imported = run({"import", source, "-o", path("schema.json")});
    ASSERT_EXIT_CODE(imported, 0);
    EXPECT_EXIT_CODE(run({"diff", path("schema.json"), source}), 0);
    const std::string script = write("shop.sql", "CREATE TABLE dbo.Customers (CustomerId int IDENTITY PRIMARY KEY);\n");
    const command_result result = run({"diff", source, script});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_NE(result.out.find("- dbo.Orders\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("    - column Name: nvarchar(40)"), std::string::npos) << result.out;
    std::filesystem::create_directory(path("scripts"));
    write("scripts/shop.sql", "CREATE TABLE Customers (CUSTOMERID int IDENTITY PRIMARY KEY);\n");
    const command_result folder = run({"diff", script, path("scripts")});
    EXPECT_EQ(folder.out, "~ dbo.Customers\n    ~ column CUSTOMERID renamed from CustomerId\n"
                          "tables: 1 changed, 0 added, 0 removed\n");
}

TEST_F(CommandDiffTest, ComparesWhatADatabaseHasRecorded)
{
    ASSERT_EXIT_CODE(run({"create", old_schema, path("shop.db")}), 0);
    EXPECT_EQ(run({"diff", path("shop.db"), old_schema}).out, "same\n");
    EXPECT_EXIT_CODE(run({"diff", path("shop.db"), changed("\"width\":20", "\"width\":30")}), 1);
    ASSERT_EXIT_CODE(run({"create", old_schema, path("bare.db"), "--no-record"}), 0);
    const command_result result = run({"diff", path("bare.db"), old_schema});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: the database has no record of its schema: " + path("bare.db") + "\n");
}

TEST_F(CommandDiffTest, NamesCannotDisturbATerminal)
{
    const command_result result = run({"diff", old_schema, changed("\"Title\"", "\"T\\u001b[31m\\u202e\"")});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out.find('\033'), std::string::npos);
    EXPECT_NE(result.out.find("<U+202E>"), std::string::npos) << result.out;
}

TEST_F(CommandDiffTest, WhatCannotGoTogetherIsRefused)
{
    EXPECT_EXIT_CODE(run({"diff", old_schema, old_schema, "--changed-since", "--by", "id"}), 2);
    EXPECT_EXIT_CODE(run({"diff", old_schema, old_schema, "--format", "xml"}), 2);
    const command_result result = run({"diff", old_schema, old_schema, "--rename", "Nothing=New"});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: there is no table or column 'Nothing' in the old schema\n");
}

TEST_F(CommandDiffTest, ByTransactionIdTheSameSchemaIsSame)
{
    const command_result result = run({"diff", "--changed-since", old_schema, old_schema});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "same: Parents\nsame: Children\n");
}

TEST_F(CommandDiffTest, ADifferentTransactionIdIsAChange)
{
    const command_result result = run({"diff", "--changed-since", old_schema, changed("\"txid\":7", "\"txid\":8")});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "changed: Children\nsame: Parents\n");
    EXPECT_EXIT_CODE(run({"diff", "--changed-since", old_schema, changed("\"txid\":7", "\"txid\":0")}), 0);
}

TEST_F(CommandDiffTest, TablesAndColumnsOfOneSideAreListed)
{
    const command_result tables = run({"diff", "--changed-since", old_schema, changed("\"t2\":", "\"t3\":")});
    EXPECT_EXIT_CODE(tables, 1);
    EXPECT_EQ(tables.out, "only in old: Children\nonly in new: Children\nsame: Parents\n");
    const command_result columns = run({"diff", "--changed-since", old_schema, changed("\"title\":", "\"caption\":")});
    EXPECT_EXIT_CODE(columns, 1);
    EXPECT_EQ(columns.out, "only in old: Parents.Title\nonly in new: Parents.Title\nsame: Parents\nsame: Children\n");
}

TEST_F(CommandDiffTest, ByTransactionIdPrintsJson)
{
    const command_result result =
        run({"diff", "--changed-since", old_schema, changed("\"title\":", "\"caption\":"), "--json"});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out,
              R"({"only_in_old":[],"only_in_new":[],"changed":[],"same":["t1","t2"],"columns":[{"table":"t1",)"
              R"("only_in_old":["title"],"only_in_new":["caption"]}]})"
              "\n");
}

TEST_F(CommandDiffTest, AFileThatCannotBeUsedIsTwo)
{
    EXPECT_EXIT_CODE(run({"diff", old_schema, path("absent.json")}), 2);
    EXPECT_EXIT_CODE(run({"diff", write("bad.json", "{"), old_schema}), 2);
}

#ifndef TOV_SANITIZED // sanitizers need more address space than the limit
TEST_F(CommandDiffTest, RunningOutOfMemoryIsThree)
{
    const std::string large = write("large.json", "{");
    std::filesystem::resize_file(large, 1U << 30);
    const command_result result =
        run_program("/bin/sh", {"-c", "ulimit -v 500000; exec \"$0\" diff \"$1\" \"$1\"", TOV_SCHEMA_COMMAND, large});
    EXPECT_EXIT_CODE(result, 3);
    EXPECT_EQ(result.err, "tov-schema: out of memory\n");
}
#endif

} // namespace
