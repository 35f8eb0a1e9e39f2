// The files that import reads.

#include "cli_sources.hpp"

#include "cli.hpp"
#include "run_command.hpp"

#include <filesystem>

namespace {

class CliSourcesTest : public CommandTest {
  protected:
    // The sources as "name=bytes", relative to the test's folder, one per line; or the failure.
    std::string read_sources(std::vector<std::string> names) const
    try {
        for (std::string &name : names)
            name = name.empty() ? directory : path(name);
        std::string text;
        for (const cli_source &source : cli_read_sources(names))
            text += without_directory(source.name) + "=" + source.bytes + "\n";
        return text;
    } catch (const cli_failure &failure) {
        return without_directory(failure.what());
    }
    std::string without_directory(std::string text) const
    {
        for (size_t at = 0; (at = text.find(directory, at)) != std::string::npos;)
            text.erase(at, directory.size());
        return text;
    }
    void make_folder(const std::string &name) const
    {
        std::filesystem::create_directories(path(name));
    }
};

TEST_F(CliSourcesTest, FilesComeAsTheyAreNamed)
{
    write("b.sql", "B");
    write("a.dacpac", "A");
    EXPECT_EQ(read_sources({"b.sql", "a.dacpac"}), "/b.sql=B\n/a.dacpac=A\n");
}

TEST_F(CliSourcesTest, AFolderIsItsScripts)
{
    make_folder("Tables/Sales");
    make_folder("Views");
    write("b.sql", "B");
    write("README.md", "no script");
    write("Tables/Sales/c.SQL", "C");
    write("Tables/a.sql", "A");
    write("Views/empty.sql", "");
    EXPECT_EQ(read_sources({""}), "/Tables/Sales/c.SQL=C\n/Tables/a.sql=A\n/Views/empty.sql=\n/b.sql=B\n");
    EXPECT_EQ(read_sources({"Tables", "b.sql"}), "/Tables/Sales/c.SQL=C\n/Tables/a.sql=A\n/b.sql=B\n");
}

TEST_F(CliSourcesTest, ALinkThatLeadsBackIsNotFollowed)
{
    write("a.sql", "A");
    std::filesystem::create_directory_symlink(directory, path("back"));
    EXPECT_EQ(read_sources({""}), "/a.sql=A\n");
}

TEST_F(CliSourcesTest, AFileIsReadOnce)
{
    make_folder("Tables");
    write("Tables/a.sql", "A");
    std::filesystem::create_symlink(path("Tables/a.sql"), path("b.sql"));
    EXPECT_EQ(read_sources({"Tables", "Tables/a.sql"}),
              "the same file is given twice, first as /Tables/a.sql: /Tables/a.sql");
    EXPECT_EQ(read_sources({"b.sql", "Tables"}), "the same file is given twice, first as /b.sql: /Tables/a.sql");
}

TEST_F(CliSourcesTest, WhatCannotBeReadIsNamed)
{
    make_folder("Empty");
    write("empty.sql", "");
    EXPECT_EQ(read_sources({"absent.sql"}), "cannot read (No such file or directory): /absent.sql");
    EXPECT_EQ(read_sources({"empty.sql"}), "the file is empty: /empty.sql");
    EXPECT_EQ(read_sources({"Empty"}), "the folder has no file named *.sql: /Empty");
    std::filesystem::create_symlink(path("absent"), path("Empty/a.sql"));
    EXPECT_EQ(read_sources({"Empty"}), "cannot read (No such file or directory): /Empty/a.sql");
}

} // namespace
