// Which column's values a column of a changed table gets, and how.
#pragma once

#include "migrate/client_steps.hpp"
#include "migrate/client_value_change.hpp"

// A column of SQLite's table that gets its values from one of the old table.
struct client_carried_col {
    const client_row_col *old_col;
    const client_row_col *new_col;
    std::string name;           // TABLE.COLUMN, for people
    client_value_change change; // in terms of the column's new name, which it has when it is carried
};

// Both tables with the types of their columns.
struct client_carried_tbl {
    client_row_tbl old_tbl;
    client_row_tbl new_tbl;
    std::vector<client_carried_col> cols;
    std::vector<const client_part *> dropped;     // of the old table
    std::vector<const client_row_col *> new_cols; // without old values
};

void client_read_carried(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                         client_carried_tbl &carried);

// Whether rows have to be written anew for their values.
bool client_needs_values(const client_carried_tbl &carried);

// Adds the steps that make a table anew.
void client_add_rebuild(client_migration &migration, const client_changed_tbl &changed,
                        const client_carried_tbl &carried);
