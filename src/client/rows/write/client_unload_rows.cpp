// Rows of a statement on their way to a file.
#include "rows/write/client_unload.hpp"

#define KT_HERE "src/client/rows/write/client_unload_rows"

static constexpr size_t piece_size = size_t{256} * 1024;

const char *client_unload_ending(client_format format) noexcept
{
    switch (format) {
    case client_format::csv:
        return ".csv";
    case client_format::json:
        return ".jsonl";
    case client_format::insert:
        return ".sql";
    default:
        return ".dat";
    }
}

std::unique_ptr<client_row_writer> client_make_row_writer(const client_unload_form &form, client_out_rows rows)
{
    switch (form.format) {
    case client_format::csv:
        return client_make_csv_writer(std::move(rows), form.ends);
    case client_format::json:
        return client_make_json_writer(std::move(rows));
    case client_format::insert:
        return client_make_insert_writer(std::move(rows));
    default:
        return client_make_bcp_writer(std::move(rows), form.ends, form.is_short);
    }
}

static client_value my_read_value(const client_connection &database, sqlite3_stmt *statement, int column) noexcept
{
    const KT_sqlite_functions *functions = database.functions;
    client_value value;
    switch (functions->column_type(statement, column)) {
    case SQLITE_INTEGER:
        value.storage = client_storage::integer;
        value.integer = functions->column_int64(statement, column);
        break;
    case SQLITE_FLOAT:
        value.storage = client_storage::real;
        value.real = functions->column_double(statement, column);
        break;
    case SQLITE_TEXT:
        value.storage = client_storage::text;
        value.bytes = client_column_text(database, statement, column);
        break;
    case SQLITE_BLOB: {
        const void *bytes = functions->column_blob(statement, column);
        value.storage = client_storage::blob;
        if (bytes)
            value.bytes = {static_cast<const char *>(bytes),
                           static_cast<size_t>(functions->column_bytes(statement, column))};
        break;
    }
    default:
        break;
    }
    return value;
}

void client_write_rows(KT_context *ctx, client_connection &database, sqlite3_stmt *statement, client_row_writer &writer,
                       client_unload_file &file, client_unload_counts &counts)
{
    std::vector<client_value> values(static_cast<size_t>(database.functions->column_count(statement)));
    std::string text;
    bool has = false;
    writer.append_head(text);
    KT_TRY(client_connection__step(ctx, database, statement, has));
    for (; has; counts.rows++) {
        for (size_t n = 0; n < values.size(); n++)
            values[n] = my_read_value(database, statement, static_cast<int>(n));
        writer.append_row(text, values);
        if (text.size() >= piece_size) {
            KT_TRY(file.write(ctx, text));
            text.clear();
        }
        KT_TRY(client_connection__step(ctx, database, statement, has));
    }
    writer.append_tail(text);
    counts.unreadable = writer.unreadable();
    KT_TRY(file.write(ctx, text));
}

void client_unload__report(KT_context *ctx, const client_unload_run &run, const client_unload_form &form,
                           const std::string &tbl, const std::string &file, const client_unload_counts &counts)
{
    client_dialect dialect;
    dialect.format = form.format;
    dialect.field_end = form.ends.field_end;
    dialect.row_end = form.ends.row_end;
    const std::string shown = client_show_dialect(dialect);
    KT_vhash *record = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, run.report, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "table", tbl.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "file", file.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "dialect", shown.c_str()));
    KT_TRY(KT_vhash__add__int64(ctx, record, "rows", counts.rows));
    KT_TRY(KT_vhash__add__int64(ctx, record, "unreadable", counts.unreadable));
}
