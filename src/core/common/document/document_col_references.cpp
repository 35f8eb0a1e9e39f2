// The reference of a single column, kept in the column's own record.

#include "document/tov_parse_defin_private.hpp"

// A table with an identity column may not refer to itself; nothing else is looked at before this is known.
static void my_refuse_reference_to_own_identity(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                                const char *ref_tbl_id) noexcept
{
    if (!ref_tbl_id || KT_stricmp(tbl_id, ref_tbl_id) != 0)
        return;
    const char *integer_pk_id = nullptr;
    KT_TRY(_tov_tbl__find_integer_primary_key(ctx, schema, tbl, tbl_id, &integer_pk_id, nullptr));
    if (integer_pk_id)
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED,
                "Tovrin does not support same-table references in prepared tables with an identity column.");
}

void tov_schema__set_colcon_fk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id, KT_bool has,
                               const char *fk_id, const char *name, const char *ref_tbl_id, const char *ref_col_id,
                               KT_bool deferred, const char *on_delete, const char *on_update,
                               int32_t violation_on_insert) noexcept
{
    schema->change_count++;
    schema->reference_change_count++;
    KT_vhash *tbl = nullptr;
    KT_vhash *col = nullptr;
    KT_vhash *fk = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(my_refuse_reference_to_own_identity(ctx, schema, tbl, tbl_id, ref_tbl_id));
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, schema, tbl, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__remove_if_present(ctx, col, "fk", nullptr));
    if (!has)
        return;
    KT_TRY(KT_vhash__addnew__vhash(ctx, col, "fk", &fk));
    if (name)
        KT_TRY(KT_vhash__add__string__sz(ctx, fk, "name", name));
    KT_TRY(KT_vhash__add__string__sz(ctx, fk, "ref_tbl_id", ref_tbl_id));
    if (ref_col_id)
        KT_TRY(KT_vhash__add__string__sz(ctx, fk, "ref_col_id", ref_col_id));
    KT_TRY(KT_vhash__add__bool(ctx, fk, "deferred", deferred != 0));
    if (on_delete)
        KT_TRY(KT_vhash__add__string__sz(ctx, fk, "on_delete", on_delete));
    if (on_update)
        KT_TRY(KT_vhash__add__string__sz(ctx, fk, "on_update", on_update));
    if (violation_on_insert != 0)
        KT_TRY(_tov_schema__set_fk_rule(ctx, schema, tbl_id, fk_id, TOV_VIOLATION_ON_INSERT, violation_on_insert));
}

void _tov_col__get_fk(KT_context *ctx, const KT_vhash *col, KT_bool *has, const char **name, const char **ref_tbl_id,
                      const char **ref_col_id, const char **on_delete, const char **on_update) noexcept
{
    KT_vhash *fk = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "fk", &fk));
    if (!fk) {
        *has = 0;
        for (const char **result : {name, ref_tbl_id, ref_col_id, on_delete, on_update}) {
            if (result)
                *result = nullptr;
        }
        return;
    }
    struct field {
        const char *key;
        const char **result;
        const char *text;
    };
    field fields[] = {
        {"name", name, nullptr},           {"ref_tbl_id", ref_tbl_id, nullptr}, {"ref_col_id", ref_col_id, nullptr},
        {"on_delete", on_delete, nullptr}, {"on_update", on_update, nullptr},
    };
    for (field &f : fields) {
        if (f.result)
            KT_TRY(KT_vhash__check__sz(ctx, fk, f.key, &f.text));
    }
    *has = 1;
    for (const field &f : fields) {
        if (f.result)
            *f.result = f.text;
    }
}

void tov_schema__get_colcon_fk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                               KT_bool *has, const char **name, const char **ref_tbl_id, const char **ref_col_id,
                               const char **on_delete, const char **on_update) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__get_fk(ctx, col, has, name, ref_tbl_id, ref_col_id, on_delete, on_update));
}
