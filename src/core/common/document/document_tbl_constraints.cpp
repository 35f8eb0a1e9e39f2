// Constraints of a table: primary key, unique constraints, checks. Ids in them are kept as the caller passes them.

#include "document/tov_parse_defin_private.hpp"

void tov_schema__set_pk_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name) noexcept
{
    schema->change_count++;
    KT_vhash *tbl = nullptr;
    KT_vhash *pk = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "pk", &pk));
    KT_TRY(KT_vhash__update__string__sz(ctx, pk, "name", name));
}

void tov_schema__add_to_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id) noexcept
{
    schema->change_count++;
    KT_vhash *pk = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_pk(ctx, schema, tbl_id, &pk));
    KT_TRY(KT_vhash__ensure__vhash(ctx, pk, "cols", &cols));
    KT_TRY(KT_vhash__add__null(ctx, cols, col_id));
}

void tov_schema__add_to_unique_constraint(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *unique_id) noexcept
{
    schema->change_count++;
    KT_vhash *tbl = nullptr;
    KT_vhash *uniques = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "uniques", &uniques));
    KT_TRY(KT_vhash__ensure__vhash(ctx, uniques, unique_id, &cols));
    KT_TRY(KT_vhash__add__null(ctx, cols, col_id));
}

void tov_schema__add_check_constraint(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *check_id,
                                      const char *expr) noexcept
{
    schema->change_count++;
    KT_vhash *checks = nullptr;
    KT_vhash *check = nullptr;
    KT_TRY(_tov_schema__get_checks(ctx, schema, tbl_id, &checks));
    KT_TRY(KT_vhash__ensure__vhash(ctx, checks, check_id, &check));
    KT_TRY(KT_vhash__update__string__sz(ctx, check, "expr", expr));
}
