// Statements in a throw-away SQLite database.
//
// The connection's message is read into the error before anything else is asked of the connection, since every call
// may replace it. No statement stays open, whatever fails.

#include "defval/defval_sqlite.hpp"
#include "document/tov_parse_defin_private.hpp"

void _tov_scratch__open(KT_context *ctx, tov_scratch *scratch) noexcept
{
    constexpr int read_write_create = 6;
    const int rc = scratch->fns->open(":memory:", scratch->connection.out(), read_write_create);
    if (rc != TOV_SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(rc), "%s", scratch->fns->errstr(rc));
}

void _tov_sqlite__exec(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *sql) noexcept
{
    kt_owned_statement run{fns};
    int rc = fns->prepare(connection, sql, run.out());
    if (rc == TOV_SQLITE_OK) {
        do {
            rc = fns->step(run);
        } while (rc == TOV_SQLITE_ROW);
        if (rc == TOV_SQLITE_DONE)
            rc = run.close();
    }
    if (rc != TOV_SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(rc), "%s: %s", fns->errstr(rc), fns->message(connection));
}

void _tov_sqlite__execv(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *format,
                        va_list args) noexcept
{
    kt_owned_string sql{ctx};
    KT_TRY(KT_string__alloc(ctx, sql.out()));
    KT_TRY(KT_string__vsprintf(ctx, sql, format, args));
    KT_TRY(_tov_sqlite__exec(ctx, fns, connection, KT_string__sz(sql)));
}

void _tov_sqlite__execf(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *format,
                        ...) noexcept
{
    va_list args;
    va_start(args, format);
    _tov_sqlite__execv(ctx, fns, connection, format, args);
    va_end(args);
}
