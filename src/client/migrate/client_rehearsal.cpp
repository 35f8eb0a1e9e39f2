#include "migrate/client_rehearsal.hpp"

#define KT_HERE "src/client/migrate/client_rehearsal"

void client_rehearsal__open(KT_context *ctx, client_rehearsal &rehearsal, const std::vector<client_object> &objects)
{
    client_connection &database = rehearsal.database;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = database.functions->open(":memory:", database.connection.out(), flags);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "%s", database.functions->errstr(code));
    KT_TRY(client_guarded__watch(ctx, rehearsal.database));
    for (const client_object &object : objects) {
        if (object.kind == client_kind::tbl)
            KT_TRY(
                client_guarded__run(ctx, rehearsal.database, {object.sql, client_duty::tbl, object.tbl, object.name}));
    }
}

void client_rehearsal__run(KT_context *ctx, client_rehearsal &rehearsal,
                           const std::vector<client_migration_statement> &statements)
{
    for (const client_migration_statement &statement : statements)
        KT_TRY(client_guarded__run(ctx, rehearsal.database, statement));
}

// Whether SQLite accepts all of them. What it says of one that it does not is not asked, unless it could not work.
static void my_are_accepted(KT_context *ctx, client_rehearsal &rehearsal,
                            const std::vector<client_migration_statement> &statements, bool &are_accepted)
{
    are_accepted = true;
    for (const client_migration_statement &statement : statements) {
        const int code = client_guarded__attempt(rehearsal.database, statement);
        if (code != SQLITE_OK && code != SQLITE_ERROR && code != SQLITE_AUTH)
            KT_TRY(client_connection__check(ctx, rehearsal.database, code));
        are_accepted = are_accepted && code == SQLITE_OK;
    }
}

void client_rehearsal__try(KT_context *ctx, client_rehearsal &rehearsal,
                           const std::vector<client_migration_statement> &statements, const client_object &wanted,
                           bool &is_like_it)
{
    std::string found;
    bool is_accepted = false;
    KT_TRY(client_guarded__run(ctx, rehearsal.database, {"SAVEPOINT attempt"}));
    KT_TRY(my_are_accepted(ctx, rehearsal, statements, is_accepted));
    KT_TRY(client_read_statement(ctx, rehearsal.database, wanted.name, found));
    is_like_it = is_accepted && client_statement_meaning(found) == client_statement_meaning(wanted.sql);
    if (!is_like_it)
        KT_TRY(client_guarded__run(ctx, rehearsal.database, {"ROLLBACK TO attempt"}));
    KT_TRY(client_guarded__run(ctx, rehearsal.database, {"RELEASE attempt"}));
}
