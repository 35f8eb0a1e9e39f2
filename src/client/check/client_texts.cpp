// What a document says is taken for nothing but texts until it has been through here.
//
// The check reads the document as it is written as JSON, because only there all texts are found: the schema module
// has no reading operation for some that its definitions hold. Keys are held to existing, prepared columns, so that no
// name that was not looked at can come in through one.
#include "check/client_texts.hpp"

#include "check/client_expressions.hpp"
#include "check/client_scratch.hpp"

#include <cctype>
#include <iterator>
#include <string_view>
#include <vector>

#define KT_HERE "src/client/check/client_texts"

static constexpr const char *known_actions[] = {"NO ACTION", "CASCADE", "SET NULL", "SET DEFAULT"};

namespace {
struct text_check {
    explicit text_check(KT_context *ctx) noexcept : scratch(ctx), tbl_names(ctx)
    {
    }
    tov_schema *schema = nullptr;
    client_scratch scratch;
    kt_owned_vhash tbl_names; // lower-case name to the name of the table that has it
};

// One table while it is checked.
struct tbl_check {
    explicit tbl_check(KT_context *ctx) noexcept : col_names(ctx)
    {
    }
    const char *id = nullptr;
    const char *name = nullptr;
    KT_vhash *record = nullptr;
    kt_owned_vhash col_names; // lower-case name to the name of the column that has it
    std::vector<client_check> checks;
};

using member_check = void (*)(KT_context *ctx, text_check &check, tbl_check &tbl, const char *id,
                              KT_vhash *member) noexcept;
} // namespace

static void my_check_name(KT_context *ctx, const client_place &place, const char *name) noexcept
{
    if (const char *flaw = tov_find_name_flaw(name))
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", flaw);
}

// The name under a key of a constraint's record, which may be absent.
static void my_check_optional_name(KT_context *ctx, const client_place &place, const KT_vhash *record,
                                   const char *key) noexcept
{
    const char *name = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, record, key, &name));
    if (name)
        KT_TRY(my_check_name(ctx, place, name));
}

// Adds a name to those that were met already, and refuses one that SQLite takes for the same.
static void my_check_distinct(KT_context *ctx, const client_place &place, KT_vhash *names, const char *name) noexcept
{
    kt_owned_text folded{ctx};
    KT_TRY(KT_strdup__folded(ctx, name, folded.out()));
    const char *former = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, names, folded, &former));
    if (former)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "the name is that of \"%s\" too, letter case aside", former);
    KT_TRY(KT_vhash__add__string__sz(ctx, names, folded, name));
}

// An id with a capital letter is not found under itself: what is found instead may not have been looked at.
static void my_check_id(KT_context *ctx, const client_place &place, const char *id) noexcept
{
    for (const char *byte = id; *byte; byte++) {
        if (!isupper(static_cast<unsigned char>(*byte)))
            continue;
        kt_owned_string shown{ctx};
        KT_TRY(KT_string__alloc(ctx, shown.out()));
        KT_TRY(KT_string__append__shown(ctx, shown, id));
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "the id %s has a capital letter", KT_string__sz(shown));
    }
}

static void my_check_action(KT_context *ctx, const client_place &place, const KT_vhash *fk, const char *key) noexcept
{
    const char *action = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, fk, key, &action));
    if (!action)
        return;
    for (const char *known : known_actions) {
        if (KT_stricmp(action, known) == 0)
            return;
    }
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, action));
    CLIENT_FAIL(KT_ERR_UNEXPECTED_VALUE, client_at(place, key), "%s is not a known action", KT_string__sz(shown));
}

static void my_check_type(KT_context *ctx, const client_place &place, const KT_vhash *col) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "type", &type));
    const char *name = nullptr;
    if (type)
        KT_TRY(KT_vhash__check__sz(ctx, type, "name", &name));
    if (!name)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, client_at(place, "type"), "no type");
    if (tov_find_abstract_type(name))
        return my_check_optional_name(ctx, client_at(place, "name of the key"), type, "constraint_name");
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, name));
    CLIENT_FAIL(KT_ERR_UNEXPECTED_VALUE, client_at(place, "type"), "%s is not a known type", KT_string__sz(shown));
}

static void my_check_shape(KT_context *ctx, const client_place &place, const char *expression,
                           client_shape shape) noexcept
{
    if (const char *flaw = client_find_expression_flaw(expression, shape))
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", flaw);
}

static void my_check_notnull(KT_context *ctx, const client_place &place, const KT_vhash *col) noexcept
{
    KT_vhash *notnull = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "notnull", &notnull));
    if (notnull)
        KT_TRY(my_check_optional_name(ctx, client_at(place, "name of NOT NULL"), notnull, "name"));
}

static void my_check_default(KT_context *ctx, text_check &check, const client_place &place,
                             const KT_vhash *col) noexcept
{
    KT_vhash *defval = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "defval", &defval));
    if (!defval)
        return;
    KT_TRY(my_check_optional_name(ctx, client_at(place, "name of the default"), defval, "name"));
    const char *expression = nullptr;
    KT_TRY(KT_vhash__get__sz(ctx, defval, "expr", &expression));
    const client_place where = client_at(place, "default");
    KT_TRY(my_check_shape(ctx, where, expression, client_shape::default_value));
    KT_TRY(client_scratch__check_default(ctx, check.scratch, where, expression));
}

static void my_check_key_col(KT_context *ctx, text_check &check, const client_place &place, const char *tbl_id,
                             const char *col_id) noexcept
{
    KT_bool has = 0;
    KT_TRY(tov_schema__has_tbl_id(ctx, check.schema, tbl_id, &has));
    if (has)
        KT_TRY(tov_schema__has_col_id(ctx, check.schema, tbl_id, col_id, &has));
    if (has)
        return;
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, col_id));
    KT_TRY(KT_string__append__sz(ctx, shown, " of table id "));
    KT_TRY(KT_string__append__shown(ctx, shown, tbl_id));
    CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "column id %s is absent or not prepared", KT_string__sz(shown));
}

static void my_check_ref_tbl(KT_context *ctx, text_check &check, const client_place &place,
                             const char *ref_tbl_id) noexcept
{
    KT_bool has = 0;
    KT_TRY(tov_schema__has_tbl_id(ctx, check.schema, ref_tbl_id, &has));
    if (has)
        return;
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, ref_tbl_id));
    CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "table id %s is absent", KT_string__sz(shown));
}

// What column-level and table-level foreign keys have in common.
static void my_check_fk(KT_context *ctx, text_check &check, const client_place &place, const KT_vhash *fk,
                        const char **ref_tbl_id) noexcept
{
    KT_TRY(my_check_optional_name(ctx, client_at(place, "name of the foreign key"), fk, "name"));
    KT_TRY(my_check_action(ctx, place, fk, "on_delete"));
    KT_TRY(my_check_action(ctx, place, fk, "on_update"));
    KT_TRY(KT_vhash__get__sz(ctx, fk, "ref_tbl_id", ref_tbl_id));
    KT_TRY(my_check_ref_tbl(ctx, check, client_at(place, "reference"), *ref_tbl_id));
}

static void my_check_col_fk(KT_context *ctx, text_check &check, const client_place &place, const KT_vhash *col) noexcept
{
    KT_vhash *fk = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, col, "fk", &fk));
    if (!fk)
        return;
    const char *ref_tbl_id = nullptr;
    KT_TRY(my_check_fk(ctx, check, place, fk, &ref_tbl_id));
    const char *ref_col_id = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, fk, "ref_col_id", &ref_col_id));
    if (ref_col_id)
        KT_TRY(my_check_key_col(ctx, check, client_at(place, "reference"), ref_tbl_id, ref_col_id));
}

static void my_add_check(KT_context *ctx, tbl_check &tbl, const client_place &place, const char *expression,
                         client_shape shape) noexcept
{
    KT_TRY(my_check_shape(ctx, place, expression, shape));
    KT_TRY(kt_contain(ctx, [&] { tbl.checks.push_back({place, expression}); }));
}

// The names of all columns, in quotes.
static void my_list_cols(KT_context *ctx, const tbl_check &tbl, KT_string *list) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, tbl.col_names, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, tbl.col_names, n, nullptr, &name));
        KT_TRY(KT_string__append__format(ctx, list, "%s\"%s\"", n ? "," : "", name));
    }
}

static void my_compile_checks(KT_context *ctx, text_check &check, const tbl_check &tbl) noexcept
{
    if (tbl.checks.empty())
        return;
    kt_owned_string columns{ctx};
    KT_TRY(KT_string__alloc(ctx, columns.out()));
    KT_TRY(my_list_cols(ctx, tbl, columns));
    KT_TRY(client_scratch__check_checks(ctx, check.scratch, tbl.name, KT_string__sz(columns), tbl.checks));
}

static void my_check_col_checks(KT_context *ctx, text_check & /* check */, tbl_check &tbl, const char * /* id */,
                                KT_vhash *col) noexcept
{
    KT_varray *checks = nullptr;
    KT_TRY(KT_vhash__check__varray(ctx, col, "check", &checks));
    uint32_t count = 0;
    if (checks)
        KT_TRY(KT_varray__count(ctx, checks, &count));
    client_place place{tbl.name, "column"};
    KT_TRY(KT_vhash__get__sz(ctx, col, "name", &place.part_name));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *one = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, checks, n, &one));
        KT_TRY(my_check_optional_name(ctx, client_at(place, "name of the check"), one, "name"));
        const char *clause = nullptr;
        KT_TRY(KT_vhash__get__sz(ctx, one, "expr", &clause));
        KT_TRY(my_add_check(ctx, tbl, client_at(place, "check"), clause, client_shape::group));
    }
}

static void my_check_tbl_check(KT_context *ctx, text_check & /* check */, tbl_check &tbl, const char *id,
                               KT_vhash *one) noexcept
{
    const char *expression = nullptr;
    KT_TRY(KT_vhash__get__sz(ctx, one, "expr", &expression));
    KT_TRY(my_add_check(ctx, tbl, {tbl.name, "check", id}, expression, client_shape::inner));
}

static void my_check_col(KT_context *ctx, text_check &check, tbl_check &tbl, const char *id, KT_vhash *col) noexcept
{
    const char *name = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, col, "name", &name));
    const client_place place{tbl.name, "column", name ? name : id};
    KT_TRY(my_check_name(ctx, place, name));
    KT_TRY(my_check_id(ctx, place, id));
    KT_TRY(my_check_distinct(ctx, place, tbl.col_names, name));
    KT_TRY(my_check_type(ctx, place, col));
    KT_TRY(my_check_notnull(ctx, place, col));
    KT_TRY(my_check_default(ctx, check, place, col));
    KT_TRY(my_check_col_fk(ctx, check, place, col));
}

// The columns of a key: the keys of a map, of this table, and for a foreign key its values, of the referenced one.
static void my_check_key_cols(KT_context *ctx, text_check &check, const tbl_check &tbl, const client_place &place,
                              const KT_vhash *cols, const char *ref_tbl_id) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    if (count == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "a key without columns");
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        if (ref_tbl_id)
            KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &col_id, &ref_col_id));
        else
            KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &col_id, nullptr));
        KT_TRY(my_check_key_col(ctx, check, place, tbl.id, col_id));
        if (ref_tbl_id)
            KT_TRY(my_check_key_col(ctx, check, place, ref_tbl_id, ref_col_id));
    }
}

static void my_check_unique(KT_context *ctx, text_check &check, tbl_check &tbl, const char *id, KT_vhash *cols) noexcept
{
    KT_TRY(my_check_key_cols(ctx, check, tbl, {tbl.name, "unique constraint", id}, cols, nullptr));
}

static void my_check_tbl_fk(KT_context *ctx, text_check &check, tbl_check &tbl, const char *id, KT_vhash *fk) noexcept
{
    const client_place place{tbl.name, "foreign key", id};
    const char *ref_tbl_id = nullptr;
    KT_TRY(my_check_fk(ctx, check, place, fk, &ref_tbl_id));
    KT_vhash *cols = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, fk, "cols", &cols));
    KT_TRY(my_check_key_cols(ctx, check, tbl, place, cols, ref_tbl_id));
}

static void my_check_pk(KT_context *ctx, text_check &check, const tbl_check &tbl) noexcept
{
    KT_vhash *pk = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, tbl.record, "pk", &pk));
    if (!pk)
        return;
    const client_place place{tbl.name};
    KT_TRY(my_check_optional_name(ctx, client_at(place, "name of the primary key"), pk, "name"));
    KT_vhash *cols = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, pk, "cols", &cols));
    uint32_t count = 0;
    if (cols)
        KT_TRY(KT_vhash__count(ctx, cols, &count));
    if (count > 0)
        KT_TRY(my_check_key_cols(ctx, check, tbl, client_at(place, "primary key"), cols, nullptr));
}

// Checks each member of a map of the table's record, which may be absent.
static void my_check_members(KT_context *ctx, text_check &check, tbl_check &tbl, const char *key,
                             member_check check_member) noexcept
{
    KT_vhash *members = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, tbl.record, key, &members));
    uint32_t count = 0;
    if (members)
        KT_TRY(KT_vhash__count(ctx, members, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *member = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, members, n, &id, &member));
        KT_TRY(check_member(ctx, check, tbl, id, member));
    }
}

static void my_check_tbl_name(KT_context *ctx, text_check &check, tbl_check &tbl) noexcept
{
    KT_TRY(KT_vhash__check__sz(ctx, tbl.record, "name", &tbl.name));
    const client_place place{tbl.name ? tbl.name : tbl.id};
    KT_TRY(my_check_name(ctx, place, tbl.name));
    KT_TRY(my_check_id(ctx, place, tbl.id));
    if (KT_strnicmp(tbl.name, "sqlite_", 7) == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "SQLite keeps names that begin with sqlite_ for itself");
    KT_TRY(my_check_distinct(ctx, place, check.tbl_names, tbl.name));
}

static void my_check_tbl(KT_context *ctx, text_check &check, const char *id, KT_vhash *record) noexcept
{
    tbl_check tbl{ctx};
    tbl.id = id;
    tbl.record = record;
    KT_TRY(my_check_tbl_name(ctx, check, tbl));
    KT_TRY(KT_vhash__alloc(ctx, tbl.col_names.out()));
    KT_TRY(my_check_members(ctx, check, tbl, "cols", my_check_col));
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, tbl.col_names, &count));
    if (count == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, client_place{tbl.name}, "no column that is prepared");
    // After all columns, since checks are compiled with their names, which have to be safe.
    KT_TRY(my_check_members(ctx, check, tbl, "cols", my_check_col_checks));
    KT_TRY(my_check_pk(ctx, check, tbl));
    KT_TRY(my_check_members(ctx, check, tbl, "uniques", my_check_unique));
    KT_TRY(my_check_members(ctx, check, tbl, "foreignkeys", my_check_tbl_fk));
    KT_TRY(my_check_members(ctx, check, tbl, "check", my_check_tbl_check));
    KT_TRY(my_compile_checks(ctx, check, tbl));
}

void client_copy_document(KT_context *ctx, tov_schema *schema, KT_vhash **copy) noexcept
{
    kt_owned_vhash both{ctx};
    KT_TRY(KT_vhash__alloc(ctx, both.out()));
    KT_TRY(tov_schema__copy_into_vhash(ctx, schema, both, 0));
    both.move_to(copy);
}

void client_check_texts(KT_context *ctx, tov_schema *schema, KT_vhash *copy) noexcept
{
    text_check check{ctx};
    check.schema = schema;
    KT_TRY(KT_vhash__alloc(ctx, check.tbl_names.out()));
    KT_TRY(client_scratch__open(ctx, check.scratch));
    KT_vhash *document = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, copy, "schema", &document));
    KT_vhash *tbls = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, document, "tbls", &tbls));
    uint32_t count = 0;
    if (tbls)
        KT_TRY(KT_vhash__count(ctx, tbls, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *record = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, tbls, n, &id, &record));
        KT_TRY(my_check_tbl(ctx, check, id, record));
    }
}

void tov_client__check_texts(KT_context *ctx, tov_schema *schema) noexcept
{
    kt_owned_vhash copy{ctx};
    KT_TRY(client_copy_document(ctx, schema, copy.out()));
    KT_TRY(client_check_texts(ctx, schema, copy));
}
