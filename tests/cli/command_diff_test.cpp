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
    const command_result result = run({"diff", old_schema, old_schema});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "same: Parents\nsame: Children\n");
}

TEST_F(CommandDiffTest, ADifferentTransactionIdIsAChange)
{
    const command_result result = run({"diff", old_schema, changed("\"txid\":7", "\"txid\":8")});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "changed: Children\nsame: Parents\n");
    EXPECT_EXIT_CODE(run({"diff", old_schema, changed("\"txid\":7", "\"txid\":0")}), 0);
}

TEST_F(CommandDiffTest, TablesAndColumnsOfOneSideAreListed)
{
    const command_result tables = run({"diff", old_schema, changed("\"t2\":", "\"t3\":")});
    EXPECT_EXIT_CODE(tables, 1);
    EXPECT_EQ(tables.out, "only in old: Children\nonly in new: Children\nsame: Parents\n");
    const command_result columns = run({"diff", old_schema, changed("\"title\":", "\"caption\":")});
    EXPECT_EXIT_CODE(columns, 1);
    EXPECT_EQ(columns.out, "only in old: Parents.Title\nonly in new: Parents.Title\nsame: Parents\nsame: Children\n");
}

TEST_F(CommandDiffTest, PrintsJson)
{
    const command_result result = run({"diff", old_schema, changed("\"title\":", "\"caption\":"), "--json"});
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
