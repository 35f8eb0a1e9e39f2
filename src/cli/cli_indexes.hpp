// The option that says which indexes a created database gets.
#pragma once

#include "cli_arguments.hpp"
#include "tov_client.h"

inline void cli_add_indexes(const cli_command &command, std::string &indexes)
{
    command
        .option("--indexes", indexes,
                "which indexes are created: all (default), the server's and one for each foreign key that none\n"
                "begins with; references, those for foreign keys only; or none",
                "NAME")
        .one_of({"all", "references", "none"});
}

inline int32_t cli_indexes(const std::string &indexes)
{
    if (indexes == "references")
        return TOV_CLIENT_INDEXES_REFERENCES;
    return indexes == "none" ? TOV_CLIENT_INDEXES_NONE : TOV_CLIENT_INDEXES_ALL;
}
