// Keys are listed from the side of the table that holds them, once for each table that has a delete action at all, and
// collected at the tables that they refer to: the work grows with the schema and no faster.
//
// A condition reads OLD."parent" = "child" in this order, as SQLite writes it for its own foreign keys: the left side
// decides the collation of the comparison, and that is to be the parent column's. A child key with a NULL in it equals
// nothing. The statements run after the row is gone, so that rows which refer to each other in a cycle come to an
// end. Deletions come before resets: a row that both reach is deleted, even if resetting would take it out of sight.
#include "create/client_actions.hpp"

#include "create/client_place.hpp"

#define KT_HERE "src/client/create/client_actions"

namespace {
// A foreign key with a delete action, as the schema module lists it.
struct fk_record {
    const char *action = nullptr;
    const char *ref_tbl_id = nullptr;
    KT_varray *cols = nullptr;
    KT_varray *ref_cols = nullptr;
    KT_varray *defvals = nullptr;
    uint32_t count = 0; // of columns, on either side
};
} // namespace

static void my_read_record(KT_context *ctx, const KT_varray *records, uint32_t n, fk_record &fk) noexcept
{
    KT_vhash *record = nullptr;
    KT_TRY(KT_varray__get__vhash(ctx, records, n, &record));
    KT_TRY(KT_vhash__get__sz(ctx, record, "on-delete", &fk.action));
    KT_TRY(KT_vhash__get__sz(ctx, record, "tbl", &fk.ref_tbl_id));
    KT_TRY(KT_vhash__get__varray(ctx, record, "cols-from", &fk.cols));
    KT_TRY(KT_vhash__get__varray(ctx, record, "cols-to", &fk.ref_cols));
    KT_TRY(KT_vhash__get__varray(ctx, record, "defvals", &fk.defvals));
    KT_TRY(KT_varray__count(ctx, fk.cols, &fk.count));
}

// The new values of an UPDATE: "a" = NULL, "b" = NULL; or, for SET DEFAULT, the columns' defaults.
static void my_append_new_values(KT_context *ctx, KT_string *sql, const fk_record &fk) noexcept
{
    const bool to_default = KT_stricmp(fk.action, "SET DEFAULT") == 0;
    for (uint32_t n = 0; n < fk.count; n++) {
        const char *col = nullptr;
        const char *value = "NULL";
        KT_TRY(KT_varray__get__sz(ctx, fk.cols, n, &col));
        if (to_default)
            KT_TRY(KT_varray__get__sz(ctx, fk.defvals, n, &value));
        KT_TRY(KT_string__append__format(ctx, sql, "%s\"%s\" = %s", n ? ", " : "", col, value));
    }
}

static void my_append_condition(KT_context *ctx, KT_string *sql, const fk_record &fk) noexcept
{
    for (uint32_t n = 0; n < fk.count; n++) {
        const char *col = nullptr;
        const char *ref_col = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, fk.cols, n, &col));
        KT_TRY(KT_varray__get__sz(ctx, fk.ref_cols, n, &ref_col));
        KT_TRY(KT_string__append__format(ctx, sql, "%sOLD.\"%s\" = \"%s\"", n ? " AND " : "", ref_col, col));
    }
}

static void my_append_statement(KT_context *ctx, KT_string *sql, const fk_record &fk, const char *tbl_name) noexcept
{
    if (KT_stricmp(fk.action, "CASCADE") == 0) {
        KT_TRY(KT_string__append__format(ctx, sql, "DELETE FROM \"%s\"", tbl_name));
    } else {
        KT_TRY(KT_string__append__format(ctx, sql, "UPDATE \"%s\" SET ", tbl_name));
        KT_TRY(my_append_new_values(ctx, sql, fk));
    }
    KT_TRY(KT_string__append__sz(ctx, sql, " WHERE "));
    KT_TRY(my_append_condition(ctx, sql, fk));
    KT_TRY(KT_string__append__sz(ctx, sql, ";\n"));
}

// Adds the statement that a key calls for to the table that the key refers to.
static void my_add_action(KT_context *ctx, tov_schema *schema, const fk_record &fk, const client_tbl &tbl,
                          const KT_vhash *positions, client_plan &plan) noexcept
{
    kt_owned_string sql{ctx};
    KT_TRY(KT_string__alloc(ctx, sql.out()));
    KT_TRY(my_append_statement(ctx, sql, fk, tbl.name));
    // Through the name, since the key may write the id in another case.
    const char *ref_name = nullptr;
    KT_TRY(tov_schema__get_tbl_name(ctx, schema, fk.ref_tbl_id, &ref_name));
    int64_t position = 0;
    KT_TRY(KT_vhash__get__int64(ctx, positions, ref_name, &position));
    client_tbl &ref_tbl = plan.tbls[static_cast<size_t>(position)];
    const bool cascade = KT_stricmp(fk.action, "CASCADE") == 0;
    KT_TRY(kt_contain(ctx, [&] { (cascade ? ref_tbl.cascades : ref_tbl.resets) += KT_string__sz(sql); }));
}

static void my_add_tbl_actions(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const KT_vhash *positions,
                               client_plan &plan) noexcept
{
    // In a statement on a table of that name OLD."x" would mean the table's own column.
    if (KT_stricmp(tbl.name, "old") == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, client_place{tbl.name},
                    "a foreign key with a delete action: triggers call the deleted row OLD");
    kt_owned_varray records{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_fk_constraints(ctx, schema, tbl.id, nullptr, 1, records.out(), &count));
    for (uint32_t n = 0; n < count; n++) {
        fk_record fk;
        KT_TRY(my_read_record(ctx, records, n, fk));
        KT_TRY(my_add_action(ctx, schema, fk, tbl, positions, plan));
    }
}

static void my_has_delete_action(KT_context *ctx, tov_schema *schema, const char *tbl_id, bool *found) noexcept
{
    kt_owned_varray keys{ctx};
    KT_TRY(tov_schema__list_keys(ctx, schema, tbl_id, TOV_KEYS_FOREIGN, keys.out()));
    uint32_t count = 0;
    if (keys)
        KT_TRY(KT_varray__count(ctx, keys, &count));
    KT_bool has = 0;
    for (uint32_t n = 0; n < count && !has; n++) {
        KT_vhash *key = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, keys, n, &key));
        KT_TRY(KT_vhash__has(ctx, key, "on-delete", &has));
    }
    *found = has != 0;
}

void client_add_delete_actions(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    kt_owned_vhash positions{ctx};
    KT_TRY(KT_vhash__alloc(ctx, positions.out()));
    for (size_t n = 0; n < plan.tbls.size(); n++)
        KT_TRY(KT_vhash__add__int64(ctx, positions, plan.tbls[n].name, static_cast<int64_t>(n)));
    for (const client_tbl &tbl : plan.tbls) {
        bool found = false;
        KT_TRY(my_has_delete_action(ctx, schema, tbl.id, &found));
        if (found)
            KT_TRY(my_add_tbl_actions(ctx, schema, tbl, positions, plan));
    }
}
