// Reading a schema from whatever has one.
#pragma once

#include "cli.hpp"

// Reads a schema, or imports the source that the path leads to: a file of any kind or a folder of scripts.
void cli_load_any_schema(KT_context *ctx, const std::string &path, cli_schema *schema);
