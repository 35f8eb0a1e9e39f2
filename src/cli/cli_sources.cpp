#include "cli_sources.hpp"

#include "cli.hpp"
#include "cli_files.hpp"
#include "kt_folded.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Files by what they are on the disk, because one file may be reached by several paths.
using read_files = std::map<std::pair<dev_t, ino_t>, std::string>;

} // namespace

static bool my_stat(const std::string &path, struct stat *status)
{
    return (path == "-" ? ::fstat(STDIN_FILENO, status) : ::stat(path.c_str(), status)) == 0;
}

// A file that cannot be looked at cannot be read either, which says why.
static void my_note(const std::string &path, read_files *files)
{
    struct stat status;
    if (!my_stat(path, &status))
        return;
    const auto [other, is_new] = files->emplace(std::pair(status.st_dev, status.st_ino), path);
    if (!is_new)
        throw cli_failure("the same file is given twice, first as " + other->second, path);
}

static bool my_is_script(const std::filesystem::path &path)
{
    const std::string ending = kt_folded(path.extension().native());
    return ending == ".sql" || ending == ".sqlproj"; // a project says the collation of its database
}

// The scripts of a folder. Links to folders are not followed: they may lead in a cycle.
static std::vector<std::string> my_scripts_of(const std::string &folder)
{
    std::vector<std::string> paths;
    std::error_code error;
    std::filesystem::recursive_directory_iterator entry(folder, error), end;
    while (!error && entry != end) {
        if (!entry->is_directory(error) && my_is_script(entry->path()))
            paths.push_back(entry->path());
        entry.increment(error);
    }
    if (error)
        throw cli_failure("cannot read the folder (" + error.message() + ")", folder);
    if (paths.empty())
        throw cli_failure("the folder has no file named *.sql", folder);
    std::sort(paths.begin(), paths.end());
    return paths;
}

// An empty script in a folder is one that says nothing.
static cli_source my_read_script(const std::string &path)
{
    std::error_code error;
    const bool is_empty = std::filesystem::file_size(path, error) == 0 && !error;
    return {path, is_empty ? "" : cli_read_file(path)};
}

std::vector<std::string> cli_source_files(const std::vector<std::string> &paths)
{
    std::vector<std::string> files;
    for (const std::string &path : paths) {
        std::error_code ignored;
        if (path == "-" || !std::filesystem::is_directory(path, ignored)) {
            files.push_back(path);
            continue;
        }
        for (const std::string &script : my_scripts_of(path))
            files.push_back(script);
    }
    return files;
}

std::vector<cli_source> cli_read_sources(const std::vector<std::string> &paths)
{
    std::vector<cli_source> sources;
    read_files files;
    for (const std::string &path : paths) {
        std::error_code ignored; // reading says what is wrong
        if (path == "-" || !std::filesystem::is_directory(path, ignored)) {
            my_note(path, &files);
            sources.push_back({path == "-" ? "standard input" : path, cli_read_file(path), path != "-"});
            continue;
        }
        for (const std::string &script : my_scripts_of(path)) {
            my_note(script, &files);
            sources.push_back(my_read_script(script));
        }
    }
    return sources;
}

static std::filesystem::path my_common(const std::filesystem::path &a, const std::filesystem::path &b)
{
    std::filesystem::path common;
    const auto end = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first;
    for (auto part = a.begin(); part != end; ++part)
        common /= *part;
    return common;
}

std::string cli_common_path(const std::vector<cli_source> &sources)
{
    if (sources.size() == 1)
        return sources.front().name;
    std::filesystem::path folder = std::filesystem::path(sources.front().name).parent_path();
    for (const cli_source &source : sources)
        folder = my_common(folder, std::filesystem::path(source.name).parent_path());
    return folder.empty() ? "." : folder.string();
}
