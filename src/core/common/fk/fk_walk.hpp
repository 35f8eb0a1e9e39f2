// A walk over the foreign keys of one table or of the whole schema.
//
// Keys come in the order of the schema: for each table its column-level keys, in column order, then its table-level
// keys. What an operation reads of every key it meets, wanted or not, decides which malformed documents it refuses,
// so a walk reads exactly what it is asked for, at each key and in this order.
#pragma once

#include "document/tov_parse_defin_private.hpp"

// What to read of a column-level key, where each text may be absent, and is null then. A table-level key always gives
// its ref_tbl_id, which it must have, and on top of that the actions asked for, which it must have then.
static constexpr uint32_t FK_NAME = 1;
static constexpr uint32_t FK_REF_TBL_ID = 2;
static constexpr uint32_t FK_REF_COL_ID = 4;
static constexpr uint32_t FK_ON_DELETE = 8;
static constexpr uint32_t FK_ON_UPDATE = 16;
static constexpr uint32_t FK_ALL_FIELDS = 31;

struct fk_walk {
    // Set by the caller before the walk begins.
    tov_schema *schema;
    uint32_t col_fields = 0; // to read of column-level keys
    uint32_t tbl_fields = 0; // to read of table-level keys
    bool col_level = true;
    bool tbl_level = true;
    const char *ref_tbl_id = nullptr;     // only keys that refer to exactly this id; null for all
    const char *skipped_tbl_id = nullptr; // a table that the walk leaves out; null for none

    // Where the walk is: the table, and what of it and of the schema is still to come.
    uint32_t tbl_n = 0;
    const char *tbl_id = nullptr;
    KT_vhash *tbl = nullptr;
    KT_vhash *cols = nullptr;
    KT_vhash *keys = nullptr;
    bool keys_are_open = true;
    uint32_t next_col = 0, col_count = 0;
    uint32_t next_key = 0, key_count = 0;
    uint32_t next_tbl = 0, tbl_count = 0;
    // Or, where the keys wanted are known without going from table to table, those.
    const struct fk_index_entry *next_entry = nullptr;
    const struct fk_index_entry *end_entry = nullptr;
};

// One foreign key. Everything is borrowed from the schema.
struct fk_key {
    const char *tbl_id = nullptr; // the table that holds the key; null when the walk is over
    const char *col_id = nullptr; // of a column-level key: the column and its record
    KT_vhash *col = nullptr;
    const char *fk_id = nullptr; // of a table-level key: its id and its record
    KT_vhash *fk = nullptr;
    const char *name = nullptr;
    const char *ref_tbl_id = nullptr;
    const char *ref_col_id = nullptr;
    const char *on_delete = nullptr;
    const char *on_update = nullptr;
};

void fk_walk_schema(KT_context *ctx, fk_walk *walk) noexcept;
void fk_walk_tbl(KT_context *ctx, fk_walk *walk, const char *tbl_id) noexcept;
void fk_next(KT_context *ctx, fk_walk *walk, fk_key *key) noexcept;

// The columns of a table-level key's record, which must have them.
void fk_get_cols(KT_context *ctx, const fk_key &key, KT_vhash **cols, uint32_t *count) noexcept;

// Fail when a column-level key lacks what every use of it needs.
void fk_need_ref_tbl(KT_context *ctx, const fk_key &key) noexcept;
void fk_need_ref_col(KT_context *ctx, const fk_key &key) noexcept;
