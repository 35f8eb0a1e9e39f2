// The command line as a whole.

#include "run_command.hpp"

namespace {

class CliRunTest : public CommandTest {};

constexpr const char *subcommands[] = {"import", "create", "sql",    "tables", "default",
                                       "refs",   "graph",  "select", "diff",   "lite"};

TEST_F(CliRunTest, HelpOfEachSubcommandHasAnExample)
{
    for (const char *name : subcommands) {
        const command_result result = run({name, "--help"});
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_NE(result.out.find("Example"), std::string::npos) << result.out;
        EXPECT_NE(result.out.find(std::string("tov-schema ") + name), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(CliRunTest, HelpNamesEverySubcommand)
{
    const command_result result = run({"--help"});
    EXPECT_EXIT_CODE(result, 0);
    for (const char *name : subcommands)
        EXPECT_NE(result.out.find(std::string("\n  ") + name), std::string::npos) << name;
}

TEST_F(CliRunTest, SaysItsVersion)
{
    const command_result result = run({"--version"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find("tov-schema "), 0u) << result.out;
}

TEST_F(CliRunTest, WrongUsageIsTwoAndSaysWhere)
{
    const std::vector<std::string> wrong[] = {
        {},
        {"unknown"},
        {"import"},
        {"import", "a", "b"},
        {"create", "only-one"},
        {"tables"},
        {"tables", "a", "--unknown"},
        {"import", "a", "--txid", "many"},
        {"import", "a", "-o", "b", "--findings", "b"},
        {"import", "a", "--findings", "-"},
        {"graph", "a", "--format", "svg"},
        {"select", "a", "t", "--mode", "3"},
        {"default", "int"},
        {"default", "decimal", "((1))", "--scale", "256"},
        {"default", "nosuchtype", "((1))"},
        {"diff", "a"},
        {"lite"},
    };
    for (const auto &arguments : wrong) {
        const command_result result = run(arguments);
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_EQ(result.err.find("tov-schema: "), 0u) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

} // namespace
