// Reading a schema in either form, and naming tables.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CliSchemaTest : public CommandTest {};

TEST_F(CliSchemaTest, EverySubcommandReadsBothForms)
{
    const std::string catalogue = write("c.json", sample_catalogue);
    ASSERT_EQ(run({"import", catalogue, "-o", path("plain.json")}).exit_code, 0);
    ASSERT_EQ(run({"import", catalogue, "-o", path("both.json"), "--with-host-internals"}).exit_code, 0);
    EXPECT_EQ(read("both.json").find("{\n  \"schema\": {\n"), 0u);
    EXPECT_NE(read("both.json").find("\n  \"host_internals\": {\n"), std::string::npos);
    const std::vector<std::string> commands[] = {
        {"sql"}, {"tables"}, {"refs"}, {"graph"}, {"select", "Orders"}, {"lite"},
    };
    for (const auto &command : commands) {
        std::vector<std::string> plain{command[0], path("plain.json")}, both{command[0], path("both.json")};
        plain.insert(plain.end(), command.begin() + 1, command.end());
        both.insert(both.end(), command.begin() + 1, command.end());
        const command_result first = run(plain), second = run(both);
        EXPECT_EXIT_CODE(first, 0);
        EXPECT_EXIT_CODE(second, 0);
        EXPECT_EQ(first.out, second.out);
    }
    EXPECT_EXIT_CODE(run({"create", path("both.json"), path("client.db")}), 0);
    EXPECT_EXIT_CODE(run({"diff", path("plain.json"), path("both.json")}), 0);
}

TEST_F(CliSchemaTest, ACatalogueExportIsRecognised)
{
    const command_result result = run({"create", write("c.json", sample_catalogue), path("client.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: this is a catalogue export; tov-schema import makes a schema from it: " +
                              path("c.json") + "\n");
    EXPECT_FALSE(exists("client.db"));
}

TEST_F(CliSchemaTest, WhatImportReadsIsNotASchema)
{
    const command_result package = run({"create", write("shop.dacpac", "PK\x03\x04..."), path("client.db")});
    EXPECT_EXIT_CODE(package, 2);
    EXPECT_EQ(package.err,
              "tov-schema: this is a package; tov-schema import makes a schema from it: " + path("shop.dacpac") + "\n");
    const command_result script = run({"tables", write("shop.sql", "CREATE TABLE t (a int)")});
    EXPECT_EXIT_CODE(script, 2);
    EXPECT_EQ(script.err, "tov-schema: this is not a schema; tov-schema import makes one from packages, scripts and "
                          "exports: " +
                              path("shop.sql") + "\n");
}

TEST_F(CliSchemaTest, WhatIsNoJsonIsRefusedWithThePlace)
{
    const command_result result = run({"tables", write("s.json", "{\"compat_level\":1,\n\"tbls\":{]}")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err,
              "tov-schema: JSON text, line 2, column 9: expected a key in quotes, found ']': " + path("s.json") + "\n");
}

TEST_F(CliSchemaTest, ATableIsNamedByIdOrName)
{
    const std::string schema = write("s.json", sample_schema);
    const std::string expected = run({"select", schema, "t2"}).out;
    EXPECT_NE(expected, "");
    for (const char *table : {"T2", "Children", "CHILDREN"})
        EXPECT_EQ(run({"select", schema, table}).out, expected);
    const command_result absent = run({"select", schema, "Nobody"});
    EXPECT_EXIT_CODE(absent, 2);
    EXPECT_EQ(absent.err, "tov-schema: there is no table 'Nobody'\n");
    EXPECT_EQ(run({"select", schema, "Childern"}).err,
              "tov-schema: there is no table 'Childern'; did you mean 'Children'?\n");
}

} // namespace
