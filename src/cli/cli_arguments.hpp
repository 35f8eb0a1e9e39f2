// What the commands take on the command line, described without the library that parses it: that library takes longer
// to compile than the rest of the program, so cli_arguments.cpp is the only source file that includes it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

// One argument or option, for rules about its value.
class cli_option {
  public:
    explicit cli_option(CLI::Option *option) : option_(option)
    {
    }
    cli_option required() const;
    cli_option between(int64_t least, int64_t most) const;
    cli_option one_of(const std::vector<std::string> &words) const;
    cli_option needs(cli_option other) const;
    cli_option excludes(cli_option other) const;

  private:
    CLI::Option *option_;
};

// One command. The variables that are named here must live as long as the function that runs() is given.
class cli_command {
  public:
    // What the command does; gives the exit code.
    using action = std::function<int()>;

    cli_command(CLI::App *app, action *chosen) : app_(app), chosen_(chosen)
    {
    }
    // An argument that is told by its position; of a list, any number.
    cli_option argument(const char *name, std::string &value, const char *help) const;
    cli_option argument(const char *name, std::vector<std::string> &values, const char *help) const;
    // An option with a value, "-o,--output", and the word that stands for the value in the help. One of a list may be
    // repeated.
    cli_option option(const char *names, std::string &value, const char *help, const char *word = "FILE") const;
    cli_option option(const char *names, std::vector<std::string> &values, const char *help, const char *word) const;
    // One of which it matters whether it is given: its value may be empty.
    cli_option option(const char *names, std::optional<std::string> &value, const char *help, const char *word) const;
    cli_option option(const char *names, uint32_t &value, const char *help) const;
    cli_option option(const char *names, int64_t &value, const char *help) const;
    cli_option flag(const char *names, bool &value, const char *help) const;
    // The end of the help, after the options, with an example.
    void details(const char *text) const;
    void runs(action run) const;

  private:
    CLI::App *app_;
    action *chosen_;
};

// What a command takes, as it was described: for whoever completes a command line.
struct cli_known_option {
    std::vector<std::string> names; // "--output", "-o"; none for an argument told by its position
    std::string word;               // what stands for the value, "" for a flag
    std::vector<std::string> words; // the only values, empty where there are others
    std::string help;
};

struct cli_known_command {
    std::string name;
    std::string summary;
    std::vector<cli_known_option> options;
};

class cli_arguments {
  public:
    // What --version prints, and what it prints with --verbose.
    using version_text = std::string (*)(bool is_verbose);
    cli_arguments(const char *about, version_text version);
    ~cli_arguments();
    cli_arguments(const cli_arguments &) = delete;
    cli_arguments &operator=(const cli_arguments &) = delete;

    cli_command add(const char *name, const char *summary);
    // Runs the command that is named, or prints help or version; gives the exit code. Throws a cli_failure with a
    // hint where the command line is wrong.
    int run(int argc, const char *const *argv);

  private:
    std::vector<std::string> names() const;
    std::vector<cli_known_command> known() const;

    std::unique_ptr<CLI::App> app_;
    version_text version_;
    cli_command::action chosen_;
};
