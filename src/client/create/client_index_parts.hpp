// What indexes are made of: columns, conditions, and the unique keys that the server takes NULLs for equal in.
#pragma once

#include "create/client_plan.hpp"

// A column of an index or key. Its name is borrowed from the schema, its id from where the column was found.
struct client_index_col {
    const char *id = nullptr;
    const char *name = nullptr;
    bool descending = false;
    bool nullable = false;
};

using client_index_cols = std::vector<client_index_col>;

// Finds the columns of a list of ids; null for no list. One that is not there is left out.
void client_find_index_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const KT_varray *ids,
                            client_index_cols &cols) noexcept;

// The columns as they stand between the parentheses.
std::string client_index_col_list(const client_index_cols &cols);

// An index of the server that SQLite has too.
struct client_server_index {
    const char *name = nullptr; // null when a statement cannot have it
    bool unique = false;
    std::string where;
    client_index_cols cols; // of the key, then those that it carries along
};

// Reads an index from the facts about the server. Its columns stay empty when it is not one for SQLite.
void client_read_server_index(KT_context *ctx, tov_schema *schema, const char *tbl_id, const KT_vhash *facts,
                              client_server_index &index) noexcept;

// Whether an index can have this name in a statement.
bool client_may_name_index(const char *name) noexcept;

// Makes the unique index without which rows that have NULL in a unique key are never equal to each other. Its columns
// stay empty when the key, which holds for rows under the condition, cannot have a NULL.
void client_make_null_index(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_index_cols &key,
                            const std::string &where, client_index &index) noexcept;
