// A file tov-schema.toml beside the sources: how they are to be imported, for all who do that.
#pragma once

#include "cli_arguments.hpp"

#include <string>

struct cli_import_options;
struct cli_findings_options;

// Which file it is.
struct cli_config_choice {
    std::string file; // "" for the one beside the sources, if there is one
    bool is_off = false;

    void add(const cli_command &command);
};

// Reads the file and puts what it says into options that the command line has left alone; what both say of one name is
// as the command line has it. choice.file then names the file that was read. A mistake in it is a failure that names
// the place. A run that writes its findings where the file says that the baseline is makes it anew: then none of them
// is unexpected.
void cli_apply_config(cli_config_choice &choice, cli_import_options &import, cli_findings_options &findings);
