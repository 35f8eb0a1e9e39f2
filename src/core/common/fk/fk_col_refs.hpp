// The references of columns as numbers: which columns refer to others, and in what order each one's references are
// followed.
//
// A column is met under the id that a reference writes, in any case. The pairs of table-level keys are compared with
// that id exactly, so a column and an id of its in other letter case may go different ways: they count as two here.
#pragma once

#include "fk/fk_graph.hpp"

// What a search has found out about a column.
enum class fk_verdict : uint8_t { unknown, on_path, no_root, root, endless };

// A column under an id that leads to it.
struct fk_col {
    uint32_t tbl;
    const char *id;
    KT_vhash *record;
    fk_verdict verdict;
};

// One column pair of a table-level key: where it leads.
struct fk_col_pair {
    const char *ref_tbl_id;
    const char *ref_col_id;
};

struct fk_col_refs {
    fk_col_refs(KT_context *ctx, tov_schema *of_schema, const fk_graph *tbl_graph) noexcept
        : schema(of_schema), graph(tbl_graph), tbls(ctx), referencing(ctx), pair_owner(ctx), pairs(ctx),
          first_pair(ctx), col_numbers(ctx), cols(ctx)
    {
    }
    tov_schema *schema;
    const fk_graph *graph;
    fk_array<KT_vhash *> tbls;     // table records by position
    fk_names referencing;          // columns of table-level keys, as their pairs write them; scope: the table
    fk_array<uint32_t> pair_owner; // by pair as it was read: the number of its referencing column
    fk_array<fk_col_pair> pairs;   // grouped by referencing column, in the order of the keys
    fk_array<uint32_t> first_pair; // by referencing column
    fk_names col_numbers;          // scope: the column's record
    fk_array<fk_col> cols;         // by such a number; columns of tables come first, in schema order
};

// Reads all columns that refer to others.
void fk_read_col_refs(KT_context *ctx, fk_col_refs *refs) noexcept;

// Finds a column as every lookup does: ids in any case, prepared columns first. A reference that leads nowhere ends
// the way there, and is nobody's error: the number stays as it is.
void fk_find_col(KT_context *ctx, fk_col_refs *refs, const char *tbl_id, const char *col_id, uint32_t *number) noexcept;
