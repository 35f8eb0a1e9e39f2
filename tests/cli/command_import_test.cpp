// tov-schema import.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandImportTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        catalogue = write("c.json", sample_catalogue);
    }
    std::string catalogue;
};

TEST_F(CommandImportTest, WritesTheSchemaAndPrintsFindings)
{
    const command_result result = run({"import", catalogue});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find("{\"compat_level\":1,"), 0u) << result.out;
    EXPECT_NE(result.out.find("\"name\":\"Customers\""), std::string::npos);
    EXPECT_NE(result.out.find("\"expr\":\"'nobody'\""), std::string::npos) << "the default came over";
    EXPECT_EQ(result.err.find("default-dropped: dbo.Orders.Placed: "), 0u) << result.err;
    EXPECT_NE(result.err.find("(getdate())"), std::string::npos);
}

TEST_F(CommandImportTest, WritesFindingsAsJson)
{
    const command_result result = run({"import", catalogue, "-o", path("s.json"), "--findings", path("f.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(read("f.json").find("{\"findings\":[\n{\"code\":\"default-dropped\","), 0u) << read("f.json");
    EXPECT_NE(read("f.json").find("\"host_text\":\"(getdate())\""), std::string::npos);
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
    const command_result result = run({"import", catalogue, "--txid", "42"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.out.find("\"name\":\"Customers\",\"txid\":42"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\"name\":\"Orders\",\"txid\":42"), std::string::npos) << result.out;
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
