// Foreign keys of a table, of one or more columns: making them, and reading them back.
//
// A key's record begins with its "cols", which pair each referencing column with the referenced one. Ids of keys and
// columns are kept and compared as the caller passes them.

#include "document/tov_parse_defin_private.hpp"

void tov_schema__create_foreignkey(KT_context *ctx, tov_schema *schema, const char *fk_id, const char *name,
                                   const char *tbl_id, const char *ref_tbl_id, KT_bool deferred, const char *on_delete,
                                   const char *on_update, int32_t violation_on_insert) noexcept
{
    schema->change_count++;
    schema->reference_change_count++;
    KT_vhash *tbl = nullptr;
    KT_vhash *foreignkeys = nullptr;
    KT_vhash *fk = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__ensure__vhash(ctx, tbl, "foreignkeys", &foreignkeys));
    KT_TRY(KT_vhash__ensure__vhash(ctx, foreignkeys, fk_id, &fk));
    KT_TRY(KT_vhash__ensure__vhash(ctx, fk, "cols", &cols));
    if (name)
        KT_TRY(KT_vhash__update__string__sz(ctx, fk, "name", name));
    KT_TRY(KT_vhash__update__string__sz(ctx, fk, "ref_tbl_id", ref_tbl_id));
    KT_TRY(KT_vhash__update__bool(ctx, fk, "deferred", deferred != 0));
    if (on_delete)
        KT_TRY(KT_vhash__update__string__sz(ctx, fk, "on_delete", on_delete));
    if (on_update)
        KT_TRY(KT_vhash__update__string__sz(ctx, fk, "on_update", on_update));
    if (violation_on_insert != 0)
        KT_TRY(_tov_schema__set_fk_rule(ctx, schema, tbl_id, fk_id, TOV_VIOLATION_ON_INSERT, violation_on_insert));
}

void tov_schema__add_to_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                   const char *col_id, const char *ref_col_id) noexcept
{
    schema->change_count++;
    schema->reference_change_count++;
    KT_vhash *foreignkeys = nullptr;
    KT_vhash *fk = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_foreignkeys(ctx, schema, tbl_id, &foreignkeys));
    // A key that was never created leaves its empty record behind when the next step fails.
    KT_TRY(KT_vhash__ensure__vhash(ctx, foreignkeys, fk_id, &fk));
    KT_TRY(KT_vhash__get__vhash(ctx, fk, "cols", &cols));
    KT_TRY(KT_vhash__update__string__sz(ctx, cols, col_id, ref_col_id));
}

void tov_schema__nevermind_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char *fk_id) noexcept
{
    schema->change_count++;
    schema->reference_change_count++;
    KT_vhash *foreignkeys = nullptr;
    kt_owned_text dropped_id{ctx}; // an id that the schema handed out goes with the first pair that it is the key of
    KT_TRY(_tov_schema__check_foreignkeys(ctx, schema, tbl_id, &foreignkeys));
    KT_TRY(KT_strdup(ctx, fk_id, dropped_id.out()));
    if (foreignkeys)
        KT_TRY(KT_vhash__remove_if_present(ctx, foreignkeys, dropped_id, nullptr));
    KT_TRY(_tov_schema__drop_fk_rules(ctx, schema, dropped_id));
}

static void my_get_foreignkey(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                              KT_vhash **fk) noexcept
{
    KT_vhash *foreignkeys = nullptr;
    KT_TRY(_tov_schema__get_foreignkeys(ctx, schema, tbl_id, &foreignkeys));
    KT_TRY(KT_vhash__get__vhash(ctx, foreignkeys, fk_id, fk));
}

static void my_get_foreignkey_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                   KT_vhash **cols) noexcept
{
    KT_vhash *fk = nullptr;
    KT_TRY(my_get_foreignkey(ctx, schema, tbl_id, fk_id, &fk));
    KT_TRY(KT_vhash__get__vhash(ctx, fk, "cols", cols));
}

static void my_get_foreignkey_text(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                   const char *key, const char **text) noexcept
{
    KT_vhash *fk = nullptr;
    KT_TRY(my_get_foreignkey(ctx, schema, tbl_id, fk_id, &fk));
    KT_TRY(KT_vhash__get__sz(ctx, fk, key, text));
}

void tov_schema__count_foreignkey_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                       uint32_t *count) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_foreignkey_cols(ctx, schema, tbl_id, fk_id, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, count));
}

void tov_schema__get_nth_foreignkey_col_ids(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                            uint32_t n, const char **col_id, const char **ref_col_id) noexcept
{
    KT_vhash *cols = nullptr;
    KT_TRY(my_get_foreignkey_cols(ctx, schema, tbl_id, fk_id, &cols));
    KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, col_id, ref_col_id));
}

void tov_schema__count_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t *count) noexcept
{
    KT_vhash *foreignkeys = nullptr;
    uint32_t found = 0;
    KT_TRY(_tov_schema__check_foreignkeys(ctx, schema, tbl_id, &foreignkeys));
    if (foreignkeys)
        KT_TRY(KT_vhash__count(ctx, foreignkeys, &found));
    *count = found;
}

void tov_schema__get_nth_foreignkey_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t n,
                                       const char **fk_id) noexcept
{
    KT_vhash *foreignkeys = nullptr;
    KT_TRY(_tov_schema__get_foreignkeys(ctx, schema, tbl_id, &foreignkeys));
    KT_TRY(KT_vhash__get_nth_pair(ctx, foreignkeys, n, fk_id, nullptr));
}

void tov_schema__get_foreignkey_ref_tbl_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                           const char **ref_tbl_id) noexcept
{
    KT_TRY(my_get_foreignkey_text(ctx, schema, tbl_id, fk_id, "ref_tbl_id", ref_tbl_id));
}

void tov_schema__get_foreignkey_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                     const char **name) noexcept
{
    KT_TRY(my_get_foreignkey_text(ctx, schema, tbl_id, fk_id, "name", name));
}

void tov_schema__get_foreignkey_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *fk_id, const char **action) noexcept
{
    KT_TRY(my_get_foreignkey_text(ctx, schema, tbl_id, fk_id, "on_delete", action));
}
