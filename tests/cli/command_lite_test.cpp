// tov-schema lite.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandLiteTest : public CommandTest {};

constexpr const char *both_tables = R"({"compat_level":1,"tbls":{"t1":{"txid":5,"cols":{"id":{"name":"Id"},)"
                                    R"("title":{"name":"Title"}}},"t2":{"txid":7,"cols":{"k":{"name":"K"},)"
                                    R"("p":{"name":"ParentId"}}}}})"
                                    "\n";

TEST_F(CommandLiteTest, WritesAllTables)
{
    const command_result result = run({"lite", "-"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, both_tables);
}

TEST_F(CommandLiteTest, WritesChosenTablesInTheirOrder)
{
    const command_result result = run({"lite", write("s.json", sample_schema), "Children", "t1", "-o", path("l.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(run({"lite", "--read", path("l.json")}).out,
              "t2\ttxid 7\n  k\tK\n  p\tParentId\nt1\ttxid 5\n  id\tId\n  title\tTitle\n");
}

TEST_F(CommandLiteTest, ReadsFromStandardInput)
{
    const command_result result = run({"lite", "--read", "-"}, both_tables);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "t1\ttxid 5\n  id\tId\n  title\tTitle\nt2\ttxid 7\n  k\tK\n  p\tParentId\n");
}

TEST_F(CommandLiteTest, RefusesWhatIsNoSummary)
{
    const command_result result = run({"lite", "--read", "-"}, "{\"compat_level\":1}");
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: no key 'tbls': -\n");
}

} // namespace
