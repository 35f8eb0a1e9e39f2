// tov-schema report: a schema for people to look at, in a browser or in a repository.

#include "cli_any_schema.hpp"
#include "cli_files.hpp"
#include "cli_findings.hpp"
#include "cli_json.hpp"
#include "cli_migration.hpp"
#include "cli_paths.hpp"
#include "cli_sources.hpp"
#include "commands.hpp"
#include "tov_changes.h"
#include "tov_report.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace {

struct report_options {
    std::string source;
    std::string output = "-";
    std::string format = "html";
    std::string findings;
    std::string database;
    std::string title;
    std::string old_schema; // to compare with
    cli_migration_options compared;
};

// The folder that the files of a report go to.
struct report_folder {
    std::string path;
    uint32_t count = 0;
};

} // namespace

static void my_make_folder(const std::string &path)
{
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error)
        throw cli_failure(error.message(), path);
}

// No exception may pass through the library, which calls this.
static void my_take_file(KT_context *ctx, void *data, const char *name, const char *text)
{
    auto *folder = static_cast<report_folder *>(data);
    try {
        cli_write_file(folder->path + "/" + name, text);
        folder->count++;
    } catch (const std::bad_alloc &) {
        KT_context__err__generic(ctx, KT_ERR_OUT_OF_MEMORY, "src/cli/command_report", __LINE__);
    } catch (const std::exception &failure) {
        KT_context__err__generic(ctx, KT_ERR_UNEXPECTED_VALUE, "src/cli/command_report", __LINE__);
        KT_context__err_set_description(ctx, "%s", failure.what());
    }
}

static void my_write(KT_context *ctx, tov_schema *schema, const tov_client_report_options &shown,
                     const report_options &options)
{
    const std::string where = options.database.empty() ? options.source : options.database;
    if (options.format == "markdown") {
        report_folder folder{options.output};
        my_make_folder(folder.path);
        tov_client__write_markdown_report(ctx, schema, &shown, my_take_file, &folder);
        cli_check(ctx, where);
        return;
    }
    KT_string *html = nullptr;
    tov_client__write_html_report(ctx, schema, &shown, &html);
    cli_check(ctx, where);
    cli_write_file(options.output, cli_take(ctx, html));
}

// Those of a file that was given, else those of reading the source.
static const KT_varray *my_findings(KT_context *ctx, const std::string &path, const cli_map *file,
                                    const cli_findings &imported)
{
    KT_varray *findings = nullptr;
    if (!file)
        return imported.list;
    KT_vhash__get__varray(ctx, *file, "findings", &findings);
    cli_check(ctx, path);
    return findings;
}

static void my_compare(KT_context *ctx, const report_options &options, tov_schema *schema, KT_vhash **changes)
{
    const cli_migration migration(options.compared);
    cli_schema old_schema(ctx);
    cli_load_any_schema(ctx, options.old_schema, &old_schema, nullptr, options.compared.config);
    tov_client__compare(ctx, old_schema, schema, migration.compare(), changes);
    cli_check(ctx, options.old_schema);
}

static int my_run(const report_options &options)
{
    if (options.format == "markdown" && options.output == "-")
        throw cli_usage_failure("--format markdown writes several files: --output must name a folder");
    if (options.format == "markdown" && !options.old_schema.empty())
        throw cli_usage_failure("--diff is for pages; tov-schema diff --format markdown writes changes as Markdown");
    std::vector<std::string> inputs = {options.source, options.findings, options.database, options.old_schema};
    std::erase(inputs, "");
    cli_keep_inputs(options.output, cli_source_files(inputs));
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_findings imported(ctx);
    cli_load_any_schema(ctx, options.source, &schema, &imported, options.compared.config);
    std::optional<cli_map> findings_file;
    if (!options.findings.empty())
        findings_file.emplace(ctx, cli_read_text(options.findings), options.findings);
    tov_client_report_options shown = {};
    shown.title = options.title.empty() ? nullptr : options.title.c_str();
    shown.database = options.database.empty() ? nullptr : options.database.c_str();
    shown.findings = my_findings(ctx, options.findings, findings_file ? &*findings_file : nullptr, imported);
    kt_owned_vhash changes{ctx};
    if (!options.old_schema.empty())
        my_compare(ctx, options, schema, changes.out());
    shown.changes = changes;
    my_write(ctx, schema, shown, options);
    return cli_done;
}

void cli_add_report(cli_arguments &arguments)
{
    auto options = std::make_shared<report_options>();
    const cli_command command = arguments.add("report", "Write a report on a schema, for a browser or a repository");
    command.details(
        "SOURCE is a schema, or anything that tov-schema import takes: then the findings of the import are shown\n"
        "beside what they concern. The page for a browser is one file that needs no other and no network. Markdown is\n"
        "a file for each table, with diagrams in Mermaid, and a README.md that lists them.\n\n"
        "Examples: tov-schema report Shop.dacpac -o shop.html\n"
        "          tov-schema report schema.json --findings findings.json --database shop.db -o shop.html\n"
        "          tov-schema report --diff old.json new.json -o changes.html\n"
        "          tov-schema report schema.json --format markdown -o docs/schema");
    command.argument("SOURCE", options->source, "a schema or a source; - for standard input").required();
    command.option("-o,--output", options->output,
                   "where the page goes (default: standard output); of Markdown the folder");
    command.option("--format", options->format, "html (default) or markdown", "NAME").one_of({"html", "markdown"});
    command.option("--findings", options->findings, "show the findings in this file, which import wrote as JSON");
    command.option("--database", options->database, "count and check the rows of this database");
    const cli_option diff = command.option("--diff", options->old_schema,
                                           "mark what has changed since this schema, or source of one", "OLD");
    command
        .option("--by", options->compared.by, "with --diff: what tables and columns are known by: name (default) or id",
                "WHAT")
        .one_of({"name", "id"})
        .needs(diff);
    command
        .option("--rename", options->compared.renames,
                "with --diff: a table or TABLE.COLUMN that was renamed; OLD= says that it was removed; may be repeated",
                "OLD=NEW")
        .needs(diff);
    command.option("--title", options->title, "what the report is called (default: the server's database)", "TEXT");
    options->compared.config.add(command);
    command.runs([options] { return my_run(*options); });
}
