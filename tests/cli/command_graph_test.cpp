// tov-schema graph.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandGraphTest : public CommandTest {};

TEST_F(CommandGraphTest, DrawsBoxesWithKeysAndEdgesWithColumns)
{
    const command_result result = run({"graph", "-"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find("digraph schema {"), 0u);
    EXPECT_NE(result.out.find("<b>Parents</b></td></tr><tr><td align=\"left\"><u>Id</u></td></tr>"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("\"t2\" -> \"t1\" [label=<ParentId (CASCADE)>];"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("red"), std::string::npos) << "nothing is in a cycle";
}

TEST_F(CommandGraphTest, DrawsMermaid)
{
    const command_result result = run({"graph", "-", "--format", "mermaid"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "flowchart LR\n"
                          "    t0[\"<b>Parents</b><br/><u>Id</u>\"]\n"
                          "    t1[\"<b>Children</b><br/><u>K</u>\"]\n"
                          "    t1 -->|\"ParentId (CASCADE)\"| t0\n");
}

TEST_F(CommandGraphTest, MarksCycles)
{
    std::string schema = sample_schema;
    schema.replace(schema.find(R"("type":{"name":"text")"), 0,
                   R"("fk":{"ref_tbl_id":"t2","ref_col_id":"k","deferred":true},)");
    const std::string dot = run({"graph", "-"}, schema).out;
    EXPECT_NE(dot.find("bgcolor=\"mistyrose\"><b>Parents</b>"), std::string::npos) << dot;
    EXPECT_NE(dot.find("\"t1\" -> \"t2\" [label=<Title>, color=\"red\"];"), std::string::npos) << dot;
    const std::string mermaid = run({"graph", "-", "--format", "mermaid"}, schema).out;
    EXPECT_NE(mermaid.find("style t0 fill:#ffe4e1"), std::string::npos) << mermaid;
    EXPECT_NE(mermaid.find("linkStyle 0,1 stroke:#ff0000"), std::string::npos) << mermaid;
}

// A table with an integer key and columns that refer to other tables' keys.
std::string tbl_text(const std::string &id, const std::vector<std::string> &ref_ids)
{
    std::string text =
        '"' + id + R"(":{"name":")" + id + R"(","txid":1,"cols":{"i":{"name":"I","type":{"name":"sint32"}})";
    for (const std::string &ref_id : ref_ids)
        text += R"(,"to_)" + ref_id + R"(":{"name":"To_)" + ref_id +
                R"(","type":{"name":"sint32"},"fk":{"ref_tbl_id":")" + ref_id +
                R"(","ref_col_id":"i","deferred":true}})";
    return text + R"(},"pk":{"name":"PK","cols":{"i":null}}})";
}

TEST_F(CommandGraphTest, MarksNoReferenceFromOneCycleToAnother)
{
    const std::string schema = R"({"compat_level":1,"tbls":{)" + tbl_text("a", {"b", "c"}) + "," +
                               tbl_text("b", {"a"}) + "," + tbl_text("c", {"c", "d"}) + "," + tbl_text("d", {"c"}) +
                               "}}";
    const std::string dot = run({"graph", "-"}, schema).out;
    for (const char *inside :
         {"\"a\" -> \"b\" [label=<To_b>, color=\"red\"];", "\"b\" -> \"a\" [label=<To_a>, color=\"red\"];",
          "\"c\" -> \"d\" [label=<To_d>, color=\"red\"];", "\"d\" -> \"c\" [label=<To_c>, color=\"red\"];"})
        EXPECT_NE(dot.find(inside), std::string::npos) << inside << "\n" << dot;
    for (const char *outside : {"\"a\" -> \"c\" [label=<To_c>];", "\"c\" -> \"c\" [label=<To_c>];"})
        EXPECT_NE(dot.find(outside), std::string::npos) << outside << "\n" << dot;
    const std::string mermaid = run({"graph", "-", "--format", "mermaid"}, schema).out;
    EXPECT_NE(mermaid.find("linkStyle 0,2,4,5 stroke:#ff0000"), std::string::npos) << mermaid;
}

TEST_F(CommandGraphTest, StacksTheColumnsOfAKey)
{
    std::string schema = sample_schema;
    schema.replace(schema.find(R"("pk":{"name":"PK2")"), 0,
                   R"("foreignkeys":{"f":{"name":"F","ref_tbl_id":"t1","deferred":true,"on_delete":"SET NULL",)"
                   R"("on_update":"NO ACTION","cols":{"k":"id","p":"title"}}},)");
    const std::string dot = run({"graph", "-"}, schema).out;
    EXPECT_NE(dot.find("[label=<K<br/>ParentId (SET NULL)>];"), std::string::npos) << dot;
    const std::string mermaid = run({"graph", "-", "--format", "mermaid"}, schema).out;
    EXPECT_NE(mermaid.find("|\"K<br/>ParentId (SET NULL)\"|"), std::string::npos) << mermaid;
}

TEST_F(CommandGraphTest, EscapesABackslashAtTheEndOfAnId)
{
    const std::string schema = R"({"compat_level":1,"tbls":{)" + tbl_text(R"(a\\)", {}) + "}}";
    const std::string dot = run({"graph", "-"}, schema).out;
    EXPECT_NE(dot.find(R"("a&#92;" [label=)"), std::string::npos) << dot;
}

TEST_F(CommandGraphTest, EscapesNames)
{
    std::string schema = sample_schema;
    schema.replace(schema.find("\"Parents\""), 9, R"("<A & \"B\">")");
    for (const char *format : {"dot", "mermaid"}) {
        const std::string text = run({"graph", "-", "--format", format}, schema).out;
        EXPECT_NE(text.find("&lt;A &amp; &quot;B&quot;&gt;"), std::string::npos) << text;
    }
}

} // namespace
