// Indexes beside those that keys bring along: the server's own, one for each foreign key, and those that keep a rule.
#pragma once

#include "create/client_plan.hpp"

// Adds the indexes of every table to the plan, under names that no table, trigger or view has.
void client_add_indexes(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept;

// The statement that creates an index.
std::string client_index_statement(const client_tbl &tbl, const client_index &index);
