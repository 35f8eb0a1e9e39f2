// The commands: each adds itself to the command line, with what it does when it is called.
#pragma once

#include "cli_arguments.hpp"

void cli_add_catalogue_query(cli_arguments &arguments);
void cli_add_import(cli_arguments &arguments);
void cli_add_create(cli_arguments &arguments);
void cli_add_sql(cli_arguments &arguments);
void cli_add_convert(cli_arguments &arguments);
void cli_add_load(cli_arguments &arguments);
void cli_add_unload(cli_arguments &arguments);
void cli_add_check(cli_arguments &arguments);
void cli_add_doctor(cli_arguments &arguments);
void cli_add_tables(cli_arguments &arguments);
void cli_add_columns(cli_arguments &arguments);
void cli_add_default(cli_arguments &arguments);
void cli_add_refs(cli_arguments &arguments);
void cli_add_graph(cli_arguments &arguments);
void cli_add_report(cli_arguments &arguments);
void cli_add_select(cli_arguments &arguments);
void cli_add_diff(cli_arguments &arguments);
void cli_add_migrate(cli_arguments &arguments);
void cli_add_lite(cli_arguments &arguments);
