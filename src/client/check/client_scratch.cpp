// Statements are compiled here, never run: the guard is asked while SQLite compiles, so that is all it takes to know
// what an expression would do. Double-quoted words are names here and never texts, whatever SQLite's default.
#include "check/client_scratch.hpp"

#include <sqlite3.h>

#define KT_HERE "src/client/check/client_scratch"

void client_scratch__open(KT_context *ctx, client_scratch &scratch) noexcept
{
    KT_TRY(KT_vhash__alloc(ctx, scratch.accepted_defaults.out()));
    const KT_sqlite_functions *functions = scratch.functions;
    int code = functions->open_plain(":memory:", scratch.connection.out(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    for (int setting : {SQLITE_DBCONFIG_DQS_DDL, SQLITE_DBCONFIG_DQS_DML}) {
        if (code == SQLITE_OK)
            code = functions->configure(scratch.connection, setting, 0);
    }
    if (code == SQLITE_OK)
        code = client_guard__watch(functions, scratch.connection, &scratch.guard);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "scratch database: %s", functions->errstr(code));
}

// A text that SQLite takes for more than one statement, or for none.
static constexpr int not_one_statement = -1;

// Whether a code is about the text that was compiled; any other failure says that SQLite could not work.
static bool my_is_refusal(int code) noexcept
{
    return code == SQLITE_ERROR || code == SQLITE_AUTH || code == SQLITE_TOOBIG || code == not_one_statement;
}

static void my_raise(KT_context *ctx, const client_scratch &scratch, const client_place &place, int code) noexcept
{
    if (code == not_one_statement)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "more than one expression");
    if (my_is_refusal(code))
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", scratch.functions->message(scratch.connection));
    CLIENT_FAIL(KT_ERR_SQLITE(code), place, "%s", scratch.functions->errstr(code));
}

// Compiles a statement under the guard's duty, and runs it unless compiling it was the purpose.
static int my_compile(client_scratch &scratch, const client_guard &guard, const char *sql, bool run) noexcept
{
    const KT_sqlite_functions *functions = scratch.functions;
    const client_on_duty duty(scratch.guard, guard);
    kt_owned_statement statement{functions};
    const char *rest = "";
    int code = functions->prepare_next(scratch.connection, sql, statement.out(), &rest);
    if (code == SQLITE_OK && (!statement || *rest))
        code = not_one_statement;
    if (code == SQLITE_OK && run)
        code = functions->step(statement);
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

// Creates a table and compiles what a program does with its rows: only then does SQLite look closely at expressions.
// The table is gone after my_forget_tbl().
static int my_try_tbl(client_scratch &scratch, const char *tbl_name, const char *create, const char *insert,
                      const char *update) noexcept
{
    const client_guard as_tbl{client_duty::tbl, tbl_name};
    const client_guard as_rows{client_duty::rows, tbl_name};
    int code = my_compile(scratch, {client_duty::own_statement}, "BEGIN", true);
    if (code == SQLITE_OK)
        code = my_compile(scratch, as_tbl, create, true);
    if (code == SQLITE_OK)
        code = my_compile(scratch, as_rows, insert, false);
    if (code == SQLITE_OK)
        code = my_compile(scratch, as_rows, update, false);
    return code;
}

static void my_forget_tbl(KT_context *ctx, client_scratch &scratch, const client_place &place) noexcept
{
    const int code = my_compile(scratch, {client_duty::own_statement}, "ROLLBACK", true);
    if (code != SQLITE_OK)
        KT_TRY(my_raise(ctx, scratch, place, code));
}

static void my_write(KT_context *ctx, KT_string **sql, const char *format, ...) noexcept KT_PRINTF(3, 4);
static void my_write(KT_context *ctx, KT_string **sql, const char *format, ...) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    va_list args;
    va_start(args, format);
    KT_string__vsprintf(ctx, text, format, args);
    va_end(args);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    text.move_to(sql);
}

// SQLite looks up the functions of a default only when it is used, and does not ask the guard about them then: so the
// expression is compiled by itself too.
static void my_try_default(KT_context *ctx, client_scratch &scratch, const char *expression, int *code) noexcept
{
    kt_owned_string select{ctx};
    kt_owned_string create{ctx};
    kt_owned_string update{ctx};
    KT_TRY(my_write(ctx, select.out(), "SELECT (%s\n)", expression));
    KT_TRY(my_write(ctx, create.out(), "CREATE TABLE scratch(c DEFAULT %s\n)", expression));
    KT_TRY(my_write(ctx, update.out(), "UPDATE scratch SET c = %s", expression));
    *code = my_compile(scratch, {client_duty::expression}, KT_string__sz(select), false);
    if (*code == SQLITE_OK)
        *code = my_try_tbl(scratch, "scratch", KT_string__sz(create), "INSERT INTO scratch DEFAULT VALUES",
                           KT_string__sz(update));
}

void client_scratch__check_default(KT_context *ctx, client_scratch &scratch, const client_place &place,
                                   const char *expression) noexcept
{
    KT_bool accepted = 0;
    KT_TRY(KT_vhash__has(ctx, scratch.accepted_defaults, expression, &accepted));
    if (accepted)
        return;
    int code = SQLITE_OK;
    KT_TRY(my_try_default(ctx, scratch, expression, &code));
    if (code != SQLITE_OK)
        KT_TRY(my_raise(ctx, scratch, place, code));
    KT_TRY(my_forget_tbl(ctx, scratch, place));
    KT_TRY(KT_vhash__add__null(ctx, scratch.accepted_defaults, expression));
}

static void my_try_checks(KT_context *ctx, client_scratch &scratch, const char *tbl_name, const char *columns,
                          std::span<const client_check> checks, int *code) noexcept
{
    kt_owned_string create{ctx};
    kt_owned_string insert{ctx};
    kt_owned_string update{ctx};
    KT_TRY(my_write(ctx, create.out(), "CREATE TABLE \"%s\"(%s", tbl_name, columns));
    for (const client_check &check : checks)
        KT_TRY(KT_string__append__format(ctx, create, ", CHECK (%s)", check.expression));
    KT_TRY(KT_string__append__sz(ctx, create, ")"));
    KT_TRY(my_write(ctx, insert.out(), "INSERT INTO \"%s\" DEFAULT VALUES", tbl_name));
    KT_TRY(my_write(ctx, update.out(), "UPDATE \"%s\" SET (%s) = (%s)", tbl_name, columns, columns));
    *code = my_try_tbl(scratch, tbl_name, KT_string__sz(create), KT_string__sz(insert), KT_string__sz(update));
}

// All checks together take as long as one of them, nearly: SQLite reads the columns once. It does not say which one it
// refuses, so refused ones are halved until one is left.
void client_scratch__check_checks(KT_context *ctx, client_scratch &scratch, const char *tbl_name, const char *columns,
                                  std::span<const client_check> checks) noexcept
{
    if (checks.empty())
        return;
    int code = SQLITE_OK;
    KT_TRY(my_try_checks(ctx, scratch, tbl_name, columns, checks, &code));
    const client_place place = checks.size() == 1 ? checks[0].place : client_place{tbl_name};
    const bool halve = my_is_refusal(code) && checks.size() > 1;
    if (code != SQLITE_OK && !halve)
        KT_TRY(my_raise(ctx, scratch, place, code));
    KT_TRY(my_forget_tbl(ctx, scratch, place));
    if (!halve)
        return;
    const size_t half = checks.size() / 2;
    KT_TRY(client_scratch__check_checks(ctx, scratch, tbl_name, columns, checks.first(half)));
    KT_TRY(client_scratch__check_checks(ctx, scratch, tbl_name, columns, checks.subspan(half)));
    CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "all checks together: %s", scratch.functions->errstr(code));
}
