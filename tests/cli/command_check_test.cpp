// tov-schema check.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandCheckTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        write("s.json", sample_schema);
    }
    void fill(const std::string &sql)
    {
        const command_result result =
            run_program("sqlite3", {path("client.db"), "CREATE TABLE Parents(Id INTEGER PRIMARY KEY, Title TEXT);"
                                                       "CREATE TABLE Children(K INTEGER, ParentId INTEGER);" +
                                                           sql});
        ASSERT_EQ(result.exit_code, 0) << result.err;
    }
    command_result check(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {"check", path("s.json"), path("client.db")});
        return run(options);
    }
};

const char *const bad_rows = "INSERT INTO Parents VALUES(1, 'A title, \"quoted\", that is too long'), (2, 'x');"
                             "INSERT INTO Children VALUES(1, 1), (1, 3)";

TEST_F(CommandCheckTest, NothingFoundIsZero)
{
    fill("INSERT INTO Parents VALUES(1, 'x')");
    const command_result result = check();
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "tov-schema: 0 violations\n");
}

TEST_F(CommandCheckTest, ViolationsAreLinesAndCounted)
{
    fill(bad_rows);
    const command_result result = check();
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out,
              "too-long: Parents.Title: row 1 (Id=1): width exceeded: 20: 'A title, \"quoted\", that is too long'\n"
              "duplicate-key: Children.K: row 2 (K=1): an earlier row has the same key: 1\n"
              "no-such-row: Children.ParentId: row 2 (K=1): no row of \"Parents\" has this key (Id): 3\n");
    EXPECT_EQ(result.err, "tov-schema: 3 violations:\n"
                          "  1  error  too-long       A string or bytes are longer than the column is wide\n"
                          "  1  error  duplicate-key  An earlier row has the same key, as the server compares\n"
                          "  1  error  no-such-row    A reference leads to no row\n");
    EXPECT_EQ(check({"--quiet"}).err, "");
}

TEST_F(CommandCheckTest, NotesAreNoErrors)
{
    fill("ALTER TABLE Children ADD COLUMN Extra");
    const command_result result = check();
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "column-unknown: Children.extra: A table has a column that the schema does not have\n");
}

TEST_F(CommandCheckTest, WritesJsonAndCsv)
{
    fill(bad_rows);
    const command_result json = check({"--format", "json", "--max", "1", "--quiet"});
    EXPECT_EXIT_CODE(json, 1);
    EXPECT_EQ(json.out, R"({"violations":[)"
                        "\n"
                        R"({"code":"too-long","severity":"error","table":"Parents","rowid":1,"key":"Id=1",)"
                        R"("column":"Title","value":"'A title, \"quoted\", that is too long'",)"
                        R"("message":"width exceeded: 20"})"
                        "\n],\"complete\":false}\n");
    const command_result csv = check({"--format", "csv", "-o", path("v.csv"), "--only", "Parents"});
    EXPECT_EXIT_CODE(csv, 1);
    EXPECT_EQ(csv.out, "");
    EXPECT_EQ(read("v.csv"), "code,severity,table,rowid,key,column,value,message\r\n"
                             "too-long,error,Parents,1,Id=1,Title,\"'A title, \"\"quoted\"\", that is too long'\","
                             "width exceeded: 20\r\n");
    EXPECT_EQ(check({"--format", "json", "--skip", "Parents", "--skip", "Children", "--quiet"}).out,
              "{\"violations\":[],\"complete\":true}\n");
}

TEST_F(CommandCheckTest, WritesSarif)
{
    fill(bad_rows);
    const command_result result = check({"--format", "sarif", "--only", "Parents", "--quiet"});
    EXPECT_EXIT_CODE(result, 1);
    for (const char *part : {R"("id":"duplicate-key")", R"("ruleId":"too-long","level":"error")",
                             R"("text":"row 1 (Id=1): width exceeded: 20: 'A title)",
                             R"("fullyQualifiedName":"Parents.Title")", "client.db"})
        EXPECT_NE(result.out.find(part), std::string::npos) << part << " in " << result.out;
}

TEST_F(CommandCheckTest, WhatCannotBeUsedIsTwo)
{
    fill("");
    EXPECT_EXIT_CODE(check({"--only", "absent"}), 2);
    EXPECT_EXIT_CODE(check({"--max", "0"}), 2);
    EXPECT_EXIT_CODE(check({"--format", "xml"}), 2);
    EXPECT_EXIT_CODE(run({"check", path("s.json"), path("absent.db")}), 2);
    const command_result result = run({"check", path("s.json"), path("s.json")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: file is not a database: " + path("s.json") + "\n");
}

TEST_F(CommandCheckTest, NothingDisturbsATerminal)
{
    fill("INSERT INTO Parents VALUES(1, 'a title that is too long' || char(27) || '[31m')");
    EXPECT_EQ(check({"--quiet"}).out.find('\x1B'), std::string::npos);
}

} // namespace
