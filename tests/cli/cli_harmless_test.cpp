// Names that would write on the terminal, or hide what they are, in everything that is printed for people.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

constexpr const char *hostile = "\x1B[2J\u009B2J\u202E\u2028x\x7F"; // as it is
constexpr const char *in_json = R"(\u001B[2J\u009B2J\u202E\u2028x\u007F)";
constexpr const char *written =
    "\\u001b[2J\u009B2J\u202E\u2028x\x7F"; // in JSON that the command writes          // in a document
constexpr const char *shown = "<U+001B>[2J<U+009B>2J<U+202E><U+2028>x<U+007F>";     // for people
constexpr const char *in_graph = "&lt;U+001B&gt;[2J&lt;U+009B&gt;2J&lt;U+202E&gt;"; // in a label, the beginning

class CliHarmlessTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        schema = write("s.json", with_hostile_names(sample_schema, {"Parents", "Title", "ParentId", "FK_P"}));
        other = write("o.json", with_hostile_names(sample_schema, {"Children"}));
    }
    // The text with each of the names made hostile.
    static std::string with_hostile_names(std::string text, const std::vector<std::string> &names)
    {
        for (const std::string &name : names)
            for (size_t at = 0; (at = text.find('"' + name + '"', at)) != std::string::npos; at += name.size())
                text.replace(at + 1, name.size(), name + in_json);
        return text;
    }
    static void expect_harmless(const std::string &text)
    {
        for (const char *mark : {"\x1B", "\x7F", "\u009B", "\u202E", "\u2028"})
            EXPECT_EQ(text.find(mark), std::string::npos) << text;
    }

    std::string schema, other;
};

struct shown_case {
    std::vector<std::string> arguments; // before the files
    std::string part;                   // of the output
};

TEST_F(CliHarmlessTest, EveryListShowsThem)
{
    const std::string Name = shown;
    const shown_case cases[] = {
        {{"tables", schema}, "\nParents" + Name + "  "},
        {{"refs", schema},
         "Children (ParentId" + Name + ") -> Parents" + Name + " (Id)  ON DELETE CASCADE  [FK_P" + Name + "]\n"},
        {{"diff", "--changed-since", schema, other}, "same: Parents" + Name + "\n"},
        {{"diff", "--changed-since", other, schema}, "same: Children" + Name + "\n"},
        {{"graph", schema}, std::string("<b>Parents") + in_graph},
        {{"graph", schema, "--format", "mermaid"}, std::string("<b>Parents") + in_graph},
    };
    for (const shown_case &c : cases) {
        const command_result result = run(c.arguments);
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_NE(result.out.find(c.part), std::string::npos) << result.out;
        expect_harmless(result.out);
        expect_harmless(result.err);
    }
}

TEST_F(CliHarmlessTest, SoDoSummaries)
{
    ASSERT_EXIT_CODE(run({"lite", schema, "-o", path("l.json")}), 0);
    EXPECT_NE(read("l.json").find(written), std::string::npos) << "JSON holds the exact name";
    const command_result result = run({"lite", "--read", path("l.json")});
    EXPECT_NE(result.out.find(std::string("\tTitle") + shown + "\n"), std::string::npos) << result.out;
    expect_harmless(result.out);
}

TEST_F(CliHarmlessTest, SoDoMessages)
{
    const command_result absent = run({"select", schema, hostile});
    EXPECT_EXIT_CODE(absent, 2);
    EXPECT_NE(absent.err.find(shown), std::string::npos) << absent.err;
    expect_harmless(absent.err);
    const command_result refused = run({"create", schema, path("c.db")});
    EXPECT_EXIT_CODE(refused, 2);
    expect_harmless(refused.err);
}

TEST_F(CliHarmlessTest, SoDoFindingsAndDefaults)
{
    const std::string catalogue = write("c.json", with_hostile_names(sample_catalogue, {"Orders", "Placed"}));
    const command_result imported = run({"import", catalogue, "-o", path("i.json"), "--findings", path("f.json")});
    EXPECT_EXIT_CODE(imported, 0);
    EXPECT_NE(imported.err.find("name-not-writable: dbo.Orders" + std::string(shown) + ": "), std::string::npos)
        << imported.err;
    expect_harmless(imported.err);
    EXPECT_NE(read("f.json").find("dbo.Orders" + std::string(written)), std::string::npos) << read("f.json");

    const command_result kept = run({"default", "nvarchar", "(N'" + std::string(hostile) + "')"});
    EXPECT_EQ(kept.out, "kept\t'" + std::string(shown) + "'\n");
}

TEST_F(CliHarmlessTest, JsonHoldsThemExactly)
{
    for (const char *command : {"tables", "refs"}) {
        const command_result result = run({command, schema, "--json"});
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_NE(result.out.find(written), std::string::npos) << result.out;
    }
}

} // namespace
