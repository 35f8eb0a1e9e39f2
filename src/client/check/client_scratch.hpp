// A database in memory where expressions are compiled before they are used in the statements of another.
#pragma once

#include "check/client_guard.hpp"
#include "create/client_place.hpp"
#include "kt_sqlite_owned.hpp"

#include <span>

struct client_scratch {
    explicit client_scratch(KT_context *ctx) noexcept : accepted_defaults(ctx)
    {
    }
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    kt_owned_connection connection{functions};
    client_guard guard;
    // Default expressions that were compiled already: a schema repeats a few of them many thousand times.
    kt_owned_vhash accepted_defaults;
};

void client_scratch__open(KT_context *ctx, client_scratch &scratch) noexcept;

// Refuses a default that is not one constant expression.
void client_scratch__check_default(KT_context *ctx, client_scratch &scratch, const client_place &place,
                                   const char *expression) noexcept;

// A check of a table, as the expression between the parentheses after CHECK.
struct client_check {
    client_place place;
    const char *expression;
};

// Refuses the first of a table's checks that SQLite refuses in a table which has the columns and this check and nothing
// else, or in the statements that use such a table. columns is the list of quoted names.
void client_scratch__check_checks(KT_context *ctx, client_scratch &scratch, const char *tbl_name, const char *columns,
                                  std::span<const client_check> checks) noexcept;
