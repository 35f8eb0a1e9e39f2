#include "migrate/client_guarded.hpp"

#define KT_HERE "src/client/migrate/client_guarded"

void client_guarded__watch(KT_context *ctx, client_guarded &database)
{
    const int code = client_guard__watch(database.functions, database.connection, &database.guard);
    KT_TRY(client_connection__check(ctx, database, code));
}

static client_guard my_guard(const client_migration_statement &statement)
{
    return {statement.duty, statement.tbl.c_str(), statement.name.c_str()};
}

int client_guarded__attempt(client_guarded &database, const client_migration_statement &statement)
{
    const client_on_duty duty(database.guard, my_guard(statement));
    kt_owned_statement handle{database.functions};
    const char *rest = "";
    int code = database.functions->prepare_next(database.connection, statement.sql.c_str(), handle.out(), &rest);
    if (code == SQLITE_OK && (!handle || *rest)) // a text of the schema has ended the statement
        return SQLITE_ERROR;
    if (code == SQLITE_OK)
        code = database.functions->step(handle);
    return code == SQLITE_DONE || code == SQLITE_ROW ? SQLITE_OK : code;
}

void client_guarded__run(KT_context *ctx, client_guarded &database, const client_migration_statement &statement)
{
    if (!statement.copy)
        return client_connection__check(ctx, database, client_guarded__attempt(database, statement));
    const client_on_duty duty(database.guard, my_guard(statement));
    KT_TRY(client_copy_rows(ctx, database, *statement.copy));
}

void client_read_statement(KT_context *ctx, client_guarded &database, const std::string &tbl, std::string &sql)
{
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    kt_owned_statement statement{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(
        ctx, database, "SELECT sql FROM sqlite_master WHERE type = 'table' AND lower(name) = lower(?1)", statement));
    KT_TRY(client_connection__bind_text(ctx, database, statement, 1, tbl));
    KT_TRY(client_connection__step(ctx, database, statement, has));
    const char *text = has ? database.functions->column_text(statement, 0) : "";
    if (!text)
        KT_FAIL(KT_ERR_SQLITE(SQLITE_NOMEM), "out of memory");
    sql = text;
}
