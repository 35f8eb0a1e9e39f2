// tov-schema tables.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandTablesTest : public CommandTest {};

TEST_F(CommandTablesTest, ListsTablesInCreationOrder)
{
    std::string schema = sample_schema; // the referencing table first
    const size_t first = schema.find("\"t1\""), second = schema.find("\"t2\"");
    const std::string parents = schema.substr(first, second - first - 2);
    const std::string children = schema.substr(second, schema.size() - second - 2);
    schema = schema.substr(0, first) + children + "," + parents + "}}";
    const command_result result = run({"tables", write("s.json", schema)});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "table     columns  key  uniques  foreign keys  checks\n"
                          "Parents         2    1        0             0       0\n"
                          "Children        2    1        0             1       0\n");
}

TEST_F(CommandTablesTest, PrintsJson)
{
    const command_result result = run({"tables", "-", "--json"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, R"({"tables":[{"id":"t1","name":"Parents","columns":2,"key_columns":1,"uniques":0,)"
                          R"("foreign_keys":0,"checks":0},{"id":"t2","name":"Children","columns":2,"key_columns":1,)"
                          R"("uniques":0,"foreign_keys":1,"checks":0}],"remarks":[]})"
                          "\n");
}

TEST_F(CommandTablesTest, SaysWhichTablesFormACycle)
{
    std::string schema = sample_schema;
    schema.replace(schema.find(R"("type":{"name":"text")"), 0,
                   R"("fk":{"ref_tbl_id":"t2","ref_col_id":"k","deferred":true},)");
    const command_result result = run({"tables", write("s.json", schema)});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err.find("tov-schema: note: "), 0u) << result.err;
    EXPECT_NE(result.err.find("Parents"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("Children"), std::string::npos) << result.err;
}

} // namespace
