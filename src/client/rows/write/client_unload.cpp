// Tables go out one after the other, those that are referred to before those that refer to them: each into a file, or
// all of them into one script.
#include "rows/write/client_unload.hpp"

#include "create/client_plan.hpp"
#include "rows/load/client_progress.hpp"

#include <algorithm>
#include <set>
#include <sys/stat.h>

#define KT_HERE "src/client/rows/write/client_unload"

static constexpr const char *script_name = "rows.sql";

static void my_read_form(KT_context *ctx, const tov_client_unload_options &options, client_unload_form &form)
{
    const std::string format = options.format ? options.format : "bcp";
    const std::string encoding = options.encoding ? options.encoding : "";
    const bool is_known = client_find_format(format, form.format);
    if (!is_known || form.format == client_format::native)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "rows cannot be written as \"%s\"", format.c_str());
    if (form.format == client_format::guess)
        form.format = client_format::bcp;
    if (!encoding.empty() && encoding != "utf-8" && encoding != "utf-16le")
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "rows are written as utf-8 or utf-16le, not as \"%s\"", encoding.c_str());
    const bool is_csv = form.format == client_format::csv;
    form.utf_16 = encoding == "utf-16le";
    form.ends.field_end = client_unescape_terminator(options.field_end ? options.field_end : (is_csv ? "," : "\\t"));
    form.ends.row_end = client_unescape_terminator(options.row_end ? options.row_end : (is_csv ? "\\r\\n" : "\\n"));
}

// What the caller leaves open of a bcp file is as in the file that the rows were loaded from.
static void my_take_loaded_form(KT_context *ctx, client_connection &database, const std::string &prefix,
                                const tov_client_unload_options &options, const std::string &tbl,
                                client_unload_form &form)
{
    client_dialect dialect;
    bool found = false;
    if (form.format != client_format::bcp)
        return;
    KT_TRY(client_progress__find_dialect(ctx, database, prefix, tbl, dialect, found));
    if (!found)
        return;
    form.is_short = dialect.is_short;
    if (!options.encoding)
        form.utf_16 = dialect.is_utf_16;
    if (!options.field_end)
        form.ends.field_end = dialect.field_end;
    if (!options.row_end)
        form.ends.row_end = dialect.row_end;
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

static std::vector<client_row_tbl> my_list_wanted(const client_plan &plan, const tov_client_unload_options &options)
{
    std::vector<client_row_tbl> tbls;
    for (const client_tbl &planned : plan.tbls) {
        if (my_is_wanted(options, planned.rows))
            tbls.push_back(planned.rows);
    }
    return tbls;
}

// Whether a table refers to itself, or to a table that is not among those before it.
static void my_look_ahead(KT_context *ctx, tov_schema *schema, const std::string &tbl_id,
                          const std::set<std::string> &before, bool &checks_later)
{
    kt_owned_varray records{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_fk_constraints(ctx, schema, tbl_id.c_str(), nullptr, 0, records.out(), &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        const char *parent = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, records, n, &record));
        KT_TRY(KT_vhash__get__sz(ctx, record, "tbl", &parent));
        checks_later |= !before.contains(parent);
    }
}

static client_out_rows my_out_rows(const client_row_tbl &tbl)
{
    client_out_rows rows;
    rows.schema_name = tbl.server_schema.empty() ? "dbo" : tbl.server_schema;
    rows.tbl_name = tbl.server_name;
    for (const client_row_col &col : tbl.cols) {
        if (!col.stored)
            continue;
        rows.cols.push_back({col.name, col.type});
        rows.has_identity |= col.identity || (col.rowid && !tbl.has_facts);
    }
    return rows;
}

// Rows come in the order of the table: an index that has all of its columns would give them in its own.
static std::string my_select(const client_row_tbl &tbl, const client_out_rows &rows)
{
    std::string names;
    for (const client_out_col &col : rows.cols)
        names += (names.empty() ? "" : ",") + client_quoted(col.name);
    return "SELECT " + names + " FROM " + client_quoted(tbl.name) + " NOT INDEXED";
}

static void my_write_tbl(KT_context *ctx, client_connection &database, const client_row_tbl &tbl, client_out_rows rows,
                         const client_unload_form &form, client_unload_file &file, client_unload_counts &counts)
{
    kt_owned_statement statement{database.functions};
    KT_TRY(client_connection__prepare(ctx, database, my_select(tbl, rows), statement));
    const std::unique_ptr<client_row_writer> writer = client_make_row_writer(form, std::move(rows));
    KT_TRY(client_write_rows(ctx, database, statement, *writer, file, counts));
}

// A name that is one file in the folder, whatever the table is called.
static std::string my_file_name(std::string name, client_format format)
{
    std::replace(name.begin(), name.end(), '/', '_');
    return name + client_unload_ending(format);
}

static void my_write_file(KT_context *ctx, const client_unload_run &run, const client_row_tbl &tbl,
                          const client_unload_form &form)
{
    const std::string name = my_file_name(tbl.name, form.format);
    client_unload_file file;
    client_unload_counts counts;
    KT_TRY(file.open(ctx, run.folder + "/" + name, form.utf_16, false));
    KT_TRY(my_write_tbl(ctx, run.database, tbl, my_out_rows(tbl), form, file, counts));
    KT_TRY(file.close(ctx));
    KT_TRY(client_unload__report(ctx, run, form, tbl.name, name, counts));
}

static void my_write_script(KT_context *ctx, const client_unload_run &run, tov_schema *schema,
                            const std::vector<client_row_tbl> &tbls)
{
    client_unload_file file;
    std::set<std::string> before;
    KT_TRY(file.open(ctx, run.folder + "/" + script_name, run.form.utf_16, true));
    for (const client_row_tbl &tbl : tbls) {
        client_out_rows rows = my_out_rows(tbl);
        client_unload_counts counts;
        KT_TRY(my_look_ahead(ctx, schema, tbl.id, before, rows.checks_later));
        KT_TRY(my_write_tbl(ctx, run.database, tbl, std::move(rows), run.form, file, counts));
        KT_TRY(client_unload__report(ctx, run, run.form, tbl.name, script_name, counts));
        before.insert(tbl.id);
    }
    KT_TRY(file.close(ctx));
}

static void my_unload(KT_context *ctx, tov_schema *schema, const char *database_name, const std::string &folder,
                      const tov_client_unload_options &options, KT_varray *report)
{
    client_plan plan;
    client_connection database;
    client_unload_run run{database, folder, {}, report};
    KT_TRY(my_read_form(ctx, options, run.form));
    KT_TRY(client_make_plan(ctx, schema, plan));
    KT_TRY(client_connection__open(ctx, database, database_name, true));
    KT_TRY(client_connection__run(ctx, database, "BEGIN")); // all tables as they are at one moment
    struct stat file {};
    if (mkdir(folder.c_str(), 0777) != 0 && (stat(folder.c_str(), &file) != 0 || !S_ISDIR(file.st_mode)))
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: not a folder, and cannot be made", folder.c_str());
    const std::vector<client_row_tbl> tbls = my_list_wanted(plan, options);
    if (options.query) {
        KT_TRY(client_unload__query(ctx, run, options.query, tbls, options.tbl_count > 0));
        return;
    }
    if (run.form.format == client_format::insert) {
        KT_TRY(my_write_script(ctx, run, schema, tbls));
        return;
    }
    for (const client_row_tbl &tbl : tbls) {
        client_unload_form form = run.form;
        KT_TRY(my_take_loaded_form(ctx, database, plan.trigger_prefix, options, tbl.name, form));
        KT_TRY(my_write_file(ctx, run, tbl, form));
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
