// Delete actions that the tables' own definitions leave to triggers.
#pragma once

#include "create/client_plan.hpp"

// Adds to each table of the plan the statements that deleting one of its rows calls for.
void client_add_delete_actions(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept;
