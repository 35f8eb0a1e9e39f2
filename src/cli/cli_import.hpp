// Importing a source, for the commands that begin with one.
#pragma once

#include "cli.hpp"
#include "cli_arguments.hpp"
#include "cli_config.hpp"
#include "cli_findings.hpp"
#include "cli_sources.hpp"

#include <vector>

// What the options of importing say.
struct cli_import_options {
    std::vector<std::string> sources;
    std::string kind = "auto";
    std::string encoding;
    std::string clock;
    std::vector<std::string> defines, only, skip, renames, types, constants;
    int64_t txid = 0;
    bool is_verbose = false;
    cli_config_choice config;
};

// Adds the options that say what of a source is imported, and how.
void cli_add_source_options(const cli_command &command, cli_import_options &options);

// Refuses outputs, the file of findings too, that are one another or something that is read: a source, a script in a
// folder, the baseline, the file of settings.
void cli_keep_import_inputs(const cli_import_options &options, const std::vector<cli_source> &sources,
                            const cli_findings_options &findings, std::vector<std::string> outputs);

// Imports sources that were read.
void cli_import(KT_context *ctx, const cli_import_options &options, const std::vector<cli_source> &sources,
                cli_schema *schema, cli_findings *findings);
