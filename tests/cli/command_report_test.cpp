// tov-schema report.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandReportTest : public CommandTest {};

TEST_F(CommandReportTest, WritesOnePage)
{
    const command_result result = run({"report", "-", "--title", "Kin"}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_TRUE(result.out.starts_with("<!DOCTYPE html>")) << result.out.substr(0, 200);
    EXPECT_TRUE(result.out.ends_with("</html>\n"));
    EXPECT_NE(result.out.find(R"("title":"Kin")"), std::string::npos);
    EXPECT_EQ(result.out.find("\"findings\":["), std::string::npos) << "a schema has none";
}

TEST_F(CommandReportTest, ShowsTheFindingsOfASource)
{
    const std::string script = write("a.sql", "CREATE TABLE dbo.T (A int PRIMARY KEY, B AS (A + 1));");
    const command_result result = run({"report", script});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.out.find(R"("code":"column-computed")"), std::string::npos);
}

TEST_F(CommandReportTest, ShowsTheFindingsOfAFile)
{
    const std::string findings =
        write("findings.json", R"({"findings":[{"code":"fk-dropped","severity":"warning","table":"Children"}]})");
    const command_result result = run({"report", "-", "--findings", findings}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.out.find(R"("findings":[{"code":"fk-dropped","severity":"warning","table":"Children"}])"),
              std::string::npos);
    EXPECT_EXIT_CODE(run({"report", "-", "--findings", write("bad.json", "{}")}, sample_schema), 2);
}

TEST_F(CommandReportTest, CountsRowsOfADatabase)
{
    const std::string schema = write("schema.json", sample_schema);
    ASSERT_EXIT_CODE(run({"create", schema, path("a.db")}), 0);
    const command_result result = run({"report", schema, "--database", path("a.db")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.out.find("\"rows\":0"), std::string::npos);
    const command_result refused = run({"report", schema, "--database", schema});
    EXPECT_EXIT_CODE(refused, 2);
    EXPECT_NE(refused.err.find("schema.json"), std::string::npos) << refused.err;
}

TEST_F(CommandReportTest, SaysWhatHasChanged)
{
    const std::string old_schema = write("old.json", sample_schema);
    std::string changed = sample_schema;
    changed.replace(changed.find("\"Parents\""), 9, "\"Elders\"");
    const command_result result = run({"report", "--diff", old_schema, "-"}, changed);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.out.find(R"("changes":{"changes":[)"), std::string::npos);
    EXPECT_NE(result.out.find(R"("name":"Elders")"), std::string::npos);
    const command_result refused =
        run({"report", "--diff", old_schema, "-", "--format", "markdown", "-o", path("folder")}, changed);
    EXPECT_EXIT_CODE(refused, 2);
    EXPECT_FALSE(exists("folder"));
}

TEST_F(CommandReportTest, IsToldWhatWasRenamed)
{
    const std::string old_schema = write("old.json", sample_schema);
    std::string changed = sample_schema;
    changed.replace(changed.find("\"Parents\""), 9, "\"Elders\"");
    const auto report = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"report", "--diff", old_schema, "-"});
        return run(options, changed);
    };
    const std::string guessed = report({}).out;
    EXPECT_NE(guessed.find(R"("change":"renamed","old_name":"Parents","guess":true)"), std::string::npos) << guessed;
    const std::string told = report({"--rename", "Parents=Elders"}).out;
    EXPECT_NE(told.find(R"("change":"renamed","old_name":"Parents","old_id")"), std::string::npos) << told;
    const std::string removed = report({"--rename", "Parents="}).out;
    EXPECT_NE(removed.find(R"("name":"Parents","change":"removed")"), std::string::npos) << removed;
    EXPECT_NE(report({"--by", "id"}).out.find(R"("change":"renamed","old_name":"Parents","old_id")"),
              std::string::npos);
    EXPECT_EXIT_CODE(report({"--rename", "Nobody=Elders"}), 2);
    EXPECT_EXIT_CODE(run({"report", "-", "--by", "id"}, changed), 2); // without --diff
}

TEST_F(CommandReportTest, WritesMarkdownIntoAFolder)
{
    const command_result result =
        run({"report", "-", "--format", "markdown", "-o", path("docs/schema")}, sample_schema);
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(read("docs/schema/README.md").starts_with("# Schema\n")) << read("docs/schema/README.md");
    EXPECT_TRUE(exists("docs/schema/Parents.md"));
    EXPECT_TRUE(exists("docs/schema/Children.md"));
}

TEST_F(CommandReportTest, RefusesWhatCannotBe)
{
    EXPECT_EXIT_CODE(run({"report", "-", "--format", "markdown"}, sample_schema), 2);
    EXPECT_EXIT_CODE(run({"report", "-", "--format", "markdown", "-o", write("file", "x")}, sample_schema), 2);
    EXPECT_EXIT_CODE(run({"report", path("absent.json")}), 2);
    const std::string schema = write("schema.json", sample_schema);
    EXPECT_EXIT_CODE(run({"report", schema, "-o", schema}), 2);
    EXPECT_EQ(read("schema.json"), sample_schema);
}

} // namespace
