// tov-schema diff: what has changed between two schemas.

#include "cli_any_schema.hpp"
#include "cli_changed_since.hpp"
#include "cli_changes.hpp"
#include "cli_files.hpp"
#include "cli_migration.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct diff_options {
    std::string old_schema;
    std::string new_schema;
    std::string by = "name";
    std::vector<std::string> renames;
    std::string format = "text";
    bool is_json = false;
    bool is_changed_since = false;
    cli_config_choice config;
};

} // namespace

static int my_changed_since(const diff_options &options)
{
    const cli_context context;
    cli_schema a(context.ctx), b(context.ctx);
    cli_load_schema(context.ctx, options.old_schema, &a);
    cli_load_schema(context.ctx, options.new_schema, &b);
    return cli_print_changed_since(context.ctx, a, b, options.is_json || options.format == "json");
}

static int my_run(const diff_options &options)
{
    if (options.is_changed_since)
        return my_changed_since(options);
    const cli_context context;
    if (options.format == "sql" && !options.is_json) {
        cli_print(cli_migration_script(context.ctx, options.old_schema, options.new_schema,
                                       {options.by, options.renames, {}, options.config}));
        return cli_done;
    }
    cli_schema a(context.ctx), b(context.ctx);
    cli_load_any_schema(context.ctx, options.old_schema, &a, nullptr, options.config);
    cli_load_any_schema(context.ctx, options.new_schema, &b, nullptr, options.config);
    const cli_changes changes(context.ctx, a, b, {options.by == "id", options.renames});
    cli_print(changes.as(options.is_json ? "json" : options.format));
    return changes.is_same() ? cli_done : cli_found;
}

void cli_add_diff(cli_arguments &arguments)
{
    auto options = std::make_shared<diff_options>();
    const cli_command command = arguments.add("diff", "Show what has changed between two schemas");
    command.details(
        "OLD and NEW are schemas; or anything that tov-schema import takes: a package, a script, a folder of scripts,\n"
        "a catalogue export; or databases that create made. Tables, columns, keys, checks, indexes and what the\n"
        "server says of them are compared by their names; ids, and names that a server or an import made up, do not\n"
        "count. Prints + for what is new, - for what is gone and ~ for what has changed; in colour on a terminal,\n"
        "unless NO_COLOR is set. Exit code: 0 same, 1 different, 2 a file cannot be used.\n\n"
        "Example: tov-schema diff old.json Shop.dacpac");
    command.argument("OLD", options->old_schema, "a schema, or a source of one; - for standard input").required();
    command.argument("NEW", options->new_schema, "what to compare it with; - for standard input").required();
    const cli_option by =
        command.option("--by", options->by, "what tables and columns are known by: name (default) or id", "WHAT")
            .one_of({"name", "id"});
    const cli_option renames = command.option(
        "--rename", options->renames,
        "a table or TABLE.COLUMN that was renamed; OLD= says that it was removed; may be repeated", "OLD=NEW");
    command
        .option("--format", options->format,
                "the form of the output: text (default), json, markdown, or sql: the script that migrate prints",
                "FORM")
        .one_of({"text", "json", "markdown", "sql"});
    const cli_option changed_since = command.flag(
        "--changed-since", options->is_changed_since,
        "compare schemas of one origin by ids and transaction ids alone: which tables are to be fetched anew");
    command.flag("--json", options->is_json, "the same as --format json");
    options->config.add(command);
    changed_since.excludes(by).excludes(renames);
    command.runs([options] { return my_run(*options); });
}
