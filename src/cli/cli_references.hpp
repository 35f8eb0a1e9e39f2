// The foreign keys of a schema with names, as refs and graph show them.
#pragma once

#include "cli.hpp"

#include <vector>

struct cli_reference {
    std::string name; // of the constraint; may be empty
    std::string from_table;
    std::string to_table;
    std::vector<std::string> from_columns;
    std::vector<std::string> to_columns;
    std::string on_delete; // empty: no action
    std::string on_update; // likewise
};

// The keys that one table holds: those of its columns, then those of the table.
std::vector<cli_reference> cli_references_of(KT_context *ctx, tov_schema *schema, const std::string &tbl_id);

// The ids of all tables, in schema order.
std::vector<std::string> cli_table_ids(KT_context *ctx, tov_schema *schema);

// The cycles of tables: ids.
std::vector<std::vector<std::string>> cli_table_cycles(KT_context *ctx, tov_schema *schema);

// The cycles of integer key columns: texts Table.Column.
std::vector<std::vector<std::string>> cli_column_cycles(KT_context *ctx, tov_schema *schema);
