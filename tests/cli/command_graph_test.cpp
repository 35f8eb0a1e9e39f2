// tov-schema graph.

#include "run_command.h"
#include "sample.h"

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
