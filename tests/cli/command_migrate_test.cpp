// tov-schema migrate.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandMigrateTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        old_schema = write("old.json", sample_schema);
        ASSERT_EXIT_CODE(run({"create", old_schema, path("shop.db")}), 0);
    }
    std::string changed(const std::string &from, const std::string &to)
    {
        std::string schema = sample_schema;
        schema.replace(schema.find(from), from.size(), to);
        return write("new.json", schema);
    }
    std::string old_schema;
};

TEST_F(CommandMigrateTest, ChangesADatabase)
{
    const std::string new_schema = changed("\"CASCADE\"", "\"SET NULL\"");
    EXPECT_EXIT_CODE(run({"diff", path("shop.db"), new_schema}), 1);
    const command_result result = run({"migrate", "--apply", path("shop.db"), new_schema});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(run({"diff", path("shop.db"), new_schema}).out, "same\n");
}

TEST_F(CommandMigrateTest, PrintsTheScript)
{
    const std::string new_schema = changed("\"CASCADE\"", "\"SET NULL\"");
    const command_result result = run({"migrate", old_schema, new_schema});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_TRUE(result.out.starts_with("PRAGMA foreign_keys=OFF;\nBEGIN IMMEDIATE;\n")) << result.out;
    EXPECT_TRUE(result.out.ends_with("COMMIT;\n")) << result.out;
    EXPECT_EQ(run({"diff", "--format", "sql", path("shop.db"), new_schema}).out, result.out);
    EXPECT_EXIT_CODE(run({"migrate", old_schema, new_schema, "-o", path("m.sql")}), 0);
    EXPECT_EQ(read("m.sql"), result.out);
}

TEST_F(CommandMigrateTest, RefusesToLoseData)
{
    const std::string title = R"(,
"title":{"name":"Title","type":{"name":"text","fixed_width":false,"nocase":true,"width":20},
"mssql_col_data_type":"nvarchar","notnull":{}})";
    const std::string new_schema = changed(title, "");
    const command_result result = run({"migrate", "--apply", path("shop.db"), new_schema});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: this would lose data: Parents.Title: is dropped: " + path("shop.db") + "\n");
    const command_result plan = run({"migrate", "--plan", old_schema, new_schema});
    EXPECT_NE(plan.out.find("loses data: Parents.Title: is dropped\n"
                            "    how many: SELECT count(\"Title\") FROM \"Parents\"\n"),
              std::string::npos)
        << plan.out;
    EXPECT_EXIT_CODE(run({"migrate", "--apply", path("shop.db"), new_schema, "--allow-loss", "Parents.Title"}), 0);
    EXPECT_EQ(run({"diff", path("shop.db"), new_schema}).out, "same\n");
}

TEST_F(CommandMigrateTest, ADatabaseWithoutARecordIsRefused)
{
    ASSERT_EXIT_CODE(run({"create", old_schema, path("bare.db"), "--no-record"}), 0);
    const command_result result = run({"migrate", "--apply", path("bare.db"), old_schema});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: the database has no record of its schema: " + path("bare.db") + "\n");
}

// A string becomes a number as it does in a load; a script has no such conversion.
TEST_F(CommandMigrateTest, ConvertsStringsOnlyInADatabase)
{
    const std::string new_schema = changed(R"({"name":"text","fixed_width":false,"nocase":true,"width":20},
"mssql_col_data_type":"nvarchar")",
                                           R"({"name":"date"},"mssql_col_data_type":"date")");
    const command_result plan = run({"migrate", "--plan", old_schema, new_schema});
    EXPECT_NE(plan.out.find("    only --apply can do this: it converts values as load does\n"), std::string::npos)
        << plan.out;
    const command_result script = run({"migrate", old_schema, new_schema});
    EXPECT_EXIT_CODE(script, 2);
    EXPECT_EQ(script.err,
              "tov-schema: no script can convert the values of Parents.Title: migrate the database itself\n");
    EXPECT_EXIT_CODE(run({"migrate", "--apply", path("shop.db"), new_schema}), 0);
}

// Strings go on comparing as the server compares them.
TEST_F(CommandMigrateTest, KeepsTheServersCollations)
{
    const auto document = [](const std::string &type, const std::string &nullable) {
        return R"({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","cols":{
"1":{"name":"Name","type":{"name":"text","nocase":true,"unicode":true,"width":20},"notnull":{}},
"2":{"name":"N","type":{"name":")" +
               type + R"("}}},"pk":{"name":"PK","cols":{"1":null}},"server":{"schema":"dbo","name":"T","cols":[
{"name":"Name","id":"1","type":"nvarchar","length":40,"collation":"Latin1_General_CI_AS"},
{"name":"N","id":"2","type":")" +
               nullable + R"(","nullable":true}]}}}})";
    };
    const std::string before = write("before.json", document("sint32", "int"));
    const std::string after = write("after.json", document("real8", "float"));
    ASSERT_EXIT_CODE(run({"create", "--collations", "server", before, path("c.db")}), 0);
    write("T.csv", "Name,N\nStra\u00dfe,1\n");
    ASSERT_EXIT_CODE(run({"load", before, path("c.db"), path("T.csv"), "--quiet"}), 0);
    EXPECT_EXIT_CODE(run({"migrate", "--apply", path("c.db"), after}), 0);
    EXPECT_EQ(run({"diff", path("c.db"), after}).out, "same\n");
    write("more.csv", "Name,N\nSTRASSE,2\n");
    const command_result again = run({"load", after, path("c.db"), path("more.csv"), "--table", "T", "--quiet"});
    EXPECT_EXIT_CODE(again, 1); // the key is there
}

} // namespace
