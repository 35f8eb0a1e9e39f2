// Which findings are printed, counted, written and held against --strict.

#include "run_command.hpp"
#include "sample.hpp"

#include <filesystem>

namespace {

constexpr const char *script =
    "CREATE TABLE dbo.T (Id int NOT NULL PRIMARY KEY, At datetime NOT NULL DEFAULT dbo.f(),\n"
    "  Twice AS (Id * 2), Till datetime NOT NULL DEFAULT dbo.f())\nGO\n"
    "IF @@SERVERNAME = 'x'\n  ALTER TABLE dbo.T ADD Further int\n";

class CliFindings : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        write("t.sql", script);
    }
    // Imports the script; options are appended.
    command_result import(const std::vector<std::string> &options) const
    {
        std::vector<std::string> arguments{"import", path("t.sql"), "-o", path("s.json")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    }
    // The last lines of what was printed, from the one on that begins so.
    static std::string from(const std::string &text, const std::string &beginning)
    {
        const size_t at = text.find("\n" + beginning);
        return at == std::string::npos ? text : text.substr(at + 1);
    }
};

TEST_F(CliFindings, AreCountedByCodeAtTheEnd)
{
    const command_result result = import({});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(from(result.err, "4 findings"),
              "4 findings:\n"
              "  1  error    statement-not-read  A statement that may have changed a table was not followed\n"
              "  1  warning  column-computed     A computed column is left out\n"
              "  2  warning  default-dropped     A default is left out, since SQLite has none that means the same\n");
}

TEST_F(CliFindings, OfACodeThatIsAllowedAreNeitherPrintedNorHeldAgainstStrict)
{
    const command_result some = import({"--strict", "--allow", "default-dropped"});
    EXPECT_EXIT_CODE(some, 1);
    EXPECT_EQ(some.err.find("default-dropped"), std::string::npos) << some.err;
    EXPECT_NE(some.err.find("2 findings, and 2 expected:\n"), std::string::npos) << some.err;
    EXPECT_NE(some.err.find("2 findings, and --strict allows none"), std::string::npos) << some.err;
    const command_result all = import(
        {"--strict", "--allow", "default-dropped", "--allow", "column-computed", "--allow", "statement-not-read"});
    EXPECT_EXIT_CODE(all, 0);
    EXPECT_EQ(all.err, "0 findings, and 4 expected\n");
}

TEST_F(CliFindings, OfSeverityInfoAreCountedAndPassStrict)
{
    write("t.sql", "CREATE TABLE dbo.T (Code nvarchar(9) COLLATE Latin1_General_CI_AS NOT NULL PRIMARY KEY)");
    const command_result result = import({"--strict", "--findings", path("f.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err, "1 finding:\n"
                          "  1  info  comparison-approximate  SQLite tells strings apart that the server takes as "
                          "equal\n");
    EXPECT_NE(read("f.json").find(R"("severity":"info","table":"dbo.T","column":"Code")"), std::string::npos);
    EXPECT_EQ(import({"--verbose"}).err.find("comparison-approximate: dbo.T.Code: kept: "), 0u);
    EXPECT_EXIT_CODE(import({"--findings", path("f.sarif"), "--format", "sarif"}), 0);
    EXPECT_NE(read("f.sarif").find(R"("ruleId":"comparison-approximate","level":"note")"), std::string::npos);
    EXPECT_EQ(read("f.sarif").find(R"("level":"info")"), std::string::npos);
}

TEST_F(CliFindings, AnAllowedCodeMustBeOne)
{
    const command_result result = import({"--allow", "default-droped"});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("no finding has this code (did you mean default-dropped?): default-droped"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(read("s.json"), "");
}

TEST_F(CliFindings, OfTheBaselineAreExpectedEachOnce)
{
    EXPECT_EXIT_CODE(import({"--findings", path("base.json")}), 0);
    EXPECT_EXIT_CODE(import({"--strict", "--baseline", path("base.json")}), 0);
    // The lines move, another default of the same text comes, and another statement that is not followed.
    write("t.sql", std::string("-- first\n\n") + script +
                       "GO\nCREATE TABLE dbo.U (Id int, At datetime DEFAULT dbo.f())\n" +
                       "IF @@SERVERNAME = 'x'\n  ALTER TABLE dbo.T ADD Further int\n");
    const command_result result = import({"--strict", "--baseline", path("base.json"), "--findings", path("f.json")});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_NE(result.err.find("2 findings, and 4 expected:\n"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("default-dropped: dbo.U.At: "), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("default-dropped: dbo.T.At: "), std::string::npos) << result.err;
    EXPECT_NE(read("f.json").find("\"expected\":\"baseline\""), std::string::npos);
}

TEST_F(CliFindings, ABaselineMustHoldFindings)
{
    for (const char *content : {"{}", "[]", "{\"findings\":[1]}", "not JSON"}) {
        SCOPED_TRACE(content);
        write("base.json", content);
        const command_result result = import({"--baseline", path("base.json")});
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_NE(result.err.find("base.json"), std::string::npos) << result.err;
    }
}

TEST_F(CliFindings, AsSarif)
{
    const command_result result =
        import({"--findings", path("f.sarif"), "--format", "sarif", "--allow", "column-computed"});
    EXPECT_EXIT_CODE(result, 0);
    const std::string sarif = read("f.sarif");
    for (
        const char *part : {
            R"("version":"2.1.0","runs":[{"tool":{"driver":{"name":"tov-schema")",
            R"({"id":"check-left-out","shortDescription":{"text":"A check is left out, since SQLite would read it differently"},"defaultConfiguration":{"level":"warning"}})",
            R"({"ruleId":"statement-not-read","level":"error","message":{"text":"not followed: )",
            R"(t.sql"},"region":{"startLine":5,"startColumn":3}}}]})",
            R"("logicalLocations":[{"fullyQualifiedName":"dbo.T.At","kind":"member"}])",
            R"("suppressions":[{"kind":"external","justification":"allowed"}])",
        })
        EXPECT_NE(sarif.find(part), std::string::npos) << part << "\n" << sarif;
    EXPECT_NE(result.err.find("default-dropped: dbo.T.At: "), std::string::npos) << "lines are for the terminal still";
}

// Of tables and columns it is not known where they are: in the file that was read, or the folder that all are in.
TEST_F(CliFindings, AsSarifNameAFileOnlyWhereTheyAreInIt)
{
    const std::string other = "CREATE TABLE dbo.U (Id int NOT NULL PRIMARY KEY)\n";
    std::filesystem::create_directories(path("shop/a/b"));
    std::filesystem::create_directories(path("shop/a/c"));
    write("shop/a/b/t.sql", script);
    write("shop/a/c/u.sql", other);
    write("v.sql", "CREATE TABLE dbo.V (Id int NOT NULL PRIMARY KEY)\n");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{path("t.sql")}, path("t.sql")},           {{path("shop/a/b")}, path("shop/a/b/t.sql")},
        {{path("shop/")}, path("shop/a")},          {{path("shop/a/b/t.sql"), path("shop/a/c")}, path("shop/a")},
        {{path("shop"), path("v.sql")}, directory},
    };
    for (const auto &[sources, uri] : cases) {
        for (const char *command : {"import", "convert"}) {
            SCOPED_TRACE(::testing::PrintToString(sources) + command);
            std::vector<std::string> arguments{command};
            arguments.insert(arguments.end(), sources.begin(), sources.end());
            if (arguments[0] == "import")
                arguments.push_back("-o");
            arguments.insert(arguments.end(), {path("made"), "--findings", path("f"), "--format", "sarif"});
            EXPECT_EXIT_CODE(run(arguments), 0);
            const std::string column =
                R"({"uri":")" + uri + R"("}},"logicalLocations":[{"fullyQualifiedName":"dbo.T.At")";
            EXPECT_NE(read("f").find(column), std::string::npos) << read("f");
            EXPECT_NE(read("f").find(R"(t.sql"},"region":{"startLine":5,"startColumn":3)"), std::string::npos);
            std::filesystem::remove(path("made"));
        }
    }
}

TEST_F(CliFindings, AsSarifOfFilesWithoutACommonFolderAreInTheWorkingOne)
{
    const std::string command = "cd " + directory +
                                " && mkdir a b && mv t.sql a && echo 'CREATE TABLE U(A int)' >b/u.sql && " +
                                TOV_SCHEMA_COMMAND + " import a b -o s.json --format sarif";
    const command_result result = run_program("sh", {"-c", command});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.err.find(R"({"uri":"."}},"logicalLocations":[{"fullyQualifiedName":"dbo.T.At")"),
              std::string::npos)
        << result.err;
}

TEST_F(CliFindings, InTheirFormOnTheTerminalWhereThereIsNoFile)
{
    EXPECT_EQ(import({"--format", "json"}).err.find("{\"findings\":[\n{\"code\":\""), 0u);
    EXPECT_EQ(import({"--format", "sarif"}).err.find("{\"$schema\":"), 0u);
    EXPECT_EQ(import({"--format", "sarif", "--quiet"}).err, "");
    EXPECT_EXIT_CODE(import({"--format", "yaml"}), 2);
}

TEST_F(CliFindings, OfAConvertAreTreatedAlike)
{
    const std::vector<std::string> arguments{"convert", path("t.sql"), path("t.db"), "--strict"};
    const command_result strict = run(arguments);
    EXPECT_EXIT_CODE(strict, 1);
    EXPECT_EQ(files(), "t.sql ") << "no database is made";
    std::vector<std::string> allowing = arguments;
    for (const char *code : {"default-dropped", "column-computed", "statement-not-read"})
        allowing.insert(allowing.end(), {"--allow", code});
    EXPECT_EXIT_CODE(run(allowing), 0);
}

} // namespace
