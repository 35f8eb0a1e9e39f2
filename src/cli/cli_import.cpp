#include "cli_import.hpp"

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_paths.hpp"
#include "cli_progress.hpp"
#include "tov_host.h"

namespace {

// Strings as the library takes them; borrowed from the options.
class string_list {
  public:
    explicit string_list(const std::vector<std::string> &list)
    {
        for (const std::string &string : list)
            items_.push_back(string.c_str());
    }
    operator tov_host_list() const
    {
        return {items_.data(), items_.size()};
    }

  private:
    std::vector<const char *> items_;
};

} // namespace

void cli_keep_import_inputs(const cli_import_options &options, const std::vector<cli_source> &sources,
                            const cli_findings_options &findings, std::vector<std::string> outputs)
{
    std::vector<std::string> inputs = options.sources;
    for (const cli_source &source : sources)
        if (source.is_file)
            inputs.push_back(source.name);
    for (const std::string &file : {findings.baseline, options.config.file})
        if (!file.empty())
            inputs.push_back(file);
    outputs.push_back(findings.output);
    cli_keep_apart(std::move(outputs), inputs);
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

static int32_t my_clock(const std::string &name)
{
    if (name == "utc")
        return TOV_HOST_CLOCK_UTC;
    return name == "local" ? TOV_HOST_CLOCK_LOCAL : TOV_HOST_CLOCK_LOCAL_REPORTED;
}

static std::vector<tov_host_file> my_files(const std::vector<cli_source> &sources)
{
    std::vector<tov_host_file> files;
    files.reserve(sources.size());
    for (const cli_source &source : sources)
        files.push_back({source.name.c_str(), source.bytes.data(), source.bytes.size()});
    return files;
}

// Errors in scripts name the file themselves, and there may be many, a line each: all but the last are printed here.
static void my_check(KT_context *ctx, const std::vector<cli_source> &sources)
{
    const std::string what = KT_context__err_description(ctx);
    const std::string &name = sources.front().name;
    if (!KT_context__has_err(ctx) || (sources.size() == 1 && !what.starts_with(name)))
        return cli_check(ctx, name);
    size_t begin = 0;
    for (size_t end; (end = what.find('\n', begin)) != std::string::npos; begin = end + 1)
        cli_tell_line("tov-schema: " + what.substr(begin, end - begin));
    const int exit_code = cli_is_internal(KT_context__err_code(ctx)) ? cli_internal : cli_refused;
    KT_context__err_reset(ctx);
    throw cli_failure(what.substr(begin), "", exit_code);
}

void cli_import(KT_context *ctx, const cli_import_options &options, const std::vector<cli_source> &sources,
                cli_schema *schema, cli_findings *findings)
{
    const std::vector<tov_host_file> files = my_files(sources);
    const string_list only(options.only), skip(options.skip), renames(options.renames), defines(options.defines),
        constants(options.constants), types(options.types);
    tov_host_options host_options{};
    host_options.txid = options.txid;
    host_options.verbose = options.is_verbose;
    host_options.source = my_kind(options.kind);
    host_options.encoding = options.encoding.empty() ? nullptr : options.encoding.c_str();
    host_options.only = only;
    host_options.skip = skip;
    host_options.renames = renames;
    host_options.defines = defines;
    host_options.clock = my_clock(options.clock);
    host_options.constants = constants;
    host_options.types = types;
    {
        const cli_waiting waiting("importing");
        tov_host__import_files(ctx, files.data(), files.size(), &host_options, &schema->schema, &findings->list);
    }
    my_check(ctx, sources);
    if (findings->list)
        KT_varray__count(ctx, findings->list, &findings->count);
}

void cli_add_source_options(const cli_command &command, cli_import_options &options)
{
    command.option("--from", options.kind, "what SOURCE is, whatever it looks like: json, package or script", "KIND")
        .one_of({"json", "package", "script"});
    command.option("--only", options.only, "import only tables that match PATTERN; may be repeated", "PATTERN");
    command.option("--skip", options.skip, "leave out tables that match PATTERN; may be repeated", "PATTERN");
    command.option("--rename", options.renames,
                   "give a table or column another name in SQLite; OLD is SCHEMA.TABLE or SCHEMA.TABLE.COLUMN",
                   "OLD=NEW");
    command.option(
        "--type", options.types,
        "give a column another type of the server; NAME is SCHEMA.TABLE.COLUMN, or SCHEMA.TYPE for all columns "
        "of an alias type",
        "NAME=TYPE");
    command.option("--encoding", options.encoding, "the encoding of scripts that are not Unicode, e.g. windows-1252",
                   "NAME");
    command.option("--define", options.defines, "the value of a variable $(NAME) in scripts", "NAME=VALUE");
    command
        .option("--clock", options.clock,
                "what getdate() and other local clocks become in defaults: local (the default, with a finding) or utc",
                "KIND")
        .one_of({"utc", "local"});
    command.option("--constant", options.constants,
                   "what a function such as db_name() or suser_sname() gives in defaults; may be repeated",
                   "NAME=VALUE");
    command.option("--txid", options.txid, "the transaction id of every table (default: 0)");
    options.config.add(command);
    command.flag("--verbose", options.is_verbose,
                 "also print findings of severity info, and report fields of an export that are not known");
}
