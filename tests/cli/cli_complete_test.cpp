// What completion offers, asked as the shells' scripts ask.

#include "run_command.hpp"

namespace {

class CliComplete : public CommandTest {
  protected:
    std::string answer(const std::vector<std::string> &words) const
    {
        std::vector<std::string> arguments{"__complete"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const command_result result = run(arguments);
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
};

struct completion_case {
    std::vector<std::string> words;
    const char *answer;
};

const completion_case completion_cases[] = {
    {{"cr"}, "create\tCreate the tables of a schema in a SQLite database\n"},
    {{"he"}, "help\tDescribe a command\n"},
    {{"--v"}, "--version\tprint the version\n"},
    {{"nothing"}, ""},
    {{"help", "sel"}, "select\tPrint SQL Server's select list and key join for a table\n"},
    {{"help", "select", ""}, ""},
    {{"unload", "--format", "c"}, "csv\t\n"},
    {{"unload", "--format", "=", "c"}, "csv\t\n"}, // --format=c as bash takes it apart
    {{"convert", "--rules", "="}, "server\t\nbasic\t\n"},
    {{"import", "--findings", "="}, ":files\n"},
    {{"import", "--define", "=", "x"}, ""},
    {{"unload", "--format=c"}, "--format=csv\t\n"}, // and as other shells leave it
    {{"convert", "--rules="}, "--rules=server\t\n--rules=basic\t\n"},
    {{"convert", "--no-such="}, ""},
    {{"import", "=", ""}, ":files\n"},
    {{"import", "-o", ""}, ":files\n"},
    {{"import", "--define", ""}, ""},
    {{"import", "--verb"},
     "--verbose\talso print findings of severity info, and report fields of an export that are not known\n"},
    {{"import", "--verbose", ""}, ":files\n"},
    {{"import", "shop", ""}, ":files\n"},
    {{"no-such-command", ""}, ""},
};

TEST_F(CliComplete, Words)
{
    for (const completion_case &c : completion_cases) {
        SCOPED_TRACE(::testing::PrintToString(c.words));
        EXPECT_EQ(answer(c.words), c.answer);
    }
}

TEST_F(CliComplete, NothingAtAllOffersTheCommands)
{
    EXPECT_EQ(answer({}), answer({""}));
    EXPECT_EQ(answer({}).find("catalogue-query\t"), 0u);
}

} // namespace
