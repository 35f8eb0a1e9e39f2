// The steps of a migration, as plain records.
#pragma once

#include "compare/client_match.hpp"
#include "migrate/client_object_list.hpp"
#include "tov_migrate.h"

#include <unordered_set>

enum class client_migration_class : uint8_t { free, rebuilds, may_fail, loses };

struct client_migration_step {
    client_migration_class weight = client_migration_class::free;
    std::string description;
    std::string tbl = {};         // in SQLite
    std::string count_query = {}; // of rows that may fail, or values that are lost
    std::string loss = {};        // TABLE or TABLE.COLUMN
    std::vector<std::string> sql = {};
    std::string rebuilt = {};  // the table that is rebuilt: what somebody has added to it is made anew
    bool numbers_rows = false; // needs the triggers
};

// A migration while it is planned.
struct client_migration {
    tov_schema *old_schema = nullptr;
    tov_schema *new_schema = nullptr;
    client_comparison comparison;
    client_object_list old_list;
    client_object_list new_list;
    std::unordered_set<std::string> touched; // tables, by new names in lower case, on which everything is made anew
    std::vector<client_migration_step> steps;
};

// A table of both schemas.
struct client_changed_tbl {
    const client_tbl_content &old_tbl;
    const client_tbl_content &new_tbl;
    const client_tbl_pair &pair;
};

// Plans everything. The schemas must outlive the migration.
void client_plan_migration(KT_context *ctx, const tov_client_migrate_options &options,
                           const tov_client_create_options *old_options, client_migration &migration);

// Adds the steps that make a table anew, after what they may fail on or lose.
void client_add_rebuild(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed);

// Adds what a column may fail on or lose, without a statement.
void client_add_col_risks(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed);

// Whether rows have to be written anew for their values.
void client_needs_values(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                         bool &needs);

// Adds steps that number the rows of tables whose column for it is new.
void client_add_new_versions(KT_context *ctx, client_migration &migration);

// Fails with a description of the losses that the options do not allow.
void client_check_losses(KT_context *ctx, const client_migration &migration, const tov_client_migrate_options &options);

// Statements without a text of a schema.
inline constexpr const char *client_legacy_on = "PRAGMA legacy_alter_table=ON";
inline constexpr const char *client_legacy_off = "PRAGMA legacy_alter_table=OFF";
