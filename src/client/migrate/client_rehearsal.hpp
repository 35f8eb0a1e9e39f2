// A database in memory in which the tables of the old schema are changed before those of a user are: SQLite itself says
// whether altering a table in place comes to what the new schema has.
#pragma once

#include "migrate/client_guarded.hpp"

struct client_rehearsal {
    client_guarded database;
};

// Opens it with the tables of a list.
void client_rehearsal__open(KT_context *ctx, client_rehearsal &rehearsal, const std::vector<client_object> &objects);

void client_rehearsal__run(KT_context *ctx, client_rehearsal &rehearsal,
                           const std::vector<client_migration_statement> &statements);

// Whether a table is what a statement would create, once the others have run; otherwise they have not.
void client_rehearsal__try(KT_context *ctx, client_rehearsal &rehearsal,
                           const std::vector<client_migration_statement> &statements, const client_object &wanted,
                           bool &is_like_it);
