// The subcommands: each adds itself to the command line, with what it does when it is called.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

// What the subcommand on the command line does; gives the exit code.
using cli_action = std::function<int()>;

void cli_add_import(CLI::App &app, cli_action *action);
void cli_add_create(CLI::App &app, cli_action *action);
void cli_add_sql(CLI::App &app, cli_action *action);
void cli_add_tables(CLI::App &app, cli_action *action);
void cli_add_default(CLI::App &app, cli_action *action);
void cli_add_refs(CLI::App &app, cli_action *action);
void cli_add_graph(CLI::App &app, cli_action *action);
void cli_add_select(CLI::App &app, cli_action *action);
void cli_add_diff(CLI::App &app, cli_action *action);
void cli_add_lite(CLI::App &app, cli_action *action);
