// Reading a schema from whatever has one.
#pragma once

#include "cli_config.hpp"
#include "cli_findings.hpp"

// Whether a file is a SQLite database.
bool cli_is_database(const std::string &path);

// Reads a schema; or imports the source that the path leads to, a file of any kind or a folder of scripts; or takes
// what a database has recorded of its schema. What an import finds goes to findings, if they are wanted; a schema has
// none. The settings of a source are those that import reads.
void cli_load_any_schema(KT_context *ctx, const std::string &path, cli_schema *schema, cli_findings *findings = nullptr,
                         const cli_config_choice &config = {});
