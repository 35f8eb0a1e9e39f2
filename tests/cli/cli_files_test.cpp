// Files that cannot be read or written, and what is left behind.

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
    EXPECT_EQ(read("schema.json").find("{\"compat_level\":1,"), 0u);
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
    EXPECT_EQ(read("real.json").find("{\"compat_level\":1,"), 0u);
}

// As /dev/stdout is a link to it.
TEST_F(CliFilesTest, WritesOnTheFileThatStandardOutputGoesTo)
{
    write("c.json", sample_catalogue);
    ASSERT_EQ(::symlink("/proc/self/fd/1", path("stdout").c_str()), 0);
    const std::string command = TOV_SCHEMA_COMMAND " import " + path("c.json") + " -o " + path("stdout") + " 2>&1";
    EXPECT_EXIT_CODE(run_program("sh", {"-c", "(echo first; " + command + ") >" + path("out.json")}), 0);
    EXPECT_EQ(read("out.json").find("first\n"), 0u);
    EXPECT_NE(read("out.json").find("{\"compat_level\":1,"), std::string::npos);
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

} // namespace
