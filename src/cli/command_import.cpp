// tov-schema import: a package, scripts or a catalogue export become a schema.

#include "cli_files.hpp"
#include "cli_import.hpp"
#include "cli_json.hpp"
#include "cli_json_lines.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct import_options {
    cli_import_options import;
    std::string output = "-";
    cli_findings_options findings;
    bool with_host_internals = false;
    bool is_compact = false;
};

} // namespace

static std::string my_schema_json(KT_context *ctx, tov_schema *schema, const import_options &options)
{
    if (options.with_host_internals) {
        cli_map both(ctx);
        tov_schema__copy_into_vhash(ctx, schema, both, 1);
        cli_check(ctx, "");
        const std::string text = cli_json_text(ctx, both);
        return (options.is_compact ? text : cli_json_lines(text)) + "\n";
    }
    return cli_schema_json(ctx, schema, options.is_compact);
}

static int my_run(import_options options)
{
    cli_apply_config(options.import.config, options.import, options.findings);
    cli_check_findings_options(options.findings);
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_findings findings(ctx);
    const std::vector<cli_source> sources = cli_read_sources(options.import.sources);
    cli_keep_import_inputs(options.import, sources, options.findings, {options.output});
    cli_import(ctx, options.import, sources, &schema, &findings);
    cli_report_findings(findings, options.findings, options.import.is_verbose, cli_common_path(sources));
    cli_write_file(options.output, my_schema_json(ctx, schema, options));
    return cli_done;
}

void cli_add_import(cli_arguments &arguments)
{
    auto options = std::make_shared<import_options>();
    const cli_command command = arguments.add("import", "Make a schema from a package, scripts or a catalogue export");
    command.details(
        "SOURCE is a package (.dacpac, .bacpac), a T-SQL script, several of them or a folder of them (all its .sql\n"
        "files), or the JSON document that the query of tov-schema catalogue-query prints on a server. Its content\n"
        "says which it is. What is approximated or left out is a finding, one line each on standard error; how many\n"
        "there are of each kind is said at the end.\n"
        "PATTERN is SCHEMA.TABLE, or a table's name in every schema; * stands for any characters, ? for one.\n\n"
        "Examples: tov-schema import Shop.dacpac -o schema.json\n"
        "          tov-schema import Tables/ --skip \"staging.*\" -o schema.json\n"
        "          tov-schema import catalogue.json -o schema.json --findings findings.json --strict");
    command.argument("SOURCE", options->import.sources, "files, or folders of scripts; - for standard input")
        .required();
    command.option("-o,--output", options->output, "where the schema goes (default: standard output)");
    cli_add_source_options(command, options->import);
    cli_add_findings_options(command, options->findings);
    command.flag("--quiet", options->findings.is_quiet, "do not print the findings");
    command.flag("--with-host-internals", options->with_host_internals,
                 "write the schema together with what only the host side uses");
    command.flag("--compact", options->is_compact, "write the schema on one line, not a member a line");
    command.runs([options] { return my_run(*options); });
}
