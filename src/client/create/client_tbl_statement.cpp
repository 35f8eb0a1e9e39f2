// The schema module's definitions of columns, keys and checks in their order, and what the server's rules and
// collations add to them.
#include "create/client_tbl_statement.hpp"

#include "rules/client_rules.hpp"

#define KT_HERE "src/client/create/client_tbl_statement"

namespace {
using id_getter = void (*)(KT_context *, tov_schema *, const char *tbl_id, uint32_t n, const char **id) noexcept;
using defin_getter = void (*)(KT_context *, tov_schema *, const char *tbl_id, const char *id,
                              const char **defin) noexcept;
using counter = void (*)(KT_context *, tov_schema *, const char *tbl_id, uint32_t *count) noexcept;

// A kind of constraint of which a table can have several.
struct constraint_kind {
    counter count;
    id_getter get_nth_id;
    defin_getter get_defin;
};
} // namespace

static constexpr constraint_kind constraint_kinds[] = {
    {tov_schema__count_uniques, tov_schema__get_nth_unique_id, tov_schema__get_unique_defin},
    {tov_schema__count_foreignkeys, tov_schema__get_nth_foreignkey_id, tov_schema__get_foreignkey_defin},
    {tov_schema__count_checks, tov_schema__get_nth_check_id, tov_schema__get_check_defin},
};

static void my_write_defin(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                           const client_tbl_form &form, KT_string *sql) noexcept
{
    const char *defin = nullptr;
    KT_TRY(tov_schema__get_col_defin(ctx, schema, tbl.id, col_id, nullptr, &defin));
    KT_TRY(KT_string__append__sz(ctx, sql, defin));
    if (form.with_rules && KT_stricmp(col_id, tbl.versioned.col_id.c_str()) == 0) // so that a row may come without one
        KT_TRY(KT_string__append__format(ctx, sql, " DEFAULT %s", client_no_version));
    KT_TRY(KT_string__append__sz(ctx, sql, client_find_collation(tbl.collations, col_id)));
}

static void my_write_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                 const client_tbl_form &form, const char *before, KT_string *sql) noexcept
{
    if (!form.with_constraints)
        return;
    kt_contain(ctx, [&] {
        std::string constraints;
        KT_TRY(client_append_col_constraints(ctx, schema, tbl, col_id, form.with_rules, form.pages, constraints));
        if (!constraints.empty())
            KT_TRY(KT_string__append__sz(ctx, sql, before));
        KT_TRY(KT_string__append__sz(ctx, sql, constraints.c_str()));
    });
}

void client_write_col(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                      const client_tbl_form &form, KT_string *sql) noexcept
{
    KT_TRY(my_write_defin(ctx, schema, tbl, col_id, form, sql));
    KT_TRY(my_write_constraints(ctx, schema, tbl, col_id, form, "", sql));
}

// SQLite gives the name of a column's last constraint to what follows the column, which a check without a name would
// go by in messages. A comma before the constraints of the last column makes them the table's, and ends that.
static void my_append_cols(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_tbl_form &form,
                           bool check_follows, KT_string *sql) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl.id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl.id, n, &col_id));
        KT_TRY(KT_string__append__sz(ctx, sql, n ? ",\n    " : "\n    "));
        KT_TRY(my_write_defin(ctx, schema, tbl, col_id, form, sql));
        const char *before = check_follows && n == count - 1 ? "," : "";
        KT_TRY(my_write_constraints(ctx, schema, tbl, col_id, form, before, sql));
    }
}

static void my_append_constraint(KT_context *ctx, KT_string *sql, const char *defin) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, sql, ",\n    "));
    KT_TRY(KT_string__append__sz(ctx, sql, defin));
}

// The definition of the key; null where the table has none, or an integer primary key that its column declares.
static void my_get_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char **defin) noexcept
{
    const char *ipk_col_id = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__has_integer_primary_key(ctx, schema, tbl_id, &ipk_col_id));
    KT_TRY(tov_schema__count_pk_cols(ctx, schema, tbl_id, &count));
    if (!ipk_col_id && count > 0)
        KT_TRY(tov_schema__get_pk_defin(ctx, schema, tbl_id, defin));
}

static void my_append_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id, const constraint_kind &kind,
                                  KT_string *sql) noexcept
{
    uint32_t count = 0;
    KT_TRY(kind.count(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        const char *defin = nullptr;
        KT_TRY(kind.get_nth_id(ctx, schema, tbl_id, n, &id));
        KT_TRY(kind.get_defin(ctx, schema, tbl_id, id, &defin));
        KT_TRY(my_append_constraint(ctx, sql, defin));
    }
}

// SQLite numbers rows after the triggers ran, so the limits of these numbers are the table's own check.
static void my_append_rowid_rules(KT_context *ctx, const client_row_tbl &tbl, KT_string *sql) noexcept
{
    if (!tbl.has_facts)
        return;
    kt_contain(ctx, [&] {
        for (const client_row_col &col : tbl.cols) {
            const client_rowid_limits limits = client_rowid_limits_of(col.type);
            if (!col.stored || !col.rowid || limits.range.empty())
                continue;
            const std::string check = "CONSTRAINT \"[" + col.name + "] constraint violation: " + limits.message +
                                      "\" CHECK (" + client_quoted(col.name) + " BETWEEN " + limits.range + ")";
            KT_TRY(my_append_constraint(ctx, sql, check.c_str()));
        }
    });
}

// Whether a check comes first after the columns.
static void my_check_follows(KT_context *ctx, tov_schema *schema, const char *tbl_id, bool *follows) noexcept
{
    uint32_t uniques = 0;
    uint32_t foreignkeys = 0;
    uint32_t checks = 0;
    KT_TRY(tov_schema__count_uniques(ctx, schema, tbl_id, &uniques));
    KT_TRY(tov_schema__count_foreignkeys(ctx, schema, tbl_id, &foreignkeys));
    KT_TRY(tov_schema__count_checks(ctx, schema, tbl_id, &checks));
    *follows = uniques + foreignkeys == 0 && checks > 0;
}

void client_write_tbl(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_tbl_form &form,
                      KT_string *sql) noexcept
{
    const char *pk = nullptr;
    bool check_follows = false;
    KT_TRY(my_get_pk(ctx, schema, tbl.id, &pk));
    KT_TRY(my_check_follows(ctx, schema, tbl.id, &check_follows));
    KT_TRY(KT_string__append__format(ctx, sql, "CREATE TABLE \"%s\" (", tbl.name));
    KT_TRY(my_append_cols(ctx, schema, tbl, form, check_follows && !pk, sql));
    if (pk)
        KT_TRY(my_append_constraint(ctx, sql, pk));
    for (const constraint_kind &kind : constraint_kinds)
        KT_TRY(my_append_constraints(ctx, schema, tbl.id, kind, sql));
    if (form.with_rules)
        KT_TRY(my_append_rowid_rules(ctx, tbl.rows, sql));
    KT_TRY(KT_string__append__sz(ctx, sql, "\n)"));
}
