// Views that show a table's values as the server does.
#pragma once

#include "create/client_plan.hpp"

inline constexpr const char *client_view_prefix = "v_";

// Refuses a plan in which a table has the name of another one's view.
void client_check_views(KT_context *ctx, const client_plan &plan) noexcept;

// Appends the statement that creates the view of a table.
void client_write_view(KT_context *ctx, const client_tbl &tbl, KT_string *sql) noexcept;
