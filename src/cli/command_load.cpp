// tov-schema load: rows out of files into a created database.

#include "cli_load_report.hpp"
#include "cli_progress.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct load_options {
    std::string schema;
    std::string database;
    std::vector<std::string> files;
    std::string tbl;
    std::string format;
    std::string encoding;
    std::string field_end;
    std::string row_end;
    std::optional<std::string> null_word;
    std::string header;
    std::string rejects;
    int64_t max_rejects = 0;
    int64_t batch = 0;
    bool exact = false;
    bool all_or_nothing = false;
    bool keep_going = false;
    bool again = false;
    bool skip_references = false;
    bool quiet = false;
};

} // namespace

static tov_client_load_options my_client_options(const load_options &options)
{
    tov_client_load_options result = {};
    result.tbl = options.tbl.empty() ? nullptr : options.tbl.c_str();
    result.format = options.format.c_str();
    result.encoding = options.encoding.c_str();
    result.field_end = options.field_end.c_str();
    result.row_end = options.row_end.c_str();
    result.null_word = options.null_word ? options.null_word->c_str() : nullptr;
    result.header = options.header.empty() ? 0 : (options.header == "yes" ? 1 : -1);
    result.rejects = options.rejects.c_str();
    result.max_rejects = options.max_rejects;
    result.batch = options.batch;
    result.exact = options.exact;
    result.all_or_nothing = options.all_or_nothing;
    result.again = options.again;
    result.skip_references = options.skip_references;
    return result;
}

static int my_run_load(const load_options &options)
{
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    cli_progress progress("loading");
    tov_client_load_options client_options = my_client_options(options);
    if (!options.quiet) {
        client_options.progress = cli_progress::step_of_file;
        client_options.data = &progress;
    }
    cli_loader loader(context.ctx);
    tov_client__open_loader(context.ctx, schema, options.database.c_str(), &client_options, &loader.loader);
    cli_check(context.ctx, options.database);
    for (const std::string &file : options.files) {
        tov_client__load_file(context.ctx, loader.loader, file.c_str());
        progress.finish();
        cli_check(context.ctx, file);
    }
    return cli_finish_load(context.ctx, loader, options.database, options.rejects, options.quiet);
}

static void my_add_forms(const cli_command &command, load_options &options)
{
    command.option("--table", options.tbl, "the table that the rows go into (default: the file's name)", "NAME");
    command
        .option("--format", options.format, "bcp, csv, json, native or insert (default: found out from the first rows)",
                "NAME")
        .one_of({"auto", "bcp", "csv", "json", "native", "insert"});
    command.option("--encoding", options.encoding, "of the files (default: as their mark says, or UTF-8)", "NAME");
    command.option("-t,--field-terminator", options.field_end, "what ends a field; \\t is a tab", "STRING");
    command.option("-r,--row-terminator", options.row_end, "what ends a row; \\n is a line end", "STRING");
    command.option("--null", options.null_word, "what CSV files have for NULL, without quotes; '' is nothing", "WORD");
    command.option("--header", options.header, "whether CSV files begin with a line of names: yes or no", "WORD")
        .one_of({"yes", "no"});
}

void cli_add_load(cli_arguments &arguments)
{
    auto options = std::make_shared<load_options>();
    const cli_command command = arguments.add("load", "Load the rows of files into a created database");
    command.details("Rows that the database does not accept are refused, each with its place and reason; the others "
                    "are loaded. A load that was interrupted goes on where it was. Exit code 1: rows were refused.\n\n"
                    "Example: tov-schema load schema.json client.db Customers.dat Orders.dat --rejects rejects");
    command.argument("SCHEMA", options->schema, "the schema that the database was created from").required();
    command.argument("DATABASE", options->database, "the database file").required();
    command.argument("FILE", options->files, "files of rows, each named like its table").required();
    my_add_forms(command, *options);
    command.option("--rejects", options->rejects, "keep refused rows in this directory, with the reasons beside them",
                   "FOLDER");
    command.option("--max-rejects", options->max_rejects, "fail when more rows than this are refused")
        .between(1, INT64_MAX);
    command.option("--batch", options->batch, "rows a transaction (default: 10000)").between(1, INT64_MAX);
    command.flag("--exact", options->exact, "refuse values that would have to be shortened");
    const cli_option all =
        command.flag("--all-or-nothing", options->all_or_nothing, "keep nothing when any row is refused");
    command.flag("--keep-going", options->keep_going, "keep the rows that are not refused (the default)").excludes(all);
    command.flag("--again", options->again, "load files once more that were loaded before");
    command.flag("--no-references", options->skip_references,
                 "leave references unchecked: what they refer to comes with a later load");
    command.flag("--quiet", options->quiet, "print neither progress nor the table at the end");
    command.runs([options] { return my_run_load(*options); });
}
