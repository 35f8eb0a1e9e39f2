// Tables go out one after the other, those that are referred to before those that refer to them, each into a file.
#include "rows/convert/client_utf8.hpp"
#include "rows/load/client_connection.hpp"
#include "rows/load/client_dialect.hpp"
#include "rows/table/client_row_tbl.hpp"
#include "rows/write/client_forms.hpp"

#include "create/client_plan.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

#define KT_HERE "src/client/rows/write/client_unload"

namespace {

// How the rows of a table are written.
struct unload_form {
    client_format format = client_format::bcp;
    std::string field_end;
    std::string row_end;
    bool utf_16 = false;
};

// A file that is written in pieces.
class unload_file {
  public:
    ~unload_file()
    {
        if (file_)
            std::fclose(file_);
    }
    void open(KT_context *ctx, const std::string &name, bool utf_16)
    {
        name_ = name;
        utf_16_ = utf_16;
        file_ = std::fopen(name.c_str(), "wbe");
        if (!file_)
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name.c_str(), std::strerror(errno));
        if (utf_16)
            std::fwrite("\xFF\xFE", 1, 2, file_);
    }
    void write(KT_context *ctx, const std::string &text)
    {
        std::string units;
        if (utf_16_)
            client_append_as_utf16(units, text);
        const std::string &bytes = utf_16_ ? units : text;
        if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size())
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name_.c_str(), std::strerror(errno));
    }
    void close(KT_context *ctx)
    {
        const bool closed = std::fclose(file_) == 0;
        file_ = nullptr;
        if (!closed)
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", name_.c_str(), std::strerror(errno));
    }

  private:
    std::FILE *file_ = nullptr;
    std::string name_;
    bool utf_16_ = false;
};

constexpr size_t piece_size = size_t{256} * 1024;

} // namespace

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

static void my_append_csv(std::string &text, const unload_form &form, std::string_view field, bool is_text)
{
    const bool quoted = (is_text && field.empty()) || field.find_first_of("\"\r\n") != field.npos ||
                        field.find(form.field_end) != field.npos;
    if (!quoted) {
        text += field;
        return;
    }
    text.push_back('"');
    for (const char byte : field) {
        text.push_back(byte);
        if (byte == '"')
            text.push_back(byte);
    }
    text.push_back('"');
}

static void my_append_field(std::string &text, const unload_form &form, const client_server_type &type,
                            const client_value &value)
{
    if (value.storage == client_storage::null)
        return;
    if (form.format == client_format::csv) {
        std::string field;
        client_append_form(field, type, value, client_text_form::csv);
        my_append_csv(text, form, field, value.storage == client_storage::text);
        return;
    }
    const size_t before = text.size();
    client_append_form(text, type, value, client_text_form::bcp);
    if (text.size() == before)
        text.push_back('\0');
}

static std::string my_select(const client_row_tbl &tbl, const std::vector<size_t> &cols)
{
    std::string names;
    for (const size_t col : cols)
        names += (names.empty() ? "" : ",") + client_quoted(tbl.cols[col].name);
    return "SELECT " + names + " FROM " + client_quoted(tbl.name);
}

static std::string my_header(const client_row_tbl &tbl, const unload_form &form, const std::vector<size_t> &cols)
{
    std::string text;
    for (const size_t col : cols) {
        text += text.empty() ? "" : form.field_end;
        my_append_csv(text, form, tbl.cols[col].name, true);
    }
    return text + form.row_end;
}

static void my_write_rows(KT_context *ctx, client_connection &database, const client_row_tbl &tbl,
                          const unload_form &form, unload_file &file, int64_t &count)
{
    std::vector<size_t> cols;
    client_statement_handle handle;
    bool has = false;
    for (size_t n = 0; n < tbl.cols.size(); n++) {
        if (tbl.cols[n].stored)
            cols.push_back(n);
    }
    std::string text = form.format == client_format::csv ? my_header(tbl, form, cols) : "";
    KT_TRY(client_connection__prepare(ctx, database, my_select(tbl, cols), handle));
    KT_TRY(client_connection__step(ctx, database, handle.statement, has));
    for (count = 0; has; count++) {
        for (size_t n = 0; n < cols.size(); n++) {
            const client_value value = my_read_value(database, handle.statement, static_cast<int>(n));
            my_append_field(text, form, tbl.cols[cols[n]].type, value);
            text += n + 1 < cols.size() ? form.field_end : form.row_end;
        }
        if (text.size() >= piece_size) {
            KT_TRY(file.write(ctx, text));
            text.clear();
        }
        KT_TRY(client_connection__step(ctx, database, handle.statement, has));
    }
    KT_TRY(file.write(ctx, text));
}

static void my_read_form(KT_context *ctx, const tov_client_unload_options &options, unload_form &form)
{
    const std::string format = options.format ? options.format : "bcp";
    const std::string encoding = options.encoding ? options.encoding : "";
    if (!client_find_format(format, form.format) ||
        (form.format != client_format::bcp && form.format != client_format::csv))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "rows cannot be written as \"%s\"", format.c_str());
    if (!encoding.empty() && encoding != "utf-8" && encoding != "utf-16le")
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "rows are written as utf-8 or utf-16le, not as \"%s\"", encoding.c_str());
    const bool is_csv = form.format == client_format::csv;
    form.utf_16 = encoding == "utf-16le";
    form.field_end = client_unescape_terminator(options.field_end ? options.field_end : (is_csv ? "," : "\\t"));
    form.row_end = client_unescape_terminator(options.row_end ? options.row_end : (is_csv ? "\\r\\n" : "\\n"));
}

static bool my_is_wanted(const tov_client_unload_options &options, const client_row_tbl &tbl)
{
    if (options.tbl_count == 0)
        return true;
    const std::string with_schema = tbl.server_schema + "." + tbl.server_name;
    for (uint32_t n = 0; n < options.tbl_count; n++) {
        if (KT_stricmp(options.tbls[n], tbl.name.c_str()) == 0 || KT_stricmp(options.tbls[n], with_schema.c_str()) == 0)
            return true;
    }
    return false;
}

// A name that is one file in the folder, whatever the table is called.
static std::string my_file_name(std::string name, const unload_form &form)
{
    std::replace(name.begin(), name.end(), '/', '_');
    return name + (form.format == client_format::csv ? ".csv" : ".dat");
}

static void my_unload_tbl(KT_context *ctx, client_connection &database, const client_row_tbl &tbl,
                          const unload_form &form, const std::string &folder, KT_varray *report)
{
    const std::string name = my_file_name(tbl.name, form);
    unload_file file;
    int64_t count = 0;
    KT_vhash *record = nullptr;
    KT_TRY(file.open(ctx, folder + "/" + name, form.utf_16));
    KT_TRY(my_write_rows(ctx, database, tbl, form, file, count));
    KT_TRY(file.close(ctx));
    KT_TRY(KT_varray__appendnew__vhash(ctx, report, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "table", tbl.name.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "file", name.c_str()));
    KT_TRY(KT_vhash__add__int64(ctx, record, "rows", count));
}

static void my_unload(KT_context *ctx, tov_schema *schema, const char *database_name, const std::string &folder,
                      const tov_client_unload_options &options, KT_varray *report)
{
    unload_form form;
    client_plan plan{ctx};
    client_connection database;
    KT_TRY(my_read_form(ctx, options, form));
    KT_TRY(client_make_plan(ctx, schema, plan));
    KT_TRY(client_connection__open(ctx, database, database_name, true));
    KT_TRY(client_connection__run(ctx, database, "BEGIN")); // all tables as they are at one moment
    struct stat file {};
    if (mkdir(folder.c_str(), 0777) != 0 && (stat(folder.c_str(), &file) != 0 || !S_ISDIR(file.st_mode)))
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: not a folder, and cannot be made", folder.c_str());
    for (const client_tbl &planned : plan.tbls) {
        client_row_tbl tbl;
        KT_TRY(client_read_row_tbl(ctx, schema, planned.id, tbl));
        if (my_is_wanted(options, tbl))
            KT_TRY(my_unload_tbl(ctx, database, tbl, form, folder, report));
    }
}

void tov_client__unload(KT_context *ctx, tov_schema *schema, const char *database, const char *folder,
                        const tov_client_unload_options *options, KT_varray **report) noexcept
{
    kt_contain(ctx, [&] {
        kt_owned_varray files{ctx};
        KT_TRY(KT_varray__alloc(ctx, files.out()));
        KT_TRY(my_unload(ctx, schema, database, folder, options ? *options : tov_client_unload_options{}, files));
        files.move_to(report);
    });
}
