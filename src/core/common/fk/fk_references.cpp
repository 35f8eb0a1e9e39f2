// Who refers to whom, by the ids of tables and columns.
//
// Keys are read from two places, column records and table records. Ids are compared exactly, and a table whose
// referrers are wanted is not looked up: an id that names no table is one that nobody refers to.

#include "fk/fk_walk.hpp"

#include <cstring>

// Adds "from refers to to" under a table; makes the result when it is the first. A column has one entry only.
static void my_add_reference(KT_context *ctx, kt_owned_vhash *found, const char *tbl_id, const char *from,
                             const char *to) noexcept
{
    KT_vhash *cols = nullptr;
    if (!found->get())
        KT_TRY(KT_vhash__alloc(ctx, found->out()));
    KT_TRY(KT_vhash__ensure__vhash(ctx, *found, tbl_id, &cols));
    KT_TRY(KT_vhash__add__string__sz(ctx, cols, from, to));
}

void tov_schema__find_singlecol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *col_id, KT_vhash **references) noexcept
{
    fk_walk walk = {
        .schema = schema, .col_fields = FK_REF_TBL_ID | FK_REF_COL_ID, .tbl_level = false, .ref_tbl_id = tbl_id};
    fk_key key;
    kt_owned_vhash found{ctx};
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        if (!col_id || (key.ref_col_id && strcmp(key.ref_col_id, col_id) == 0))
            KT_TRY(my_add_reference(ctx, &found, key.tbl_id, key.col_id, key.ref_col_id));
    }
    found.move_to(references);
}

static void my_add_key(KT_context *ctx, const fk_key &key, kt_owned_vhash *found) noexcept
{
    KT_vhash *cols = nullptr;
    KT_vhash *entry = nullptr;
    KT_vhash *entry_cols = nullptr;
    uint32_t count = 0;
    KT_TRY(fk_get_cols(ctx, key, &cols, &count));
    if (!found->get())
        KT_TRY(KT_vhash__alloc(ctx, found->out()));
    KT_TRY(KT_vhash__addnew__vhash(ctx, *found, key.fk_id, &entry));
    KT_TRY(KT_vhash__add__string__sz(ctx, entry, "tbl", key.tbl_id));
    KT_TRY(KT_vhash__ensure__vhash(ctx, entry, "cols", &entry_cols));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &col_id, &ref_col_id));
        KT_TRY(KT_vhash__add__string__sz(ctx, entry_cols, col_id, ref_col_id));
    }
}

void tov_schema__find_multicol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             KT_vhash **references) noexcept
{
    fk_walk walk = {.schema = schema, .col_level = false, .ref_tbl_id = tbl_id};
    fk_key key;
    kt_owned_vhash found{ctx};
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        KT_TRY(my_add_key(ctx, key, &found));
    }
    found.move_to(references);
}

// Adds the first column by which a table-level key refers to the column asked for.
static void my_add_first_col(KT_context *ctx, const KT_vhash *entry, const char *ref_col_id,
                             kt_owned_vhash *found) noexcept
{
    const char *tbl_id = nullptr;
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__get__sz(ctx, entry, "tbl", &tbl_id));
    KT_TRY(KT_vhash__get__vhash(ctx, entry, "cols", &cols));
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *from = nullptr;
        const char *to = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &from, &to));
        if (strcmp(to, ref_col_id) != 0)
            continue;
        KT_TRY(my_add_reference(ctx, found, tbl_id, from, ref_col_id));
        return;
    }
}

void tov_schema__find_references_to_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                        KT_vhash **references) noexcept
{
    kt_owned_vhash found{ctx};
    kt_owned_vhash keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__find_singlecol_references_to(ctx, schema, tbl_id, col_id, found.out()));
    KT_TRY(tov_schema__find_multicol_references_to(ctx, schema, tbl_id, keys.out()));
    if (keys)
        KT_TRY(KT_vhash__count(ctx, keys, &count));
    // A table that any key refers to has a result, if an empty one.
    if (keys && !found)
        KT_TRY(KT_vhash__alloc(ctx, found.out()));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *entry = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, keys, n, nullptr, &entry));
        KT_TRY(my_add_first_col(ctx, entry, col_id, &found));
    }
    found.move_to(references);
}

void tov_schema__does_tbl_have_fk_constraint_with_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                                KT_bool *has) noexcept
{
    fk_walk walk = {.schema = schema, .col_fields = FK_ON_DELETE, .tbl_fields = FK_ON_DELETE};
    fk_key key;
    KT_TRY(fk_walk_tbl(ctx, &walk, tbl_id));
    do
        KT_TRY(fk_next(ctx, &walk, &key));
    while (key.tbl_id && !tov_is_fk_action(key.on_delete));
    *has = key.tbl_id != nullptr;
}

// Makes the set when the text is the first.
static void my_add_tbl(KT_context *ctx, kt_owned_nullhash *tbls, const char *tbl_id) noexcept
{
    if (!tbls->get())
        KT_TRY(KT_nullhash__alloc(ctx, tbls->out()));
    KT_TRY(KT_nullhash__update(ctx, *tbls, tbl_id));
}

static void my_add_tbls_of_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                kt_owned_nullhash *tbls) noexcept
{
    kt_owned_vhash cols{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__find_singlecol_references_to(ctx, schema, tbl_id, nullptr, cols.out()));
    if (cols)
        KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *from = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &from, nullptr));
        KT_TRY(my_add_tbl(ctx, tbls, from));
    }
}

static void my_add_tbls_of_keys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                kt_owned_nullhash *tbls) noexcept
{
    kt_owned_vhash keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__find_multicol_references_to(ctx, schema, tbl_id, keys.out()));
    if (keys)
        KT_TRY(KT_vhash__count(ctx, keys, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *entry = nullptr;
        const char *from = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, keys, n, nullptr, &entry));
        KT_TRY(KT_vhash__get__sz(ctx, entry, "tbl", &from));
        KT_TRY(my_add_tbl(ctx, tbls, from));
    }
}

void tov_schema__find_tbls_with_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              KT_nullhash **tbl_ids) noexcept
{
    kt_owned_nullhash tbls{ctx};
    KT_TRY(my_add_tbls_of_cols(ctx, schema, tbl_id, &tbls));
    KT_TRY(my_add_tbls_of_keys(ctx, schema, tbl_id, &tbls));
    tbls.move_to(tbl_ids);
}

void tov_schema__list_tbls_referenced_by(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                         KT_nullhash **tbl_ids) noexcept
{
    fk_walk walk = {.schema = schema, .col_fields = FK_REF_TBL_ID};
    fk_key key;
    kt_owned_nullhash tbls{ctx};
    KT_TRY(fk_walk_tbl(ctx, &walk, tbl_id));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        KT_TRY(fk_need_ref_tbl(ctx, key));
        if (strcmp(key.ref_tbl_id, tbl_id) != 0)
            KT_TRY(my_add_tbl(ctx, &tbls, key.ref_tbl_id));
    }
    tbls.move_to(tbl_ids);
}
