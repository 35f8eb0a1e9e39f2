// The table over the SQLite library that this one is linked with.
#include "kt_sqlite_functions.h"
#include "sqlite/kt_sqlite_dates_private.hpp"

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
static_assert(position<offsetof(KT_sqlite_functions, release)> == 51);
static_assert(position<offsetof(KT_sqlite_functions, configure)> == 53);
static_assert(position<offsetof(KT_sqlite_functions, bind_blob_in_place)> == 55);

// SQLITE_TRANSIENT: SQLite takes a copy of what it is given.
static const sqlite3_destructor_type take_copy = reinterpret_cast<sqlite3_destructor_type>(-1);

static int my_bind_blob(sqlite3_stmt *statement, int index, const void *bytes, int size)
{
    return sqlite3_bind_blob(statement, index, bytes, size, take_copy);
}

static int my_bind_int64(sqlite3_stmt *statement, int index, int64_t value)
{
    return sqlite3_bind_int64(statement, index, value);
}

static int my_bind_text(sqlite3_stmt *statement, int index, const char *text, int size)
{
    return sqlite3_bind_text(statement, index, text, size, take_copy);
}

static int my_bind_text_in_place(sqlite3_stmt *statement, int index, const char *text, int size)
{
    return sqlite3_bind_text(statement, index, text, size, SQLITE_STATIC);
}

static int my_bind_blob_in_place(sqlite3_stmt *statement, int index, const void *bytes, int size)
{
    return sqlite3_bind_blob(statement, index, bytes, size, SQLITE_STATIC);
}

static int64_t my_column_int64(sqlite3_stmt *statement, int column)
{
    return sqlite3_column_int64(statement, column);
}

static const char *my_column_text(sqlite3_stmt *statement, int column)
{
    return reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
}

static int64_t my_last_insert_rowid(sqlite3 *connection)
{
    return sqlite3_last_insert_rowid(connection);
}

static int my_open_plain(const char *file_name, sqlite3 **connection, int flags)
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

static int my_open_with_dates(const char *file_name, sqlite3 **connection, int flags);

static int my_prepare(sqlite3 *connection, const char *sql, sqlite3_stmt **statement)
{
    return sqlite3_prepare_v2(connection, sql, -1, statement, nullptr);
}

static int my_prepare_next(sqlite3 *connection, const char *sql, sqlite3_stmt **statement, const char **rest)
{
    return sqlite3_prepare_v2(connection, sql, -1, statement, rest);
}

static int my_exec(sqlite3 *connection, const char *sql)
{
    return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr);
}

static int my_create_function(sqlite3 *connection, const char *name, int argument_count, int flags, void *data,
                              void (*function)(sqlite3_context *, int, sqlite3_value **), void (*release)(void *))
{
    return sqlite3_create_function_v2(connection, name, argument_count, flags, data, function, nullptr, nullptr,
                                      release);
}

static const char *my_value_text(sqlite3_value *value)
{
    return reinterpret_cast<const char *>(sqlite3_value_text(value));
}

static int64_t my_value_int64(sqlite3_value *value)
{
    return sqlite3_value_int64(value);
}

static void my_result_int64(sqlite3_context *call, int64_t value)
{
    sqlite3_result_int64(call, value);
}

static void my_result_text(sqlite3_context *call, const char *text, int size)
{
    sqlite3_result_text(call, text, size, take_copy);
}

static void my_result_error(sqlite3_context *call, const char *message)
{
    sqlite3_result_error(call, message, -1);
}

static void *my_allocate(uint64_t size)
{
    return sqlite3_malloc64(size);
}

static int my_configure(sqlite3 *connection, int setting, int on)
{
    return sqlite3_db_config(connection, setting, on, nullptr);
}

static constexpr KT_sqlite_functions linked_functions = {
    .bind_blob = my_bind_blob,
    .bind_double = sqlite3_bind_double,
    .bind_int64 = my_bind_int64,
    .bind_null = sqlite3_bind_null,
    .bind_parameter_count = sqlite3_bind_parameter_count,
    .bind_text = my_bind_text,
    .changes = sqlite3_changes,
    .clear_bindings = sqlite3_clear_bindings,
    .close = sqlite3_close,
    .column_blob = sqlite3_column_blob,
    .column_bytes = sqlite3_column_bytes,
    .column_count = sqlite3_column_count,
    .column_double = sqlite3_column_double,
    .column_int64 = my_column_int64,
    .column_name = sqlite3_column_name,
    .column_text = my_column_text,
    .column_type = sqlite3_column_type,
    .message = sqlite3_errmsg,
    .errstr = sqlite3_errstr,
    .finalize = sqlite3_finalize,
    .last_insert_rowid = my_last_insert_rowid,
    .open = my_open_with_dates,
    .prepare = my_prepare,
    .reset = sqlite3_reset,
    .step = sqlite3_step,
    .open_plain = my_open_plain,
    .prepare_next = my_prepare_next,
    .exec = my_exec,
    .bind_value = sqlite3_bind_value,
    .column_value = sqlite3_column_value,
    .extended_errcode = sqlite3_extended_errcode,
    .get_autocommit = sqlite3_get_autocommit,
    .busy_timeout = sqlite3_busy_timeout,
    .libversion = sqlite3_libversion,
    .libversion_number = sqlite3_libversion_number,
    .create_function = my_create_function,
    .user_data = sqlite3_user_data,
    .value_type = sqlite3_value_type,
    .value_bytes = sqlite3_value_bytes,
    .value_blob = sqlite3_value_blob,
    .value_text = my_value_text,
    .value_int64 = my_value_int64,
    .value_double = sqlite3_value_double,
    .result_null = sqlite3_result_null,
    .result_int64 = my_result_int64,
    .result_double = sqlite3_result_double,
    .result_text = my_result_text,
    .result_value = sqlite3_result_value,
    .result_error = my_result_error,
    .result_error_code = sqlite3_result_error_code,
    .allocate = my_allocate,
    .release = sqlite3_free,
    .set_authorizer = sqlite3_set_authorizer,
    .configure = my_configure,
    .bind_text_in_place = my_bind_text_in_place,
    .bind_blob_in_place = my_bind_blob_in_place,
};

static int my_open_with_dates(const char *file_name, sqlite3 **connection, int flags)
{
    sqlite3 *opened = nullptr;
    int code = my_open_plain(file_name, &opened, flags);
    if (code == SQLITE_OK)
        code = kt_sqlite_normalise_dates(&linked_functions, opened);
    if (code != SQLITE_OK) {
        sqlite3_close(opened);
        opened = nullptr;
    }
    *connection = opened;
    return code;
}

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): one SQLite library for a process.
static constinit std::atomic<const KT_sqlite_functions *> functions_in_force{&linked_functions};

const KT_sqlite_functions *tov__get_sqlite_functions(void) noexcept
{
    return functions_in_force.load(std::memory_order_acquire);
}

void tov__set_sqlite_functions(const KT_sqlite_functions *functions) noexcept
{
    functions_in_force.store(functions ? functions : &linked_functions, std::memory_order_release);
}
