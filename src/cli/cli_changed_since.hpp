// The quick comparison of two schemas of one origin, by ids and transaction ids.
#pragma once

#include "cli.hpp"

// Prints which tables and columns only one of them has, and which tables have another transaction id; gives the exit
// code.
int cli_print_changed_since(KT_context *ctx, tov_schema *a, tov_schema *b, bool is_json);
