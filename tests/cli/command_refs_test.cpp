// tov-schema refs.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandRefsTest : public CommandTest {};

// Adds a table-level key and a reference back, so that both tables are in a cycle.
std::string with_cycle()
{
    std::string schema = sample_schema;
    schema.replace(schema.find(R"("type":{"name":"text")"), 0,
                   R"("fk":{"ref_tbl_id":"T2","ref_col_id":"k","deferred":true},)");
    schema.replace(schema.rfind(R"("pk":{"name":"PK2")"), 0,
                   R"("foreignkeys":{"f":{"cols":{"k":"k","p":"p"},"name":"FK_self","ref_tbl_id":"t2",)"
                   R"("deferred":false,"on_delete":"SET NULL","on_update":"CASCADE"}},)");
    return schema;
}

TEST_F(CommandRefsTest, ListsKeysWithColumnsAndActions)
{
    const command_result result = run({"refs", "-"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "Children (ParentId) -> Parents (Id)  ON DELETE CASCADE  [FK_P]\n");
}

TEST_F(CommandRefsTest, ListsTableLevelKeysAndCycles)
{
    const command_result result = run({"refs", "-"}, with_cycle());
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "Parents (Title) -> Children (K)\n"
                          "Children (ParentId) -> Parents (Id)  ON DELETE CASCADE  [FK_P]\n"
                          "Children (K, ParentId) -> Children (K, ParentId)  ON DELETE SET NULL  ON UPDATE CASCADE  "
                          "[FK_self]\n"
                          "tables in a cycle: Parents Children\n"
                          "key columns in a cycle: Children.K\n");
}

TEST_F(CommandRefsTest, KeepsToOneTable)
{
    EXPECT_EQ(run({"refs", write("s.json", with_cycle()), "Parents"}).out,
              "Parents (Title) -> Children (K)\n"
              "Children (ParentId) -> Parents (Id)  ON DELETE CASCADE  [FK_P]\n");
}

TEST_F(CommandRefsTest, PrintsJson)
{
    EXPECT_EQ(run({"refs", "-", "--json"}, sample_schema).out,
              R"({"references":[{"name":"FK_P","from_table":"Children","from_columns":["ParentId"],)"
              R"("to_table":"Parents","to_columns":["Id"],"on_delete":"CASCADE"}],"cycles":[]})"
              "\n");
}

TEST_F(CommandRefsTest, AReferenceToNoTableIsNamed)
{
    std::string schema = sample_schema;
    schema.replace(schema.find(R"("ref_tbl_id":"t1")"), 17, R"("ref_tbl_id":"t9")");
    const command_result result = run({"refs", "-"}, schema);
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("table id 't9' not found in schema"), std::string::npos) << result.err;
}

} // namespace
