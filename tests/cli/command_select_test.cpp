// tov-schema select.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandSelectTest : public CommandTest {};

TEST_F(CommandSelectTest, PrintsSelectListAndJoin)
{
    const command_result result = run({"select", "-", "Children"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "\"t\".\"K\",\"t\".\"ParentId\"\n\"t\".\"K\"=\"o\".\"K\"\n");
}

TEST_F(CommandSelectTest, ConvertsIdentityValuesAsTheModesSay)
{
    EXPECT_EQ(run({"select", "-", "Parents", "--alias", "a", "--other-alias", "b", "--mode", "1"}, sample_schema).out,
              "(CAST(SUBSTRING(\"a\".\"Id\",3,25) AS bigint)),\"a\".\"Title\"\n"
              "(CAST(SUBSTRING(\"a\".\"Id\",3,25) AS bigint))=\"b\".\"Id\"\n");
    EXPECT_EQ(run({"select", "-", "Parents", "--mode", "2", "--other-mode", "1"}, sample_schema).out,
              "('S:' + CAST(\"t\".\"Id\" AS varchar(25))),\"t\".\"Title\"\n"
              "('S:' + CAST(\"t\".\"Id\" AS varchar(25)))=(CAST(SUBSTRING(\"o\".\"Id\",3,25) AS bigint))\n");
}

TEST_F(CommandSelectTest, PrintsJson)
{
    EXPECT_EQ(run({"select", "-", "Children", "--json"}, sample_schema).out,
              R"({"select":"\"t\".\"K\",\"t\".\"ParentId\"","on":"\"t\".\"K\"=\"o\".\"K\""})"
              "\n");
}

TEST_F(CommandSelectTest, RefusesNamesThatAreNotSafeInSqlText)
{
    struct name_case {
        const char *name; // as JSON
        const char *error;
    };
    const name_case cases[] = {
        {R"(K\" FROM t; DROP TABLE Parents; --)",
         "tov-schema: a name with a double quote: column \"K\" FROM t; DROP TABLE Parents; --\"\n"},
        {R"(\u202eK)",
         "tov-schema: a name with a character that changes the direction of writing: column \"<U+202E>K\"\n"},
        {"", "tov-schema: an empty name: column \"\"\n"},
    };
    for (const name_case &c : cases) {
        SCOPED_TRACE(c.name);
        std::string schema = sample_schema;
        schema.replace(schema.find(R"("K","type")") + 1, 1, c.name);
        const command_result result = run({"select", "-", "Children"}, schema);
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, c.error);
        // Another table's text does not hold the name.
        EXPECT_EXIT_CODE(run({"select", "-", "Parents"}, schema), 0);
    }
}

TEST_F(CommandSelectTest, RefusesTheUnsafeNameOfAKeyColumnThatIsNotPrepared)
{
    const command_result result =
        run({"select", "-", "t"},
            R"({"schema":{"compat_level":1,"tbls":{"t":{"name":"T","txid":1,"cols":{"a":{"name":"A",)"
            R"("type":{"name":"sint32"},"mssql_col_data_type":"int"}},"pk":{"name":"PK","cols":{"g":null}}}}},)"
            R"("host_internals":{"unprep-cols":{"t":{"g":{"name":"G\" OR 1=1","type":{"name":"host"}}}}}})");
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "tov-schema: a name with a double quote: column \"G\" OR 1=1\"\n");
}

TEST_F(CommandSelectTest, RefusesKeyColumnsInACycle)
{
    std::string schema = sample_schema;
    schema.replace(schema.find(R"("K","type")") + 4, 0,
                   R"("fk":{"ref_tbl_id":"t2","ref_col_id":"K","deferred":false},)");
    const command_result result = run({"select", "-", "Children", "--mode", "1"}, schema);
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: the key columns refer to each other in a cycle: Children.K\n");
    EXPECT_EXIT_CODE(run({"select", "-", "Children"}, schema), 0);
}

} // namespace
