// Running the statements. Each is compiled under a guard that knows what it is meant to do.
//
// SQLite reads its whole schema table after each CREATE. For the tables that is borne; with the triggers, whose texts
// are long, creating some thousand tables would take minutes and some ten thousand hours. So a trigger's statement is
// compiled, which checks it as creating would, and not run: the row that running would write is inserted instead
// (PRAGMA writable_schema). The rows are the same, and the transaction covers them. Where a connection's SQLite does
// not allow that, the statement runs.
#include "client_database.h"

#include "client_place.h"
#include "kt_sqlite_dates.h"

#include <sqlite3.h>

#define KT_HERE "src/client/client_database"

// How long to wait for another program's lock, in milliseconds.
static constexpr int patience = 5000;

static constexpr const char *insert_trigger_row =
    "INSERT INTO sqlite_master(type,name,tbl_name,rootpage,sql) VALUES('trigger',?1,?2,0,?3)";

client_database::~client_database()
{
    if (trigger_row)
        functions->finalize(trigger_row);
    if (connection)
        functions->close(connection);
}

// Raises what SQLite says of its last failure.
#define DATABASE_FAIL(database, code) \
    KT_FAIL(KT_ERR_SQLITE(code), "%s: %s", (database).file_name, (database).functions->message((database).connection))

// Runs one statement without rows, under a duty.
static void my_run(KT_context *ctx, client_database &database, client_duty duty, const char *sql) noexcept
{
    database.guard = {duty};
    sqlite3_stmt *statement = nullptr;
    int code = database.functions->prepare(database.connection, sql, &statement);
    if (code == SQLITE_OK)
        code = database.functions->step(statement);
    database.guard = {};
    database.functions->finalize(statement);
    if (code != SQLITE_DONE && code != SQLITE_ROW && code != SQLITE_OK)
        DATABASE_FAIL(database, code);
}

void client_database__begin(KT_context *ctx, client_database &database, const char *file_name) noexcept
{
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    database.functions = functions;
    database.file_name = file_name;
    int code = functions->open(file_name, &database.connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "%s: %s", file_name, functions->errstr(code));
    KT_TRY(KT_sqlite__normalise_dates(ctx, functions, database.connection));
    functions->busy_timeout(database.connection, patience);
    code = client_guard__watch(functions, database.connection, &database.guard);
    if (code != SQLITE_OK)
        DATABASE_FAIL(database, code);
    for (const char *setting : client_settings)
        KT_TRY(my_run(ctx, database, client_duty::settings, setting));
    KT_TRY(my_run(ctx, database, client_duty::transaction, client_begin));
}

namespace {
struct name_search {
    const KT_vhash *taken;
    const char *file_name;
};
} // namespace

static void my_refuse_taken(KT_context *ctx, void *data, const client_statement &statement) noexcept
{
    const auto *search = static_cast<const name_search *>(data);
    kt_owned_text folded{ctx};
    KT_TRY(client_fold_name(ctx, statement.name, folded.out()));
    KT_bool taken = 0;
    KT_TRY(KT_vhash__has(ctx, search->taken, folded, &taken));
    if (!taken)
        return;
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(client_append_shown(ctx, shown, statement.name));
    const char *kind = statement.kind == client_kind::tbl ? "table" : "trigger";
    KT_FAIL(KT_ERR_SQLITE(SQLITE_ERROR), "%s: %s %s cannot be created: the database has something of that name already",
            search->file_name, kind, KT_string__sz(shown));
}

// Steps through the rows of a statement and adds the first column of each, in lower case, to the names.
static void my_collect_names(KT_context *ctx, client_database &database, sqlite3_stmt *statement,
                             KT_vhash *names) noexcept
{
    int code = database.functions->step(statement);
    for (; code == SQLITE_ROW; code = database.functions->step(statement)) {
        const char *name = database.functions->column_text(statement, 0);
        kt_owned_text folded{ctx};
        KT_TRY(client_fold_name(ctx, name ? name : "", folded.out()));
        KT_TRY(KT_vhash__update__null(ctx, names, folded));
    }
    if (code != SQLITE_DONE)
        DATABASE_FAIL(database, code);
}

void client_database__check_names(KT_context *ctx, client_database &database, const client_plan &plan) noexcept
{
    kt_owned_vhash taken{ctx};
    KT_TRY(KT_vhash__alloc(ctx, taken.out()));
    sqlite3_stmt *statement = nullptr;
    database.guard = {client_duty::look};
    const int code = database.functions->prepare(database.connection, "SELECT name FROM sqlite_master", &statement);
    database.guard = {};
    if (code != SQLITE_OK)
        DATABASE_FAIL(database, code);
    my_collect_names(ctx, database, statement, taken);
    database.functions->finalize(statement);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, taken, &count));
    name_search search{taken, database.file_name};
    if (count > 0)
        KT_TRY(client_each_name(ctx, plan, my_refuse_taken, &search));
}

// Makes ready for inserting rows of triggers. That this may be refused is no failure.
static void my_begin_triggers(KT_context *ctx, client_database &database) noexcept
{
    database.triggers_begun = true;
    KT_TRY(my_run(ctx, database, client_duty::settings, "PRAGMA writable_schema=ON"));
    database.guard = {client_duty::schema_row};
    database.functions->prepare(database.connection, insert_trigger_row, &database.trigger_row);
    database.guard = {};
}

static int my_insert_trigger_row(client_database &database, const client_statement &statement) noexcept
{
    const KT_sqlite_functions *functions = database.functions;
    sqlite3_stmt *row = database.trigger_row;
    int code = functions->bind_text(row, 1, statement.name, -1);
    if (code == SQLITE_OK)
        code = functions->bind_text(row, 2, statement.tbl, -1);
    if (code == SQLITE_OK)
        code = functions->bind_text(row, 3, statement.sql, -1);
    if (code == SQLITE_OK)
        code = functions->step(row);
    const int reset_code = functions->reset(row);
    return code == SQLITE_DONE ? reset_code : code;
}

void client_database__create(KT_context *ctx, client_database &database, const client_statement &statement) noexcept
{
    const bool trigger = statement.kind != client_kind::tbl;
    if (trigger && !database.triggers_begun)
        KT_TRY(my_begin_triggers(ctx, database));
    const KT_sqlite_functions *functions = database.functions;
    database.guard = {trigger ? client_duty::trigger : client_duty::tbl, statement.tbl, statement.name};
    sqlite3_stmt *compiled = nullptr;
    int code = functions->prepare(database.connection, statement.sql, &compiled);
    if (code == SQLITE_OK && !(trigger && database.trigger_row)) {
        code = functions->step(compiled);
        code = code == SQLITE_DONE ? SQLITE_OK : code;
    }
    database.guard = {};
    functions->finalize(compiled);
    if (code == SQLITE_OK && trigger && database.trigger_row)
        code = my_insert_trigger_row(database, statement);
    const client_place tbl{statement.tbl};
    const client_place place = trigger ? client_place{statement.tbl, "trigger", statement.name} : tbl;
    if (code != SQLITE_OK)
        CLIENT_FAIL(KT_ERR_SQLITE(code), place, "%s", functions->message(database.connection));
}

void client_database__commit(KT_context *ctx, client_database &database) noexcept
{
    KT_TRY(my_run(ctx, database, client_duty::transaction, client_commit));
}
