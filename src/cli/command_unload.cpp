// tov-schema unload: the rows of a database into files of the server's forms.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_paths.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "tov_client.h"

#include <algorithm>
#include <memory>

namespace {

struct unload_options {
    std::string schema;
    std::string database;
    std::string folder;
    std::vector<std::string> tables;
    std::string format = "bcp";
    std::string encoding;
    std::string query;
    std::string field_end;
    std::string row_end;
    bool is_quiet = false;
};

} // namespace

// A script has the rows of several tables.
static std::string my_line(const char *file, const char *tbl, int64_t rows)
{
    const bool is_script = std::string_view(file) == "rows.sql";
    return cli_harmless(file) + (is_script ? " " + cli_harmless(tbl) : "") + " " + std::to_string(rows) + "\n";
}

static void my_print_report(KT_context *ctx, KT_varray *report)
{
    std::string text;
    for (const KT_vhash *record : cli_maps_of(ctx, report)) {
        const char *file = nullptr;
        const char *tbl = nullptr;
        int64_t rows = 0;
        int64_t unreadable = 0;
        KT_vhash__get__sz(ctx, record, "file", &file);
        KT_vhash__get__sz(ctx, record, "table", &tbl);
        KT_vhash__get__int64(ctx, record, "rows", &rows);
        KT_vhash__get__int64(ctx, record, "unreadable", &unreadable);
        cli_check(ctx, "");
        if (unreadable > 0)
            cli_tell_line("tov-schema: warning: " + cli_harmless(file) + ": " + std::to_string(unreadable) +
                          " values hold what ends a field or row, and cannot be read again; choose other terminators");
        text += my_line(file, tbl, rows);
    }
    cli_print(text);
}

// Refuses to write over the schema or the database, which a file in the folder may be.
static void my_keep_inputs(KT_context *ctx, const unload_options &options, tov_schema *schema)
{
    static constexpr std::pair<const char *, const char *> endings[] = {
        {"bcp", ".dat"}, {"csv", ".csv"}, {"json", ".jsonl"}, {"insert", ".sql"}};
    std::vector<std::string> names = cli_table_names(ctx, schema);
    names.insert(names.end(), {"rows", "query"});
    for (std::string &name : names) {
        std::replace(name.begin(), name.end(), '/', '_');
        for (const auto &[format, ending] : endings)
            if (options.format == format)
                cli_keep_inputs(options.folder + "/" + name + ending, {options.schema, options.database});
    }
}

static int my_run_unload(const unload_options &options)
{
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    my_keep_inputs(context.ctx, options, schema);
    std::vector<const char *> tables;
    for (const std::string &table : options.tables)
        tables.push_back(table.c_str());
    tov_client_unload_options client_options = {};
    client_options.format = options.format.c_str();
    client_options.encoding = options.encoding.empty() ? nullptr : options.encoding.c_str();
    client_options.query = options.query.empty() ? nullptr : options.query.c_str();
    client_options.field_end = options.field_end.empty() ? nullptr : options.field_end.c_str();
    client_options.row_end = options.row_end.empty() ? nullptr : options.row_end.c_str();
    client_options.tbls = tables.data();
    client_options.tbl_count = static_cast<uint32_t>(tables.size());
    kt_owned_varray report{context.ctx};
    tov_client__unload(context.ctx, schema, options.database.c_str(), options.folder.c_str(), &client_options,
                       report.out());
    cli_check(context.ctx, options.database);
    if (!options.is_quiet)
        my_print_report(context.ctx, report);
    return cli_done;
}

void cli_add_unload(cli_arguments &arguments)
{
    auto options = std::make_shared<unload_options>();
    const cli_command command = arguments.add("unload", "Write the rows of a database to files");
    command.details("Each table goes into a file of its name, in the forms of the server's own tools. The files are "
                    "printed\nwith their numbers of rows, in an order that references allow.\n\n"
                    "Example: tov-schema unload schema.json client.db rows --format csv");
    command.argument("SCHEMA", options->schema, "the schema that the database was created from").required();
    command.argument("DATABASE", options->database, "the database file").required();
    command.argument("FOLDER", options->folder, "where the files go; made when it is absent").required();
    command.option("--table", options->tables, "write only this table; may be repeated", "NAME");
    command
        .option("--format", options->format,
                "bcp, csv, json (an object a line) or insert (one script, rows.sql); default: bcp", "NAME")
        .one_of({"bcp", "csv", "json", "insert"});
    command.option("--query", options->query,
                   "write the rows of this SELECT; --table names the tables that its columns are of", "SQL");
    command
        .option("--encoding", options->encoding, "utf-8 or utf-16le (default: of the file that was loaded, or utf-8)",
                "NAME")
        .one_of({"utf-8", "utf-16le"});
    command.option("-t,--field-terminator", options->field_end,
                   "what ends a field (default: as in the file that was loaded, or \\t)", "STRING");
    command.option("-r,--row-terminator", options->row_end,
                   "what ends a row (default: as in the file that was loaded, or \\n)", "STRING");
    command.flag("--quiet", options->is_quiet, "do not print the files");
    command.runs([options] { return my_run_unload(*options); });
}
