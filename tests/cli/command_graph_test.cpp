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

// a -> b -> c -> d, and e on its own.
const std::string chain = R"({"compat_level":1,"tbls":{)" + tbl_text("a", {"b"}) + "," + tbl_text("b", {"c"}) + "," +
                          tbl_text("c", {"d"}) + "," + tbl_text("d", {}) + "," + tbl_text("e", {}) + "}}";

// The boxes of a picture, by their tables' names.
std::string boxes(const std::string &dot)
{
    std::string names;
    for (const char *name : {"a", "b", "c", "d", "e"})
        names += dot.find("<b>" + std::string(name) + "</b>") == std::string::npos ? "" : name;
    return names;
}

TEST_F(CommandGraphTest, DrawsAPart)
{
    const struct {
        const char *name;
        std::vector<std::string> options;
        const char *expected;
    } cases[] = {
        {"all tables", {}, "abcde"},
        {"a table and its neighbours, whichever way the references go", {"--around", "b"}, "abc"},
        {"a name in another letter case", {"--around", "B"}, "abc"},
        {"further away", {"--around", "a", "--depth", "2"}, "abc"},
        {"the table alone", {"--around", "c", "--depth", "0"}, "c"},
        {"a table without references", {"--around", "e", "--depth", "9"}, "e"},
        {"all that can be reached", {"--around", "d", "--depth", "9"}, "abcd"},
        {"no more than the nearest", {"--around", "d", "--depth", "9", "--limit", "2"}, "cd"},
        {"no more than those with the most neighbours", {"--limit", "2"}, "bc"},
        {"no limit", {"--limit", "0"}, "abcde"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> words = {"graph", "-"};
        words.insert(words.end(), c.options.begin(), c.options.end());
        const command_result result = run(words, chain);
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_EQ(boxes(result.out), c.expected) << result.out;
        const bool is_cut = words.size() > 3 && words[words.size() - 1] == "2" && words[words.size() - 2] == "--limit";
        EXPECT_EQ(result.err.find("tables are drawn") != std::string::npos, is_cut) << result.err;
    }
}

TEST_F(CommandGraphTest, DrawsNoReferenceToATableThatIsLeftOut)
{
    const std::string dot = run({"graph", "-", "--around", "a"}, chain).out;
    EXPECT_NE(dot.find("\"a\" -> \"b\""), std::string::npos) << dot;
    EXPECT_EQ(dot.find("-> \"c\""), std::string::npos) << dot;
}

TEST_F(CommandGraphTest, RefusesAPartThatCannotBe)
{
    EXPECT_EXIT_CODE(run({"graph", "-", "--around", "x"}, chain), 2);
    EXPECT_EXIT_CODE(run({"graph", "-", "--depth", "2"}, chain), 2) << "of what?";
}

TEST_F(CommandGraphTest, DrawsSchemasTogether)
{
    std::string schema = chain;
    for (const auto &[id, name] : {std::pair("a", "x"), std::pair("b", "<y>"), std::pair("c", "x")}) {
        const std::string begin = R"("name":")" + std::string(id) + R"(","txid":1,)";
        schema.replace(schema.find(begin), 0, R"("server":{"schema":")" + std::string(name) + R"("},)");
    }
    const std::string dot = run({"graph", "-", "--around", "b"}, schema).out;
    const size_t first = dot.find("subgraph cluster_0 {\n        label=<x>");
    const size_t second = dot.find("subgraph cluster_1 {\n        label=<&lt;y&gt;>");
    ASSERT_NE(first, std::string::npos) << dot;
    ASSERT_NE(second, std::string::npos) << dot;
    EXPECT_LT(dot.find("<b>c</b>"), second) << dot;
    EXPECT_GT(dot.find("<b>b</b>"), second) << dot;
    const std::string mermaid = run({"graph", "-", "--around", "b", "--format", "mermaid"}, schema).out;
    EXPECT_NE(mermaid.find("    subgraph s0[\"x\"]\n        t0[\"<b>a</b>"), std::string::npos) << mermaid;
    EXPECT_NE(mermaid.find("    end\n    subgraph s1[\"&lt;y&gt;\"]\n"), std::string::npos) << mermaid;
    EXPECT_EQ(run({"graph", "-"}, chain).out.find("subgraph"), std::string::npos) << "all in one schema";
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
