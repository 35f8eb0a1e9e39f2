// The option that says which values a created database refuses.
#pragma once

#include "cli_arguments.hpp"
#include "tov_client.h"

inline void cli_add_rules(const cli_command &command, std::string &rules)
{
    command
        .option("--rules", rules,
                "which values are refused: server (default), what the server would refuse, and other forms of a\n"
                "value than the one of docs/values.md; or basic, what breaks the column's type",
                "NAME")
        .one_of({"server", "basic"});
}

inline int32_t cli_rules(const std::string &rules)
{
    return rules == "basic" ? TOV_CLIENT_RULES_BASIC : TOV_CLIENT_RULES_SERVER;
}
