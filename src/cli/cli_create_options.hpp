// The options that say what a created database is like.
#pragma once

#include "cli_arguments.hpp"
#include "tov_client.h"

// One of tov_client_rules, by its name.
int32_t cli_rules(const std::string &name);

struct cli_create_options {
    std::string rules = "server";
    std::string indexes = "all";
    std::string collations = "builtin";
    std::string checks = "constraints";
    bool views = false;
    bool no_record = false;

    void add(const cli_command &command);
    // For the library, without progress.
    tov_client_create_options for_client() const;
};
