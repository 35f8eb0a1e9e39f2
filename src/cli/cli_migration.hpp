// Planning a migration for the commands that print or run one.
#pragma once

#include "cli.hpp"
#include "cli_config.hpp"
#include "tov_migrate.h"

#include <string>
#include <vector>

struct cli_migration_options {
    std::string by = "name";
    std::vector<std::string> renames;
    std::vector<std::string> allowed_losses;
    cli_config_choice config;
};

// The same for the library; the options must outlive it.
class cli_migration {
  public:
    explicit cli_migration(const cli_migration_options &options);
    operator const tov_client_migrate_options *() const
    {
        return &chosen_;
    }
    const tov_client_compare_options *compare() const
    {
        return &chosen_.compare;
    }
    // How the database that OLD is was created, if it is one.
    void create_as(const tov_client_create_options &create);

  private:
    std::vector<const char *> renames_, allowed_losses_;
    tov_client_create_options create_ = {};
    tov_client_migrate_options chosen_ = {};
};

// Reads what a migration begins with: a schema, a source of one, or a database, which says how it was created as well.
void cli_load_old_schema(KT_context *ctx, const std::string &path, cli_schema *schema, cli_migration &migration,
                         const cli_config_choice &config);

// The script that turns a database of one schema into one of another.
std::string cli_migration_script(KT_context *ctx, const std::string &old_path, const std::string &new_path,
                                 const cli_migration_options &options);
