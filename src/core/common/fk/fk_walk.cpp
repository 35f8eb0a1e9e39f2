// A walk over the foreign keys of one table or of the whole schema; see the header.

#include "fk/fk_walk.hpp"
#include "fk/fk_index.hpp"

#include <cstring>

// The table-level keys are looked up when the columns are done, and not before: what fails first is reported.
static void my_enter_tbl(KT_context *ctx, fk_walk *walk) noexcept
{
    walk->next_col = walk->col_count = 0;
    walk->next_key = walk->key_count = 0;
    walk->keys_are_open = !walk->tbl_level;
    if (walk->col_level) {
        KT_TRY(_tov_tbl__get_cols(ctx, walk->tbl, &walk->cols));
        KT_TRY(KT_vhash__count(ctx, walk->cols, &walk->col_count));
    }
}

static void my_enter_next_tbl(KT_context *ctx, fk_walk *walk) noexcept
{
    walk->tbl_n = walk->next_tbl++;
    if (walk->skipped_tbl_id) {
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, walk->schema, walk->tbl_n, &walk->tbl_id));
        if (strcmp(walk->tbl_id, walk->skipped_tbl_id) == 0)
            return;
    }
    KT_TRY(_tov_schema__get_nth_tbl(ctx, walk->schema, walk->tbl_n, &walk->tbl_id, &walk->tbl));
    KT_TRY(my_enter_tbl(ctx, walk));
}

static void my_open_keys(KT_context *ctx, fk_walk *walk) noexcept
{
    walk->keys_are_open = true;
    KT_TRY(KT_vhash__check__vhash(ctx, walk->tbl, "foreignkeys", &walk->keys));
    if (walk->keys)
        KT_TRY(KT_vhash__count(ctx, walk->keys, &walk->key_count));
}

static bool my_is_wanted(const fk_walk *walk, const char *ref_tbl_id) noexcept
{
    return !walk->ref_tbl_id || (ref_tbl_id && strcmp(ref_tbl_id, walk->ref_tbl_id) == 0);
}

static void my_read_col(KT_context *ctx, const fk_walk *walk, fk_key *key, KT_bool *has) noexcept
{
    const auto wanted = [walk](uint32_t field, const char **text) { return walk->col_fields & field ? text : nullptr; };
    KT_TRY(_tov_col__get_fk(ctx, key->col, has, wanted(FK_NAME, &key->name), wanted(FK_REF_TBL_ID, &key->ref_tbl_id),
                            wanted(FK_REF_COL_ID, &key->ref_col_id), wanted(FK_ON_DELETE, &key->on_delete),
                            wanted(FK_ON_UPDATE, &key->on_update)));
}

static void my_read_key(KT_context *ctx, const fk_walk *walk, fk_key *key) noexcept
{
    KT_TRY(KT_vhash__get__sz(ctx, key->fk, "ref_tbl_id", &key->ref_tbl_id));
    if (walk->tbl_fields & FK_ON_UPDATE)
        KT_TRY(KT_vhash__get__sz(ctx, key->fk, "on_update", &key->on_update));
    if (walk->tbl_fields & FK_ON_DELETE)
        KT_TRY(KT_vhash__get__sz(ctx, key->fk, "on_delete", &key->on_delete));
}

static void my_look_at_next_col(KT_context *ctx, fk_walk *walk, fk_key *key) noexcept
{
    fk_key met;
    KT_bool has = 0;
    met.tbl_id = walk->tbl_id;
    KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, walk->schema, walk->tbl, walk->tbl_id, walk->cols, walk->next_col++,
                                           &met.col_id, &met.col));
    KT_TRY(my_read_col(ctx, walk, &met, &has));
    if (has && my_is_wanted(walk, met.ref_tbl_id))
        *key = met;
}

static void my_look_at_next_key(KT_context *ctx, fk_walk *walk, fk_key *key) noexcept
{
    fk_key met;
    met.tbl_id = walk->tbl_id;
    KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, walk->keys, walk->next_key++, &met.fk_id, &met.fk));
    KT_TRY(my_read_key(ctx, walk, &met));
    if (my_is_wanted(walk, met.ref_tbl_id))
        *key = met;
}

// An entry is one of the keys wanted, but its kind or its table may not be.
static void my_look_at_next_entry(KT_context *ctx, fk_walk *walk, fk_key *key) noexcept
{
    const fk_index_entry &entry = *walk->next_entry++;
    fk_key met;
    KT_bool has = 0;
    met.tbl_id = entry.tbl_id;
    if (walk->skipped_tbl_id && strcmp(entry.tbl_id, walk->skipped_tbl_id) == 0)
        return;
    if (entry.is_col_level && walk->col_level) {
        met.col_id = entry.id;
        met.col = entry.record;
        KT_TRY(my_read_col(ctx, walk, &met, &has));
        *key = met;
    } else if (!entry.is_col_level && walk->tbl_level) {
        met.fk_id = entry.id;
        met.fk = entry.record;
        KT_TRY(my_read_key(ctx, walk, &met));
        *key = met;
    }
}

void fk_walk_schema(KT_context *ctx, fk_walk *walk) noexcept
{
    bool known = false;
    if (walk->ref_tbl_id)
        KT_TRY(fk_find_in_index(ctx, walk, &known));
    if (!known)
        KT_TRY(tov_schema__count_tbls(ctx, walk->schema, &walk->tbl_count));
}

void fk_walk_tbl(KT_context *ctx, fk_walk *walk, const char *tbl_id) noexcept
{
    walk->tbl_id = tbl_id;
    KT_TRY(_tov_schema__get_tbl(ctx, walk->schema, tbl_id, &walk->tbl));
    KT_TRY(my_enter_tbl(ctx, walk));
}

void fk_next(KT_context *ctx, fk_walk *walk, fk_key *key) noexcept
{
    *key = {};
    while (!key->tbl_id) {
        if (walk->next_col < walk->col_count)
            KT_TRY(my_look_at_next_col(ctx, walk, key));
        else if (!walk->keys_are_open)
            KT_TRY(my_open_keys(ctx, walk));
        else if (walk->next_key < walk->key_count)
            KT_TRY(my_look_at_next_key(ctx, walk, key));
        else if (walk->next_tbl < walk->tbl_count)
            KT_TRY(my_enter_next_tbl(ctx, walk));
        else if (walk->next_entry != walk->end_entry)
            KT_TRY(my_look_at_next_entry(ctx, walk, key));
        else
            return;
    }
}

void fk_get_cols(KT_context *ctx, const fk_key &key, KT_vhash **cols, uint32_t *count) noexcept
{
    KT_TRY(KT_vhash__get__vhash(ctx, key.fk, "cols", cols));
    KT_TRY(KT_vhash__count(ctx, *cols, count));
}

void fk_need_ref_tbl(KT_context *ctx, const fk_key &key) noexcept
{
    if (!key.ref_tbl_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no table", key.col_id, key.tbl_id);
}

void fk_need_ref_col(KT_context *ctx, const fk_key &key) noexcept
{
    KT_TRY(fk_need_ref_tbl(ctx, key));
    if (!key.ref_col_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no column", key.col_id,
                key.tbl_id);
}
