// Column records: adding a column, its name, and what is kept beside it for the host side.
//
// A prepared column lives in its table's "cols". An unprepared one lives in the host internals, under the table id as
// the caller passed it, and so do the dump numbers of either, under both ids as passed.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

static void my_get_target_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool prepared,
                               KT_vhash **cols) noexcept
{
    if (prepared)
        KT_TRY(_tov_schema__get_tbl_cols(ctx, schema, tbl_id, cols));
    else
        KT_TRY(_tov_schema__get_tbl_unprepared_cols(ctx, schema, tbl_id, cols));
}

static void my_set_dump_number(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                               const char *col_id, int64_t number) noexcept
{
    KT_vhash *entry = nullptr;
    KT_TRY(_tov_schema__ensure_host_entry(ctx, schema, map_key, tbl_id, &entry));
    KT_TRY(KT_vhash__update__int64(ctx, entry, col_id, number));
}

static void my_get_dump_number(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                               const char *col_id, int64_t *number) noexcept
{
    KT_vhash *entry = nullptr;
    int64_t stored = 0;
    KT_TRY(_tov_schema__check_host_entry(ctx, schema, map_key, tbl_id, &entry));
    if (entry)
        KT_TRY(KT_vhash__check__int64(ctx, entry, col_id, &stored));
    *number = stored;
}

void tov_schema__add_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id, const char *name,
                         KT_bool prepared, int64_t dump_txid, int64_t dump_generation) noexcept
{
    schema->change_count++;
    schema->reference_change_count++;
    KT_vhash *cols = nullptr;
    KT_vhash *col = nullptr;
    KT_TRY(my_get_target_cols(ctx, schema, tbl_id, prepared, &cols));
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_TRY(KT_vhash__addnew__vhash(ctx, cols, key, &col));
    // The name goes to the column that a lookup finds: a prepared one of the same id comes before an unprepared one.
    if (prepared)
        KT_TRY(KT_vhash__add__string__sz(ctx, col, "name", name));
    else
        KT_TRY(tov_schema__set_col_name(ctx, schema, tbl_id, col_id, name));
    if (dump_txid <= 0)
        return;
    KT_TRY(my_set_dump_number(ctx, schema, "col-dump-txids", tbl_id, col_id, dump_txid));
    KT_TRY(my_set_dump_number(ctx, schema, "col-dump-gen", tbl_id, col_id, dump_generation));
}

void tov_schema__set_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              const char *name) noexcept
{
    schema->change_count++;
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__update__string__sz(ctx, col, "name", name));
}

void tov_schema__is_col_unprepared(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   KT_bool *unprepared) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, schema, tbl_id, &cols));
    if (!cols) {
        *unprepared = 0;
        return;
    }
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_TRY(KT_vhash__has(ctx, cols, key, unprepared));
}

void tov_schema__get_col_dump_txid(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   int64_t *dump_txid) noexcept
{
    KT_TRY(my_get_dump_number(ctx, schema, "col-dump-txids", tbl_id, col_id, dump_txid));
}

void tov_schema__get_col_dump_generation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         int64_t *dump_generation) noexcept
{
    KT_TRY(my_get_dump_number(ctx, schema, "col-dump-gen", tbl_id, col_id, dump_generation));
}
