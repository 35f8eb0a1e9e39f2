// tov-schema load and convert.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandLoadTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        write("c.json", sample_catalogue);
        ASSERT_EQ(run({"import", path("c.json"), "-o", path("s.json")}).exit_code, 0);
        ASSERT_EQ(run({"create", path("s.json"), path("client.db")}).exit_code, 0);
    }
    std::string query(const char *sql) const
    {
        return run_program("sqlite3", {path("client.db"), sql}).out;
    }
};

TEST_F(CommandLoadTest, LoadsRowsAndPrintsATable)
{
    const command_result result =
        run({"load", path("s.json"), path("client.db"), write("Customers.dat", "1\tAda\n2\tBob\n")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(query("SELECT * FROM Customers"), "1|Ada\n2|Bob\n");
    EXPECT_EQ(result.out.rfind("table      read  loaded  rejected  shortened  seconds\n"
                               "Customers     2       2         0          0     ",
                               0),
              0u)
        << result.out;
    EXPECT_EQ(result.err,
              "tov-schema: note: Customers.dat was read as bcp, fields end with \"\\t\", rows with \"\\n\"\n");
}

TEST_F(CommandLoadTest, RejectsAreToldAndKept)
{
    const std::string file = write("Customers.dat", "1\tAda\nx\tBob\n");
    const command_result result =
        run({"load", path("s.json"), path("client.db"), file, "--rejects", path("rejects"), "--quiet"});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("Customers.dat:2: row 2, column CustomerId: x: not-a-number: "), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("1 rows were REJECTED; they are in "), std::string::npos) << result.err;
    EXPECT_EQ(read("rejects/Customers.dat"), "x\tBob\n");
}

TEST_F(CommandLoadTest, AFileThatIsNotThereIsNamed)
{
    const command_result result = run({"load", path("s.json"), path("client.db"), path("Customers.dat")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("No such file"), std::string::npos) << result.err;
}

TEST_F(CommandLoadTest, ConvertMakesADatabaseInOneStep)
{
    const command_result result = run({"convert", path("c.json"), path("whole.db"), "--schema", path("whole.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(read("whole.json"), read("s.json"));
    EXPECT_EQ(run_program("sqlite3", {path("whole.db"), ".tables"}).out,
              run_program("sqlite3", {path("client.db"), ".tables"}).out);
    EXPECT_FALSE(exists("whole.db.new"));
}

TEST_F(CommandLoadTest, ConvertKeepsAFileThatIsThere)
{
    const command_result result = run({"convert", path("c.json"), path("client.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("there is a file of this name already"), std::string::npos) << result.err;
    EXPECT_EXIT_CODE(run({"convert", path("c.json")}), 2);
}

} // namespace
