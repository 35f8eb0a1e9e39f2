// A column as CREATE TABLE has it: quoted name, declared type, collation, constraints.
//
// The pieces are written in a fixed order, each but the first after one blank, and what a piece needs is read just
// before it, so that the first thing wrong with a column is the one reported. SQLite's grammar takes a constraint's
// name before the constraint; delete actions other than NO ACTION are written as a comment, since triggers carry them
// out.

#include "ddl/ddl_text.hpp"

namespace {

struct my_reference {
    KT_bool has = 0;
    const char *name = nullptr;
    const char *tbl_id = nullptr;
    const char *col_id = nullptr;
    const char *on_delete = nullptr;
    const char *on_update = nullptr;
};

// The column that is being written.
struct my_column {
    tov_schema *schema;
    const char *tbl_id;
    const char *col_id;
    KT_vhash *tbl = nullptr;
    KT_vhash *col = nullptr;
    KT_vhash *type = nullptr;
    const char *abstract_type = nullptr;
};

} // namespace

static void my_find_column(KT_context *ctx, my_column *c) noexcept
{
    KT_TRY(_tov_schema__get_tbl(ctx, c->schema, c->tbl_id, &c->tbl));
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, c->schema, c->tbl, c->tbl_id, c->col_id, &c->col));
    KT_TRY(KT_vhash__get__vhash(ctx, c->col, "type", &c->type));
    KT_TRY(KT_vhash__get__sz(ctx, c->type, "name", &c->abstract_type));
}

static void my_append_constraint_name(KT_context *ctx, const char *name, KT_string *text) noexcept
{
    if (name)
        KT_TRY(ddl_append(ctx, text, {" CONSTRAINT \"", name, "\""}));
}

static void my_append_name_and_decl(KT_context *ctx, const my_column &c, KT_string *text) noexcept
{
    const char *name = nullptr;
    KT_TRY(ddl_get_col_name(ctx, c.col, &name));
    KT_TRY(ddl_append(ctx, text, {"\"", name, "\" ", tov_abstract_type_to_sqlite_decl(c.abstract_type)}));
}

// Only declared text is collated; RTRIM ignores the blanks that pad a fixed-width value.
static void my_append_collation(KT_context *ctx, const my_column &c, KT_string *text) noexcept
{
    if (!ddl_is_type(c.abstract_type, "text"))
        return;
    KT_bool nocase = 0;
    KT_bool fixed_width = 0;
    KT_TRY(KT_vhash__check__bool(ctx, c.type, "nocase", &nocase));
    KT_TRY(KT_vhash__check__bool(ctx, c.type, "fixed_width", &fixed_width));
    const char *collation = nocase ? " COLLATE NOCASE" : fixed_width ? " COLLATE RTRIM" : " COLLATE BINARY";
    KT_TRY(KT_string__append__sz(ctx, text, collation));
}

// SQLite lets key columns hold null unless told otherwise. An "integer primary key" is the rowid and never null.
static void my_append_notnull(KT_context *ctx, const my_column &c, KT_string *text) noexcept
{
    KT_bool notnull = 0;
    KT_bool in_pk = 0;
    KT_bool is_ipk = 0;
    const char *name = nullptr;
    const char *pk_name = nullptr; // not written, but a record whose name is not a string is refused
    KT_TRY(_tov_col__get_notnull(ctx, c.col, &notnull, &name));
    KT_TRY(_tov_tbl__is_col_id_in_pk(ctx, c.schema, c.tbl, c.tbl_id, c.col_id, &in_pk));
    KT_TRY(_tov_col__is_integer_primary_key(ctx, c.col, &is_ipk, &pk_name));
    if (!notnull && (!in_pk || is_ipk))
        return;
    KT_TRY(my_append_constraint_name(ctx, name, text));
    KT_TRY(KT_string__append__sz(ctx, text, " NOT NULL"));
}

static void my_append_defval(KT_context *ctx, const my_column &c, KT_string *text) noexcept
{
    KT_bool has = 0;
    const char *name = nullptr;
    const char *expr = nullptr;
    KT_TRY(_tov_col__get_defval(ctx, c.col, &has, &name, &expr));
    if (!has)
        return;
    KT_TRY(my_append_constraint_name(ctx, name, text));
    KT_TRY(ddl_append(ctx, text, {" DEFAULT ", expr}));
}

// The name that the caller gives the referenced table, else its own.
static void my_get_reference_name(KT_context *ctx, const my_column &c, const my_reference &ref,
                                  const KT_vhash *reference_names, const char **name) noexcept
{
    if (!ref.tbl_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "the reference of col id '%s' in tbl id '%s' names no table", c.col_id, c.tbl_id);
    const char *given = nullptr;
    if (reference_names)
        KT_TRY(KT_vhash__check__sz(ctx, reference_names, ref.tbl_id, &given));
    if (given) {
        *name = given;
        return;
    }
    KT_vhash *ref_tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, c.schema, ref.tbl_id, &ref_tbl));
    KT_TRY(KT_vhash__get__sz(ctx, ref_tbl, "name", name));
}

// The referenced column's name; null when the reference names none, and so means the primary key.
static void my_check_ref_col_name(KT_context *ctx, const my_column &c, const my_reference &ref,
                                  const char **name) noexcept
{
    if (!ref.col_id)
        return;
    KT_vhash *ref_col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, c.schema, ref.tbl_id, ref.col_id, &ref_col));
    KT_TRY(ddl_get_col_name(ctx, ref_col, name));
}

static void my_append_actions(KT_context *ctx, const my_reference &ref, KT_string *text) noexcept
{
    if (ref.on_delete && KT_stricmp(ref.on_delete, "NO ACTION") == 0)
        KT_TRY(ddl_append(ctx, text, {" ON DELETE ", ref.on_delete}));
    else if (ref.on_delete)
        KT_TRY(ddl_append(ctx, text, {" /* (see trigger) ON DELETE ", ref.on_delete, " */"}));
    if (ref.on_update)
        KT_TRY(ddl_append(ctx, text, {" ON UPDATE ", ref.on_update}));
}

static void my_append_reference(KT_context *ctx, const my_column &c, const my_reference &ref,
                                const KT_vhash *reference_names, KT_string *text) noexcept
{
    if (!ref.has)
        return;
    const char *tbl_name = nullptr;
    const char *col_name = nullptr;
    KT_TRY(my_get_reference_name(ctx, c, ref, reference_names, &tbl_name));
    KT_TRY(my_check_ref_col_name(ctx, c, ref, &col_name));
    KT_TRY(my_append_constraint_name(ctx, ref.name, text));
    KT_TRY(ddl_append(ctx, text, {" REFERENCES \"", tbl_name, "\""}));
    if (col_name)
        KT_TRY(ddl_append(ctx, text, {" (\"", col_name, "\")"}));
    KT_TRY(my_append_actions(ctx, ref, text));
    KT_TRY(KT_string__append__sz(ctx, text, " DEFERRABLE INITIALLY DEFERRED"));
}

static void my_append_checks(KT_context *ctx, const my_column &c, KT_string *text) noexcept
{
    KT_varray *checks = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, c.col, "check", &checks));
    if (checks)
        KT_TRY(KT_varray__count(ctx, checks, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *check = nullptr;
        const char *name = nullptr;
        const char *expr = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, checks, n, &check));
        KT_TRY(KT_vhash__check__sz(ctx, check, "name", &name));
        KT_TRY(KT_vhash__get__sz(ctx, check, "expr", &expr));
        KT_TRY(my_append_constraint_name(ctx, name, text));
        KT_TRY(ddl_append(ctx, text, {" CHECK ", expr}));
    }
}

void tov_schema__get_col_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                               KT_vhash *reference_names, const char **defin) noexcept
{
    my_column c = {schema, tbl_id, col_id};
    my_reference ref;
    kt_owned_string text{ctx};
    KT_TRY(my_find_column(ctx, &c));
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(my_append_name_and_decl(ctx, c, text));
    KT_TRY(my_append_collation(ctx, c, text));
    KT_TRY(my_append_notnull(ctx, c, text));
    KT_TRY(_tov_col__get_fk(ctx, c.col, &ref.has, &ref.name, &ref.tbl_id, &ref.col_id, &ref.on_delete, &ref.on_update));
    KT_TRY(my_append_defval(ctx, c, text));
    KT_TRY(my_append_reference(ctx, c, ref, reference_names, text));
    KT_TRY(my_append_checks(ctx, c, text));
    KT_TRY(ddl_keep(ctx, schema, text, defin));
}
