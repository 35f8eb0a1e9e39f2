// tov-schema import: a catalogue export becomes a schema.

#include "cli_files.hpp"
#include "cli_json.hpp"
#include "cli_progress.hpp"
#include "commands.hpp"
#include "tov_host.h"

#include <memory>

namespace {

struct import_options {
    std::string catalogue;
    std::string output = "-";
    std::string findings;
    int64_t txid = 0;
    bool is_strict = false;
    bool with_host_internals = false;
    bool is_verbose = false;
};

struct findings_list {
    explicit findings_list(KT_context *context) : ctx(context)
    {
    }
    ~findings_list()
    {
        KT_varray__free(ctx, list);
    }
    findings_list(const findings_list &) = delete;
    findings_list &operator=(const findings_list &) = delete;

    KT_context *ctx;
    KT_varray *list = nullptr;
    uint32_t count = 0;
};

} // namespace

static KT_vhash *my_finding_at(const findings_list &findings, uint32_t n)
{
    KT_vhash *finding = nullptr;
    KT_varray__get__vhash(findings.ctx, findings.list, n, &finding);
    cli_check(findings.ctx, "");
    return finding;
}

static void my_print_findings(const findings_list &findings)
{
    for (uint32_t n = 0; n < findings.count; n++) {
        KT_string *line = nullptr;
        KT_string__alloc(findings.ctx, &line);
        cli_check(findings.ctx, "");
        tov_host__format_finding(findings.ctx, my_finding_at(findings, n), line);
        const std::string text = cli_take(findings.ctx, line);
        cli_check(findings.ctx, "");
        cli_tell("%s\n", text.c_str());
    }
}

// {"findings":[{...},...]}; each finding is JSON already.
static std::string my_findings_json(const findings_list &findings)
{
    std::string json = "{\"findings\":[";
    for (uint32_t n = 0; n < findings.count; n++)
        json += (n ? ",\n" : "\n") + cli_json_text(findings.ctx, my_finding_at(findings, n));
    return json + (findings.count ? "\n]}\n" : "]}\n");
}

static std::string my_schema_json(KT_context *ctx, tov_schema *schema, bool with_host_internals)
{
    if (with_host_internals) {
        cli_map both(ctx);
        tov_schema__copy_into_vhash(ctx, schema, both, 1);
        cli_check(ctx, "");
        return cli_json_text(ctx, both) + "\n";
    }
    KT_string *json = nullptr;
    tov_schema__to_json(ctx, schema, &json);
    std::string text = cli_take(ctx, json);
    cli_check(ctx, "");
    return text + "\n";
}

static int my_run(const import_options &options)
{
    if (options.findings == options.output)
        throw cli_usage_failure("schema and findings cannot both be written there", options.output);
    const cli_context context;
    KT_context *ctx = context.ctx;
    const std::string bytes = cli_read_file(options.catalogue);
    cli_schema schema(ctx);
    findings_list findings(ctx);
    tov_host_options host_options{};
    host_options.txid = options.txid;
    host_options.verbose = options.is_verbose;
    {
        const cli_waiting waiting("importing");
        tov_host__import(ctx, bytes.data(), bytes.size(), &host_options, &schema.schema, &findings.list);
    }
    cli_check(ctx, options.catalogue);
    if (findings.list)
        KT_varray__count(ctx, findings.list, &findings.count);

    my_print_findings(findings);
    if (!options.findings.empty())
        cli_write_file(options.findings, my_findings_json(findings));
    if (options.is_strict && findings.count)
        throw cli_failure(std::to_string(findings.count) + " findings, and --strict allows none", options.catalogue,
                          cli_found);
    cli_write_file(options.output, my_schema_json(ctx, schema, options.with_host_internals));
    return cli_done;
}

void cli_add_import(cli_arguments &arguments)
{
    auto options = std::make_shared<import_options>();
    const cli_command command = arguments.add("import", "Make a schema of a SQL Server catalogue export");
    command.details("What cannot be carried over as it stands is a finding, one line each on standard error.\n\n"
                    "Example: tov-schema import catalogue.json -o schema.json --findings findings.json");
    command.argument("CATALOGUE", options->catalogue, "the export, as catalogue.sql prints it; - for standard input")
        .required();
    command.option("-o,--output", options->output, "where the schema goes (default: standard output)");
    command.option("--findings", options->findings, "write the findings to this file, as JSON");
    command.option("--txid", options->txid, "the transaction id of every table (default: 0)");
    command.flag("--strict", options->is_strict, "fail, and write no schema, when there is any finding");
    command.flag("--with-host-internals", options->with_host_internals,
                 "write the schema together with what only the host side uses");
    command.flag("--verbose", options->is_verbose, "also report fields of the export that are not known");
    command.runs([options] { return my_run(*options); });
}
