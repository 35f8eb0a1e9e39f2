// Which foreign keys refer to a table, for a schema that is asked about many tables: all keys once, by the table id
// that they name.
//
// The index belongs to the handle. It is made when it is first asked, and made anew when the schema has changed since.
// A question gets the keys in the order in which a walk would meet them.
#pragma once

#include "fk/fk_walk.hpp"

// A key, found without a walk.
struct fk_index_entry {
    const char *tbl_id;
    const char *id;   // of the column or of the table-level key
    KT_vhash *record; // likewise
    bool is_col_level;
};

// Sets a walk for one referenced table out with the entries of that table. Known is false when the walk has to be made
// all the same: it could fail somewhere, or would create records.
void fk_find_in_index(KT_context *ctx, fk_walk *walk, bool *known) noexcept;
