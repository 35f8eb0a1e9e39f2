// The steps of a migration, as plain records.
#pragma once

#include "check/client_guard.hpp"
#include "compare/client_match.hpp"
#include "migrate/client_object_list.hpp"
#include "migrate/client_row_copy.hpp"
#include "tov_migrate.h"

#include <optional>
#include <unordered_set>

enum class client_migration_class : uint8_t { free, rebuilds, may_fail, loses };

// A statement and what it may do: one with texts of a schema does what it is for and nothing else.
struct client_migration_statement {
    std::string sql;
    client_duty duty = client_duty::own_statement;
    std::string tbl = {};
    std::string name = {};
    std::optional<client_row_copy> copy = {}; // is run in its place
};

// What a step would lose.
struct client_loss {
    size_t old_tbl = client_nothing; // nothing where nothing is lost
    std::string col = {};            // of it, by the names on the server and in SQLite; empty when all of it goes
    std::string sqlite_col = {};
};

struct client_migration_step {
    client_migration_class weight = client_migration_class::free;
    std::string description;
    std::string tbl = {};         // in SQLite
    std::string count_query = {}; // of rows that may fail, or values that are lost
    client_loss loss = {};
    std::vector<client_migration_statement> statements = {};
    std::string rebuilt = {};       // the table that is rebuilt: what somebody has added to it is made anew
    bool numbers_rows = false;      // needs the triggers
    bool checks_references = false; // as a script can

    void add(std::string sql)
    {
        statements.push_back({std::move(sql)});
    }
};

// Whether some of its values only the loader's converters can make.
bool client_takes_converters(const client_migration_step &step);

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

// Adds a step that does something.
void client_add_step(client_migration &migration, client_migration_step step);

// What a table is called while it is made anew; the same with an empty name before any name.
std::string client_moving_name(const client_migration &migration, const std::string &name);

client_changed_tbl client_changed(const client_migration &migration, const client_tbl_pair &pair);

// Plans everything. The schemas must outlive the migration.
void client_plan_migration(KT_context *ctx, const tov_client_migrate_options &options,
                           const tov_client_create_options *old_options, client_migration &migration);

// Adds the steps that give tables and columns their new names.
void client_add_renames(client_migration &migration);

// Adds steps that number the rows of tables whose column for it is new.
void client_add_new_versions(KT_context *ctx, client_migration &migration);

// Fails with a description of the losses that the options do not allow.
void client_check_losses(KT_context *ctx, const client_migration &migration, const tov_client_migrate_options &options);

// Statements without a text of a schema.
inline constexpr const char *client_legacy_on = "PRAGMA legacy_alter_table=ON";
inline constexpr const char *client_legacy_off = "PRAGMA legacy_alter_table=OFF";
