// The table over the SQLite library that this one is linked with.
#include "kt_sqlite_functions.h"

#include <atomic>
#include <cstddef>
#include <sqlite3.h>

// The positions that programs rely on; the entries between them are where their comments say.
template <size_t Offset> constexpr size_t position = Offset / sizeof(void (*)());
static_assert(position<offsetof(KT_sqlite_functions, bind_blob)> == 0);
static_assert(position<offsetof(KT_sqlite_functions, changes)> == 6);
static_assert(position<offsetof(KT_sqlite_functions, close)> == 8);
static_assert(position<offsetof(KT_sqlite_functions, column_text)> == 15);
static_assert(position<offsetof(KT_sqlite_functions, column_type)> == 16);
static_assert(position<offsetof(KT_sqlite_functions, message)> == 17);
static_assert(position<offsetof(KT_sqlite_functions, errstr)> == 18);
static_assert(position<offsetof(KT_sqlite_functions, finalize)> == 19);
static_assert(position<offsetof(KT_sqlite_functions, open)> == 21);
static_assert(position<offsetof(KT_sqlite_functions, prepare)> == 22);
static_assert(position<offsetof(KT_sqlite_functions, step)> == 24);

// SQLITE_TRANSIENT: SQLite takes a copy of what it is given.
static const sqlite3_destructor_type take_copy = reinterpret_cast<sqlite3_destructor_type>(-1);

static int bind_blob(sqlite3_stmt *statement, int index, const void *bytes, int size)
{
    return sqlite3_bind_blob(statement, index, bytes, size, take_copy);
}

static int bind_int64(sqlite3_stmt *statement, int index, int64_t value)
{
    return sqlite3_bind_int64(statement, index, value);
}

static int bind_text(sqlite3_stmt *statement, int index, const char *text, int size)
{
    return sqlite3_bind_text(statement, index, text, size, take_copy);
}

static int64_t column_int64(sqlite3_stmt *statement, int column)
{
    return sqlite3_column_int64(statement, column);
}

static const char *column_text(sqlite3_stmt *statement, int column)
{
    return reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
}

static int64_t last_insert_rowid(sqlite3 *connection)
{
    return sqlite3_last_insert_rowid(connection);
}

static int open_database(const char *file_name, sqlite3 **connection, int flags)
{
    sqlite3 *opened = nullptr;
    const int code = sqlite3_open_v2(file_name, &opened, flags, nullptr);
    if (code != SQLITE_OK) {
        sqlite3_close(opened);
        opened = nullptr;
    }
    *connection = opened;
    return code;
}

static int prepare(sqlite3 *connection, const char *sql, sqlite3_stmt **statement)
{
    return sqlite3_prepare_v2(connection, sql, -1, statement, nullptr);
}

static constexpr KT_sqlite_functions linked_functions = {
    .bind_blob = bind_blob,
    .bind_double = sqlite3_bind_double,
    .bind_int64 = bind_int64,
    .bind_null = sqlite3_bind_null,
    .bind_parameter_count = sqlite3_bind_parameter_count,
    .bind_text = bind_text,
    .changes = sqlite3_changes,
    .clear_bindings = sqlite3_clear_bindings,
    .close = sqlite3_close,
    .column_blob = sqlite3_column_blob,
    .column_bytes = sqlite3_column_bytes,
    .column_count = sqlite3_column_count,
    .column_double = sqlite3_column_double,
    .column_int64 = column_int64,
    .column_name = sqlite3_column_name,
    .column_text = column_text,
    .column_type = sqlite3_column_type,
    .message = sqlite3_errmsg,
    .errstr = sqlite3_errstr,
    .finalize = sqlite3_finalize,
    .last_insert_rowid = last_insert_rowid,
    .open = open_database,
    .prepare = prepare,
    .reset = sqlite3_reset,
    .step = sqlite3_step,
};

static constinit std::atomic<const KT_sqlite_functions *> functions_in_force{&linked_functions};

const KT_sqlite_functions *tov__get_sqlite_functions(void) noexcept
{
    return functions_in_force.load(std::memory_order_acquire);
}

void tov__set_sqlite_functions(const KT_sqlite_functions *functions) noexcept
{
    functions_in_force.store(functions ? functions : &linked_functions, std::memory_order_release);
}
