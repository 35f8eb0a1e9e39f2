// A database in memory where expressions are compiled alone before they may stand in a statement.
#pragma once

#include "check/client_guard.hpp"
#include "create/client_place.hpp"

struct client_scratch {
    explicit client_scratch(KT_context *ctx) noexcept : accepted_defaults(ctx)
    {
    }
    ~client_scratch();
    client_scratch(const client_scratch &) = delete;
    client_scratch &operator=(const client_scratch &) = delete;

    const KT_sqlite_functions *functions = nullptr;
    struct sqlite3 *connection = nullptr;
    client_guard guard;
    // Default expressions that were compiled already: a schema repeats a few of them many thousand times.
    kt_owned_vhash accepted_defaults;
};

void client_scratch__open(KT_context *ctx, client_scratch &scratch) noexcept;

// Refuses a default that is not one constant expression.
void client_scratch__check_default(KT_context *ctx, client_scratch &scratch, const client_place &place,
                                   const char *expression) noexcept;

// Refuses a check that does not compile, as the one constraint of a table that has the columns and nothing else.
// clause is what follows CHECK; columns is the list of quoted names.
void client_scratch__check_check(KT_context *ctx, client_scratch &scratch, const client_place &place,
                                 const char *tbl_name, const char *columns, const char *clause) noexcept;
