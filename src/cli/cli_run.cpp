// The command line as a whole: which command runs, and how failures come out.

#include "cli_run.hpp"

#include "cli.hpp"
#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_version.hpp"
#include "commands.hpp"
#include "tov_sqlite.h"

#include <sqlite3.h>

namespace {

constexpr const char *about =
    "Makes SQLite databases of SQL Server packages, scripts and catalogue exports.\n"
    "\n"
    "  tov-schema convert Shop.bacpac shop.db\n"
    "  tov-schema import scripts/ -o schema.json\n"
    "  tov-schema create schema.json shop.db\n"
    "\n"
    "tov-schema help COMMAND describes a command. A file named - is standard input or output.\n"
    "Exit codes: 0 done; 1 findings (import, convert --strict), differences (diff), rows that are\n"
    "refused (check) or were refused or are missing (load, convert), something broken (doctor); 2 wrong\n"
    "usage, or a file that cannot be used; 3 out of memory or an internal error.";

} // namespace

static void my_add_commands(cli_arguments &arguments)
{
    cli_add_catalogue_query(arguments);
    cli_add_import(arguments);
    cli_add_create(arguments);
    cli_add_sql(arguments);
    cli_add_convert(arguments);
    cli_add_load(arguments);
    cli_add_unload(arguments);
    cli_add_check(arguments);
    cli_add_doctor(arguments);
    cli_add_tables(arguments);
    cli_add_columns(arguments);
    cli_add_default(arguments);
    cli_add_refs(arguments);
    cli_add_graph(arguments);
    cli_add_report(arguments);
    cli_add_select(arguments);
    cli_add_diff(arguments);
    cli_add_migrate(arguments);
    cli_add_lite(arguments);
}

// Databases that compare strings as the server does can be made, loaded and looked at by every command.
static void my_add_server_collations()
{
    using any_entry = void (*)();
    if (sqlite3_auto_extension(reinterpret_cast<any_entry>(sqlite3_tovsqlite_init)) != SQLITE_OK)
        throw std::bad_alloc();
}

static int my_complain_of_memory()
{
    cli_tell("tov-schema: out of memory\n"); // allocates nothing
    return cli_internal;
}

static int my_complain(const char *what, int code)
try {
    cli_tell_line(std::string("tov-schema: ") + what);
    return code;
} catch (const std::bad_alloc &) {
    return my_complain_of_memory();
}

int cli_run(int argc, char **argv)
try {
    my_add_server_collations();
    cli_arguments arguments(about, cli_version);
    my_add_commands(arguments);
    return arguments.run(argc, argv);
} catch (const cli_usage_failure &failure) {
    const int code = my_complain(failure.what(), failure.exit_code);
    cli_tell("Run tov-schema help, or tov-schema help COMMAND.\n");
    return code;
} catch (const cli_failure &failure) {
    return my_complain(failure.what(), failure.exit_code);
} catch (const std::bad_alloc &) {
    return my_complain_of_memory();
} catch (const std::exception &error) {
    return my_complain(error.what(), cli_internal);
}
