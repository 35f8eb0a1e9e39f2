// tov-schema create and sql.

#include "run_command.hpp"
#include "sample.hpp"

#include <sqlite3.h>

namespace {

class CommandCreateTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        ASSERT_EQ(run({"import", write("c.json", sample_catalogue), "-o", path("s.json")}).exit_code, 0);
    }
    // The rows of a query, columns joined by "|", each row followed by a blank; or SQLite's message.
    std::string query(const std::string &database, const char *sql) const
    {
        sqlite3 *connection = nullptr;
        std::string rows;
        char *message = nullptr;
        sqlite3_open_v2(path(database).c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr);
        const auto add_row = [](void *data, int count, char **values, char **) {
            for (int n = 0; n < count; n++)
                *static_cast<std::string *>(data) += std::string(n ? "|" : "") + (values[n] ? values[n] : "null");
            *static_cast<std::string *>(data) += " ";
            return 0;
        };
        if (sqlite3_exec(connection, sql, add_row, &rows, &message) != SQLITE_OK)
            rows = message ? message : "failed";
        sqlite3_free(message);
        sqlite3_close(connection);
        return rows;
    }
    static constexpr const char *all_sql = "SELECT type, name, tbl_name, sql FROM sqlite_master ORDER BY type, name";
};

TEST_F(CommandCreateTest, MakesADatabaseThatWorks)
{
    const command_result result = run({"create", path("s.json"), path("client.db")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(query("client.db", "PRAGMA integrity_check"), "ok ");
    EXPECT_EQ(query("client.db", "INSERT INTO Customers DEFAULT VALUES; SELECT * FROM Customers"), "1|nobody ");
    EXPECT_EQ(query("client.db", "INSERT INTO Orders (CustomerId) VALUES ('one')"),
              "CHECK constraint failed: [CustomerId] constraint violation: type mismatch: sint32(integer)");
    EXPECT_EQ(run({"sql", path("s.json")}).out.find("tov_insert_"), std::string::npos);
    EXPECT_NE(run({"sql", "--checks", "triggers", path("s.json")}).out.find("\"tov_insert_Orders\""),
              std::string::npos);
}

TEST_F(CommandCreateTest, MakesViewsWhereTheyAreAskedFor)
{
    EXPECT_EXIT_CODE(run({"create", "--views", path("s.json"), path("client.db")}), 0);
    query("client.db", "INSERT INTO Orders (Total) VALUES (1250)");
    EXPECT_EQ(query("client.db", "SELECT Total FROM v_Orders"), "12.50 ");
    EXPECT_NE(run({"sql", "--views", path("s.json")}).out.find("CREATE VIEW \"v_Orders\""), std::string::npos);
}

TEST_F(CommandCreateTest, TheScriptGivesTheSameDatabase)
{
    ASSERT_EQ(run({"create", path("s.json"), path("created.db")}).exit_code, 0);
    const command_result script = run({"sql", path("s.json")});
    EXPECT_EXIT_CODE(script, 0);
    const command_result shell = run_program("sqlite3", {"-bail", path("scripted.db")}, script.out);
    EXPECT_EXIT_CODE(shell, 0);
    EXPECT_EQ(query("scripted.db", all_sql), query("created.db", all_sql));
    EXPECT_NE(query("created.db", all_sql), "");
    EXPECT_EXIT_CODE(run({"sql", path("s.json"), "-o", path("script.sql")}), 0);
    EXPECT_EQ(read("script.sql"), script.out);
}

TEST_F(CommandCreateTest, RefusesToWriteADatabaseToStandardOutput)
{
    const command_result result = run({"create", path("s.json"), "-"});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err.find("tov-schema: a database cannot be written to standard output; tov-schema sql prints a "
                              "script that creates it\n"),
              0u)
        << result.err;
    EXPECT_EQ(result.out, "");
}

TEST_F(CommandCreateTest, RefusesADatabaseThatHasSuchATable)
{
    ASSERT_EQ(run({"create", path("s.json"), path("client.db")}).exit_code, 0);
    const std::string before = read("client.db");
    const command_result result = run({"create", path("s.json"), path("client.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("Customers"), std::string::npos) << result.err;
    EXPECT_EQ(read("client.db"), before);
}

TEST_F(CommandCreateTest, AFailureLeavesNoDatabase)
{
    std::string schema = sample_schema;
    schema.replace(schema.find("\"Title\""), 7, R"("Ti\"tle")");
    const command_result result = run({"create", write("bad.json", schema), path("client.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: table \"Parents\", column \"Ti\"tle\": a name with a double quote: " +
                              path("bad.json") + "\n");
    EXPECT_FALSE(exists("client.db"));
}

TEST_F(CommandCreateTest, RefusesAFileThatIsNoDatabase)
{
    write("client.db", "this is not a database, and long enough for SQLite to see that it is none");
    const command_result result = run({"create", path("s.json"), path("client.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: file is not a database: " + path("client.db") + "\n");
    EXPECT_EQ(read("client.db").find("this is not a database"), 0u);
}

} // namespace
