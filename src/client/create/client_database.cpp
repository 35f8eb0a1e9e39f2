// Running the statements. Each is compiled under a guard that knows what it is meant to do.
#include "create/client_database.hpp"

#include "create/client_place.hpp"
#include "create/client_schema_rows.hpp"
#include "kt_sqlite_dates.h"

#include <sqlite3.h>

#define KT_HERE "src/client/create/client_database"

// How long to wait for another program's lock, in milliseconds.
static constexpr int patience = 5000;

void client_database__close(client_database &database) noexcept
{
    database.shelve_row.close();
    database.shelve_text.close();
    database.connection.close();
}

static int my_run(client_database &database, const char *sql) noexcept
{
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    kt_owned_statement statement{database.functions};
    int code = database.functions->prepare(database.connection, sql, statement.out());
    if (code == SQLITE_OK)
        code = database.functions->step(statement);
    return code == SQLITE_DONE || code == SQLITE_ROW ? SQLITE_OK : code;
}

void client_database__run(KT_context *ctx, client_database &database, const char *sql) noexcept
{
    const int code = my_run(database, sql);
    if (code != SQLITE_OK)
        CLIENT_FAIL_IN(database, code);
}

void client_database__open(KT_context *ctx, client_database &database, const char *file_name) noexcept
{
    const KT_sqlite_functions *functions = database.functions;
    int code = functions->open(file_name, database.connection.out(), SQLITE_OPEN_READWRITE);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "%s", functions->errstr(code));
    KT_TRY(KT_sqlite__normalise_dates(ctx, functions, database.connection));
    functions->busy_timeout(database.connection, patience);
    code = client_guard__watch(functions, database.connection, &database.guard);
    if (code != SQLITE_OK)
        CLIENT_FAIL_IN(database, code);
    for (const char *setting : client_settings)
        KT_TRY(client_database__run(ctx, database, setting));
}

int client_database__begin(client_database &database) noexcept
{
    return my_run(database, client_begin);
}

static const char *my_kind_word(client_kind kind) noexcept
{
    switch (kind) {
    case client_kind::tbl:
    case client_kind::counter:
    case client_kind::record:
        return "table";
    case client_kind::index:
        return "index";
    case client_kind::view:
        return "view";
    default:
        return "trigger";
    }
}

static void my_refuse_taken(KT_context *ctx, void *taken_names, const client_statement &statement) noexcept
{
    kt_owned_text folded{ctx};
    KT_TRY(KT_strdup__folded(ctx, statement.name, folded.out()));
    KT_bool taken = 0;
    KT_TRY(KT_vhash__has(ctx, static_cast<const KT_vhash *>(taken_names), folded, &taken));
    if (!taken)
        return;
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, statement.name));
    KT_FAIL(KT_ERR_SQLITE(SQLITE_ERROR), "%s %s: an object of this name already exists", my_kind_word(statement.kind),
            KT_string__sz(shown));
}

// Adds the names in the schema table, in lower case, and keeps its last row in mind.
static void my_collect_names(KT_context *ctx, client_database &database, sqlite3_stmt *statement,
                             KT_vhash *names) noexcept
{
    const KT_sqlite_functions *functions = database.functions;
    int code = functions->step(statement);
    for (; code == SQLITE_ROW; code = functions->step(statement)) {
        const char *name = functions->column_text(statement, 0);
        kt_owned_text folded{ctx};
        KT_TRY(KT_strdup__folded(ctx, name ? name : "", folded.out()));
        KT_TRY(KT_vhash__update__null(ctx, names, folded));
        database.last_old_row = functions->column_int64(statement, 1);
    }
    if (code != SQLITE_DONE)
        CLIENT_FAIL_IN(database, code);
}

static void my_list_names(KT_context *ctx, client_database &database, KT_vhash *names) noexcept
{
    static constexpr const char *sql = "SELECT name, rowid FROM sqlite_master ORDER BY rowid";
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    kt_owned_statement statement{database.functions};
    const int code = database.functions->prepare(database.connection, sql, statement.out());
    if (code != SQLITE_OK)
        CLIENT_FAIL_IN(database, code);
    KT_TRY(my_collect_names(ctx, database, statement, names));
}

void client_database__check_names(KT_context *ctx, client_database &database, const client_plan &plan) noexcept
{
    kt_owned_vhash taken{ctx};
    KT_TRY(KT_vhash__alloc(ctx, taken.out()));
    KT_TRY(my_list_names(ctx, database, taken));
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, taken, &count));
    if (count > 0)
        KT_TRY(client_each_name(ctx, plan, my_refuse_taken, taken));
}

// Compiles a statement that holds texts of the schema, and runs it unless compiling it was the purpose.
static int my_compile(client_database &database, const client_guard &guard, const char *sql, bool run) noexcept
{
    const KT_sqlite_functions *functions = database.functions;
    const client_on_duty duty(database.guard, guard);
    kt_owned_statement statement{functions};
    int code = functions->prepare(database.connection, sql, statement.out());
    if (code == SQLITE_OK && run)
        code = functions->step(statement);
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

static void my_check(KT_context *ctx, const client_database &database, const client_statement &statement,
                     int code) noexcept
{
    if (code == SQLITE_OK)
        return;
    client_place place{statement.tbl};
    if (statement.kind != client_kind::tbl)
        place = {statement.tbl, my_kind_word(statement.kind), statement.name};
    CLIENT_FAIL(KT_ERR_SQLITE(code), place, "%s", database.functions->message(database.connection));
}

static void my_create_tbl(KT_context *ctx, client_database &database, const client_statement &statement) noexcept
{
    KT_TRY(client_schema_rows__begin_tbl(ctx, database));
    const char *sql = statement.bare ? statement.bare : statement.sql;
    int code = my_compile(database, {client_duty::tbl, statement.tbl}, sql, true);
    if (code == SQLITE_OK && statement.bare)
        code = client_schema_rows__keep_text(database, statement);
    KT_TRY(my_check(ctx, database, statement, code));
}

// Its text is our own but for the beginning of its name.
static void my_create_own_tbl(KT_context *ctx, client_database &database, const client_statement &statement) noexcept
{
    KT_TRY(client_schema_rows__begin_tbl(ctx, database));
    KT_TRY(client_database__run(ctx, database, statement.sql));
}

static void my_create_index(KT_context *ctx, client_database &database, const client_statement &statement) noexcept
{
    const int code = my_compile(database, {client_duty::index, statement.tbl, statement.name}, statement.sql, true);
    KT_TRY(my_check(ctx, database, statement, code));
}

// A trigger or a view.
static void my_create_on_tbl(KT_context *ctx, client_database &database, const client_statement &statement) noexcept
{
    KT_TRY(client_schema_rows__show_tbls(ctx, database));
    const bool is_ours = client_schema_rows__are_ours(database);
    const client_duty duty = statement.kind == client_kind::view ? client_duty::view : client_duty::trigger;
    int code = SQLITE_OK;
    if (!is_ours || statement.kind != client_kind::update_trigger) // which says what the insert trigger said
        code = my_compile(database, {duty, statement.tbl, statement.name}, statement.sql, !is_ours);
    if (code == SQLITE_OK && is_ours)
        code = client_schema_rows__add(database, statement);
    KT_TRY(my_check(ctx, database, statement, code));
}

void client_database__create(KT_context *ctx, client_database &database, const client_statement &statement) noexcept
{
    if (statement.kind == client_kind::tbl)
        KT_TRY(my_create_tbl(ctx, database, statement));
    else if (statement.kind == client_kind::counter || statement.kind == client_kind::record)
        KT_TRY(my_create_own_tbl(ctx, database, statement));
    else if (statement.kind == client_kind::index)
        KT_TRY(my_create_index(ctx, database, statement));
    else
        KT_TRY(my_create_on_tbl(ctx, database, statement));
}

void client_database__commit(KT_context *ctx, client_database &database) noexcept
{
    KT_TRY(client_database__run(ctx, database, client_commit));
}
