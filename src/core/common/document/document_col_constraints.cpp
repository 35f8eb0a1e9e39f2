// Constraints of one column: not null, default, checks.
//
// A setter first drops what an earlier call recorded, so that a column never keeps half of an old constraint.

#include "document/tov_parse_defin_private.hpp"

void tov_schema__set_colcon_notnull(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    KT_bool notnull, const char *name) noexcept
{
    schema->change_count++;
    KT_vhash *col = nullptr;
    KT_vhash *constraint = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__remove_if_present(ctx, col, "notnull", nullptr));
    if (!notnull)
        return;
    KT_TRY(KT_vhash__addnew__vhash(ctx, col, "notnull", &constraint));
    if (name)
        KT_TRY(KT_vhash__add__string__sz(ctx, constraint, "name", name));
}

void _tov_col__get_notnull(KT_context *ctx, const KT_vhash *col, KT_bool *notnull, const char **name) noexcept
{
    KT_vhash *constraint = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "notnull", &constraint));
    if (constraint && name)
        KT_TRY(KT_vhash__check__sz(ctx, constraint, "name", name));
    *notnull = constraint != nullptr;
}

void tov_schema__get_colcon_notnull(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    KT_bool *notnull, const char **name) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__get_notnull(ctx, col, notnull, name));
}

void tov_schema__set_colcon_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   KT_bool has, const char *name, const char *expr) noexcept
{
    schema->change_count++;
    KT_vhash *col = nullptr;
    KT_vhash *defval = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__remove_if_present(ctx, col, "defval", nullptr));
    if (!has)
        return;
    KT_TRY(KT_vhash__addnew__vhash(ctx, col, "defval", &defval));
    KT_TRY(KT_vhash__add__string__sz(ctx, defval, "expr", expr));
    if (name)
        KT_TRY(KT_vhash__add__string__sz(ctx, defval, "name", name));
}

void _tov_col__get_defval(KT_context *ctx, const KT_vhash *col, KT_bool *has, const char **name,
                          const char **expr) noexcept
{
    KT_vhash *defval = nullptr;
    const char *stored_expr = nullptr;
    const char *stored_name = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "defval", &defval));
    if (defval)
        KT_TRY(KT_vhash__get__sz(ctx, defval, "expr", &stored_expr));
    if (defval && name)
        KT_TRY(KT_vhash__check__sz(ctx, defval, "name", &stored_name));
    *has = defval != nullptr;
    *expr = stored_expr;
    if (name)
        *name = stored_name;
}

void tov_schema__get_colcon_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   KT_bool *has, const char **name, const char **expr) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__get_defval(ctx, col, has, name, expr));
}

void tov_schema__add_colcon_check(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                  const char *name, const char *expr) noexcept
{
    schema->change_count++;
    KT_vhash *col = nullptr;
    KT_varray *checks = nullptr;
    KT_vhash *check = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__ensure__varray(ctx, col, "check", &checks));
    KT_TRY(KT_varray__appendnew__vhash(ctx, checks, &check));
    KT_TRY(KT_vhash__add__string__sz(ctx, check, "expr", expr));
    if (name)
        KT_TRY(KT_vhash__add__string__sz(ctx, check, "name", name));
}

void tov_schema__count_colcon_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                     uint32_t *count) noexcept
{
    KT_vhash *col = nullptr;
    KT_varray *checks = nullptr;
    uint32_t found = 0;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__check__varray(ctx, col, "check", &checks));
    if (checks)
        KT_TRY(KT_varray__count(ctx, checks, &found));
    *count = found;
}
