// Table constraints as CREATE TABLE has them after the columns: primary key, unique, foreign key, check.
//
// No constraint is given its name, and a foreign key no ON DELETE: triggers carry delete actions out. Columns and
// tables are written under their stored names, in the order in which the constraint lists them.

#include "ddl/ddl_text.hpp"

namespace {

// Appends "a","b" for columns of one table that are given by their ids.
struct my_name_list {
    tov_schema *schema;
    const char *tbl_id;
    KT_vhash *tbl;
    KT_string *text;
};

} // namespace

static void my_append_col_name(KT_context *ctx, const my_name_list &list, uint32_t n, const char *col_id) noexcept
{
    KT_vhash *col = nullptr;
    const char *name = nullptr;
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, list.schema, list.tbl, list.tbl_id, col_id, &col));
    KT_TRY(ddl_get_col_name(ctx, col, &name));
    KT_TRY(ddl_append(ctx, list.text, {n ? ",\"" : "\"", name, "\""}));
}

// The columns are the keys of the map.
static void my_append_key_names(KT_context *ctx, const my_name_list &list, const KT_vhash *cols) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &col_id, nullptr));
        KT_TRY(my_append_col_name(ctx, list, n, col_id));
    }
}

// The columns are the values of the map.
static void my_append_value_names(KT_context *ctx, const my_name_list &list, const KT_vhash *cols) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, nullptr, &col_id));
        KT_TRY(my_append_col_name(ctx, list, n, col_id));
    }
}

// PRIMARY KEY (...) or UNIQUE (...), kept for the caller.
static void my_build_key(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash *tbl, const char *opening,
                         const KT_vhash *cols, const char **defin) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc__sz(ctx, text.out(), opening));
    KT_TRY(my_append_key_names(ctx, {schema, tbl_id, tbl, text}, cols));
    KT_TRY(KT_string__append__sz(ctx, text, ")"));
    KT_TRY(ddl_keep(ctx, schema, text, defin));
}

void tov_schema__get_pk_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char **defin) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_vhash *pk = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "pk", &pk));
    if (pk)
        KT_TRY(KT_vhash__check__vhash(ctx, pk, "cols", &cols));
    if (cols)
        KT_TRY(my_build_key(ctx, schema, tbl_id, tbl, "PRIMARY KEY (", cols, defin));
    else
        *defin = nullptr;
}

void tov_schema__get_unique_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *unique_id,
                                  const char **defin) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_vhash *uniques = nullptr;
    KT_vhash *cols = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "uniques", &uniques));
    KT_TRY(KT_vhash__get__vhash(ctx, uniques, unique_id, &cols));
    KT_TRY(my_build_key(ctx, schema, tbl_id, tbl, "UNIQUE (", cols, defin));
}

void tov_schema__get_foreignkey_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                                      const char **defin) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_vhash *foreignkeys = nullptr;
    KT_vhash *foreignkey = nullptr;
    KT_vhash *ref_tbl = nullptr;
    KT_vhash *cols = nullptr;
    const char *ref_tbl_id = nullptr;
    const char *ref_tbl_name = nullptr;
    const char *on_update = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, "foreignkeys", &foreignkeys));
    KT_TRY(KT_vhash__get__vhash(ctx, foreignkeys, fk_id, &foreignkey));
    KT_TRY(KT_vhash__get__sz(ctx, foreignkey, "ref_tbl_id", &ref_tbl_id));
    KT_TRY(_tov_schema__get_tbl(ctx, schema, ref_tbl_id, &ref_tbl));
    KT_TRY(KT_vhash__get__sz(ctx, ref_tbl, "name", &ref_tbl_name));
    KT_TRY(KT_vhash__check__sz(ctx, foreignkey, "on_update", &on_update));
    KT_TRY(KT_vhash__get__vhash(ctx, foreignkey, "cols", &cols));

    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc__sz(ctx, text.out(), "FOREIGN KEY ("));
    KT_TRY(my_append_key_names(ctx, {schema, tbl_id, tbl, text}, cols));
    KT_TRY(ddl_append(ctx, text, {") REFERENCES \"", ref_tbl_name, "\" ("}));
    KT_TRY(my_append_value_names(ctx, {schema, ref_tbl_id, ref_tbl, text}, cols));
    KT_TRY(KT_string__append__sz(ctx, text, ")"));
    if (on_update)
        KT_TRY(ddl_append(ctx, text, {" ON UPDATE ", on_update}));
    KT_TRY(KT_string__append__sz(ctx, text, " DEFERRABLE INITIALLY DEFERRED"));
    KT_TRY(ddl_keep(ctx, schema, text, defin));
}

void tov_schema__get_check_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *check_id,
                                 const char **defin) noexcept
{
    KT_vhash *checks = nullptr;
    KT_vhash *check = nullptr;
    const char *expr = nullptr;
    KT_TRY(_tov_schema__get_checks(ctx, schema, tbl_id, &checks));
    KT_TRY(KT_vhash__get__vhash(ctx, checks, check_id, &check));
    KT_TRY(KT_vhash__get__sz(ctx, check, "expr", &expr));

    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(ddl_append(ctx, text, {"CHECK (", expr, ")"}));
    KT_TRY(ddl_keep(ctx, schema, text, defin));
}
