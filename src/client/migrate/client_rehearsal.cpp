#include "migrate/client_rehearsal.hpp"

#define KT_HERE "src/client/migrate/client_rehearsal"

void client_rehearsal__open(KT_context *ctx, client_rehearsal &rehearsal, const std::vector<client_object> &objects)
{
    client_connection &database = rehearsal.database;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = database.functions->open(":memory:", database.connection.out(), flags);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "%s", database.functions->errstr(code));
    for (const client_object &object : objects) {
        if (object.kind == client_kind::tbl)
            KT_TRY(client_connection__run(ctx, database, object.sql));
    }
}

void client_rehearsal__run(KT_context *ctx, client_rehearsal &rehearsal, const std::vector<std::string> &sql)
{
    for (const std::string &statement : sql)
        KT_TRY(client_connection__run(ctx, rehearsal.database, statement));
}

void client_read_statement(KT_context *ctx, client_connection &database, const std::string &tbl, std::string &sql)
{
    kt_owned_statement statement{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(
        ctx, database, "SELECT sql FROM sqlite_master WHERE type = 'table' AND lower(name) = lower(?1)", statement));
    KT_TRY(client_connection__bind_text(ctx, database, statement, 1, tbl));
    KT_TRY(client_connection__step(ctx, database, statement, has));
    sql = has ? client_column_text(database, statement, 0) : std::string_view();
}

// Whether SQLite accepts all of them: what it says of one that it does not is not asked.
static bool my_are_accepted(client_rehearsal &rehearsal, const std::vector<std::string> &sql)
{
    for (const std::string &statement : sql) {
        if (rehearsal.database.functions->exec(rehearsal.database.connection, statement.c_str()) != SQLITE_OK)
            return false;
    }
    return true;
}

void client_rehearsal__try(KT_context *ctx, client_rehearsal &rehearsal, const std::vector<std::string> &sql,
                           const client_object &wanted, bool &is_like_it)
{
    std::string found;
    KT_TRY(client_connection__run(ctx, rehearsal.database, "SAVEPOINT attempt"));
    const bool is_accepted = my_are_accepted(rehearsal, sql);
    KT_TRY(client_read_statement(ctx, rehearsal.database, wanted.name, found));
    is_like_it = is_accepted && client_statement_meaning(found) == client_statement_meaning(wanted.sql);
    if (!is_like_it)
        KT_TRY(client_connection__run(ctx, rehearsal.database, "ROLLBACK TO attempt"));
    KT_TRY(client_connection__run(ctx, rehearsal.database, "RELEASE attempt"));
}
