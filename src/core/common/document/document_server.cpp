// The facts about the server that travel in the document without the module reading them: "server", once in the
// document itself and once in each table's record.

#include "document/tov_parse_defin_private.hpp"

void tov_schema__ensure_server(KT_context *ctx, tov_schema *schema, KT_vhash **server) noexcept
{
    schema->change_count++;
    KT_TRY(KT_vhash__ensure__vhash(ctx, schema->document, "server", server));
}

void tov_schema__check_server(KT_context *ctx, tov_schema *schema, KT_vhash **server) noexcept
{
    KT_TRY(KT_vhash__check__vhash(ctx, schema->document, "server", server));
}

void tov_schema__ensure_tbl_server(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **server) noexcept
{
    schema->change_count++;
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "server", server));
}

void tov_schema__check_tbl_server(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **server) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "server", server));
}
