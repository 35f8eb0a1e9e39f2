// tov-schema import.

#include "run_command.hpp"
#include "sample.hpp"

#include <filesystem>
#include <sstream>

namespace {

class CommandImportTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        catalogue = write("c.json", sample_catalogue);
    }
    // The names of the tables in a schema that was written, each followed by a blank.
    std::string tables_of(const std::string &schema) const
    {
        const std::string list = run({"tables", path(schema)}).out;
        std::istringstream lines(list);
        std::string line, names;
        std::getline(lines, line);
        while (std::getline(lines, line))
            names += line.substr(0, line.find(' ') + 1);
        return names;
    }
    std::string catalogue;
};

TEST_F(CommandImportTest, WritesTheSchemaAndPrintsFindings)
{
    const command_result result = run({"import", catalogue});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find("{\n  \"compat_level\": 1,\n"), 0u) << result.out;
    EXPECT_NE(result.out.find("\"name\": \"Customers\""), std::string::npos);
    EXPECT_NE(result.out.find("\"expr\": \"'nobody'\""), std::string::npos) << "the default came over";
    EXPECT_EQ(result.err.find("default-dropped: dbo.Orders.Placed: "), 0u) << result.err;
    EXPECT_NE(result.err.find("([dbo].[f]())"), std::string::npos);
}

TEST_F(CommandImportTest, WritesFindingsAsJson)
{
    const command_result result = run({"import", catalogue, "-o", path("s.json"), "--findings", path("f.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(read("f.json").find("{\"findings\":[\n{\"code\":\"default-dropped\",\"severity\":\"warning\","), 0u)
        << read("f.json");
    EXPECT_NE(read("f.json").find("\"host_text\":\"([dbo].[f]())\""), std::string::npos);
}

TEST_F(CommandImportTest, StrictRefusesAnyFindingAndWritesNoSchema)
{
    const command_result result =
        run({"import", catalogue, "-o", path("s.json"), "--findings", path("f.json"), "--strict"});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_NE(result.err.find("--strict allows none"), std::string::npos) << result.err;
    EXPECT_EQ(files(), "c.json f.json ");
}

TEST_F(CommandImportTest, GivesEveryTableTheTransactionId)
{
    const command_result result = run({"import", catalogue, "--compact", "--txid", "42"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.out.find("\"name\":\"Customers\",\"txid\":42"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\"name\":\"Orders\",\"txid\":42"), std::string::npos) << result.out;
}

TEST_F(CommandImportTest, QuietPrintsNoFindingsAndWritesThem)
{
    const command_result result =
        run({"import", catalogue, "--quiet", "-o", path("s.json"), "--findings", path("f.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_NE(read("f.json").find("default-dropped"), std::string::npos);
}

TEST_F(CommandImportTest, ImportsTheTablesThatArePicked)
{
    struct {
        std::vector<std::string> options;
        const char *tables;
    } const cases[] = {
        {{"--only", "dbo.Cust*"}, "Customers "},
        {{"--skip", "orders"}, "Customers "},
        {{"--only", "Customers", "--only", "Orders"}, "Customers Orders "},
        {{"--only", "*", "--skip", "dbo.Orders", "--skip", "sales.*"}, "Customers "},
        {{"--rename", "dbo.Orders=Sales", "--rename", "dbo.Customers=People"}, "People Sales "},
    };
    for (const auto &c : cases) {
        std::vector<std::string> arguments{"import"};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        arguments.insert(arguments.end(), {catalogue, "-o", path("s.json")});
        EXPECT_EXIT_CODE(run(arguments), 0);
        EXPECT_EQ(tables_of("s.json"), c.tables);
    }
}

TEST_F(CommandImportTest, TheKindCanBeGiven)
{
    EXPECT_EXIT_CODE(run({"import", catalogue, "--from", "json"}), 0);
    EXPECT_EXIT_CODE(run({"import", catalogue, "--from", "package"}), 2);
    EXPECT_EXIT_CODE(run({"import", catalogue, "--from", "word"}), 2);
}

TEST_F(CommandImportTest, WritesAMemberALineOrAllOnOne)
{
    EXPECT_EXIT_CODE(run({"import", catalogue, "-o", path("lines.json")}), 0);
    EXPECT_EXIT_CODE(run({"import", catalogue, "--compact", "-o", path("line.json")}), 0);
    EXPECT_NE(read("lines.json").find("\n  \"tbls\": {\n    \"101\": {\n      \"name\": \"Customers\",\n"),
              std::string::npos)
        << read("lines.json");
    EXPECT_EQ(read("line.json").find('\n'), read("line.json").size() - 1);
    EXPECT_EXIT_CODE(run({"diff", path("lines.json"), path("line.json")}), 0);
    EXPECT_EXIT_CODE(run({"create", path("lines.json"), path("lines.db")}), 0);
}

TEST_F(CommandImportTest, AProjectFolderSaysTheNameAndTheCollation)
{
    std::filesystem::create_directories(path("Shop/Tables"));
    write("Shop/Shop.sqlproj", "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<Project><PropertyGroup><Name>Shop</Name>"
                               "<DefaultCollation>Polish_CS_AS</DefaultCollation></PropertyGroup></Project>");
    write("Shop/Tables/Lines.sql", "CREATE TABLE dbo.Lines (Id int REFERENCES dbo.Orders)");
    write("Shop/Tables/Orders.sql", "CREATE TABLE dbo.Orders (Id int PRIMARY KEY, Name varchar(9))");
    write("Shop/notes.txt", "Dear reader");
    const command_result result = run({"import", path("Shop"), "--compact", "-o", path("s.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err, "");
    const std::string schema = read("s.json");
    EXPECT_NE(schema.find(R"("server":{"version":1,"database":"Shop","collation":"Polish_CS_AS","code_page":1250)"),
              std::string::npos)
        << schema;
    EXPECT_EQ(tables_of("s.json"), "Orders Lines ");
}

TEST_F(CommandImportTest, RefusesWhatIsNoExport)
{
    const char *const wrong[] = {"[", "7", "{\"tables\":5}", "{\"tables\":[5]}", "{}"};
    for (const char *text : wrong) {
        const command_result result = run({"import", write("wrong.json", text), "-o", path("s.json")});
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_EQ(result.err.find("tov-schema: "), 0u) << result.err;
        EXPECT_NE(result.err.find(path("wrong.json")), std::string::npos) << result.err;
        EXPECT_FALSE(exists("s.json"));
    }
}

} // namespace
