#include "run_command.hpp"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write_file(const std::string &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace

// Input and output go through files, so that neither side waits for the other.
command_result run_program(const std::string &program, const std::vector<std::string> &arguments,
                           const std::string &input)
{
    std::string base = std::filesystem::temp_directory_path() / "tov-run.XXXXXX";
    if (!mkdtemp(base.data()))
        return {};
    const std::string in = base + "/in", out = base + "/out", err = base + "/err";
    write_file(in, input);

    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t child = 0;
    command_result result;
    if (posix_spawnp(&child, program.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
        int status = 0;
        waitpid(child, &status, 0);
        result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        result.out = read_file(out);
        result.err = read_file(err);
    }
    posix_spawn_file_actions_destroy(&actions);
    std::filesystem::remove_all(base);
    return result;
}

void CommandTest::SetUp()
{
    directory = std::filesystem::temp_directory_path() / "tov-test.XXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
}

void CommandTest::TearDown()
{
    std::filesystem::remove_all(directory);
}

command_result CommandTest::run(const std::vector<std::string> &arguments, const std::string &input) const
{
    return run_program(TOV_SCHEMA_COMMAND, arguments, input);
}

std::string CommandTest::path(const std::string &name) const
{
    return directory + "/" + name;
}

std::string CommandTest::write(const std::string &name, const std::string &content) const
{
    write_file(path(name), content);
    return path(name);
}

std::string CommandTest::read(const std::string &name) const
{
    return read_file(path(name));
}

bool CommandTest::exists(const std::string &name) const
{
    return std::filesystem::exists(path(name));
}

std::string CommandTest::files() const
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string &name : names)
        text += name + " ";
    return text;
}
