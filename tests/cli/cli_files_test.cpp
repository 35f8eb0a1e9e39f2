// Files that cannot be read or written, and what is left behind.

#include "cli.hpp"
#include "cli_files.hpp"
#include "run_command.hpp"
#include "sample.hpp"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class CliFilesTest : public CommandTest {};

TEST_F(CliFilesTest, AFileThatIsNotThereIsNamed)
{
    const command_result result = run({"tables", path("absent.json")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: cannot read (No such file or directory): " + path("absent.json") + "\n");
}

TEST_F(CliFilesTest, ADirectoryIsNoFile)
{
    const command_result result = run({"tables", directory});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: cannot read (Is a directory): " + directory + "\n");
}

TEST_F(CliFilesTest, AnEmptyFileIsRefused)
{
    const command_result result = run({"tables", write("empty.json", "")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: the file is empty: " + path("empty.json") + "\n");
    EXPECT_EQ(run({"tables", "-"}).err, "tov-schema: the file is empty: standard input\n");
}

TEST_F(CliFilesTest, AFileWithANulIsNoText)
{
    const command_result result = run({"tables", write("nul.json", std::string("{\0}", 3))});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: the file is not a text file (byte 1 is NUL): " + path("nul.json") + "\n");
}

TEST_F(CliFilesTest, OutputIsWrittenBesideAndRenamed)
{
    write("schema.json", "old");
    ASSERT_EQ(::chmod(path("schema.json").c_str(), 0640), 0);
    const command_result result = run({"import", write("c.json", sample_catalogue), "-o", path("schema.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(read("schema.json").find("{\n  \"compat_level\": 1,\n"), 0u);
    EXPECT_EQ(files(), "c.json schema.json ");
    struct stat status;
    ASSERT_EQ(::stat(path("schema.json").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(CliFilesTest, AFailureLeavesNoOutputAndNoRest)
{
    write("schema.json", "old");
    const command_result result = run({"import", write("bad.json", "{\"tables\":["), "-o", path("schema.json")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(read("schema.json"), "old");
    EXPECT_EQ(files(), "bad.json schema.json ");
}

TEST_F(CliFilesTest, AFolderThatIsNotThereIsNamed)
{
    const command_result result = run({"import", write("c.json", sample_catalogue), "-o", path("no/schema.json")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("tov-schema: cannot write (No such file or directory): " + path("no/schema.json")),
              std::string::npos)
        << result.err;
}

TEST_F(CliFilesTest, StandardInputAndOutputAreNamedByAHyphen)
{
    const command_result imported = run({"import", "-", "-o", "-"}, sample_catalogue);
    EXPECT_EXIT_CODE(imported, 0);
    const command_result listed = run({"tables", "-"}, imported.out);
    EXPECT_EXIT_CODE(listed, 0);
    EXPECT_NE(listed.out.find("Customers"), std::string::npos);
}

TEST_F(CliFilesTest, WritesBehindALinkWithoutReplacingIt)
{
    write("real.json", "old");
    ASSERT_EQ(::symlink("real.json", path("link.json").c_str()), 0);
    EXPECT_EXIT_CODE(run({"import", write("c.json", sample_catalogue), "-o", path("link.json")}), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.json")));
    EXPECT_EQ(read("real.json").find("{\n  \"compat_level\": 1,\n"), 0u);
}

// As /dev/stdout is a link to it.
TEST_F(CliFilesTest, WritesOnTheFileThatStandardOutputGoesTo)
{
    write("c.json", sample_catalogue);
    ASSERT_EQ(::symlink("/proc/self/fd/1", path("stdout").c_str()), 0);
    const std::string command = TOV_SCHEMA_COMMAND " import " + path("c.json") + " -o " + path("stdout") + " 2>&1";
    EXPECT_EXIT_CODE(run_program("sh", {"-c", "(echo first; " + command + ") >" + path("out.json")}), 0);
    EXPECT_EQ(read("out.json").find("first\n"), 0u);
    EXPECT_NE(read("out.json").find("{\n  \"compat_level\": 1,\n"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_symlink(path("stdout")));
}

TEST_F(CliFilesTest, WritesToADeviceWithoutReplacingIt)
{
    EXPECT_EXIT_CODE(run({"import", write("c.json", sample_catalogue), "-o", "/dev/null"}), 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    const command_result full = run({"import", path("c.json"), "-o", "/dev/full"});
    EXPECT_EXIT_CODE(full, 2);
    EXPECT_NE(full.err.find("cannot write (No space left on device)"), std::string::npos) << full.err;
}

TEST_F(CliFilesTest, AReplacedFileKeepsItsOwnerAndRights)
{
    write("schema.json", "old");
    const bool is_root = ::geteuid() == 0;
    const uid_t owner = is_root ? 1234 : ::geteuid();
    const gid_t group = is_root ? 2345 : ::getegid();
    ASSERT_EQ(::chown(path("schema.json").c_str(), owner, group), 0);
    ASSERT_EQ(::chmod(path("schema.json").c_str(), 0664), 0);
    EXPECT_EXIT_CODE(run({"import", write("c.json", sample_catalogue), "-o", path("schema.json")}), 0);
    struct stat status;
    ASSERT_EQ(::stat(path("schema.json").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, owner);
    EXPECT_EQ(status.st_gid, group);
    EXPECT_EQ(status.st_mode & 0777, 0664u);
    EXPECT_EQ(files(), "c.json schema.json ");
}

TEST_F(CliFilesTest, ALinkThatLeadsToNoFileYetIsWrittenBehind)
{
    ASSERT_EQ(::symlink("real.json", path("link.json").c_str()), 0);
    EXPECT_EXIT_CODE(run({"import", write("c.json", sample_catalogue), "-o", path("link.json")}), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.json")));
    EXPECT_EQ(read("real.json").find("{\n  \"compat_level\": 1,\n"), 0u);
}

TEST_F(CliFilesTest, LinksThatLeadToEachOtherAreRefused)
{
    ASSERT_EQ(::symlink("b.json", path("a.json").c_str()), 0);
    ASSERT_EQ(::symlink("a.json", path("b.json").c_str()), 0);
    const command_result result = run({"import", write("c.json", sample_catalogue), "-o", path("a.json")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("cannot write (Too many levels of symbolic links)"), std::string::npos) << result.err;
    EXPECT_EQ(files(), "a.json b.json c.json ");
}

struct shared_folder_case {
    const char *sentence;
    mode_t folder_mode;
    uid_t folder_owner;
    uid_t link_owner;
    bool allowed;
};

// The kernel's rules for links (fs.protected_symlinks), whether it is told to keep them or not.
constexpr shared_folder_case shared_folder_cases[] = {
    {"a stranger's link in a shared folder", 01777, 0, 1234, false},
    {"a link of one's own in a shared folder", 01777, 1234, 0, true},
    {"a link of the folder's owner", 01777, 1234, 1234, true},
    {"a stranger's link in a folder that only its owner may write to", 0755, 0, 1234, true},
};

TEST_F(CliFilesTest, AStrangersLinkInASharedFolderIsNotFollowed)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make a link of somebody else";
    const std::string folder = path("shared");
    ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
    ASSERT_EQ(::symlink("../victim.json", (folder + "/link.json").c_str()), 0);
    for (const shared_folder_case &c : shared_folder_cases) {
        SCOPED_TRACE(c.sentence);
        write("victim.json", "old");
        ASSERT_EQ(::chown(folder.c_str(), c.folder_owner, 0), 0);
        ASSERT_EQ(::lchown((folder + "/link.json").c_str(), c.link_owner, 0), 0);
        ASSERT_EQ(::chmod(folder.c_str(), c.folder_mode), 0);
        const command_result result = run({"import", write("c.json", sample_catalogue), "-o", folder + "/link.json"});
        EXPECT_EXIT_CODE(result, c.allowed ? 0 : 2);
        EXPECT_EQ(read("victim.json") == "old", !c.allowed);
        EXPECT_EQ(result.err.find("cannot write (Permission denied)") == std::string::npos, c.allowed) << result.err;
    }
}

// Every command that reads a file and writes another; IN stands for the input, OUT for another name of it.
struct overwriting_case {
    const char *sentence;
    std::vector<std::string> arguments;
};

const overwriting_case overwriting_cases[] = {
    {"import", {"import", "CATALOGUE", "-o", "OUT"}},
    {"the findings of import", {"import", "CATALOGUE", "-o", "/dev/null", "--findings", "OUT"}},
    {"the schema of convert", {"convert", "CATALOGUE", "DATABASE", "-s", "OUT"}},
    {"the findings of convert", {"convert", "CATALOGUE", "DATABASE", "--findings", "OUT"}},
    {"sql", {"sql", "IN", "-o", "OUT"}},
    {"lite", {"lite", "IN", "-o", "OUT"}},
    {"graph", {"graph", "IN", "-o", "OUT"}},
    {"create", {"create", "IN", "OUT"}},
};

TEST_F(CliFilesTest, AnInputIsNeverWrittenOver)
{
    ASSERT_EXIT_CODE(run({"import", write("first.json", sample_catalogue), "-o", path("schema.json")}), 0);
    const std::string schema = read("schema.json");
    for (const overwriting_case &c : overwriting_cases) {
        for (const char *other_name : {"in.json", "./in.json", "hard.json", "soft.json"}) {
            SCOPED_TRACE(std::string(c.sentence) + " to " + other_name);
            const bool of_catalogue = c.arguments[1] == "CATALOGUE";
            const std::string content = of_catalogue ? sample_catalogue : schema;
            std::filesystem::remove(path("hard.json"));
            std::filesystem::remove(path("soft.json"));
            write("in.json", content);
            std::filesystem::create_hard_link(path("in.json"), path("hard.json"));
            std::filesystem::create_symlink("in.json", path("soft.json"));
            std::vector<std::string> arguments = c.arguments;
            for (std::string &argument : arguments) {
                if (argument == "IN" || argument == "CATALOGUE")
                    argument = path("in.json");
                else if (argument == "DATABASE")
                    argument = path("new.db");
                else if (argument == "OUT")
                    argument = path(other_name);
            }
            const command_result result = run(arguments);
            EXPECT_EXIT_CODE(result, 2);
            EXPECT_NE(result.err.find("tov-schema: the output is the input too: " + path(other_name)),
                      std::string::npos)
                << result.err;
            EXPECT_EQ(read("in.json"), content);
            EXPECT_TRUE(std::filesystem::equivalent(path("in.json"), path("hard.json")));
        }
    }
}

TEST_F(CliFilesTest, AnInputOnStandardInputIsNotWrittenOver)
{
    write("in.json", sample_catalogue);
    const std::string command = TOV_SCHEMA_COMMAND " import - -o " + path("in.json") + " <" + path("in.json");
    const command_result result = run_program("sh", {"-c", command});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(read("in.json"), sample_catalogue);
}

TEST_F(CliFilesTest, AFolderForTemporaryFilesThatIsNotThereIsNamed)
{
    const std::vector<std::string> arguments{"TMPDIR=" + path("absent"), TOV_SCHEMA_COMMAND, "convert", "-",
                                             path("t.db")};
    const command_result result = run_program("env", arguments, "CREATE TABLE T(A int)\nGO\nINSERT T VALUES (1)");
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("cannot make a temporary folder (No such file or directory): TMPDIR\n"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(files(), "");
}

TEST_F(CliFilesTest, APathThatCannotBeLookedAtIsNotAMistakeOfTheProgram)
{
    const std::string name(5000, 'x');
    const command_result result = run({"import", name});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: cannot read (File name too long): " + name + "\n");
}

TEST_F(CliFilesTest, AScriptInAFolderIsNotWrittenOver)
{
    std::filesystem::create_directory(path("scripts"));
    const std::string script = "CREATE TABLE T(A int NOT NULL PRIMARY KEY)";
    write("scripts/t.sql", script);
    std::filesystem::create_symlink("scripts/t.sql", path("soft.sql"));
    for (const char *output : {"scripts/t.sql", "soft.sql"}) {
        const command_result result = run({"import", path("scripts"), "-o", path(output)});
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_NE(result.err.find("the output is the input too"), std::string::npos) << result.err;
        EXPECT_EQ(read("scripts/t.sql"), script);
    }
}

TEST_F(CliFilesTest, ABaselineIsNotWrittenOver)
{
    write("c.json", sample_catalogue);
    ASSERT_EXIT_CODE(run({"import", path("c.json"), "-o", "/dev/null", "--findings", path("base.json")}), 0);
    const std::string baseline = read("base.json");
    const std::vector<std::string> commands[] = {
        {"import", path("c.json"), "-o", path("base.json")},
        {"import", path("c.json"), "-o", path("s.json"), "--findings", path("base.json")},
        {"convert", path("c.json"), path("new.db"), "-s", path("base.json")},
        {"convert", path("c.json"), path("new.db"), "--findings", path("base.json")},
    };
    for (std::vector<std::string> arguments : commands) {
        SCOPED_TRACE(::testing::PrintToString(arguments));
        arguments.insert(arguments.end(), {"--baseline", path("base.json")});
        const command_result result = run(arguments);
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_NE(result.err.find("the output is the input too: " + path("base.json")), std::string::npos)
            << result.err;
        EXPECT_EQ(read("base.json"), baseline);
        EXPECT_EQ(files(), "base.json c.json ");
    }
}

TEST_F(CliFilesTest, TheFileThatBecomesTheDatabaseIsNoInputEither)
{
    write("new.db.new", sample_catalogue);
    const command_result result = run({"convert", path("new.db.new"), path("new.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("the output is the input too"), std::string::npos) << result.err;
    EXPECT_EQ(read("new.db.new"), sample_catalogue);
}

TEST_F(CliFilesTest, TwoOutputsOfAConvertAreTwoFiles)
{
    write("c.json", sample_catalogue);
    const std::vector<std::string> options[] = {
        {"-s", path("x.json"), "--findings", path("x.json")},
        {"-s", path("new.db")},
        {"--findings", path("./new.db")},
        {"--findings", path("new.db.new")},
        {"-s", "-", "--findings", "-"},
    };
    for (const std::vector<std::string> &more : options) {
        SCOPED_TRACE(::testing::PrintToString(more));
        std::vector<std::string> arguments{"convert", path("c.json"), path("new.db")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const command_result result = run(arguments);
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_NE(result.err.find("two outputs would be written there: " + more.back()), std::string::npos)
            << result.err;
        EXPECT_EQ(files(), "c.json ");
    }
}

TEST_F(CliFilesTest, TwoOutputsAreTwoFiles)
{
    write("c.json", sample_catalogue);
    write("there.json", "old");
    std::filesystem::create_hard_link(path("there.json"), path("hard.json"));
    std::filesystem::create_symlink("absent.json", path("soft.json"));
    const std::pair<const char *, const char *> pairs[] = {
        {"there.json", "there.json"}, {"there.json", "./there.json"},   {"there.json", "hard.json"},
        {"absent.json", "soft.json"}, {"absent.json", "./absent.json"},
    };
    for (const auto &[output, findings] : pairs) {
        SCOPED_TRACE(findings);
        const command_result result = run({"import", path("c.json"), "-o", path(output), "--findings", path(findings)});
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_NE(result.err.find("two outputs would be written there"), std::string::npos) << result.err;
        EXPECT_EQ(files(), "c.json hard.json soft.json there.json ");
        EXPECT_EQ(read("there.json"), "old");
    }
}

TEST_F(CliFilesTest, AFileThatMayNotBeWrittenIsNotReplaced)
{
    write("schema.json", "old");
    ASSERT_EQ(::chmod(path("schema.json").c_str(), 0444), 0);
    const bool is_root = ::geteuid() == 0; // who may write any file
    if (is_root) {
        ASSERT_EQ(::chown(directory.c_str(), 1234, 0), 0);
        ASSERT_EQ(::chown(path("schema.json").c_str(), 1234, 0), 0);
        ASSERT_EQ(::seteuid(1234), 0);
    }
    EXPECT_THROW(cli_write_file(path("schema.json"), "new"), cli_failure);
    if (is_root) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    EXPECT_EQ(read("schema.json"), "old");
    EXPECT_EQ(files(), "schema.json ");
}

} // namespace
