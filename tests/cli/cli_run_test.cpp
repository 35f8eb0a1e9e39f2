// The command line as a whole.

#include "run_command.hpp"
#include <sqlite3.h>

namespace {

class CliRunTest : public CommandTest {};

constexpr const char *commands[] = {"catalogue-query", "import", "create", "sql", "tables", "default", "refs",
                                    "graph",           "select", "diff",   "lite"};

TEST_F(CliRunTest, HelpOfEachCommandHasAnExample)
{
    for (const char *name : commands) {
        const command_result result = run({name, "--help"});
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_NE(result.out.find("Example"), std::string::npos) << result.out;
        EXPECT_NE(result.out.find(std::string("tov-schema ") + name), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(CliRunTest, HelpNamesEveryCommand)
{
    const command_result result = run({"--help"});
    EXPECT_EXIT_CODE(result, 0);
    for (const char *name : commands)
        EXPECT_NE(result.out.find(std::string("\n  ") + name), std::string::npos) << name;
}

TEST_F(CliRunTest, HelpIsACommandToo)
{
    EXPECT_EQ(run({"help"}).out, run({"--help"}).out);
    EXPECT_NE(run({"help"}).out, "");
    for (const char *name : commands) {
        const command_result result = run({"help", name});
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_EQ(result.out, run({name, "--help"}).out);
    }
}

struct unknown_case {
    std::vector<std::string> arguments;
    const char *err;
};

const unknown_case unknown_cases[] = {
    {{"improt", "a"}, "there is no command 'improt'; did you mean 'import'?"},
    {{"Tables"}, "there is no command 'Tables'; did you mean 'tables'?"},
    {{"help", "grap"}, "there is no command 'grap'; did you mean 'graph'?"},
    {{"frobnicate"}, "there is no command 'frobnicate'"},
    {{}, "a command is required"},
    {{"--versoin"}, "there is no option '--versoin'; did you mean '--version'?"},
    {{"import", "--ouput", "a"}, "there is no option '--ouput'; did you mean '--output'?"},
    {{"tables", "a", "b", "-q"}, "there is no option '-q'"},
    {{"tables"}, "SCHEMA is required"},
    {{"x\u009B2J"}, "there is no command 'x<U+009B>2J'"},
};

TEST_F(CliRunTest, WhatIsNotKnownIsNamedWithTheNearest)
{
    for (const unknown_case &c : unknown_cases) {
        const command_result result = run(c.arguments);
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_EQ(result.err,
                  std::string("tov-schema: ") + c.err + "\nRun tov-schema help, or tov-schema help COMMAND.\n");
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(CliRunTest, SaysItsVersion)
{
    const command_result result = run({"--version"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find("tov-schema "), 0u) << result.out;
}

TEST_F(CliRunTest, VersionsOfLibrariesAreThoseThatRun)
{
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"--version", "--verbose"}, {"--verbose", "--version"}}) {
        const command_result result = run(words);
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_EQ(result.out.find(run({"--version"}).out), 0u);
        for (const std::string &line : {std::string("\nSQLite ") + sqlite3_libversion() + "\n",
                                        "\n  " + std::string(sqlite3_compileoption_get(0)), std::string("\nlibzip "),
                                        std::string("\nICU "), std::string("\nExpat "), std::string("\nOpenSSL ")})
            EXPECT_NE(result.out.find(line), std::string::npos) << line << " in:\n" << result.out;
    }
    EXPECT_EXIT_CODE(run({"--verbose"}), 2);
    EXPECT_EXIT_CODE(run({"--verbose", "tables", "x"}), 2);
}

TEST_F(CliRunTest, WrongUsageIsTwoAndSaysWhere)
{
    const std::vector<std::string> wrong[] = {
        {},
        {"unknown"},
        {"import"},
        {"import", "a", "b"},
        {"create", "only-one"},
        {"create", "a", "-"},
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
        {"default", "decimal(300,299)", "((1))"},
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
