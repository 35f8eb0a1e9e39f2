// Any command line, an argument on each line of the input: the command ends with one of its exit codes, and never with
// the one for an internal error. It runs in a directory of its own that holds a catalogue, its schema, a folder with a
// script and nothing else; no argument can lead out of it, because slashes are dropped and the directory above is
// empty but for it.
#include "cli_run.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr const char *catalogue =
    R"json({"format":"sqlserver-catalogue","format_version":1,"tables":[{"id":1,)json"
    R"json("schema":"dbo","name":"t","columns":[{"id":1,"name":"a","system_type":"int",)json"
    R"json("system_type_id":56,"max_length":4,"precision":10,"scale":0,)json"
    R"json("is_nullable":false}],"pk":{"name":"PK","columns":[{"name":"a"}]}}]})json";
constexpr const char *schema = R"json({"compat_level":1,"tbls":{"t":{"name":"t","txid":1,"cols":{"a":{"name":"a",)json"
                               R"json("type":{"name":"sint32"}}},"pk":{"name":"PK","cols":{"a":null}}}}})json";

// A fresh directory, removed when the program ends.
struct playground {
    playground()
    {
        std::string name = (fs::temp_directory_path() / "tov-schema-fuzz-XXXXXX").string();
        if (!mkdtemp(name.data()) || !std::freopen("/dev/null", "r", stdin) || !std::freopen("/dev/null", "w", stdout))
            std::abort();
        directory = name;
    }
    ~playground()
    {
        fs::remove_all(directory);
    }
    void enter() const
    {
        fs::remove_all(directory / "here");
        fs::create_directories(directory / "here" / "folder");
        fs::current_path(directory / "here");
        std::ofstream("folder/t.sql") << "CREATE TABLE t (a int NOT NULL PRIMARY KEY);\nGO\n";
        std::ofstream("catalogue.json") << catalogue;
        std::ofstream("schema.json") << schema;
    }
    fs::path directory;
};

std::vector<std::string> arguments_of(const uint8_t *data, size_t size)
{
    std::vector<std::string> arguments{"tov-schema", ""};
    for (size_t i = 0; i < size && data[i] != '\0'; i++) {
        if (data[i] == '\n')
            arguments.emplace_back();
        else if (data[i] != '/')
            arguments.back() += static_cast<char>(data[i]);
    }
    if (arguments.back().empty())
        arguments.pop_back();
    return arguments;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const playground ground;
    const fs::path home = fs::current_path();
    ground.enter();
    std::vector<std::string> arguments = arguments_of(data, size);
    std::vector<char *> argv;
    for (std::string &argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    const int code = cli_run(static_cast<int>(arguments.size()), argv.data());
    fs::current_path(home);
    if (code < 0 || code > 2)
        std::abort();
    return 0;
}
