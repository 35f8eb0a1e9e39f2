#include "cli_files.hpp"

#include "cli.hpp"
#include "cli_paths.hpp"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

// A file descriptor that closes itself.
struct open_file {
    explicit open_file(int descriptor) : fd(descriptor)
    {
    }
    ~open_file()
    {
        if (fd > STDERR_FILENO)
            ::close(fd);
    }
    open_file(const open_file &) = delete;
    open_file &operator=(const open_file &) = delete;

    int fd;
};

[[noreturn]] void fail(const char *what, const std::string &path, int error)
{
    throw cli_failure(std::string(what) + " (" + std::generic_category().message(error) + ")", path);
}

} // namespace

static void my_write_all(int fd, std::string_view content, const std::string &path)
{
    size_t written = 0;
    while (written < content.size()) {
        const ssize_t count = ::write(fd, content.data() + written, content.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail("cannot write", path, errno);
        written += static_cast<size_t>(count);
    }
}

using my_writing = std::function<void(const cli_sink &)>;

static cli_sink my_sink_of(int fd, const std::string &path)
{
    return [fd, path](std::string_view piece) { my_write_all(fd, piece, path); };
}

static mode_t my_rights_of_new_file()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// Gives a file the owner and the rights of the one that it will replace, as far as that is allowed. Rights that were
// meant for another group are not handed to one's own.
static bool my_make_alike(int fd, const struct stat &replaced)
{
    mode_t rights = replaced.st_mode & 0777;
    if (::fchown(fd, replaced.st_uid, replaced.st_gid) != 0 &&
        ::fchown(fd, static_cast<uid_t>(-1), replaced.st_gid) != 0)
        rights &= ~static_cast<mode_t>(S_IRWXG);
    return ::fchmod(fd, rights) == 0;
}

// Whether there is a file, and which one. One that may not be written is not replaced either.
static bool my_find_replaced(const std::string &target, const std::string &path, struct stat *replaced)
{
    const open_file file(::open(target.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    if (file.fd < 0 && errno == ENOENT)
        return false;
    if (file.fd < 0 || ::fstat(file.fd, replaced) != 0)
        fail("cannot write", path, errno);
    return true;
}

static void my_write_and_rename(const std::string &path, const std::string &target, const my_writing &write)
{
    struct stat replaced;
    const bool replaces = my_find_replaced(target, path, &replaced);
    std::string beside = target + ".XXXXXX";
    open_file file(::mkstemp(beside.data()));
    if (file.fd < 0)
        fail("cannot write", path, errno);
    try {
        write(my_sink_of(file.fd, path));
        const bool alike =
            replaces ? my_make_alike(file.fd, replaced) : ::fchmod(file.fd, my_rights_of_new_file()) == 0;
        if (!alike || ::fsync(file.fd) != 0 || ::rename(beside.c_str(), target.c_str()) != 0)
            fail("cannot write", path, errno);
    } catch (...) {
        ::unlink(beside.c_str());
        throw;
    }
}

// Whether it is the file that standard output goes to, such as /dev/stdout: to be written on, never replaced.
static bool my_is_standard_output(const std::string &path)
{
    struct stat existing, output;
    return ::stat(path.c_str(), &existing) == 0 && ::fstat(STDOUT_FILENO, &output) == 0 &&
           existing.st_dev == output.st_dev && existing.st_ino == output.st_ino;
}

static bool my_is_special(const std::string &path)
{
    struct stat existing;
    return ::stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode);
}

std::string cli_read_file(const std::string &path)
{
    const open_file file(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.fd < 0)
        fail("cannot read", path, errno);
    std::string content;
    struct stat status;
    if (::fstat(file.fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
        content.reserve(static_cast<size_t>(status.st_size));
    char piece[1 << 16];
    for (;;) {
        const ssize_t count = ::read(file.fd, piece, sizeof piece);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail("cannot read", path, errno);
        if (count == 0)
            break;
        content.append(piece, static_cast<size_t>(count));
    }
    if (content.empty())
        throw cli_failure("the file is empty", path == "-" ? "standard input" : path);
    return content;
}

std::string cli_read_text(const std::string &path)
{
    std::string content = cli_read_file(path);
    cli_refuse_nul(content, path);
    return content;
}

void cli_refuse_nul(const std::string &content, const std::string &path)
{
    const size_t nul = content.find('\0');
    if (nul != std::string::npos)
        throw cli_failure("the file is not a text file (byte " + std::to_string(nul) + " is NUL)", path);
}

void cli_print(const std::string &text)
{
    my_write_all(STDOUT_FILENO, text, "standard output");
}

void cli_tell(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    static_cast<void>(std::vfprintf(stderr, format, args));
    va_end(args);
}

// A device or pipe cannot be replaced by a file beside it.
static void my_write_on(const std::string &path, const my_writing &write)
{
    const open_file file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (file.fd < 0)
        fail("cannot write", path, errno);
    write(my_sink_of(file.fd, path));
}

void cli_write_pieces(const std::string &path, const my_writing &write)
{
    if (path == "-" || my_is_standard_output(path)) {
        write(my_sink_of(STDOUT_FILENO, "standard output"));
        return;
    }
    const std::string target = cli_behind_links(path);
    if (my_is_special(path))
        my_write_on(path, write);
    else
        my_write_and_rename(path, target, write);
}

void cli_write_file(const std::string &path, const std::string &content)
{
    cli_write_pieces(path, [&content](const cli_sink &take) { take(content); });
}
