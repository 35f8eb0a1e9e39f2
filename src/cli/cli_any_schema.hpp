// Reading a schema from whatever has one.
#pragma once

#include "cli_findings.hpp"

// Reads a schema, or imports the source that the path leads to: a file of any kind or a folder of scripts.
// What an import finds goes to findings, if they are wanted; a schema has none.
void cli_load_any_schema(KT_context *ctx, const std::string &path, cli_schema *schema,
                         cli_findings *findings = nullptr);
