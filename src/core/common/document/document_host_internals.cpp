// The schema's second tree, which holds what only the host side uses and never travels as JSON.
//
// It comes into being at the first write that needs it. Each of its maps holds one entry for each table, and table
// ids are its keys as the caller passes them, in any case. Nothing here asks whether the table exists.

#include "document/tov_parse_defin_private.hpp"

void _tov_schema__ensure_host_internals(KT_context *ctx, tov_schema *schema, KT_vhash **host_internals) noexcept
{
    if (!schema->host_internals)
        KT_TRY(KT_vhash__alloc(ctx, &schema->host_internals));
    *host_internals = schema->host_internals;
}

void _tov_schema__ensure_host_entry(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                                    KT_vhash **entry) noexcept
{
    KT_vhash *host_internals = nullptr;
    KT_vhash *map = nullptr;
    KT_TRY(_tov_schema__ensure_host_internals(ctx, schema, &host_internals));
    KT_TRY(KT_vhash__ensure__vhash(ctx, host_internals, map_key, &map));
    KT_TRY(KT_vhash__ensure__vhash(ctx, map, tbl_id, entry));
}

void _tov_schema__check_host_entry(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                                   KT_vhash **entry) noexcept
{
    KT_vhash *map = nullptr;
    KT_vhash *found = nullptr;
    if (schema->host_internals)
        KT_TRY(KT_vhash__check__vhash(ctx, schema->host_internals, map_key, &map));
    if (map)
        KT_TRY(KT_vhash__check__vhash(ctx, map, tbl_id, &found));
    *entry = found;
}

void _tov_schema__get_tbl_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          KT_vhash **cols) noexcept
{
    KT_TRY(_tov_schema__ensure_host_entry(ctx, schema, "unprep-cols", tbl_id, cols));
}

void _tov_schema__check_tbl_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                            KT_vhash **cols) noexcept
{
    KT_TRY(_tov_schema__check_host_entry(ctx, schema, "unprep-cols", tbl_id, cols));
}
