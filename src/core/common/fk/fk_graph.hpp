// The references between tables as numbers: a table is its position in schema order.
#pragma once

#include "fk/fk_names.hpp"

// For each of n positions a list of positions, one after another: those of p are at to[first[p]] to
// to[first[p + 1] - 1].
struct fk_arcs {
    explicit fk_arcs(KT_context *ctx) noexcept : first(ctx), to(ctx)
    {
    }
    uint32_t count() const noexcept
    {
        return first.count - 1;
    }
    fk_array<uint32_t> first;
    fk_array<uint32_t> to;
};

struct fk_graph {
    explicit fk_graph(KT_context *ctx) noexcept : ids(ctx), refers(ctx), refers_to_itself(ctx), arcs(ctx)
    {
    }
    fk_names ids;                    // the tables' ids, numbered by position
    fk_array<bool> refers;           // whether the table has any foreign key, one that leads nowhere included
    fk_array<bool> refers_to_itself; // judged without regard to ASCII letter case
    fk_arcs arcs;                    // references to other tables of the schema; a repeated one may be listed twice
};

// How the id that a reference names is compared with the ids of tables.
enum class fk_match { exactly, like_a_lookup };

// Reads the references of a schema. An id that is not a table's makes no arc.
void fk_read_graph(KT_context *ctx, tov_schema *schema, fk_match match, fk_graph *graph) noexcept;

// The position of the table that an id names, FK_NO_NUMBER when there is none.
void fk_find_tbl(KT_context *ctx, const fk_graph &graph, fk_match match, const char *tbl_id,
                 uint32_t *position) noexcept;

// The same arcs backwards; each list in ascending order.
void fk_reverse_arcs(KT_context *ctx, const fk_arcs &arcs, fk_arcs *reversed) noexcept;
