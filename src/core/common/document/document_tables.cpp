// Table records: adding a table, its name and transaction id.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

static void my_fill_tbl(KT_context *ctx, KT_vhash *tbl, const char *name, int64_t txid) noexcept
{
    KT_TRY(KT_vhash__add__string__sz(ctx, tbl, "name", name));
    KT_TRY(KT_vhash__add__int64(ctx, tbl, "txid", txid));
}

// Takes the last pair of a map away, which needs no memory.
static void my_take_back(KT_context *ctx, KT_vhash *map, const char *key) noexcept
{
    KT_context__push_level(ctx);
    KT_vhash__remove(ctx, map, key);
    KT_context__pop_level(ctx);
}

void tov_schema__add_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                         int64_t txid) noexcept
{
    schema->change_count++;
    schema->reference_change_count++;
    KT_vhash *tbls = nullptr;
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, tbl_id, &room, &key));
    KT_TRY(KT_vhash__addnew__vhash(ctx, tbls, key, &tbl));
    my_fill_tbl(ctx, tbl, name, txid);
    if (kt_has_err(ctx))
        my_take_back(ctx, tbls, key);
}

void tov_schema__set_tbl_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name) noexcept
{
    schema->change_count++;
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__update__string__sz(ctx, tbl, "name", name));
}

void tov_schema__check_tbl_txid(KT_context *ctx, tov_schema *schema, const char *tbl_id, int64_t *txid) noexcept
{
    KT_vhash *tbl = nullptr;
    int64_t stored = 0;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__int64(ctx, tbl, "txid", &stored));
    *txid = stored;
}
