#include "cli_complete.hpp"

#include "cli.hpp"
#include "cli_files.hpp"

#include <algorithm>

static void my_offer(std::string &answer, const std::string &beginning, const std::string &word,
                     const std::string &description)
{
    if (!word.starts_with(beginning))
        return;
    answer += word + '\t' + description.substr(0, description.find('\n')) + '\n';
}

static std::string my_commands(const std::vector<cli_known_command> &commands, const std::string &beginning)
{
    std::string answer;
    for (const cli_known_command &command : commands)
        my_offer(answer, beginning, command.name, command.summary);
    return answer;
}

static std::string my_first_words(const std::vector<cli_known_command> &commands, const std::string &beginning)
{
    std::string answer = my_commands(commands, beginning);
    my_offer(answer, beginning, "help", "Describe a command");
    if (beginning.starts_with('-')) {
        my_offer(answer, beginning, "--help", "print the commands");
        my_offer(answer, beginning, "--version", "print the version");
    }
    return answer;
}

static const cli_known_option *my_find(const cli_known_command &command, const std::string &name)
{
    for (const cli_known_option &option : command.options) {
        if (std::find(option.names.begin(), option.names.end(), name) != option.names.end())
            return &option;
    }
    return nullptr;
}

// The value of an option. Names of tables, numbers and the like are the user's own.
static std::string my_values(const cli_known_option &option, const std::string &beginning)
{
    std::string answer;
    for (const std::string &word : option.words)
        my_offer(answer, beginning, word, "");
    return option.word == "FILE" || option.word == "FOLDER" ? ":files\n" : answer;
}

// --format=c, where the shell leaves it one word.
static std::string my_joined_values(const cli_known_command &command, const std::string &beginning)
{
    const size_t equals = beginning.find('=');
    const cli_known_option *option = my_find(command, beginning.substr(0, equals));
    std::string answer;
    if (!option)
        return answer;
    for (const std::string &word : option->words)
        my_offer(answer, beginning, beginning.substr(0, equals + 1) + word, "");
    return answer;
}

static std::string my_options(const cli_known_command &command, const std::string &beginning)
{
    if (beginning.find('=') != std::string::npos)
        return my_joined_values(command, beginning);
    std::string answer;
    for (const cli_known_option &option : command.options) {
        if (!option.names.empty())
            my_offer(answer, beginning, option.names.front(), option.help);
    }
    return answer;
}

// bash makes three words of --format=csv, and two of --format= before there is a value.
static std::vector<std::string> my_without_equals(std::vector<std::string> words)
{
    if (words.back() == "=")
        words.back() = "";
    else if (words.size() > 2 && words[words.size() - 2] == "=")
        words.erase(words.end() - 2);
    return words;
}

static std::string my_answer(const std::vector<cli_known_command> &commands, const std::vector<std::string> &words)
{
    const std::string &last = words.back();
    if (words.size() == 1)
        return my_first_words(commands, last);
    if (words.front() == "help")
        return words.size() == 2 ? my_commands(commands, last) : "";
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const cli_known_command &known) { return known.name == words.front(); });
    if (command == commands.end())
        return "";
    const cli_known_option *before = my_find(*command, words[words.size() - 2]);
    if (before && !before->word.empty())
        return my_values(*before, last);
    return last.starts_with('-') ? my_options(*command, last) : ":files\n";
}

int cli_complete(const std::vector<cli_known_command> &commands, const std::vector<std::string> &words)
{
    cli_print(my_answer(commands, words.empty() ? std::vector<std::string>{""} : my_without_equals(words)));
    return cli_done;
}
