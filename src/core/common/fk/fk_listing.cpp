// The foreign keys of a table as records for the triggers that carry out delete actions: those that it holds, and
// those by which other tables refer to it. Records speak of columns by name.

#include "fk/fk_walk.hpp"

#include <cstring>

static constexpr uint32_t EVERY_KEY = 0;
static constexpr uint32_t KEYS_WITH_DELETE_ACTION = 1; // any other filter selects nothing

namespace {

// The column lists of a record, and of a table-level key what goes into them.
struct my_lists {
    KT_vhash *pairs = nullptr;
    uint32_t pair_count = 0;
    KT_varray *from = nullptr;
    KT_varray *to = nullptr;
    KT_varray *defvals = nullptr;
    bool with_defvals = false;
};

} // namespace

static bool my_is_selected(uint32_t filter, const fk_key &key) noexcept
{
    return filter == EVERY_KEY || (filter == KEYS_WITH_DELETE_ACTION && tov_is_fk_action(key.on_delete));
}

// What a record needs of a table-level key: its columns, and its name, which it must have. A column-level key has its
// name already, or none.
static void my_complete(KT_context *ctx, fk_key *key, my_lists *lists) noexcept
{
    if (key->col)
        return;
    KT_TRY(fk_get_cols(ctx, *key, &lists->pairs, &lists->pair_count));
    KT_TRY(KT_vhash__get__sz(ctx, key->fk, "name", &key->name));
}

static void my_append_new(KT_context *ctx, kt_owned_varray *records, KT_vhash **record) noexcept
{
    if (!records->get())
        KT_TRY(KT_varray__alloc(ctx, records->out()));
    KT_TRY(KT_varray__appendnew__vhash(ctx, *records, record));
}

static void my_add_col_lists(KT_context *ctx, KT_vhash *record, my_lists *lists) noexcept
{
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-from", &lists->from));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "cols-to", &lists->to));
}

static void my_append_held_record(KT_context *ctx, const fk_key &key, uint32_t filter, kt_owned_varray *records,
                                  my_lists *lists) noexcept
{
    KT_vhash *record = nullptr;
    KT_TRY(my_append_new(ctx, records, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", key.name));
    if (tov_is_fk_action(key.on_delete))
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "on-delete", key.on_delete));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", key.ref_tbl_id));
    KT_TRY(my_add_col_lists(ctx, record, lists));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "defvals", &lists->defvals));
    lists->with_defvals = filter == KEYS_WITH_DELETE_ACTION && KT_stricmp(key.on_delete, "SET DEFAULT") == 0;
}

static void my_append_referring_record(KT_context *ctx, const fk_key &key, kt_owned_varray *records,
                                       my_lists *lists) noexcept
{
    KT_vhash *record = nullptr;
    KT_TRY(my_append_new(ctx, records, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", key.name));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", key.tbl_id));
    KT_TRY(KT_vhash__add__bool(ctx, record, "on-up", tov_is_fk_action(key.on_update)));
    KT_TRY(my_add_col_lists(ctx, record, lists));
}

static void my_append_defval(KT_context *ctx, const KT_vhash *col, KT_varray *defvals) noexcept
{
    KT_bool has = 0;
    const char *expr = nullptr;
    KT_TRY(_tov_col__get_defval(ctx, col, &has, nullptr, &expr));
    KT_TRY(KT_varray__append__string__sz(ctx, defvals, has && expr ? expr : "NULL"));
}

// Appends one pair of columns: the record of the referencing one, and the id of the other.
static void my_append_pair(KT_context *ctx, tov_schema *schema, const KT_vhash *col, const char *ref_tbl_id,
                           const char *ref_col_id, const my_lists &lists) noexcept
{
    const char *from = nullptr;
    const char *to = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, col, "name", &from));
    KT_TRY(KT_varray__append__string__sz(ctx, lists.from, from));
    KT_TRY(tov_schema__get_col_name(ctx, schema, ref_tbl_id, ref_col_id, &to));
    KT_TRY(KT_varray__append__string__sz(ctx, lists.to, to));
    if (lists.with_defvals)
        KT_TRY(my_append_defval(ctx, col, lists.defvals));
}

static void my_append_cols(KT_context *ctx, tov_schema *schema, const fk_key &key, const char *ref_tbl_id,
                           const my_lists &lists) noexcept
{
    if (key.col) {
        KT_TRY(fk_need_ref_col(ctx, key));
        KT_TRY(my_append_pair(ctx, schema, key.col, ref_tbl_id, key.ref_col_id, lists));
    }
    for (uint32_t n = 0; n < lists.pair_count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        KT_vhash *col = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, lists.pairs, n, &col_id, &ref_col_id));
        KT_TRY(_tov_schema__get_col(ctx, schema, key.tbl_id, col_id, &col));
        KT_TRY(my_append_pair(ctx, schema, col, ref_tbl_id, ref_col_id, lists));
    }
}

void tov_schema__list_fk_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *ref_tbl_id,
                                     uint32_t filter, KT_varray **records, uint32_t *count) noexcept
{
    fk_walk walk = {.schema = schema,
                    .col_fields = FK_ALL_FIELDS & ~FK_ON_UPDATE,
                    .tbl_fields = FK_ON_DELETE,
                    .ref_tbl_id = ref_tbl_id};
    fk_key key;
    kt_owned_varray list{ctx};
    uint32_t appended = 0;
    KT_TRY(fk_walk_tbl(ctx, &walk, tbl_id));
    for (;;) {
        my_lists lists;
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        if (!my_is_selected(filter, key))
            continue;
        KT_TRY(my_complete(ctx, &key, &lists));
        KT_TRY(my_append_held_record(ctx, key, filter, &list, &lists));
        KT_TRY(my_append_cols(ctx, schema, key, key.ref_tbl_id, lists));
        appended++;
    }
    list.move_to(records);
    *count = appended;
}

void tov_schema__find_references_to_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool include_self,
                                        uint32_t filter, KT_varray **records, uint32_t *count) noexcept
{
    fk_walk walk = {.schema = schema,
                    .col_fields = FK_ALL_FIELDS,
                    .tbl_fields = FK_ON_DELETE | FK_ON_UPDATE,
                    .ref_tbl_id = tbl_id,
                    .skipped_tbl_id = include_self ? nullptr : tbl_id};
    fk_key key;
    kt_owned_varray list{ctx};
    uint32_t appended = 0;
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        my_lists lists;
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        if (!my_is_selected(filter, key))
            continue;
        KT_TRY(my_complete(ctx, &key, &lists));
        KT_TRY(my_append_referring_record(ctx, key, &list, &lists));
        KT_TRY(my_append_cols(ctx, schema, key, tbl_id, lists));
        appended++;
    }
    list.move_to(records);
    *count = appended;
}
