// Creating a database: the plan first, then the file, then one transaction.
//
// A file that was not there is made before SQLite opens it, because only so it is certain who made it. A failed
// transaction leaves such a file empty, and it is removed; an empty file that was there before stays.
#include "create/client_database.hpp"
#include "create/client_schema_rows.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#define KT_HERE "src/client/create/client_create"

using client_progress = void (*)(void *data, uint32_t done, uint32_t total);

namespace {
struct creation {
    client_database *database;
    uint32_t done;
    uint32_t total;
    client_progress progress;
    void *data;
};
} // namespace

static void my_create_one(KT_context *ctx, void *data, const client_statement &statement) noexcept
{
    auto *work = static_cast<creation *>(data);
    KT_TRY(client_database__create(ctx, *work->database, statement));
    work->done++;
    if (work->progress)
        work->progress(work->data, work->done, work->total);
}

static void my_create_all(KT_context *ctx, tov_schema *schema, const client_plan &plan, const char *path,
                          client_progress progress, void *data) noexcept
{
    client_database database;
    creation work{&database, 0, client_count_statements(plan), progress, data};
    KT_TRY(client_database__begin(ctx, database, path));
    KT_TRY(client_database__check_names(ctx, database, plan));
    KT_TRY(client_schema_rows__begin(ctx, database));
    KT_TRY(client_each_statement(ctx, schema, plan, my_create_one, &work));
    KT_TRY(client_database__commit(ctx, database));
}

// Makes the file, unless there is one. Why it could not be made is SQLite's to say, when it tries to open it.
static bool my_make_file(const char *file_name) noexcept
{
    const int file = open(file_name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0)
        return false;
    close(file);
    return true;
}

static void my_remove_empty_file(const char *file_name) noexcept
{
    struct stat file {};
    if (stat(file_name, &file) == 0 && file.st_size == 0)
        unlink(file_name);
}

// A name that can only be a file's: SQLite takes :memory:, an empty name and, where it is built so, file:... for
// something else, and what was created would be gone.
static std::string my_path(const char *file_name)
{
    return file_name[0] == '/' ? file_name : std::string("./") + file_name;
}

void tov_client__create_database(KT_context *ctx, tov_schema *schema, const char *file_name,
                                 void (*progress)(void *data, uint32_t done, uint32_t total), void *data) noexcept
{
    client_plan plan{ctx};
    KT_TRY(client_make_plan(ctx, schema, plan));
    std::string path;
    KT_TRY(kt_contain(ctx, [&] { path = my_path(file_name); }));
    const bool made = my_make_file(path.c_str());
    my_create_all(ctx, schema, plan, path.c_str(), progress, data);
    if (!kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    if (made)
        my_remove_empty_file(path.c_str());
}
