// A file that was not there is made before SQLite opens it, because only so it is certain who made it. It is removed
// under SQLite's lock for writing: whoever waits for that lock, to create something too, then finds the file gone
// (client_file__is_there), and whoever had it before has left something in the file.
#include "create/client_file.hpp"

#include "kt_sqlite_functions.h"

#include <cerrno>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#define KT_HERE "src/client/create/client_file"

static void my_note_identity(client_file &file, const struct stat &status) noexcept
{
    file.device = status.st_dev;
    file.inode = status.st_ino;
}

static bool my_make(client_file &file) noexcept
{
    const int made = open(file.path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (made < 0)
        return false;
    struct stat status {};
    file.made = fstat(made, &status) == 0;
    my_note_identity(file, status);
    close(made);
    return true;
}

// SQLite takes :memory:, an empty name and, where it is built so, file:... for something else than a file, and what was
// created would be gone.
static std::string my_path(const char *file_name)
{
    return file_name[0] == '/' ? file_name : std::string("./") + file_name;
}

// Why a file can be neither made nor found is SQLite's to say, when it tries to open it.
void client_file__make(KT_context *ctx, const char *file_name, client_file &file) noexcept
{
    KT_TRY(kt_contain(ctx, [&] { file.path = my_path(file_name); }));
    file.made = false;
    if (my_make(file))
        return;
    struct stat status {};
    if (stat(file.path.c_str(), &status) == 0)
        my_note_identity(file, status);
    else if (errno == ENOENT && lstat(file.path.c_str(), &status) == 0 && S_ISLNK(status.st_mode))
        KT_FAIL(KT_ERR_SQLITE(SQLITE_CANTOPEN), "unable to open database file: a symbolic link that leads to no file");
}

bool client_file__is_there(const client_file &file) noexcept
{
    struct stat status {};
    return stat(file.path.c_str(), &status) == 0 && status.st_dev == file.device && status.st_ino == file.inode;
}

static bool my_is_empty(const client_file &file) noexcept
{
    struct stat status {};
    return stat(file.path.c_str(), &status) == 0 && status.st_size == 0;
}

static bool my_lock(const KT_sqlite_functions *functions, sqlite3 *connection) noexcept
{
    return functions->exec(connection, "BEGIN IMMEDIATE") == SQLITE_OK;
}

void client_file__remove_if_empty(const client_file &file) noexcept
{
    if (!file.made)
        return;
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    sqlite3 *connection = nullptr;
    const int code = functions->open_plain(file.path.c_str(), &connection, SQLITE_OPEN_READWRITE);
    if (code == SQLITE_OK && my_lock(functions, connection) && client_file__is_there(file) && my_is_empty(file))
        unlink(file.path.c_str());
    functions->close(connection);
}
