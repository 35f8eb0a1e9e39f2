#include "cli_arguments.hpp"

#include "cli.hpp"
#include "cli_complete.hpp"
#include "cli_files.hpp"
#include "cli_nearest.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <string_view>

// "help" and "help COMMAND" are other ways to write "--help" and "COMMAND --help".
static std::vector<std::string> my_words_of(int argc, const char *const *argv)
{
    std::vector<std::string> words(argv + 1, argv + argc);
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.insert(words.begin() + (words.empty() ? 0 : 1), "--help");
    }
    return words;
}

static std::string my_unknown(const char *what, const std::string &word, const std::vector<std::string> &words)
{
    const std::string nearest = cli_nearest(word, words);
    return std::string("there is no ") + what + " '" + word + "'" +
           (nearest.empty() ? "" : "; did you mean '" + nearest + "'?");
}

static void my_refuse_unknown_command(const std::vector<std::string> &words, const std::vector<std::string> &names)
{
    if (words.empty() || words.front().starts_with('-') ||
        std::find(names.begin(), names.end(), words.front()) != names.end())
        return;
    throw cli_usage_failure(my_unknown("command", words.front(), names));
}

cli_option cli_option::required() const
{
    option_->required();
    return *this;
}

cli_option cli_option::between(int64_t least, int64_t most) const
{
    const std::string values = std::to_string(least) + ".." + (most == INT64_MAX ? "" : std::to_string(most));
    option_->check(CLI::Range(least, most, values));
    return *this;
}

cli_option cli_option::one_of(const std::vector<std::string> &words) const
{
    option_->check(CLI::IsMember(words));
    return *this;
}

cli_option cli_option::needs(cli_option other) const
{
    option_->needs(other.option_);
    return *this;
}

cli_option cli_option::excludes(cli_option other) const
{
    option_->excludes(other.option_);
    return *this;
}

cli_option cli_command::argument(const char *name, std::string &value, const char *help) const
{
    return cli_option(app_->add_option(name, value, help)->type_name(""));
}

cli_option cli_command::argument(const char *name, std::vector<std::string> &values, const char *help) const
{
    return cli_option(app_->add_option(name, values, help)->type_name(""));
}

cli_option cli_command::option(const char *names, std::string &value, const char *help, const char *word) const
{
    return cli_option(app_->add_option(names, value, help)->type_name(word));
}

cli_option cli_command::option(const char *names, std::vector<std::string> &values, const char *help,
                               const char *word) const
{
    // One value each time, so that an argument after it is not taken for another.
    CLI::Option *option = app_->add_option(names, values, help)->type_name(word)->expected(1)->allow_extra_args(false);
    return cli_option(option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll));
}

cli_option cli_command::option(const char *names, std::optional<std::string> &value, const char *help,
                               const char *word) const
{
    return cli_option(app_->add_option(names, value, help)->type_name(word));
}

cli_option cli_command::option(const char *names, uint32_t &value, const char *help) const
{
    return cli_option(app_->add_option(names, value, help)->type_name("NUMBER"));
}

cli_option cli_command::option(const char *names, int64_t &value, const char *help) const
{
    return cli_option(app_->add_option(names, value, help)->type_name("NUMBER"));
}

cli_option cli_command::flag(const char *names, bool &value, const char *help) const
{
    return cli_option(app_->add_flag(names, value, help));
}

void cli_command::details(const char *text) const
{
    app_->footer(text);
}

void cli_command::runs(action run) const
{
    app_->callback([chosen = chosen_, run = std::move(run)] { *chosen = run; });
}

cli_arguments::cli_arguments(const char *about, version_text version)
    : app_(std::make_unique<CLI::App>(about, "tov-schema")), version_(version)
{
    app_->set_version_flag("--version", "", "print the version");
    app_->add_flag("--verbose")
        ->description("with --version: those of the libraries too, and how SQLite was built")
        ->needs(app_->get_version_ptr());
    app_->require_subcommand(1);
    constexpr std::pair<const char *, const char *> words[] = {
        {"Positionals", "Arguments"}, {"SUBCOMMAND", "COMMAND"}, {"REQUIRED", ""}};
    for (const auto &[word, plain_word] : words)
        app_->get_formatter()->label(word, plain_word);
    app_->set_help_flag("-h,--help", "print this help");
}

cli_arguments::~cli_arguments() = default;

cli_command cli_arguments::add(const char *name, const char *summary)
{
    return {app_->add_subcommand(name, summary)->group("Commands"), &chosen_};
}

std::vector<std::string> cli_arguments::names() const
{
    std::vector<std::string> names;
    for (const CLI::App *command : app_->get_subcommands(nullptr))
        names.push_back(command->get_name());
    return names;
}

// The words of a rule such as "NAME:{auto,bcp}", as the parser shows it.
static std::vector<std::string> my_words_in(const std::string &rule)
{
    std::vector<std::string> words;
    const size_t open = rule.find(":{");
    const size_t close = rule.find('}', open);
    if (open == std::string::npos || close == std::string::npos)
        return words;
    std::istringstream list(rule.substr(open + 2, close - open - 2));
    for (std::string word; std::getline(list, word, ',');)
        words.push_back(word);
    return words;
}

static cli_known_option my_known(const CLI::Option &option)
{
    cli_known_option known;
    for (const std::string &name : option.get_lnames())
        known.names.push_back("--" + name);
    for (const std::string &name : option.get_snames())
        known.names.push_back("-" + name);
    const std::string rule = option.get_items_expected_max() > 0 ? option.get_type_name() : "";
    known.word = rule.substr(0, rule.find(':'));
    known.words = my_words_in(rule);
    known.help = option.get_description();
    return known;
}

std::vector<cli_known_command> cli_arguments::known() const
{
    std::vector<cli_known_command> commands;
    for (const CLI::App *app : app_->get_subcommands(nullptr)) {
        cli_known_command &command = commands.emplace_back();
        command.name = app->get_name();
        command.summary = app->get_description();
        for (const CLI::Option *option : app->get_options())
            command.options.push_back(my_known(*option));
    }
    return commands;
}

// What is wrong with the words: an option that is not known rather than what is missing beside it.
static std::string my_problem(const CLI::App &app, const CLI::ParseError &error)
{
    const std::vector<CLI::App *> chosen = app.get_subcommands();
    for (const std::string &word : app.remaining(/*recurse*/ true)) {
        if (word.size() < 2 || !word.starts_with('-'))
            continue;
        std::vector<std::string> known;
        for (const CLI::Option *option : (chosen.empty() ? &app : chosen.front())->get_options())
            for (const std::string &name : option->get_lnames())
                known.push_back("--" + name);
        return my_unknown("option", word, known);
    }
    return chosen.empty() ? "a command is required" : error.what();
}

int cli_arguments::run(int argc, const char *const *argv)
{
    if (argc > 1 && std::string_view(argv[1]) == cli_complete_word)
        return cli_complete(known(), {argv + 2, argv + argc});
    std::vector<std::string> words = my_words_of(argc, argv);
    my_refuse_unknown_command(words, names());
    const bool is_verbose = std::find(words.begin(), words.end(), "--verbose") != words.end();
    // The parser takes its words in reverse, and away.
    std::reverse(words.begin(), words.end());
    try {
        app_->parse(words);
    } catch (const CLI::CallForVersion &) {
        cli_print(version_(is_verbose));
        return cli_done;
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return app_->exit(error); // --help, --version
        throw cli_usage_failure(my_problem(*app_, error));
    }
    return chosen_();
}
