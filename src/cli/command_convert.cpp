// tov-schema convert: a source becomes a database with its rows, in one step.
//
// The database is made under another name beside its own and renamed when it is whole, so there is never a part of one.

#include "cli_create_options.hpp"
#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_import.hpp"
#include "cli_load_report.hpp"
#include "cli_progress.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "tov_host.h"
#include "tov_row_parts.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

static std::string my_new_name(const std::string &database)
{
    return database + ".new";
}

namespace {

struct convert_options {
    cli_import_options import;
    std::vector<std::string> paths; // sources, and last the database
    std::string database;
    std::string schema;
    cli_findings_options findings;
    std::string rejects;
    cli_create_options made;
    bool exact = false;
    bool all_or_nothing = false;
    bool is_compact = false;
};

// A file that goes again unless it gets its name.
class new_database {
  public:
    explicit new_database(const std::string &name) : name_(name), path_(my_new_name(name))
    {
        unlink(path_.c_str());
    }
    ~new_database()
    {
        if (!path_.empty())
            unlink(path_.c_str());
    }
    new_database(const new_database &) = delete;
    new_database &operator=(const new_database &) = delete;

    const std::string &path() const
    {
        return path_;
    }
    void keep()
    {
        const int file = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        const bool written = file >= 0 && fsync(file) == 0;
        if (file >= 0)
            close(file);
        if (!written || rename(path_.c_str(), name_.c_str()) != 0)
            throw cli_failure(std::generic_category().message(errno), name_);
        path_.clear();
    }

  private:
    std::string name_;
    std::string path_;
};

class scratch_folder {
  public:
    scratch_folder()
    {
        std::error_code error;
        path_ = std::filesystem::temp_directory_path(error) / "tov-schema-XXXXXX";
        if (error)
            throw cli_failure("cannot make a temporary folder (" + error.message() + ")", "TMPDIR");
        if (!mkdtemp(path_.data()))
            throw cli_failure("cannot make a temporary folder (" + std::generic_category().message(errno) + ")", path_);
    }
    ~scratch_folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    scratch_folder(const scratch_folder &) = delete;
    scratch_folder &operator=(const scratch_folder &) = delete;

    const std::string &path() const
    {
        return path_;
    }

  private:
    std::string path_;
};

// Hands what the host side reads to the client side.
struct part_bridge {
    const std::string &package;
    tov_client_take_part take = nullptr;
    void *data = nullptr;
};

} // namespace

static void my_pass_on(KT_context *ctx, void *data, const tov_host_row_part *part, const char *bytes, size_t size)
{
    const auto &bridge = *static_cast<const part_bridge *>(data);
    bridge.take(ctx, bridge.data, part->schema_name, part->tbl_name, part->number, bytes, size);
}

static void my_read_parts(KT_context *ctx, void *data, tov_client_take_part take, void *take_data)
{
    auto &bridge = *static_cast<part_bridge *>(data);
    bridge.take = take;
    bridge.data = take_data;
    tov_host__read_row_parts(ctx, bridge.package.data(), bridge.package.size(), my_pass_on, &bridge);
}

static void my_create(KT_context *ctx, const convert_options &options, tov_schema *schema, const std::string &path)
{
    cli_progress progress("creating");
    tov_client_create_options create_options = options.made.for_client();
    create_options.progress = cli_progress::step;
    create_options.data = &progress;
    tov_client__create_database__with(ctx, schema, path.c_str(), &create_options);
    progress.finish();
    cli_check(ctx, options.database);
}

static void my_load_file(KT_context *ctx, tov_client_loader *loader, const std::string &path, const std::string &name)
{
    tov_client__load_file(ctx, loader, path.c_str());
    cli_check(ctx, name);
}

// Rows are read from files, piece by piece; what came from standard input is in memory, and becomes one.
static void my_load_script(KT_context *ctx, tov_client_loader *loader, const cli_source &source)
{
    if (source.is_file)
        return my_load_file(ctx, loader, source.name, source.name);
    const scratch_folder folder;
    const std::string path = folder.path() + "/" + source.name;
    cli_write_file(path, source.bytes);
    my_load_file(ctx, loader, path, source.name);
}

static int my_load(KT_context *ctx, const convert_options &options, tov_schema *schema,
                   const std::vector<cli_source> &sources, const std::string &path)
{
    const std::string &bytes = sources.front().bytes;
    const bool is_package = tov_host__recognise(bytes.data(), bytes.size()) == TOV_HOST_SOURCE_PACKAGE;
    tov_client_load_options load_options = {};
    load_options.rejects = options.rejects.c_str();
    load_options.exact = options.exact;
    load_options.all_or_nothing = options.all_or_nothing;
    load_options.is_scratch = 1;
    load_options.format = is_package ? "auto" : "insert";
    load_options.encoding = is_package ? "" : options.import.encoding.c_str();
    part_bridge bridge{bytes};
    int64_t said = -1;
    cli_loader loader(ctx);
    tov_client__open_loader(ctx, schema, path.c_str(), &load_options, &loader.loader);
    cli_check(ctx, options.database);
    if (is_package) {
        const cli_waiting waiting("loading");
        tov_host__count_packed_rows(ctx, bytes.data(), bytes.size(), &said);
        cli_check(ctx, sources.front().name);
        tov_client__load_parts(ctx, loader.loader, sources.front().name.c_str(), my_read_parts, &bridge);
        cli_check(ctx, sources.front().name);
    }
    const bool is_script = tov_host__recognise(bytes.data(), bytes.size()) == TOV_HOST_SOURCE_SCRIPT;
    for (const cli_source &source : sources) {
        if (is_script)
            my_load_script(ctx, loader.loader, source);
    }
    return cli_finish_load(ctx, loader, options.database, options.rejects, options.findings.is_quiet, said);
}

static void my_refuse_database(const std::string &path)
{
    struct stat file {};
    if (path == "-")
        throw cli_usage_failure("a database cannot be written to standard output");
    if (stat(path.c_str(), &file) == 0)
        throw cli_failure("there is a file of this name already", path);
}

static int my_run(convert_options options)
{
    cli_apply_config(options.import.config, options.import, options.findings);
    cli_check_findings_options(options.findings);
    my_refuse_database(options.database);
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_findings findings(ctx);
    const std::vector<cli_source> sources = cli_read_sources(options.import.sources);
    cli_keep_import_inputs(options.import, sources, options.findings,
                           {options.database, my_new_name(options.database), options.schema});
    new_database database(options.database);
    cli_import(ctx, options.import, sources, &schema, &findings);
    cli_report_findings(findings, options.findings, options.import.is_verbose, cli_common_path(sources));
    if (!options.schema.empty())
        cli_write_file(options.schema, cli_schema_json(ctx, schema, options.is_compact));
    my_create(ctx, options, schema, database.path());
    const int code = my_load(ctx, options, schema, sources, database.path());
    if (code != cli_done && options.all_or_nothing)
        return code;
    database.keep();
    return code;
}

void cli_add_convert(cli_arguments &arguments)
{
    auto options = std::make_shared<convert_options>();
    const cli_command command = arguments.add("convert", "Make a database of a package, scripts or an export at once");
    command.details("Imports, creates and loads in one step: the rows too that a package carries. Rows that the "
                    "database\ndoes not accept are refused, each with its place and reason. Exit code 1: rows were "
                    "refused or\nare missing, or --strict was given and a finding is not expected.\n\n"
                    "Example: tov-schema convert Shop.bacpac shop.db");
    command
        .argument("SOURCE... DATABASE", options->paths,
                  "a file, or several scripts or folders of them; and the database file, which must be new")
        .required();
    const cli_option schema =
        command.option("-s,--schema", options->schema, "write the schema to this file too", "FILE");
    command.flag("--compact", options->is_compact, "write it on one line, not a member a line").needs(schema);
    cli_add_findings_options(command, options->findings);
    command.option("--rejects", options->rejects, "keep refused rows in this directory, with the reasons beside them",
                   "FOLDER");
    options->made.add(command);
    command.flag("--exact", options->exact, "refuse values that would have to be shortened");
    command.flag("--all-or-nothing", options->all_or_nothing, "make no database when any row is refused");
    command.flag("--quiet", options->findings.is_quiet, "print neither findings nor the table at the end");
    cli_add_source_options(command, options->import);
    command.runs([options] {
        if (options->paths.size() < 2)
            throw cli_usage_failure("DATABASE is required");
        options->database = options->paths.back();
        options->import.sources.assign(options->paths.begin(), options->paths.end() - 1);
        return my_run(*options);
    });
}
