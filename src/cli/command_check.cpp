// tov-schema check: the rows of a database that the server would refuse.

#include "cli_create_options.hpp"
#include "cli_files.hpp"
#include "cli_paths.hpp"
#include "cli_progress.hpp"
#include "cli_schema.hpp"
#include "cli_violations.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct check_options {
    std::string schema;
    std::string database;
    std::string format = "text";
    std::string output;
    std::string rules = "server";
    std::vector<std::string> only;
    std::vector<std::string> skip;
    int64_t max = 0;
    bool is_quiet = false;
};

} // namespace

static std::vector<const char *> my_names(const std::vector<std::string> &names)
{
    std::vector<const char *> texts;
    for (const std::string &name : names)
        texts.push_back(name.c_str());
    return texts;
}

static void my_tell_summary(const cli_violations &violations, bool is_whole)
{
    const int64_t errors = violations.errors();
    const std::string text = violations.summary();
    cli_tell("tov-schema: %lld %s%s%s\n%s", static_cast<long long>(errors), errors == 1 ? "violation" : "violations",
             is_whole ? "" : ", and there are more", text.empty() ? "" : ":", text.c_str());
}

static int my_run_check(const check_options &options)
{
    if (!options.output.empty())
        cli_keep_inputs(options.output, {options.schema, options.database});
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    const std::vector<const char *> only = my_names(options.only);
    const std::vector<const char *> skip = my_names(options.skip);
    cli_progress progress("checking");
    tov_client_check_options client_options = {};
    client_options.rules = cli_rules(options.rules);
    client_options.only = only.data();
    client_options.only_count = static_cast<uint32_t>(only.size());
    client_options.skip = skip.data();
    client_options.skip_count = static_cast<uint32_t>(skip.size());
    client_options.max = options.max;
    if (!options.is_quiet) {
        client_options.progress = cli_progress::step;
        client_options.progress_data = &progress;
    }
    cli_violations violations(context.ctx, options.format, options.output, options.database);
    KT_bool is_whole = 1;
    tov_client__check_database(context.ctx, schema, options.database.c_str(), &client_options, cli_violations::take,
                               &violations, &is_whole);
    progress.finish();
    cli_check(context.ctx, options.database);
    violations.finish(is_whole);
    if (!options.is_quiet)
        my_tell_summary(violations, is_whole);
    return violations.errors() > 0 ? cli_found : cli_done;
}

void cli_add_check(cli_arguments &arguments)
{
    auto options = std::make_shared<check_options>();
    const cli_command command = arguments.add("check", "Find the rows of a database that the server would refuse");
    command.details(
        "The database may have been made by create or by anything else; it is only read. Each violation is "
        "a line: its code, table and column, the row, what is wrong, the value. docs/check.md describes the "
        "codes. Exit code 1: something would be refused.\n\n"
        "Example: tov-schema check schema.json client.db --format csv -o violations.csv");
    command.argument("SCHEMA", options->schema, "the schema of the server's tables").required();
    command.argument("DATABASE", options->database, "the SQLite database").required();
    command.option("--format", options->format, "text (default), json, csv or sarif", "FORM")
        .one_of({"text", "json", "csv", "sarif"});
    command.option("-o,--output", options->output, "write the violations to this file");
    command.option("--max", options->max, "stop after so many violations").between(1, INT64_MAX);
    command
        .option("--rules", options->rules,
                "server (default): what the server would refuse; or basic: what breaks the column's type", "NAME")
        .one_of({"server", "basic"});
    command.option("--only", options->only, "look only at this table; may be repeated", "TABLE");
    command.option("--skip", options->skip, "leave this table out; may be repeated", "TABLE");
    command.flag("--quiet", options->is_quiet, "print neither progress nor the number of violations");
    command.runs([options] { return my_run_check(*options); });
}
