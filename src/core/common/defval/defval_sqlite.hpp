// A throw-away in-memory SQLite database and statements in it, reached through the function table only.
#pragma once

#include "kt_owned.hpp"
#include "kt_sqlite_owned.hpp"

// SQLite's result codes and storage classes as far as they matter here.
inline constexpr int TOV_SQLITE_OK = 0;
inline constexpr int TOV_SQLITE_ROW = 100;
inline constexpr int TOV_SQLITE_DONE = 101;
inline constexpr int TOV_SQLITE_TEXT = 3;

struct tov_scratch {
    const KT_sqlite_functions *fns = tov__get_sqlite_functions();
    kt_owned_connection connection{fns};
};

// Opens an empty in-memory database. Fails with KT_ERR_SQLITE(rc).
void _tov_scratch__open(KT_context *ctx, tov_scratch *scratch) noexcept;

extern "C" {

// Runs one statement to its end and drops the rows it gives. Fails with KT_ERR_SQLITE(rc), described by SQLite's text
// for the code and the connection's message.
void _tov_sqlite__exec(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *sql) noexcept;

// The same for a printf-style text.
void _tov_sqlite__execf(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *format,
                        ...) noexcept KT_PRINTF(4, 5);
void _tov_sqlite__execv(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *format,
                        va_list args) noexcept KT_PRINTF(4, 0);

} // extern "C"
