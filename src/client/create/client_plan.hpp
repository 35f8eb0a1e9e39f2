// What will be created: the tables in their order, their indexes, and what deleting a row of each must do to others.
#pragma once

#include "kt_owned.hpp"
#include "rules/client_rowversion.hpp"
#include "tov_client.h"

#include <string>
#include <vector>

// An index of the plan.
struct client_index {
    std::string name;       // that nothing else in the database has
    bool is_unique = false; //
    std::string parts;      // what stands between the parentheses
    std::string where;      // its condition; empty when it holds all rows
};

// A table of the plan.
struct client_tbl {
    const char *id;                    // borrowed from the plan
    const char *name;                  // borrowed from the schema
    std::string cascades;              // statements that delete the rows that refer to a deleted one
    std::string resets;                // statements that make such rows refer to nothing, or to their default
    std::vector<client_index> indexes; // in the order of their creation, after the table
    client_versioned versioned;        // the column that the database fills in, under the server's rules
};

struct client_plan {
    explicit client_plan(KT_context *ctx) noexcept : tbl_ids(ctx)
    {
    }
    kt_owned_varray tbl_ids;
    std::vector<client_tbl> tbls; // in creation order
    bool with_views = false;      // whether each table gets one; set before the plan is made
    bool with_rules = true;       // whether values have to obey the server's rules; set before the plan is made
    int32_t indexes = TOV_CLIENT_INDEXES_ALL; // which ones; set before the plan is made
    std::string trigger_prefix;               // what the name of every trigger, and of no table, begins with
};

// Checks the schema's texts and makes the plan. The schema must outlive it.
void client_make_plan(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept;
