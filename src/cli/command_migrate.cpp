// tov-schema migrate: a database of one schema becomes one of another, with its rows.

#include "cli_any_schema.hpp"
#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_migration.hpp"
#include "cli_paths.hpp"
#include "cli_sources.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct migrate_options {
    std::string old_schema;
    std::string new_schema;
    std::string output = "-";
    cli_migration_options migration;
    bool apply = false;
    bool plan = false;
};

} // namespace

static int my_apply(const migrate_options &options)
{
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_any_schema(context.ctx, options.new_schema, &schema, nullptr, options.migration.config);
    const cli_migration migration(options.migration);
    tov_client__migrate_database(context.ctx, options.old_schema.c_str(), schema, migration);
    cli_check(context.ctx, options.old_schema);
    return cli_done;
}

static std::string my_step_text(KT_context *ctx, const KT_vhash *step)
{
    const std::string count = cli_harmless_of(ctx, step, "count");
    KT_bool only_apply = 0;
    KT_vhash__check__bool(ctx, step, "only_apply", &only_apply);
    return cli_text_of(ctx, step, "class") + ": " + cli_harmless_of(ctx, step, "description") + "\n" +
           (count.empty() ? "" : "    how many: " + count + "\n") +
           (only_apply ? "    only --apply can do this: it converts values as load does\n" : "");
}

static int my_plan(const migrate_options &options)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_migration migration(options.migration);
    cli_schema a(ctx), b(ctx);
    cli_load_old_schema(ctx, options.old_schema, &a, migration, options.migration.config);
    cli_load_any_schema(ctx, options.new_schema, &b, nullptr, options.migration.config);
    KT_varray *steps = nullptr;
    tov_client__plan_migration(ctx, a, b, migration, &steps);
    cli_check(ctx, "");
    std::string text;
    for (const KT_vhash *step : cli_maps_of(ctx, steps))
        text += my_step_text(ctx, step);
    KT_varray__free(ctx, steps);
    cli_write_file(options.output, text);
    return cli_done;
}

static int my_run(const migrate_options &options)
{
    if (options.apply)
        return my_apply(options);
    cli_keep_inputs(options.output, cli_source_files({options.old_schema, options.new_schema}));
    if (options.plan)
        return my_plan(options);
    const cli_context context;
    cli_write_file(options.output,
                   cli_migration_script(context.ctx, options.old_schema, options.new_schema, options.migration));
    return cli_done;
}

void cli_add_migrate(cli_arguments &arguments)
{
    auto options = std::make_shared<migrate_options>();
    const cli_command command = arguments.add("migrate", "Change a database to another schema, with its rows");
    command.details(
        "Prints the script that turns a database created from OLD into one created from NEW; with --apply, OLD is the\n"
        "database and is changed: all of it or nothing. Both may be anything that tov-schema diff takes. A table is\n"
        "altered in place where SQLite can, and made anew otherwise; rows that NEW does not take are refused. What\n"
        "would lose data has to be allowed. Whatever was added to the database is kept with --apply; the script does\n"
        "not know of it.\n\n"
        "Example: tov-schema migrate --apply client.db new.json");
    command.argument("OLD", options->old_schema, "the schema that the database was created from, or the database")
        .required();
    command.argument("NEW", options->new_schema, "the schema that it is to have; - for standard input").required();
    const cli_option apply = command.flag("--apply", options->apply, "change the database OLD");
    const cli_option plan =
        command.flag("--plan", options->plan, "print the steps in words, with queries that count what is in the way");
    const cli_option output =
        command.option("-o,--output", options->output, "where the script goes (default: standard output)");
    command.option("--by", options->migration.by, "what tables and columns are known by: name (default) or id", "WHAT")
        .one_of({"name", "id"});
    command.option("--rename", options->migration.renames,
                   "a table or TABLE.COLUMN that was renamed; OLD= says that it was removed; may be repeated",
                   "OLD=NEW");
    command.option("--allow-loss", options->migration.allowed_losses,
                   "a table or TABLE.COLUMN whose data may be lost; may be repeated", "TABLE.COLUMN");
    options->migration.config.add(command);
    apply.excludes(plan).excludes(output);
    command.runs([options] { return my_run(*options); });
}
