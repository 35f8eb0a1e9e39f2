// The strings of a document, each looked at for what it is used for.
#pragma once

#include "check/client_scratch.hpp"
#include "tov_client.h"

#include <vector>

struct client_text_check {
    explicit client_text_check(KT_context *ctx) noexcept : scratch(ctx), tbl_names(ctx)
    {
    }
    tov_schema *schema = nullptr;
    client_scratch scratch;
    kt_owned_vhash tbl_names; // lower-case name to the name of the table that has it
};

// One table while it is checked.
struct client_tbl_check {
    explicit client_tbl_check(KT_context *ctx) noexcept : col_names(ctx)
    {
    }
    const char *id = nullptr;
    const char *name = nullptr;
    kt_owned_vhash col_names; // lower-case name to the name of the column that has it
    std::vector<client_check> checks;
};

// What the steps of the walk share.
struct client_walk {
    client_text_check &check;
    client_tbl_check &tbl;
};

// A record of the document, and where it is.
struct client_record {
    const KT_vhash *record;
    const tov_shape *shape;
    client_place place;
};

// The string of a role in a record, null when it is absent or no member of the shape has this role.
void client_find_string(KT_context *ctx, const client_record &at, tov_string_role role, const char **text) noexcept;

// Checks a string member of a record, by its role.
void client_check_string(KT_context *ctx, const client_walk &w, const client_record &at,
                         const tov_member &member) noexcept;

// Checks the conditions of a table's indexes, which the facts about the server hold.
void client_check_conditions(KT_context *ctx, const client_walk &w, const KT_vhash *record) noexcept;

// Refuses facts about the server that are of another kind than their readers expect: those about all of it, and those
// about a table.
void client_check_server_facts(KT_context *ctx, tov_schema *schema) noexcept;
void client_check_tbl_facts(KT_context *ctx, const client_walk &w, const KT_vhash *record) noexcept;

// Refuses a name that is absent or unsafe in a statement.
void client_check_name(KT_context *ctx, const client_place &place, const char *name) noexcept;

// Adds a name to those that were met already, and refuses one that SQLite takes for the same.
void client_check_distinct(KT_context *ctx, const client_place &place, KT_vhash *names, const char *name) noexcept;

// An id with a capital letter is not found under itself: what is found instead may not have been looked at.
void client_check_id(KT_context *ctx, const client_place &place, const char *id) noexcept;

// Refuses the id of a column that is not there, or not prepared.
void client_check_key_col(KT_context *ctx, const client_walk &w, const client_place &place, const char *tbl_id,
                          const char *col_id) noexcept;
