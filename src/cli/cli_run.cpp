// The command line as a whole: which subcommand runs, and how failures come out.

#include "cli_run.hpp"

#include "cli.hpp"
#include "cli_files.hpp"
#include "commands.hpp"
#include "tov_version.h"

namespace {

constexpr const char *about =
    "From a SQL Server catalogue export to a working SQLite database.\n"
    "\n"
    "  tov-schema import catalogue.json -o schema.json\n"
    "  tov-schema create schema.json client.db\n"
    "\n"
    "A file named - is standard input or output. Exit codes: 0 done, 1 refused input, 2 usage\n"
    "(diff: 0 same, 1 different, 2 trouble).";

void add_subcommands(CLI::App &app, cli_action *action)
{
    cli_add_import(app, action);
    cli_add_create(app, action);
    cli_add_sql(app, action);
    cli_add_tables(app, action);
    cli_add_default(app, action);
    cli_add_refs(app, action);
    cli_add_graph(app, action);
    cli_add_select(app, action);
    cli_add_diff(app, action);
    cli_add_lite(app, action);
}

// One line, whatever a document brings into it: control characters, with which it could write on a terminal what it
// likes, become blanks.
int complain(std::string text, int code)
{
    for (char &byte : text)
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F)
            byte = ' ';
    cli_tell("tov-schema: %s\n", text.c_str());
    return code;
}

} // namespace

int cli_run(int argc, char **argv)
try {
    CLI::App app(about, "tov-schema");
    cli_action action;
    app.set_version_flag("--version", "tov-schema " TOV_SCHEMA_VERSION);
    app.require_subcommand(1);
    add_subcommands(app, &action);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return app.exit(error); // --help, --version
        complain(error.what(), cli_usage);
        cli_tell("Run tov-schema --help, or tov-schema SUBCOMMAND --help.\n");
        return cli_usage;
    }
    return action();
} catch (const cli_failure &failure) {
    return complain(failure.what(), failure.exit_code);
} catch (const std::bad_alloc &) {
    return complain("out of memory", cli_refused);
}
