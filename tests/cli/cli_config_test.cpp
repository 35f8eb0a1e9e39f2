// The file tov-schema.toml beside the sources.

#include "run_command.hpp"
#include "sample.hpp"

#include <filesystem>

namespace {

class CliConfigTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        std::filesystem::create_directory(path("sources"));
        write("sources/c.json", sample_catalogue);
    }
    void configure(const std::string &text)
    {
        write("sources/tov-schema.toml", text);
    }
    command_result import(std::vector<std::string> options = {}, const std::string &source = "sources/c.json")
    {
        options.insert(options.begin(), {"import", path(source), "-o", path("s.json"), "--quiet"});
        return run(options);
    }
    std::string tables()
    {
        return run({"tables", path("s.json")}).out;
    }
    bool has(const std::string &table)
    {
        return tables().find(table) != std::string::npos;
    }
};

TEST_F(CliConfigTest, SaysWhatIsImported)
{
    configure("only = [\"dbo.*\"]\nskip = [\"Orders\"]\n[rename]\n\"dbo.Customers\" = \"Clients\"\n");
    EXPECT_EXIT_CODE(import(), 0);
    EXPECT_TRUE(has("Clients"));
    EXPECT_FALSE(has("Customers"));
    EXPECT_FALSE(has("Orders"));
}

TEST_F(CliConfigTest, GivesColumnsOtherTypes)
{
    std::filesystem::create_directory(path("scripts"));
    write("scripts/t.sql", "CREATE TABLE dbo.T (Id int PRIMARY KEY, A money, B money)");
    write("scripts/tov-schema.toml", "[type]\n\"dbo.T.A\" = \"decimal(18,6)\"\n\"dbo.T.B\" = \"int\"\n");
    EXPECT_EXIT_CODE(import({"--type", "dbo.T.B=nvarchar(9)"}, "scripts"), 0);
    const std::string columns = run({"columns", path("s.json")}).out;
    EXPECT_NE(columns.find("decimal(18,6)"), std::string::npos) << columns;
    EXPECT_NE(columns.find("nvarchar(9)"), std::string::npos) << columns;
    EXPECT_EQ(columns.find("money"), std::string::npos) << columns;
}

TEST_F(CliConfigTest, TheCommandLineWins)
{
    configure("skip = [\"Orders\"]\n[rename]\n\"dbo.Customers\" = \"Clients\"\n\"dbo.Orders\" = \"Requests\"\n");
    EXPECT_EXIT_CODE(import({"--skip", "nothing", "--rename", "DBO.Customers=Persons"}), 0);
    EXPECT_TRUE(has("Persons"));
    EXPECT_TRUE(has("Requests"));
}

TEST_F(CliConfigTest, CanBeAnotherOneOrNone)
{
    configure("skip = [\"Orders\"]\n");
    write("other.toml", "skip = [\"Cust*\"]\n");
    EXPECT_EXIT_CODE(import({"--no-config"}), 0);
    EXPECT_TRUE(has("Orders") && has("Customers"));
    EXPECT_EXIT_CODE(import({"--config", path("other.toml")}), 0);
    EXPECT_TRUE(has("Orders") && !has("Customers"));
    EXPECT_EXIT_CODE(import({"--config", path("other.toml"), "--no-config"}), 2);
    EXPECT_EXIT_CODE(import({"--config", path("absent.toml")}), 2);
    const command_result piped = run({"import", "-", "-o", path("s.json"), "--quiet"}, sample_catalogue);
    EXPECT_EXIT_CODE(piped, 0);
    EXPECT_TRUE(has("Orders"));
}

TEST_F(CliConfigTest, LiesInAFolderOfScripts)
{
    std::filesystem::create_directory(path("scripts"));
    write("scripts/t.sql", "CREATE TABLE dbo.T (Id int PRIMARY KEY);\nCREATE TABLE dbo.U (Id int PRIMARY KEY)");
    write("scripts/tov-schema.toml", "skip = [\"U\"]");
    EXPECT_EXIT_CODE(import({}, "scripts"), 0);
    EXPECT_EQ(tables().find('U'), std::string::npos);
    EXPECT_EXIT_CODE(run({"diff", path("s.json"), path("scripts")}), 0);
    EXPECT_EXIT_CODE(run({"diff", path("s.json"), path("scripts"), "--no-config"}), 1);
    EXPECT_EXIT_CODE(run({"convert", path("scripts"), path("new.db"), "--quiet"}), 0);
    EXPECT_EXIT_CODE(run({"diff", path("new.db"), path("scripts")}), 0);
    EXPECT_EXIT_CODE(run({"migrate", path("new.db"), path("scripts")}), 0);
}

TEST_F(CliConfigTest, SaysWhichFindingsAreExpected)
{
    EXPECT_EXIT_CODE(import({"--strict"}), 1);
    configure("strict = true\n");
    EXPECT_EXIT_CODE(import(), 1);
    configure("strict = true\nallow = [\"default-dropped\"]\n");
    EXPECT_EXIT_CODE(import(), 0);
    EXPECT_EXIT_CODE(import({"--no-config", "--findings", path("sources/f.json")}), 0);
    configure("strict = true\nbaseline = \"f.json\"\n");
    EXPECT_EXIT_CODE(import(), 0);
    EXPECT_EXIT_CODE(import({"--findings", path("sources/f.json")}), 0);
}

TEST_F(CliConfigTest, IsNotWrittenOver)
{
    configure("skip = [\"Orders\"]\n");
    EXPECT_EXIT_CODE(run({"import", path("sources/c.json"), "-o", path("sources/tov-schema.toml")}), 2);
    EXPECT_EQ(read("sources/tov-schema.toml"), "skip = [\"Orders\"]\n");
}

struct mistake_case {
    const char *name;
    const char *text;
    const char *what; // after the file's name
};
const mistake_case mistake_cases[] = {
    {"a setting that is not one", "only = []\nskipp = []\n", ":2:1: there is no setting 'skipp'; did you mean 'skip'?"},
    {"a string for a list", "only = \"dbo.*\"\n", ":1:8: 'only' is not a list of strings"},
    {"a number in a list", "skip = [\"a\",\n  7]\n", ":2:3: 'skip' is not a list of strings"},
    {"a list for a table", "rename = []\n", ":1:10: 'rename' is not a table of strings"},
    {"a number in a table", "[define]\nA = 1\n", ":2:5: 'define' is not a table of strings"},
    {"a name with =", "[define]\n\"A=B\" = \"1\"\n", ":2:1: a name holds '=' or the character NUL"},
    {"a type that the server lacks", "[type]\nA = \"int\"\nB = \"integr\"\n",
     ":3:5: 'integr' is not a type of the server"},
    {"a type of impossible size", "type.A = \"decimal(39)\"\n", ":1:10: 'decimal(39)' is not a type of the server"},
    {"NUL", "encoding = \"a\\u0000b\"\n", ":1:12: a string holds the character NUL"},
    {"another clock", "clock = \"sun\"\n", ":1:9: 'clock' is not \"local\" or \"utc\""},
    {"a string for a flag", "strict = \"yes\"\n", ":1:10: 'strict' is not true or false"},
    {"what is not TOML", "only = [\n", ":1:10: Error while parsing array"},
    {"a setting twice", "strict = true\nstrict = true\n", ":2:"},
};

TEST_F(CliConfigTest, MistakesAreNamedWithTheirPlace)
{
    for (const mistake_case &c : mistake_cases) {
        SCOPED_TRACE(c.name);
        configure(c.text);
        const command_result result = import();
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_EQ(result.err.find("tov-schema: " + path("sources/tov-schema.toml") + c.what), 0u) << result.err;
        EXPECT_FALSE(exists("s.json"));
    }
}

} // namespace
