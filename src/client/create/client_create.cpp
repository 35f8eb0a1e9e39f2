// Creating a database: the plan first, then the file, then one transaction. A failed transaction leaves a file that was
// made here empty, and it is removed; an empty file that was there before stays.
#include "create/client_database.hpp"
#include "create/client_file.hpp"
#include "create/client_schema_rows.hpp"

#include <sqlite3.h>

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

// Begins in the file that the name leads to. While this waits for the lock, another creation that made the file may
// fail and remove it. SQLite notices that mostly, and would else go on in a file that nobody can find.
static void my_begin(KT_context *ctx, const char *file_name, client_file &file, client_database &database) noexcept
{
    static constexpr int attempts = 10;
    for (int n = 0; n < attempts; n++) {
        KT_TRY(client_file__make(ctx, file_name, file));
        KT_TRY(client_database__open(ctx, database, file.path.c_str()));
        const int code = client_database__begin(database);
        if (code == SQLITE_OK && client_file__is_there(file))
            return;
        if (client_file__is_there(file))
            CLIENT_FAIL_IN(database, code);
        client_database__close(database);
    }
    KT_FAIL(KT_ERR_SQLITE(SQLITE_CANTOPEN), "other programs remove the file again and again");
}

static void my_create_all(KT_context *ctx, tov_schema *schema, const client_plan &plan, const char *file_name,
                          client_file &file, creation work) noexcept
{
    client_database database;
    work.database = &database;
    KT_TRY(my_begin(ctx, file_name, file, database));
    KT_TRY(client_database__check_names(ctx, database, plan));
    KT_TRY(client_schema_rows__begin(ctx, database, plan));
    if (client_schema_rows__are_ours(database))
        KT_TRY(client_each_creation(ctx, schema, plan, my_create_one, &work));
    else
        KT_TRY(client_each_statement(ctx, schema, plan, my_create_one, &work));
    KT_TRY(client_schema_rows__finish(ctx, database));
    KT_TRY(client_database__commit(ctx, database));
}

void tov_client__create_database__with(KT_context *ctx, tov_schema *schema, const char *file_name,
                                       const tov_client_create_options *options) noexcept
{
    const tov_client_create_options chosen = options ? *options : tov_client_create_options{};
    client_plan plan;
    KT_TRY(client_apply_options(ctx, options, plan));
    KT_TRY(client_make_plan(ctx, schema, plan));
    client_file file;
    my_create_all(ctx, schema, plan, file_name, file,
                  {nullptr, 0, client_count_statements(plan), chosen.progress, chosen.data});
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        client_file__remove_if_empty(file);
}

void tov_client__create_database(KT_context *ctx, tov_schema *schema, const char *file_name,
                                 void (*progress)(void *data, uint32_t done, uint32_t total), void *data) noexcept
{
    tov_client_create_options options{};
    options.progress = progress;
    options.data = data;
    KT_TRY(tov_client__create_database__with(ctx, schema, file_name, &options));
}
