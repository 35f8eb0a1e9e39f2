// All keys of a table in one list: the primary key, unique constraints, and foreign keys of both kinds.
//
// What a key may lack, its record in the list lacks too. A list is made with the first key that goes into it.

#include "document/tov_parse_defin_private.hpp"

namespace {

// The list under way, and the table whose keys go into it.
struct my_listing {
    tov_schema *schema;
    const char *tbl_id;
    KT_vhash *tbl;
    kt_owned_varray keys; // null while there is none
};

} // namespace

static void my_add_text(KT_context *ctx, KT_vhash *key, const char *member, const char *text) noexcept
{
    if (text)
        KT_TRY(KT_vhash__add__string__sz(ctx, key, member, text));
}

// Begins a record; its columns go to cols.
static void my_add_key(KT_context *ctx, my_listing &listing, const char *kind, const char *id, const char *name,
                       KT_vhash **key, KT_varray **cols) noexcept
{
    if (!listing.keys)
        KT_TRY(KT_varray__alloc(ctx, listing.keys.out()));
    KT_TRY(KT_varray__appendnew__vhash(ctx, listing.keys, key));
    KT_TRY(KT_vhash__add__string__sz(ctx, *key, "kind", kind));
    KT_TRY(my_add_text(ctx, *key, "id", id));
    KT_TRY(my_add_text(ctx, *key, "name", name));
    KT_TRY(KT_vhash__addnew__varray(ctx, *key, "cols", cols));
}

// The name of the constraint that makes the table's primary key, null when there is none.
static void my_check_pk_name(KT_context *ctx, const my_listing &listing, const char **name) noexcept
{
    KT_vhash *integer_pk = nullptr;
    KT_bool is_integer_pk = 0;
    KT_vhash *pk = nullptr;
    KT_TRY(_tov_tbl__find_integer_primary_key(ctx, listing.schema, listing.tbl, listing.tbl_id, nullptr, &integer_pk));
    if (integer_pk) {
        KT_TRY(_tov_col__is_integer_primary_key(ctx, integer_pk, &is_integer_pk, name));
        return;
    }
    KT_TRY(KT_vhash__check__vhash(ctx, listing.tbl, "pk", &pk));
    if (pk)
        KT_TRY(KT_vhash__check__sz(ctx, pk, "name", name));
}

static void my_list_primary_key(KT_context *ctx, my_listing &listing) noexcept
{
    uint32_t count = 0;
    const char *name = nullptr;
    KT_vhash *key = nullptr;
    KT_varray *cols = nullptr;
    KT_TRY(_tov_tbl__count_pk_cols(ctx, listing.schema, listing.tbl, listing.tbl_id, &count));
    if (count == 0)
        return;
    KT_TRY(my_check_pk_name(ctx, listing, &name));
    KT_TRY(my_add_key(ctx, listing, "primary", nullptr, name, &key, &cols));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_TRY(_tov_tbl__get_nth_pk_col(ctx, listing.schema, listing.tbl, listing.tbl_id, n, &col_id, nullptr));
        KT_TRY(KT_varray__append__string__sz(ctx, cols, col_id));
    }
}

static void my_list_uniques(KT_context *ctx, my_listing &listing) noexcept
{
    KT_vhash *uniques = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__vhash(ctx, listing.tbl, "uniques", &uniques));
    if (uniques)
        KT_TRY(KT_vhash__count(ctx, uniques, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *col_ids = nullptr;
        KT_vhash *key = nullptr;
        KT_varray *cols = nullptr;
        uint32_t col_count = 0;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, uniques, n, &id, &col_ids));
        KT_TRY(my_add_key(ctx, listing, "unique", id, nullptr, &key, &cols));
        KT_TRY(KT_vhash__count(ctx, col_ids, &col_count));
        for (uint32_t c = 0; c < col_count; c++) {
            const char *col_id = nullptr;
            KT_TRY(KT_vhash__get_nth_pair(ctx, col_ids, c, &col_id, nullptr));
            KT_TRY(KT_varray__append__string__sz(ctx, cols, col_id));
        }
    }
}

// What the records of both kinds of foreign keys hold under the same keys; the referenced columns go to ref_cols.
static void my_add_foreign_key(KT_context *ctx, my_listing &listing, const char *id, const KT_vhash *fk,
                               KT_varray **cols, KT_varray **ref_cols) noexcept
{
    const char *name = nullptr;
    const char *ref_tbl_id = nullptr;
    KT_bool deferred = 0;
    KT_vhash *key = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, fk, "name", &name));
    KT_TRY(KT_vhash__check__sz(ctx, fk, "ref_tbl_id", &ref_tbl_id));
    KT_TRY(KT_vhash__check__bool(ctx, fk, "deferred", &deferred));
    KT_TRY(my_add_key(ctx, listing, "foreign", id, name, &key, cols));
    KT_TRY(my_add_text(ctx, key, "ref-tbl", ref_tbl_id));
    KT_TRY(KT_vhash__addnew__varray(ctx, key, "ref-cols", ref_cols));
    KT_TRY(KT_vhash__add__bool(ctx, key, "deferred", deferred));
    static constexpr const char *actions[][2] = {{"on_delete", "on-delete"}, {"on_update", "on-update"}};
    for (const auto &[stored, listed] : actions) {
        const char *action = nullptr;
        KT_TRY(KT_vhash__check__sz(ctx, fk, stored, &action));
        if (tov_is_fk_action(action))
            KT_TRY(my_add_text(ctx, key, listed, action));
    }
}

static void my_list_col_foreign_keys(KT_context *ctx, my_listing &listing) noexcept
{
    KT_vhash *tbl_cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_tbl__get_cols(ctx, listing.tbl, &tbl_cols));
    KT_TRY(KT_vhash__count(ctx, tbl_cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        KT_vhash *col = nullptr;
        KT_vhash *fk = nullptr;
        KT_varray *cols = nullptr;
        KT_varray *ref_cols = nullptr;
        KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, listing.schema, listing.tbl, listing.tbl_id, tbl_cols, n, &col_id,
                                               &col));
        KT_TRY(KT_vhash__check__vhash(ctx, col, "fk", &fk));
        if (!fk)
            continue;
        KT_TRY(my_add_foreign_key(ctx, listing, nullptr, fk, &cols, &ref_cols));
        KT_TRY(KT_varray__append__string__sz(ctx, cols, col_id));
        KT_TRY(KT_vhash__check__sz(ctx, fk, "ref_col_id", &ref_col_id));
        if (ref_col_id)
            KT_TRY(KT_varray__append__string__sz(ctx, ref_cols, ref_col_id));
    }
}

static void my_list_tbl_foreign_keys(KT_context *ctx, my_listing &listing) noexcept
{
    KT_vhash *foreignkeys = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__vhash(ctx, listing.tbl, "foreignkeys", &foreignkeys));
    if (foreignkeys)
        KT_TRY(KT_vhash__count(ctx, foreignkeys, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *fk = nullptr;
        KT_vhash *pairs = nullptr;
        KT_varray *cols = nullptr;
        KT_varray *ref_cols = nullptr;
        uint32_t pair_count = 0;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, foreignkeys, n, &id, &fk));
        KT_TRY(KT_vhash__check__vhash(ctx, fk, "cols", &pairs));
        KT_TRY(my_add_foreign_key(ctx, listing, id, fk, &cols, &ref_cols));
        if (pairs)
            KT_TRY(KT_vhash__count(ctx, pairs, &pair_count));
        for (uint32_t p = 0; p < pair_count; p++) {
            const char *col_id = nullptr;
            const char *ref_col_id = nullptr;
            KT_TRY(KT_vhash__get_nth_pair__sz(ctx, pairs, p, &col_id, &ref_col_id));
            KT_TRY(KT_varray__append__string__sz(ctx, cols, col_id));
            KT_TRY(KT_varray__append__string__sz(ctx, ref_cols, ref_col_id));
        }
    }
}

void tov_schema__list_keys(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t kinds,
                           KT_varray **keys) noexcept
{
    my_listing listing{schema, tbl_id, nullptr, kt_owned_varray{ctx}};
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &listing.tbl));
    if (kinds & TOV_KEYS_PRIMARY)
        KT_TRY(my_list_primary_key(ctx, listing));
    if (kinds & TOV_KEYS_UNIQUE)
        KT_TRY(my_list_uniques(ctx, listing));
    if (kinds & TOV_KEYS_FOREIGN) {
        KT_TRY(my_list_col_foreign_keys(ctx, listing));
        KT_TRY(my_list_tbl_foreign_keys(ctx, listing));
    }
    listing.keys.move_to(keys);
}
