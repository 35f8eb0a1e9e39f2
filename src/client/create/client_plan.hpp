// What will be created: the tables in their order, their indexes, and what deleting a row of each must do to others.
#pragma once

#include "create/client_collations.hpp"
#include "rules/client_rowversion.hpp"
#include "tov_client.h"

#include <string>
#include <vector>

// An index of the plan.
struct client_index {
    std::string name; // that nothing else in the database has
    bool is_unique = false;
    std::string parts; // what stands between the parentheses
    std::string where; // its condition; empty when it holds all rows
};

// A table of the plan.
struct client_tbl {
    const char *id;                    // borrowed from the rows
    const char *name;                  // borrowed from the schema
    client_row_tbl rows;               // what they are made of
    client_collations collations;      // of its columns, where the server's are wanted
    std::string cascades;              // statements that delete the rows that refer to a deleted one
    std::string resets;                // statements that make such rows refer to nothing, or to their default
    std::vector<client_index> indexes; // in the order of their creation, after the table
    client_versioned versioned;        // the column that the database fills in, under the server's rules
};

struct client_plan {
    // What is wanted, which is set before the plan is made.
    bool with_views = false;      // whether each table gets one
    bool with_rules = true;       // whether values have to obey the server's rules
    bool with_constraints = true; // whether tables check values themselves, else triggers do
    bool with_collations = false; // whether strings compare as the server says
    bool with_record = false;     // whether the database keeps a record of its schema
    int32_t indexes = TOV_CLIENT_INDEXES_ALL;

    std::vector<client_tbl> tbls; // in creation order
    std::string trigger_prefix;   // what the name of every trigger, and of no table, begins with
};

// Takes over what the options say is wanted; null for all of them zero.
void client_apply_options(KT_context *ctx, const tov_client_create_options *options, client_plan &plan) noexcept;

// Checks the schema's texts and makes the plan. The schema must outlive it.
void client_make_plan(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept;
