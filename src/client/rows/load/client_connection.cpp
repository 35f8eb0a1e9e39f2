#include "rows/load/client_connection.hpp"

#include "kt_sqlite_dates.h"

#define KT_HERE "src/client/rows/load/client_connection"

// How long to wait for another program's lock, in milliseconds.
static constexpr int patience = 5000;

// How often constraints are set aside by one connection.
static constexpr int most_set_aside = 1000;

// Pages are kept in 32 MB, so that a table's keys need not be read again and again.
static constexpr const char *connection_settings[] = {"PRAGMA foreign_keys=OFF", "PRAGMA recursive_triggers=ON",
                                                      "PRAGMA cache_size=-32768"};

namespace {

struct setting {
    int id;
    int on;
};

} // namespace

static constexpr setting defences[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},      {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0}, {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0}, {SQLITE_DBCONFIG_DQS_DML, 0},
};

// A name that can only be a file's.
static std::string my_path(const char *file_name)
{
    return file_name[0] == '/' ? file_name : std::string("./") + file_name;
}

void client_connection__open(KT_context *ctx, client_connection &database, const char *file_name, bool read_only)
{
    const std::string path = my_path(file_name);
    // One thread at a time uses the connection, so SQLite need not lock it.
    const int flags = (read_only ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE) | SQLITE_OPEN_NOMUTEX;
    const int code = database.functions->open(path.c_str(), database.connection.out(), flags);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "%s", database.functions->errstr(code));
    KT_TRY(KT_sqlite__normalise_dates(ctx, database.functions, database.connection));
    database.functions->busy_timeout(database.connection, patience);
    for (const char *setting : connection_settings)
        KT_TRY(client_connection__run(ctx, database, setting));
}

void client_connection__distrust(KT_context *ctx, client_connection &database)
{
    for (const setting &defence : defences)
        KT_TRY(client_connection__check(ctx, database,
                                        database.functions->configure(database.connection, defence.id, defence.on)));
    KT_TRY(client_connection__run(ctx, database, "PRAGMA cell_size_check=ON"));
}

void client_connection__check(KT_context *ctx, client_connection &database, int code) noexcept
{
    if (code != SQLITE_OK)
        CLIENT_FAIL_AT(database, code);
}

void client_connection__run(KT_context *ctx, client_connection &database, const std::string &sql) noexcept
{
    KT_TRY(client_connection__check(ctx, database, database.functions->exec(database.connection, sql.c_str())));
}

void client_connection__prepare(KT_context *ctx, client_connection &database, const std::string &sql,
                                kt_owned_statement &statement) noexcept
{
    statement.close();
    const int code = database.functions->prepare(database.connection, sql.c_str(), statement.out());
    KT_TRY(client_connection__check(ctx, database, code));
}

void client_connection__bind_int64(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, int index,
                                   int64_t number) noexcept
{
    KT_TRY(client_connection__check(ctx, database, database.functions->bind_int64(statement, index, number)));
}

void client_connection__bind_text(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, int index,
                                  std::string_view text) noexcept
{
    const char *bytes = text.data() ? text.data() : "";
    const int code = database.functions->bind_text(statement, index, bytes, static_cast<int>(text.size()));
    KT_TRY(client_connection__check(ctx, database, code));
}

void client_connection__step(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, bool &has) noexcept
{
    const int code = database.functions->step(statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        CLIENT_FAIL_AT(database, code);
    has = code == SQLITE_ROW;
}

void client_connection__ask(KT_context *ctx, client_connection &database, const std::string &sql,
                            int64_t &number) noexcept
{
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database, sql, handle));
    KT_TRY(client_connection__step(ctx, database, handle, has));
    number = has ? database.functions->column_int64(handle, 0) : 0;
}

// Statements that were compiled before are compiled anew when this changes.
void client_connection__run_triggers(KT_context *ctx, client_connection &database, bool on) noexcept
{
    if (database.runs_triggers == on)
        return;
    const int code = database.functions->configure(database.connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, on ? 1 : 0);
    KT_TRY(client_connection__check(ctx, database, code));
    database.runs_triggers = on;
}

void client_connection__ask_constraints(KT_context *ctx, client_connection &database, bool on) noexcept
{
    if (database.asks_constraints == on || (!on && database.times_set_aside == most_set_aside))
        return;
    const char *setting = on ? "PRAGMA ignore_check_constraints=OFF" : "PRAGMA ignore_check_constraints=ON";
    KT_TRY(client_connection__check(ctx, database, database.functions->exec(database.connection, setting)));
    database.asks_constraints = on;
    database.times_set_aside += on ? 0 : 1;
}

std::string_view client_column_text(const client_connection &database, sqlite3_stmt *statement, int column) noexcept
{
    const char *text = database.functions->column_text(statement, column);
    return text ? std::string_view(text, static_cast<size_t>(database.functions->column_bytes(statement, column)))
                : std::string_view();
}
