// Statements are compiled here, never run: the guard is asked while SQLite compiles, so that is all it takes to know
// what an expression would do. Double-quoted words are names here and never texts, whatever SQLite's default.
#include "check/client_scratch.hpp"

#include <sqlite3.h>

#define KT_HERE "src/client/check/client_scratch"

client_scratch::~client_scratch()
{
    if (connection)
        functions->close(connection);
}

void client_scratch__open(KT_context *ctx, client_scratch &scratch) noexcept
{
    KT_TRY(KT_vhash__alloc(ctx, scratch.accepted_defaults.out()));
    scratch.functions = tov__get_sqlite_functions();
    const KT_sqlite_functions *functions = scratch.functions;
    int code = functions->open_plain(":memory:", &scratch.connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    for (int setting : {SQLITE_DBCONFIG_DQS_DDL, SQLITE_DBCONFIG_DQS_DML}) {
        if (code == SQLITE_OK)
            code = functions->configure(scratch.connection, setting, 0);
    }
    if (code == SQLITE_OK)
        code = client_guard__watch(functions, scratch.connection, &scratch.guard);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "scratch database: %s", functions->errstr(code));
}

// Compiles a text that must be exactly one statement, under the guard's duty. A few codes are about the text; any other
// says that SQLite could not work.
static void my_compile(KT_context *ctx, client_scratch &scratch, const client_guard &guard, const client_place &place,
                       const char *sql) noexcept
{
    scratch.guard = guard;
    const KT_sqlite_functions *functions = scratch.functions;
    sqlite3_stmt *statement = nullptr;
    const char *rest = "";
    const int code = functions->prepare_next(scratch.connection, sql, &statement, &rest);
    scratch.guard = {};
    functions->finalize(statement);
    if (code == SQLITE_ERROR || code == SQLITE_AUTH || code == SQLITE_TOOBIG)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", functions->message(scratch.connection));
    if (code != SQLITE_OK)
        CLIENT_FAIL(KT_ERR_SQLITE(code), place, "%s", functions->errstr(code));
    if (!statement || *rest)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "more than one expression");
}

static void my_compile_format(KT_context *ctx, client_scratch &scratch, const client_guard &guard,
                              const client_place &place, const char *format, ...) noexcept KT_PRINTF(5, 6);
static void my_compile_format(KT_context *ctx, client_scratch &scratch, const client_guard &guard,
                              const client_place &place, const char *format, ...) noexcept
{
    kt_owned_string sql{ctx};
    KT_TRY(KT_string__alloc(ctx, sql.out()));
    va_list args;
    va_start(args, format);
    KT_string__vsprintf(ctx, sql, format, args);
    va_end(args);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    KT_TRY(my_compile(ctx, scratch, guard, place, KT_string__sz(sql)));
}

// Two compilations: SQLite looks up the functions of a default only when it is used, so the first one asks the guard;
// the second one shows that the expression is constant and fits the grammar of its place.
void client_scratch__check_default(KT_context *ctx, client_scratch &scratch, const client_place &place,
                                   const char *expression) noexcept
{
    KT_bool accepted = 0;
    KT_TRY(KT_vhash__has(ctx, scratch.accepted_defaults, expression, &accepted));
    if (accepted)
        return;
    const client_guard as_value{client_duty::expression};
    KT_TRY(my_compile_format(ctx, scratch, as_value, place, "SELECT (%s\n)", expression));
    const client_guard in_place{client_duty::tbl, "scratch"};
    KT_TRY(my_compile_format(ctx, scratch, in_place, place, "CREATE TABLE scratch(c DEFAULT %s\n)", expression));
    KT_TRY(KT_vhash__add__null(ctx, scratch.accepted_defaults, expression));
}

void client_scratch__check_check(KT_context *ctx, client_scratch &scratch, const client_place &place,
                                 const char *tbl_name, const char *columns, const char *clause) noexcept
{
    const client_guard guard{client_duty::tbl, tbl_name};
    KT_TRY(
        my_compile_format(ctx, scratch, guard, place, "CREATE TABLE \"%s\"(%s, CHECK %s)", tbl_name, columns, clause));
}
