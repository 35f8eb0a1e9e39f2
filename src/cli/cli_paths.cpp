// Files are compared as files (device and inode), and a file that is not there yet by its folder and name.

#include "cli_paths.hpp"

#include "cli.hpp"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct identity {
    dev_t device = 0;
    ino_t inode = 0;
    std::string name; // in the folder that device and inode stand for; empty for a file that is there
    bool is_file = false;

    bool operator==(const identity &other) const
    {
        return is_file && other.is_file && device == other.device && inode == other.inode && name == other.name;
    }
};

} // namespace

static fs::path my_folder_of(const fs::path &path)
{
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// The rule that Linux keeps where fs.protected_symlinks is on.
static bool my_may_follow(const fs::path &path, const struct stat &link)
{
    struct stat folder;
    if (link.st_uid == ::geteuid() || ::stat(my_folder_of(path).c_str(), &folder) != 0)
        return true;
    const mode_t shared = S_ISVTX | S_IWOTH;
    return (folder.st_mode & shared) != shared || folder.st_uid == link.st_uid;
}

[[noreturn]] static void my_fail(const std::string &path, std::errc error)
{
    throw cli_failure("cannot write (" + std::make_error_code(error).message() + ")", path);
}

std::string cli_behind_links(const std::string &path)
{
    static constexpr int most_links = 40; // as many as Linux follows
    fs::path at = path;
    for (int n = 0; n < most_links; n++) {
        struct stat link;
        if (::lstat(at.c_str(), &link) != 0 || !S_ISLNK(link.st_mode))
            return at;
        if (!my_may_follow(at, link))
            my_fail(path, std::errc::permission_denied);
        std::error_code error;
        at = my_folder_of(at) / fs::read_symlink(at, error);
        if (error)
            throw cli_failure("cannot write (" + error.message() + ")", path);
    }
    my_fail(path, std::errc::too_many_symbolic_link_levels);
}

static identity my_identify(const struct stat &status)
{
    return {status.st_dev, status.st_ino, "", S_ISREG(status.st_mode)};
}

static identity my_identity_of(const std::string &path)
{
    struct stat status;
    if (::stat(path.c_str(), &status) == 0)
        return my_identify(status);
    const fs::path target = cli_behind_links(path);
    if (::stat(my_folder_of(target).c_str(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino, target.filename(), true};
}

static bool my_is_standard_input(const std::string &path)
{
    struct stat input;
    return ::fstat(STDIN_FILENO, &input) == 0 && my_identity_of(path) == my_identify(input);
}

void cli_keep_inputs(const std::string &output, const std::vector<std::string> &inputs)
{
    if (output == "-")
        return;
    for (const std::string &input : inputs) {
        if (input == "-" ? my_is_standard_input(output) : my_identity_of(output) == my_identity_of(input))
            throw cli_failure("the output is the input too", output);
    }
}

static bool my_is_one_output(const std::string &a, const std::string &b)
{
    return a == b || (a != "-" && b != "-" && my_identity_of(a) == my_identity_of(b));
}

void cli_keep_apart(std::vector<std::string> outputs, const std::vector<std::string> &inputs)
{
    std::erase(outputs, "");
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        cli_keep_inputs(*output, inputs);
        for (auto before = outputs.begin(); before != output; ++before)
            if (my_is_one_output(*before, *output))
                throw cli_usage_failure("two outputs would be written there", *output);
    }
}
