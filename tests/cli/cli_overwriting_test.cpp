// No command overwrites what it reads, whatever the file is called.

#include "run_command.hpp"
#include "sample.hpp"

#include <filesystem>

namespace {

struct overwriting_case {
    const char *arguments; // @ is the test's directory
    const char *kept;      // the file that stays as it is
};
const overwriting_case overwriting_cases[] = {
    {"import @/c.json -o @/c.json", "c.json"},
    {"import @/c.json -o @/./c.json", "c.json"},
    {"import @/c.json -o @/link", "c.json"},
    {"import @/c.json -o @/hard", "c.json"},
    {"import @/c.json --findings @/c.json -o @/new.json", "c.json"},
    {"import @/scripts -o @/scripts/t.sql", "scripts/t.sql"},
    {"import @/c.json -o @/new.json --findings @/./new.json", "c.json"},
    {"import @/c.json -o @/new.json --baseline @/f.json --findings @/f.json", "f.json"},
    {"convert @/c.json @/new.db --schema @/c.json", "c.json"},
    {"create @/s.json @/s.json", "s.json"},
    {"sql @/s.json -o @/s.json", "s.json"},
    {"graph @/s.json -o @/s.json", "s.json"},
    {"lite @/s.json -o @/s.json", "s.json"},
    {"check @/s.json @/client.db -o @/s.json", "s.json"},
    {"check @/s.json @/client.db -o @/client.db", "client.db"},
    {"unload @/s.json @/client.db @/rows", "s.json"},
    {"unload @/s.json @/client.db @/rows --format insert", "client.db"},
    {"unload @/s.json @/client.db @/rows --format csv --query SELECT", "client.db"},
    {"doctor @/client.db -o @/client.db", "client.db"},
    {"migrate @/s.json @/s2.json -o @/s.json", "s.json"},
    {"migrate @/client.db @/s2.json -o @/client.db", "client.db"},
    {"migrate @/s.json @/scripts -o @/scripts/t.sql", "scripts/t.sql"},
    {"report @/s.json -o @/s.json", "s.json"},
    {"report @/scripts -o @/scripts/t.sql", "scripts/t.sql"},
    {"report @/s.json --database @/client.db -o @/client.db", "client.db"},
    {"report @/s.json --diff @/s2.json -o @/s2.json", "s2.json"},
    {"report @/c.json --findings @/f.json -o @/f.json", "f.json"},
};

class CliOverwritingTest : public CommandTest {
  protected:
    std::vector<std::string> words_of(const std::string &arguments) const
    {
        std::vector<std::string> words(1);
        for (const char byte : arguments) {
            if (byte == ' ')
                words.emplace_back();
            else
                words.back() += byte == '@' ? directory : std::string(1, byte);
        }
        return words;
    }
};

TEST_F(CliOverwritingTest, InputsAndOutputsAreKeptApart)
{
    write("c.json", sample_catalogue);
    write("s.json", sample_schema);
    write("s2.json", sample_schema);
    std::filesystem::create_directory(path("scripts"));
    write("scripts/t.sql", "CREATE TABLE dbo.T (Id int PRIMARY KEY)");
    std::filesystem::create_directory(path("rows"));
    std::filesystem::create_symlink("../s.json", path("rows/Children.dat"));
    std::filesystem::create_symlink("../client.db", path("rows/rows.sql"));
    std::filesystem::create_symlink("../client.db", path("rows/query.csv"));
    std::filesystem::create_symlink("c.json", path("link"));
    std::filesystem::create_hard_link(path("c.json"), path("hard"));
    ASSERT_EXIT_CODE(run({"create", path("s.json"), path("client.db")}), 0);
    ASSERT_EXIT_CODE(run({"import", path("c.json"), "--findings", path("f.json")}), 0);
    for (const overwriting_case &c : overwriting_cases) {
        SCOPED_TRACE(c.arguments);
        const std::string before = read(c.kept);
        ASSERT_FALSE(before.empty());
        const command_result result = run(words_of(c.arguments));
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_TRUE(result.err.find("the output is the input too") != std::string::npos ||
                    result.err.find("two outputs would be written there") != std::string::npos)
            << result.err;
        EXPECT_EQ(read(c.kept), before);
        EXPECT_FALSE(exists("new.json") || exists("new.db"));
    }
}

} // namespace
