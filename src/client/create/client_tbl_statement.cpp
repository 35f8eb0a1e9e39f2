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

static void my_append_cols(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules,
                           KT_string *sql) noexcept
{
    const char *tbl_id = tbl.id;
    const bool has_version = with_rules && !tbl.versioned.col_id.empty();
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *defin = nullptr;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, n, &col_id));
        KT_TRY(tov_schema__get_col_defin(ctx, schema, tbl_id, col_id, nullptr, &defin));
        KT_TRY(KT_string__append__sz(ctx, sql, n ? ",\n    " : "\n    "));
        KT_TRY(KT_string__append__sz(ctx, sql, defin));
        if (has_version && KT_stricmp(col_id, tbl.versioned.col_id.c_str()) == 0) // so that a row may come without one
            KT_TRY(KT_string__append__format(ctx, sql, " DEFAULT %s", client_no_version));
        KT_TRY(KT_string__append__sz(ctx, sql, client_find_collation(tbl.collations, col_id)));
    }
}

static void my_append_constraint(KT_context *ctx, KT_string *sql, const char *defin) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, sql, ",\n    "));
    KT_TRY(KT_string__append__sz(ctx, sql, defin));
}

// An integer primary key is declared by its column already.
static void my_append_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_string *sql) noexcept
{
    const char *ipk_col_id = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__has_integer_primary_key(ctx, schema, tbl_id, &ipk_col_id));
    KT_TRY(tov_schema__count_pk_cols(ctx, schema, tbl_id, &count));
    if (ipk_col_id || count == 0)
        return;
    const char *defin = nullptr;
    KT_TRY(tov_schema__get_pk_defin(ctx, schema, tbl_id, &defin));
    KT_TRY(my_append_constraint(ctx, sql, defin));
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

void client_write_tbl(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules,
                      KT_string *sql) noexcept
{
    KT_TRY(KT_string__append__format(ctx, sql, "CREATE TABLE \"%s\" (", tbl.name));
    KT_TRY(my_append_cols(ctx, schema, tbl, with_rules, sql));
    KT_TRY(my_append_pk(ctx, schema, tbl.id, sql));
    for (const constraint_kind &kind : constraint_kinds)
        KT_TRY(my_append_constraints(ctx, schema, tbl.id, kind, sql));
    if (with_rules)
        KT_TRY(my_append_rowid_rules(ctx, tbl.rows, sql));
    KT_TRY(KT_string__append__sz(ctx, sql, "\n)"));
}
