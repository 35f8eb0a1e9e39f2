#include "fk_plain.hpp"

#include <cstring>

namespace {

bool my_is_action(const char *action)
{
    return action && KT_stricmp(action, "NO ACTION") != 0;
}

void my_build_reference_set(KT_context *ctx, tov_schema *schema, const char *tbl_id, kt_owned_vhash *set) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_tbl_id = nullptr;
        KT_bool has = 0;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, n, &col_id));
        KT_TRY(tov_schema__get_colcon_fk(ctx, schema, tbl_id, col_id, &has, nullptr, &ref_tbl_id, nullptr, nullptr,
                                         nullptr));
        if (!has)
            continue;
        if (!ref_tbl_id)
            KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no table", col_id, tbl_id);
        if (!set->get())
            KT_TRY(KT_vhash__alloc(ctx, set->out()));
        KT_TRY(KT_vhash__update__null(ctx, *set, ref_tbl_id));
    }
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *fk_id = nullptr;
        const char *ref_tbl_id = nullptr;
        KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id, n, &fk_id));
        KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id, fk_id, &ref_tbl_id));
        if (!set->get())
            KT_TRY(KT_vhash__alloc(ctx, set->out()));
        KT_TRY(KT_vhash__update__null(ctx, *set, ref_tbl_id));
    }
}

void my_visit(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash *levels, bool *changed) noexcept
{
    kt_owned_vhash set{ctx};
    KT_bool has = 0;
    KT_TRY(my_build_reference_set(ctx, schema, tbl_id, &set));
    KT_TRY(KT_vhash__has(ctx, levels, tbl_id, &has));
    if (!set) {
        if (!has) {
            KT_TRY(KT_vhash__update__int64(ctx, levels, tbl_id, 0));
            *changed = true;
        }
        return;
    }
    int64_t cur = 0;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__int64(ctx, levels, tbl_id, &cur));
    KT_TRY(KT_vhash__count(ctx, set, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *ref = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, set, n, &ref, nullptr));
        KT_TRY(KT_vhash__has(ctx, levels, ref, &has));
        if (KT_stricmp(ref, tbl_id) == 0) {
            KT_TRY(KT_vhash__update__int64(ctx, levels, tbl_id, cur));
        } else if (has) {
            int64_t v = 0;
            KT_TRY(KT_vhash__get__int64(ctx, levels, ref, &v));
            if (v + 1 > cur) {
                cur = v + 1;
                KT_TRY(KT_vhash__update__int64(ctx, levels, tbl_id, cur));
                *changed = true;
            }
        }
    }
}

} // namespace

void plain_sort_by_references(KT_context *ctx, tov_schema *schema, int pass_limit, bool *ended,
                              KT_varray **tbl_ids) noexcept
{
    uint32_t count = 0;
    kt_owned_vhash levels{ctx};
    kt_owned_varray result{ctx};
    *ended = false;
    KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
    KT_TRY(KT_vhash__alloc(ctx, levels.out()));
    for (bool changed = count > 0; changed;) {
        changed = false;
        if (pass_limit-- == 0)
            return;
        for (uint32_t n = 0; n < count; n++) {
            const char *tbl_id = nullptr;
            KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id));
            KT_TRY(my_visit(ctx, schema, tbl_id, levels, &changed));
        }
    }
    *ended = true;
    KT_TRY(KT_varray__alloc(ctx, result.out()));
    uint32_t left = 0;
    uint32_t listed = 0;
    KT_TRY(KT_vhash__count(ctx, levels, &left));
    for (int64_t level = 0; left; level++) {
        for (uint32_t at = 0; at < left;) {
            const char *tbl_id = nullptr;
            int64_t its_level = 0;
            KT_TRY(KT_vhash__get_nth_pair(ctx, levels, at, &tbl_id, nullptr));
            KT_TRY(KT_vhash__get__int64(ctx, levels, tbl_id, &its_level));
            if (its_level != level) {
                at++;
                continue;
            }
            KT_TRY(KT_varray__append__string__sz(ctx, result, tbl_id));
            KT_TRY(KT_vhash__remove(ctx, levels, tbl_id));
            left--;
            listed++;
        }
    }
    if (listed < count)
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "Foreign key constraints create a circular dependency among tables.");
    result.move_to(tbl_ids);
}

void plain_find_ipk_root_column(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                int depth_limit, bool *ended, const char **root_tbl_id,
                                const char **root_col_id) noexcept
{
    const char *type = nullptr;
    if (depth_limit == 0) {
        *ended = false;
        return;
    }
    KT_TRY(tov_schema__get_col_type(ctx, schema, tbl_id, col_id, &type, nullptr));
    if (type && strcmp(type, "identity") == 0) {
        *root_tbl_id = tbl_id;
        *root_col_id = col_id;
        return;
    }
    *root_tbl_id = *root_col_id = nullptr;
    if (!type || (strcmp(type, "sint64") != 0 && strcmp(type, "sint32") != 0 && strcmp(type, "sint16") != 0 &&
                  strcmp(type, "uint8") != 0))
        return;
    KT_bool has = 0;
    const char *ref_tbl_id = nullptr;
    const char *ref_col_id = nullptr;
    KT_TRY(tov_schema__get_colcon_fk(ctx, schema, tbl_id, col_id, &has, nullptr, &ref_tbl_id, &ref_col_id, nullptr,
                                     nullptr));
    if (has && !ref_tbl_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no table", col_id, tbl_id);
    if (has && !ref_col_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no column", col_id, tbl_id);
    if (has)
        KT_TRY(plain_find_ipk_root_column(ctx, schema, ref_tbl_id, ref_col_id, depth_limit - 1, ended, root_tbl_id,
                                          root_col_id));
    if (*root_tbl_id || !*ended)
        return;
    uint32_t key_count = 0;
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, tbl_id, &key_count));
    for (uint32_t k = 0; k < key_count; k++) {
        const char *fk_id = nullptr;
        uint32_t pair_count = 0;
        KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id, k, &fk_id));
        KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id, fk_id, &ref_tbl_id));
        KT_TRY(tov_schema__count_foreignkey_cols(ctx, schema, tbl_id, fk_id, &pair_count));
        for (uint32_t n = 0; n < pair_count; n++) {
            const char *from = nullptr;
            const char *to = nullptr;
            KT_TRY(tov_schema__get_nth_foreignkey_col_ids(ctx, schema, tbl_id, fk_id, n, &from, &to));
            if (strcmp(from, col_id) != 0)
                continue;
            KT_TRY(plain_find_ipk_root_column(ctx, schema, ref_tbl_id, to, depth_limit - 1, ended, root_tbl_id,
                                              root_col_id));
            if (*root_tbl_id || !*ended)
                return;
        }
    }
}

void plain_find_singlecol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                        KT_vhash **references) noexcept
{
    kt_owned_vhash result{ctx};
    uint32_t tbl_count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, schema, &tbl_count));
    for (uint32_t t = 0; t < tbl_count; t++) {
        const char *from_tbl_id = nullptr;
        uint32_t col_count = 0;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, t, &from_tbl_id));
        KT_TRY(tov_schema__count_cols(ctx, schema, from_tbl_id, &col_count));
        for (uint32_t c = 0; c < col_count; c++) {
            const char *from_col_id = nullptr;
            const char *ref_tbl_id = nullptr;
            const char *ref_col_id = nullptr;
            KT_bool has = 0;
            KT_vhash *inner = nullptr;
            KT_TRY(tov_schema__get_nth_col_id(ctx, schema, from_tbl_id, c, &from_col_id));
            KT_TRY(tov_schema__get_colcon_fk(ctx, schema, from_tbl_id, from_col_id, &has, nullptr, &ref_tbl_id,
                                             &ref_col_id, nullptr, nullptr));
            if (!has || !ref_tbl_id || strcmp(ref_tbl_id, tbl_id) != 0)
                continue;
            if (col_id && (!ref_col_id || strcmp(ref_col_id, col_id) != 0))
                continue;
            if (!result)
                KT_TRY(KT_vhash__alloc(ctx, result.out()));
            KT_TRY(KT_vhash__ensure__vhash(ctx, result, from_tbl_id, &inner));
            KT_TRY(KT_vhash__add__string__sz(ctx, inner, from_col_id, ref_col_id));
        }
    }
    result.move_to(references);
}

void plain_find_multicol_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                       KT_vhash **references) noexcept
{
    kt_owned_vhash result{ctx};
    uint32_t tbl_count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, schema, &tbl_count));
    for (uint32_t t = 0; t < tbl_count; t++) {
        const char *from_tbl_id = nullptr;
        uint32_t key_count = 0;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, t, &from_tbl_id));
        KT_TRY(tov_schema__count_foreignkeys(ctx, schema, from_tbl_id, &key_count));
        for (uint32_t k = 0; k < key_count; k++) {
            const char *fk_id = nullptr;
            const char *ref_tbl_id = nullptr;
            uint32_t pair_count = 0;
            KT_vhash *inner = nullptr;
            KT_vhash *cols = nullptr;
            KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, from_tbl_id, k, &fk_id));
            KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, from_tbl_id, fk_id, &ref_tbl_id));
            if (strcmp(ref_tbl_id, tbl_id) != 0)
                continue;
            KT_TRY(tov_schema__count_foreignkey_cols(ctx, schema, from_tbl_id, fk_id, &pair_count));
            if (!result)
                KT_TRY(KT_vhash__alloc(ctx, result.out()));
            KT_TRY(KT_vhash__addnew__vhash(ctx, result, fk_id, &inner));
            KT_TRY(KT_vhash__add__string__sz(ctx, inner, "tbl", from_tbl_id));
            KT_TRY(KT_vhash__ensure__vhash(ctx, inner, "cols", &cols));
            for (uint32_t n = 0; n < pair_count; n++) {
                const char *from = nullptr;
                const char *to = nullptr;
                KT_TRY(tov_schema__get_nth_foreignkey_col_ids(ctx, schema, from_tbl_id, fk_id, n, &from, &to));
                KT_TRY(KT_vhash__add__string__sz(ctx, cols, from, to));
            }
        }
    }
    result.move_to(references);
}

void plain_find_references_to_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                  KT_vhash **references) noexcept
{
    kt_owned_vhash single{ctx};
    kt_owned_vhash multi{ctx};
    KT_TRY(plain_find_singlecol_references_to(ctx, schema, tbl_id, col_id, single.out()));
    KT_TRY(plain_find_multicol_references_to(ctx, schema, tbl_id, multi.out()));
    if (!multi) {
        single.move_to(references);
        return;
    }
    if (!single)
        KT_TRY(KT_vhash__alloc(ctx, single.out()));
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, multi, &count));
    for (uint32_t k = 0; k < count; k++) {
        KT_vhash *entry = nullptr;
        KT_vhash *cols = nullptr;
        KT_vhash *inner = nullptr;
        const char *from_tbl_id = nullptr;
        uint32_t pair_count = 0;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, multi, k, nullptr, &entry));
        KT_TRY(KT_vhash__get__sz(ctx, entry, "tbl", &from_tbl_id));
        KT_TRY(KT_vhash__get__vhash(ctx, entry, "cols", &cols));
        KT_TRY(KT_vhash__count(ctx, cols, &pair_count));
        for (uint32_t n = 0; n < pair_count; n++) {
            const char *from = nullptr;
            const char *to = nullptr;
            KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &from, &to));
            if (strcmp(to, col_id) != 0)
                continue;
            KT_TRY(KT_vhash__ensure__vhash(ctx, single, from_tbl_id, &inner));
            KT_TRY(KT_vhash__add__string__sz(ctx, inner, from, col_id));
            break;
        }
    }
    single.move_to(references);
}

void plain_does_tbl_have_fk_constraint_with_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_bool *has) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    for (uint32_t c = 0; c < count; c++) {
        const char *col_id = nullptr;
        const char *on_delete = nullptr;
        KT_bool present = 0;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, c, &col_id));
        KT_TRY(tov_schema__get_colcon_fk(ctx, schema, tbl_id, col_id, &present, nullptr, nullptr, nullptr, &on_delete,
                                         nullptr));
        if (my_is_action(on_delete)) {
            *has = 1;
            return;
        }
    }
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, tbl_id, &count));
    for (uint32_t k = 0; k < count; k++) {
        const char *fk_id = nullptr;
        const char *ref_tbl_id = nullptr;
        const char *on_delete = nullptr;
        KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id, k, &fk_id));
        KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id, fk_id, &ref_tbl_id));
        KT_TRY(tov_schema__get_foreignkey_delete_action(ctx, schema, tbl_id, fk_id, &on_delete));
        if (my_is_action(on_delete)) {
            *has = 1;
            return;
        }
    }
    *has = 0;
}

void plain_find_tbls_with_references_to(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                        KT_nullhash **tbl_ids) noexcept
{
    kt_owned_vhash single{ctx};
    kt_owned_vhash multi{ctx};
    kt_owned_nullhash set{ctx};
    uint32_t count = 0;
    KT_TRY(plain_find_singlecol_references_to(ctx, schema, tbl_id, nullptr, single.out()));
    if (single) {
        KT_TRY(KT_nullhash__alloc(ctx, set.out()));
        KT_TRY(KT_vhash__count(ctx, single, &count));
        for (uint32_t n = 0; n < count; n++) {
            const char *from_tbl_id = nullptr;
            KT_TRY(KT_vhash__get_nth_pair(ctx, single, n, &from_tbl_id, nullptr));
            KT_TRY(KT_nullhash__update(ctx, set, from_tbl_id));
        }
    }
    KT_TRY(plain_find_multicol_references_to(ctx, schema, tbl_id, multi.out()));
    if (multi) {
        if (!set)
            KT_TRY(KT_nullhash__alloc(ctx, set.out()));
        KT_TRY(KT_vhash__count(ctx, multi, &count));
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *entry = nullptr;
            const char *from_tbl_id = nullptr;
            KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, multi, n, nullptr, &entry));
            KT_TRY(KT_vhash__get__sz(ctx, entry, "tbl", &from_tbl_id));
            KT_TRY(KT_nullhash__update(ctx, set, from_tbl_id));
        }
    }
    set.move_to(tbl_ids);
}

void plain_list_tbls_referenced_by(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                   KT_nullhash **tbl_ids) noexcept
{
    kt_owned_nullhash set{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    for (uint32_t c = 0; c < count; c++) {
        const char *col_id = nullptr;
        const char *ref_tbl_id = nullptr;
        KT_bool has = 0;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, c, &col_id));
        KT_TRY(tov_schema__get_colcon_fk(ctx, schema, tbl_id, col_id, &has, nullptr, &ref_tbl_id, nullptr, nullptr,
                                         nullptr));
        if (has && !ref_tbl_id)
            KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no table", col_id, tbl_id);
        if (!has || strcmp(ref_tbl_id, tbl_id) == 0)
            continue;
        if (!set)
            KT_TRY(KT_nullhash__alloc(ctx, set.out()));
        KT_TRY(KT_nullhash__update(ctx, set, ref_tbl_id));
    }
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, tbl_id, &count));
    for (uint32_t k = 0; k < count; k++) {
        const char *fk_id = nullptr;
        const char *ref_tbl_id = nullptr;
        KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id, k, &fk_id));
        KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id, fk_id, &ref_tbl_id));
        if (strcmp(ref_tbl_id, tbl_id) == 0)
            continue;
        if (!set)
            KT_TRY(KT_nullhash__alloc(ctx, set.out()));
        KT_TRY(KT_nullhash__update(ctx, set, ref_tbl_id));
    }
    set.move_to(tbl_ids);
}

namespace {

void my_append_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                      KT_varray *defvals) noexcept
{
    KT_bool has = 0;
    const char *expr = nullptr;
    KT_TRY(tov_schema__get_colcon_defval(ctx, schema, tbl_id, col_id, &has, nullptr, &expr));
    KT_TRY(KT_varray__append__string__sz(ctx, defvals, has && expr ? expr : "NULL"));
}

void my_need(KT_context *ctx, const char *tbl_id, const char *col_id, const char *ref_tbl_id,
             const char *ref_col_id) noexcept
{
    if (!ref_tbl_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no table", col_id, tbl_id);
    if (!ref_col_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no column", col_id, tbl_id);
}

} // namespace

void plain_list_fk_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *ref_tbl_id,
                               uint32_t filter, KT_varray **records, uint32_t *count) noexcept
{
    kt_owned_varray list{ctx};
    uint32_t listed = 0;
    uint32_t members = 0;
    KT_vhash *record = nullptr;
    KT_varray *from = nullptr;
    KT_varray *to = nullptr;
    KT_varray *defvals = nullptr;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &members));
    for (uint32_t c = 0; c < members; c++) {
        const char *col_id = nullptr;
        const char *name = nullptr;
        const char *ref_tbl = nullptr;
        const char *ref_col = nullptr;
        const char *on_delete = nullptr;
        const char *from_name = nullptr;
        const char *to_name = nullptr;
        KT_bool has = 0;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, c, &col_id));
        KT_TRY(tov_schema__get_colcon_fk(ctx, schema, tbl_id, col_id, &has, &name, &ref_tbl, &ref_col, &on_delete,
                                         nullptr));
        if (on_delete && KT_stricmp(on_delete, "NO ACTION") == 0)
            on_delete = nullptr;
        if (!has || (ref_tbl_id && (!ref_tbl || strcmp(ref_tbl, ref_tbl_id) != 0)))
            continue;
        if (filter != 0 && (filter != 1 || !on_delete))
            continue;
        KT_TRY(my_need(ctx, tbl_id, col_id, ref_tbl, ref_col));
        KT_TRY(tov_schema__get_col_name(ctx, schema, tbl_id, col_id, &from_name));
        KT_TRY(tov_schema__get_col_name(ctx, schema, ref_tbl, ref_col, &to_name));
        if (!list)
            KT_TRY(KT_varray__alloc(ctx, list.out()));
        KT_TRY(KT_varray__appendnew__vhash(ctx, list, &record));
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", name));
        if (on_delete)
            KT_TRY(KT_vhash__add__string__sz(ctx, record, "on-delete", on_delete));
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", ref_tbl));
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-from", &from));
        KT_TRY(KT_varray__append__string__sz(ctx, from, from_name));
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-to", &to));
        KT_TRY(KT_varray__append__string__sz(ctx, to, to_name));
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "defvals", &defvals));
        if (filter == 1 && KT_stricmp(on_delete, "SET DEFAULT") == 0)
            KT_TRY(my_append_defval(ctx, schema, tbl_id, col_id, defvals));
        listed++;
    }
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, tbl_id, &members));
    for (uint32_t k = 0; k < members; k++) {
        const char *fk_id = nullptr;
        const char *name = nullptr;
        const char *ref_tbl = nullptr;
        const char *on_delete = nullptr;
        uint32_t pair_count = 0;
        KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id, k, &fk_id));
        KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id, fk_id, &ref_tbl));
        KT_TRY(tov_schema__get_foreignkey_delete_action(ctx, schema, tbl_id, fk_id, &on_delete));
        if (KT_stricmp(on_delete, "NO ACTION") == 0)
            on_delete = nullptr;
        if (ref_tbl_id && strcmp(ref_tbl, ref_tbl_id) != 0)
            continue;
        if (filter != 0 && (filter != 1 || !on_delete))
            continue;
        KT_TRY(tov_schema__count_foreignkey_cols(ctx, schema, tbl_id, fk_id, &pair_count));
        if (!list)
            KT_TRY(KT_varray__alloc(ctx, list.out()));
        KT_TRY(KT_varray__appendnew__vhash(ctx, list, &record));
        KT_TRY(tov_schema__get_foreignkey_name(ctx, schema, tbl_id, fk_id, &name));
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", name));
        if (on_delete)
            KT_TRY(KT_vhash__add__string__sz(ctx, record, "on-delete", on_delete));
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", ref_tbl));
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-from", &from));
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-to", &to));
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "defvals", &defvals));
        for (uint32_t n = 0; n < pair_count; n++) {
            const char *from_id = nullptr;
            const char *to_id = nullptr;
            const char *from_name = nullptr;
            const char *to_name = nullptr;
            KT_TRY(tov_schema__get_nth_foreignkey_col_ids(ctx, schema, tbl_id, fk_id, n, &from_id, &to_id));
            KT_TRY(tov_schema__get_col_name(ctx, schema, tbl_id, from_id, &from_name));
            KT_TRY(KT_varray__append__string__sz(ctx, from, from_name));
            KT_TRY(tov_schema__get_col_name(ctx, schema, ref_tbl, to_id, &to_name));
            KT_TRY(KT_varray__append__string__sz(ctx, to, to_name));
            if (filter == 1 && KT_stricmp(on_delete, "SET DEFAULT") == 0)
                KT_TRY(my_append_defval(ctx, schema, tbl_id, from_id, defvals));
        }
        listed++;
    }
    list.move_to(records);
    *count = listed;
}

namespace {

struct my_referring {
    const char *from_tbl_id;
    const char *tbl_id;
    uint32_t filter;
    kt_owned_varray *list;
    uint32_t *listed;
};

void my_append_referring(KT_context *ctx, const my_referring &r, const char *name, bool on_up, KT_varray **from,
                         KT_varray **to) noexcept
{
    KT_vhash *record = nullptr;
    if (!r.list->get())
        KT_TRY(KT_varray__alloc(ctx, r.list->out()));
    KT_TRY(KT_varray__appendnew__vhash(ctx, *r.list, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", name));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", r.from_tbl_id));
    KT_TRY(KT_vhash__add__bool(ctx, record, "on-up", on_up));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-from", from));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-to", to));
    ++*r.listed;
}

void my_append_cols(KT_context *ctx, tov_schema *schema, const my_referring &r, const char *from_id, const char *to_id,
                    KT_varray *from, KT_varray *to) noexcept
{
    const char *from_name = nullptr;
    const char *to_name = nullptr;
    KT_TRY(tov_schema__get_col_name(ctx, schema, r.from_tbl_id, from_id, &from_name));
    KT_TRY(tov_schema__get_col_name(ctx, schema, r.tbl_id, to_id, &to_name));
    KT_TRY(KT_varray__append__string__sz(ctx, from, from_name));
    KT_TRY(KT_varray__append__string__sz(ctx, to, to_name));
}

void my_list_referring_cols(KT_context *ctx, tov_schema *schema, const my_referring &r) noexcept
{
    uint32_t col_count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, r.from_tbl_id, &col_count));
    for (uint32_t c = 0; c < col_count; c++) {
        const char *col_id = nullptr;
        const char *name = nullptr;
        const char *ref_tbl = nullptr;
        const char *ref_col = nullptr;
        const char *on_delete = nullptr;
        const char *on_update = nullptr;
        KT_bool has = 0;
        KT_varray *from = nullptr;
        KT_varray *to = nullptr;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, r.from_tbl_id, c, &col_id));
        KT_TRY(tov_schema__get_colcon_fk(ctx, schema, r.from_tbl_id, col_id, &has, &name, &ref_tbl, &ref_col,
                                         &on_delete, &on_update));
        if (!has || !ref_tbl || strcmp(ref_tbl, r.tbl_id) != 0)
            continue;
        if (r.filter != 0 && (r.filter != 1 || !my_is_action(on_delete)))
            continue;
        KT_TRY(my_need(ctx, r.from_tbl_id, col_id, ref_tbl, ref_col));
        KT_TRY(my_append_referring(ctx, r, name, my_is_action(on_update), &from, &to));
        KT_TRY(my_append_cols(ctx, schema, r, col_id, ref_col, from, to));
    }
}

// The plain operations read no "on_update" of a table-level key, so it is read from the document's JSON form.
void my_get_update_action(KT_context *ctx, const KT_vhash *document, const char *tbl_id, const char *fk_id,
                          const char **action) noexcept
{
    KT_vhash *record = nullptr;
    std::string lowered = tbl_id;
    for (char &byte : lowered)
        byte = static_cast<char>(tolower(static_cast<unsigned char>(byte)));
    KT_TRY(KT_vhash__get__vhash(ctx, document, "schema", &record));
    for (const char *step : {"tbls", lowered.c_str(), "foreignkeys", fk_id})
        KT_TRY(KT_vhash__get__vhash(ctx, record, step, &record));
    KT_TRY(KT_vhash__get__sz(ctx, record, "on_update", action));
}

void my_list_referring_keys(KT_context *ctx, tov_schema *schema, const KT_vhash *document,
                            const my_referring &r) noexcept
{
    uint32_t key_count = 0;
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, r.from_tbl_id, &key_count));
    for (uint32_t k = 0; k < key_count; k++) {
        const char *fk_id = nullptr;
        const char *name = nullptr;
        const char *ref_tbl = nullptr;
        const char *on_delete = nullptr;
        const char *on_update = nullptr;
        uint32_t pair_count = 0;
        KT_varray *from = nullptr;
        KT_varray *to = nullptr;
        KT_TRY(tov_schema__get_nth_foreignkey_id(ctx, schema, r.from_tbl_id, k, &fk_id));
        KT_TRY(tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, r.from_tbl_id, fk_id, &ref_tbl));
        KT_TRY(my_get_update_action(ctx, document, r.from_tbl_id, fk_id, &on_update));
        KT_TRY(tov_schema__get_foreignkey_delete_action(ctx, schema, r.from_tbl_id, fk_id, &on_delete));
        if (strcmp(ref_tbl, r.tbl_id) != 0)
            continue;
        if (r.filter != 0 && (r.filter != 1 || !my_is_action(on_delete)))
            continue;
        KT_TRY(tov_schema__count_foreignkey_cols(ctx, schema, r.from_tbl_id, fk_id, &pair_count));
        KT_TRY(tov_schema__get_foreignkey_name(ctx, schema, r.from_tbl_id, fk_id, &name));
        KT_TRY(my_append_referring(ctx, r, name, my_is_action(on_update), &from, &to));
        for (uint32_t n = 0; n < pair_count; n++) {
            const char *from_id = nullptr;
            const char *to_id = nullptr;
            KT_TRY(tov_schema__get_nth_foreignkey_col_ids(ctx, schema, r.from_tbl_id, fk_id, n, &from_id, &to_id));
            KT_TRY(my_append_cols(ctx, schema, r, from_id, to_id, from, to));
        }
    }
}

} // namespace

void plain_find_references_to_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool include_self,
                                  uint32_t filter, KT_varray **records, uint32_t *count) noexcept
{
    kt_owned_vhash document{ctx};
    kt_owned_varray list{ctx};
    uint32_t listed = 0;
    uint32_t tbl_count = 0;
    KT_TRY(KT_vhash__alloc(ctx, document.out()));
    KT_TRY(tov_schema__copy_into_vhash(ctx, schema, document, 0));
    KT_TRY(tov_schema__count_tbls(ctx, schema, &tbl_count));
    for (uint32_t t = 0; t < tbl_count; t++) {
        const char *from_tbl_id = nullptr;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, t, &from_tbl_id));
        if (!include_self && strcmp(from_tbl_id, tbl_id) == 0)
            continue;
        const my_referring r = {from_tbl_id, tbl_id, filter, &list, &listed};
        KT_TRY(my_list_referring_cols(ctx, schema, r));
        KT_TRY(my_list_referring_keys(ctx, schema, document, r));
    }
    list.move_to(records);
    *count = listed;
}
