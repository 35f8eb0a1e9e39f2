// tov-schema import: a package, scripts or a catalogue export become a schema.

#include "cli_files.hpp"
#include "cli_json.hpp"
#include "cli_paths.hpp"
#include "cli_progress.hpp"
#include "cli_sources.hpp"
#include "commands.hpp"
#include "tov_host.h"

#include <memory>

namespace {

struct import_options {
    std::vector<std::string> sources;
    std::string kind = "auto";
    std::string encoding;
    std::vector<std::string> defines, only, skip, renames;
    std::string output = "-";
    std::string findings;
    int64_t txid = 0;
    bool is_strict = false;
    bool with_host_internals = false;
    bool is_verbose = false;
    bool is_quiet = false;
};

// Strings as the library takes them; borrowed from the options.
class string_list {
  public:
    explicit string_list(const std::vector<std::string> &strings)
    {
        for (const std::string &string : strings)
            items_.push_back(string.c_str());
    }
    operator tov_host_list() const
    {
        return {items_.data(), items_.size()};
    }

  private:
    std::vector<const char *> items_;
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

static int32_t my_kind(const std::string &name)
{
    static constexpr std::pair<const char *, int32_t> kinds[] = {
        {"json", TOV_HOST_SOURCE_JSON},
        {"package", TOV_HOST_SOURCE_PACKAGE},
        {"script", TOV_HOST_SOURCE_SCRIPT},
    };
    for (const auto &[kind, number] : kinds)
        if (name == kind)
            return number;
    return TOV_HOST_SOURCE_AUTO;
}

static std::vector<tov_host_file> my_files(const std::vector<cli_source> &sources)
{
    std::vector<tov_host_file> files;
    for (const cli_source &source : sources)
        files.push_back({source.name.c_str(), source.bytes.data(), source.bytes.size()});
    return files;
}

// Errors in scripts name the file themselves.
static std::string my_place(KT_context *ctx, const std::vector<cli_source> &sources)
{
    const std::string what = KT_context__err_description(ctx);
    return sources.size() > 1 || what.starts_with(sources.front().name) ? "" : sources.front().name;
}

// Folders among the sources stand for the files in them.
static void my_keep_sources(const import_options &options, const std::vector<cli_source> &sources)
{
    std::vector<std::string> inputs = options.sources;
    for (const cli_source &source : sources)
        inputs.push_back(source.name);
    cli_keep_inputs(options.output, inputs);
    if (!options.findings.empty())
        cli_keep_inputs(options.findings, inputs);
}

static void my_import(KT_context *ctx, const import_options &options, cli_schema *schema, findings_list *findings)
{
    const std::vector<cli_source> sources = cli_read_sources(options.sources);
    my_keep_sources(options, sources);
    const std::vector<tov_host_file> files = my_files(sources);
    const string_list only(options.only), skip(options.skip), renames(options.renames), defines(options.defines);
    tov_host_options host_options{};
    host_options.txid = options.txid;
    host_options.verbose = options.is_verbose;
    host_options.source = my_kind(options.kind);
    host_options.encoding = options.encoding.empty() ? nullptr : options.encoding.c_str();
    host_options.only = only;
    host_options.skip = skip;
    host_options.renames = renames;
    host_options.defines = defines;
    {
        const cli_waiting waiting("importing");
        tov_host__import_files(ctx, files.data(), files.size(), &host_options, &schema->schema, &findings->list);
    }
    cli_check(ctx, my_place(ctx, sources));
    if (findings->list)
        KT_varray__count(ctx, findings->list, &findings->count);
}

static int my_run(const import_options &options)
{
    if (options.findings == options.output ||
        (!options.findings.empty() && cli_is_one_file(options.findings, options.output)))
        throw cli_usage_failure("schema and findings cannot both be written there", options.output);
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    findings_list findings(ctx);
    my_import(ctx, options, &schema, &findings);

    if (!options.is_quiet)
        my_print_findings(findings);
    if (!options.findings.empty())
        cli_write_file(options.findings, my_findings_json(findings));
    if (options.is_strict && findings.count)
        throw cli_failure(std::to_string(findings.count) + " findings, and --strict allows none", "", cli_found);
    cli_write_file(options.output, my_schema_json(ctx, schema, options.with_host_internals));
    return cli_done;
}

void cli_add_import(cli_arguments &arguments)
{
    auto options = std::make_shared<import_options>();
    const cli_command command = arguments.add("import", "Make a schema from a package, scripts or a catalogue export");
    command.details(
        "SOURCE is a package (.dacpac, .bacpac), a T-SQL script, several of them or a folder of them (all its .sql\n"
        "files), or the JSON document that the query of tov-schema catalogue-query prints on a server. Its content\n"
        "says which it is. What is approximated or left out is a finding, one line each on standard error.\n"
        "PATTERN is SCHEMA.TABLE, or a table's name in every schema; * stands for any characters, ? for one.\n\n"
        "Examples: tov-schema import Shop.dacpac -o schema.json\n"
        "          tov-schema import Tables/ --skip \"staging.*\" -o schema.json\n"
        "          tov-schema import catalogue.json -o schema.json --findings findings.json --strict");
    command.argument("SOURCE", options->sources, "files, or folders of scripts; - for standard input").required();
    command.option("-o,--output", options->output, "where the schema goes (default: standard output)");
    command.option("--from", options->kind, "what SOURCE is, whatever it looks like: json, package or script", "KIND")
        .one_of({"json", "package", "script"});
    command.option("--only", options->only, "import only tables that match PATTERN; may be repeated", "PATTERN");
    command.option("--skip", options->skip, "leave out tables that match PATTERN; may be repeated", "PATTERN");
    command.option("--rename", options->renames,
                   "give a table or column another name in SQLite; OLD is SCHEMA.TABLE or SCHEMA.TABLE.COLUMN",
                   "OLD=NEW");
    command.option("--encoding", options->encoding, "the encoding of scripts that are not Unicode, e.g. windows-1252",
                   "NAME");
    command.option("--define", options->defines, "the value of a variable $(NAME) in scripts", "NAME=VALUE");
    command.option("--findings", options->findings, "write the findings to this file, as JSON");
    command.flag("--quiet", options->is_quiet, "do not print the findings");
    command.flag("--strict", options->is_strict, "fail, and write no schema, when there is any finding");
    command.option("--txid", options->txid, "the transaction id of every table (default: 0)");
    command.flag("--with-host-internals", options->with_host_internals,
                 "write the schema together with what only the host side uses");
    command.flag("--verbose", options->is_verbose, "also report fields of an export that are not known");
    command.runs([options] { return my_run(*options); });
}
