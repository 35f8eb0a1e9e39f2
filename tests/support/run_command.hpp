// Runs the command as a user would, in a directory of its own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

struct command_result {
    int exit_code = -1; // 128 + signal when it was killed
    std::string out;
    std::string err;
};

// Runs a program with arguments and a text for its standard input.
command_result run_program(const std::string &program, const std::vector<std::string> &arguments,
                           const std::string &input = "");

// A test with an empty directory that goes away with it.
class CommandTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // tov-schema with these arguments.
    command_result run(const std::vector<std::string> &arguments, const std::string &input = "") const;
    // A path in the directory.
    std::string path(const std::string &name) const;
    std::string write(const std::string &name, const std::string &content) const;
    std::string read(const std::string &name) const;
    bool exists(const std::string &name) const;
    // The names in the directory, sorted, each followed by a blank.
    std::string files() const;

    std::string directory;
};

#define EXPECT_EXIT_CODE(result, code) \
    EXPECT_EQ((result).exit_code, code) << "out: " << (result).out << "\nerr: " << (result).err
#define ASSERT_EXIT_CODE(result, code) \
    ASSERT_EQ((result).exit_code, code) << "out: " << (result).out << "\nerr: " << (result).err
