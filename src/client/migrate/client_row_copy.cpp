// A value is shown as unloading shows it and read as loading reads it, so both ways lead to the same row. What loading
// would cut, and report, is refused here: nobody would read a report.
#include "migrate/client_row_copy.hpp"

#include "kt_chars.h"
#include "rows/convert/client_convert.hpp"
#include "rows/write/client_forms.hpp"

#define KT_HERE "src/client/migrate/client_row_copy"

namespace {

// A copy while it is made.
struct copying {
    copying(client_connection &connection, const client_row_copy &rows) : database(connection), copy(rows)
    {
        converter.exact = true;
        converter.with_rules = copy.with_rules;
        rooms.resize(copy.cols.size());
        shown.resize(copy.cols.size());
    }
    client_connection &database;
    const client_row_copy &copy;
    kt_owned_statement query{tov__get_sqlite_functions()};
    kt_owned_statement insert{tov__get_sqlite_functions()};
    client_converter converter;
    std::vector<client_room> rooms; // by column: holds a value until the row is inserted
    std::vector<std::string> shown; // by column: the old value
};

} // namespace

// SQLite has no room for a value where it says that there are bytes, and gives none.
static void my_take_bytes(KT_context *ctx, const void *bytes, int size, client_value &value)
{
    if (!bytes && size > 0)
        KT_FAIL(KT_ERR_SQLITE(SQLITE_NOMEM), "out of memory");
    value.bytes = {bytes ? static_cast<const char *>(bytes) : "", static_cast<size_t>(size)};
}

static void my_read_value(KT_context *ctx, const client_connection &database, sqlite3_stmt *row, int column,
                          client_value &value)
{
    const KT_sqlite_functions *functions = database.functions;
    const int type = functions->column_type(row, column);
    if (type == SQLITE_INTEGER) {
        value.storage = client_storage::integer;
        value.integer = functions->column_int64(row, column);
    } else if (type == SQLITE_FLOAT) {
        value.storage = client_storage::real;
        value.real = functions->column_double(row, column);
    } else {
        const void *bytes = type == SQLITE_TEXT ? static_cast<const void *>(functions->column_text(row, column))
                                                : functions->column_blob(row, column);
        value.storage = type == SQLITE_TEXT ? client_storage::text : client_storage::blob;
        KT_TRY(my_take_bytes(ctx, bytes, functions->column_bytes(row, column), value));
    }
}

// The bytes stay where they are until the row is inserted.
static int my_bind(const client_connection &database, sqlite3_stmt *insert, int index, const client_value &value)
{
    const KT_sqlite_functions *functions = database.functions;
    const auto size = static_cast<int>(value.bytes.size());
    const char *bytes = value.bytes.data() ? value.bytes.data() : "";
    switch (value.storage) {
    case client_storage::integer:
        return functions->bind_int64(insert, index, value.integer);
    case client_storage::real:
        return functions->bind_double(insert, index, value.real);
    case client_storage::text:
        return functions->bind_text_in_place(insert, index, bytes, size);
    case client_storage::blob:
        return functions->bind_blob_in_place(insert, index, bytes, size);
    case client_storage::null:
        break;
    }
    return functions->bind_null(insert, index);
}

static void my_fail(KT_context *ctx, const client_copied_col &col, const std::string &value, client_reject reject)
{
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, value.c_str()));
    KT_FAIL(KT_ERR_SQLITE(SQLITE_CONSTRAINT), "%s: %s: %s", col.name.c_str(), client_reject_meaning(reject),
            KT_string__sz(shown));
}

// A value of the old column as a field of a file.
static client_field my_field(const client_copied_col &col, const client_value &value, std::string &shown)
{
    shown.clear();
    client_append_form(shown, col.old_type, value, client_text_form::plain);
    return {client_form::text, shown};
}

static void my_bind_converted(KT_context *ctx, copying &work, size_t at)
{
    const client_copied_col &col = work.copy.cols[at];
    const auto column = static_cast<int>(at);
    client_value value;
    KT_TRY(my_read_value(ctx, work.database, work.query, column, value));
    const client_field field = my_field(col, value, work.shown[at]);
    client_value made;
    work.converter.room = &work.rooms[at];
    const client_reject reject = client_convert(work.converter, col.new_type, field, made);
    if (reject != client_reject::none)
        return my_fail(ctx, col, work.shown[at], reject);
    KT_TRY(client_connection__check(ctx, work.database, my_bind(work.database, work.insert, column + 1, made)));
}

static void my_bind_kept(KT_context *ctx, copying &work, int column)
{
    const KT_sqlite_functions *functions = work.database.functions;
    KT_TRY(client_connection__check(
        ctx, work.database,
        functions->bind_value(work.insert, column + 1, functions->column_value(work.query, column))));
}

static void my_copy_row(KT_context *ctx, copying &work)
{
    const KT_sqlite_functions *functions = work.database.functions;
    bool has = false;
    for (size_t n = 0; n < work.copy.cols.size(); n++) {
        const auto column = static_cast<int>(n);
        const bool is_null = functions->column_type(work.query, column) == SQLITE_NULL;
        if (work.copy.cols[n].is_converted && !is_null)
            KT_TRY(my_bind_converted(ctx, work, n));
        else
            KT_TRY(my_bind_kept(ctx, work, column));
    }
    KT_TRY(client_connection__step(ctx, work.database, work.insert, has));
    KT_TRY(client_connection__check(ctx, work.database, functions->reset(work.insert)));
}

void client_copy_rows(KT_context *ctx, client_connection &database, const client_row_copy &copy)
{
    copying work(database, copy);
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database, copy.query, work.query));
    KT_TRY(client_connection__prepare(ctx, database, copy.insert, work.insert));
    KT_TRY(client_connection__step(ctx, database, work.query, has));
    while (has) {
        KT_TRY(my_copy_row(ctx, work));
        KT_TRY(client_connection__step(ctx, database, work.query, has));
    }
}
