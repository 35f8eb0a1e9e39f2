// What a string of a document must be to be safe where its role puts it.
#include "check/client_strings.hpp"

#include "check/client_expressions.hpp"

#include <cctype>
#include <iterator>

#define KT_HERE "src/client/check/client_strings"

static constexpr const char *known_actions[] = {"NO ACTION", "CASCADE", "SET NULL", "SET DEFAULT"};

namespace {
using string_check = void (*)(KT_context *ctx, const client_walk &w, const client_record &at, const client_place &place,
                              const char *text) noexcept;
} // namespace

void client_find_string(KT_context *ctx, const client_record &at, tov_string_role role, const char **text) noexcept
{
    *text = nullptr;
    for (uint32_t n = 0; n < at.shape->count; n++) {
        if (at.shape->members[n].role == role)
            return KT_vhash__check__sz(ctx, at.record, at.shape->members[n].key, text);
    }
}

// Fails with a text of the document and what is wrong with it.
static void my_fail_of(KT_context *ctx, uint64_t code, const client_place &place, const char *before, const char *text,
                       const char *after) noexcept
{
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, text));
    CLIENT_FAIL(code, place, "%s%s%s", before, KT_string__sz(shown), after);
}

void client_check_name(KT_context *ctx, const client_place &place, const char *name) noexcept
{
    if (const char *flaw = tov_find_name_flaw(name))
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", flaw);
}

void client_check_distinct(KT_context *ctx, const client_place &place, KT_vhash *names, const char *name) noexcept
{
    kt_owned_text folded{ctx};
    KT_TRY(KT_strdup__folded(ctx, name, folded.out()));
    const char *former = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, names, folded, &former));
    if (former)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "the name differs from \"%s\" only in letter case", former);
    KT_TRY(KT_vhash__add__string__sz(ctx, names, folded, name));
}

void client_check_id(KT_context *ctx, const client_place &place, const char *id) noexcept
{
    for (const char *byte = id; *byte; byte++) {
        if (isupper(static_cast<unsigned char>(*byte)))
            return my_fail_of(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED, place, "the id ", id, " has a capital letter");
    }
}

void client_check_key_col(KT_context *ctx, const client_walk &w, const client_place &place, const char *tbl_id,
                          const char *col_id) noexcept
{
    KT_bool has = 0;
    KT_TRY(tov_schema__has_tbl_id(ctx, w.check.schema, tbl_id, &has));
    if (has)
        KT_TRY(tov_schema__has_col_id(ctx, w.check.schema, tbl_id, col_id, &has));
    if (has)
        return;
    kt_owned_string shown{ctx};
    KT_TRY(KT_string__alloc(ctx, shown.out()));
    KT_TRY(KT_string__append__shown(ctx, shown, col_id));
    KT_TRY(KT_string__append__sz(ctx, shown, " of table id "));
    KT_TRY(KT_string__append__shown(ctx, shown, tbl_id));
    CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "column id %s is absent or not prepared", KT_string__sz(shown));
}

// The checks of strings, by role. An absent name and an absent type come as null.

static void my_check_name(KT_context *ctx, const client_walk & /* w */, const client_record & /* at */,
                          const client_place &place, const char *name) noexcept
{
    KT_TRY(client_check_name(ctx, place, name));
}

static void my_check_type(KT_context *ctx, const client_walk & /* w */, const client_record & /* at */,
                          const client_place &place, const char *type) noexcept
{
    if (!type)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "no type");
    if (!tov_find_abstract_type(type))
        KT_TRY(my_fail_of(ctx, KT_ERR_UNEXPECTED_VALUE, place, "", type, " is not a known type"));
}

static void my_check_action(KT_context *ctx, const client_walk & /* w */, const client_record & /* at */,
                            const client_place &place, const char *action) noexcept
{
    for (const char *known : known_actions) {
        if (KT_stricmp(action, known) == 0)
            return;
    }
    KT_TRY(my_fail_of(ctx, KT_ERR_UNEXPECTED_VALUE, place, "", action, " is not a known action"));
}

static void my_check_form(KT_context *ctx, const client_place &place, const char *expression,
                          client_shape form) noexcept
{
    if (const char *flaw = client_find_expression_flaw(expression, form))
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "%s", flaw);
}

static void my_check_default(KT_context *ctx, const client_walk &w, const client_record & /* at */,
                             const client_place &place, const char *expression) noexcept
{
    KT_TRY(my_check_form(ctx, place, expression, client_shape::default_value));
    KT_TRY(client_scratch__check_default(ctx, w.check.scratch, place, expression));
}

// Checks are compiled later, with the names of all columns, which are known to be safe then.
static void my_check_check(KT_context *ctx, const client_walk &w, const client_record & /* at */,
                           const client_place &place, const char *clause) noexcept
{
    KT_TRY(my_check_form(ctx, place, clause, client_shape::group));
    KT_TRY(kt_contain(ctx, [&] { w.tbl.checks.push_back({place, clause}); }));
}

static void my_check_inner_check(KT_context *ctx, const client_walk &w, const client_record & /* at */,
                                 const client_place &place, const char *expression) noexcept
{
    KT_TRY(my_check_form(ctx, place, expression, client_shape::inner));
    KT_TRY(kt_contain(ctx, [&] { w.tbl.checks.push_back({place, expression}); }));
}

static void my_check_ref_tbl(KT_context *ctx, const client_walk &w, const client_record & /* at */,
                             const client_place &place, const char *ref_tbl_id) noexcept
{
    KT_bool has = 0;
    KT_TRY(tov_schema__has_tbl_id(ctx, w.check.schema, ref_tbl_id, &has));
    if (!has)
        KT_TRY(my_fail_of(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED, place, "table id ", ref_tbl_id, " is absent"));
}

static void my_check_ref_col(KT_context *ctx, const client_walk &w, const client_record &at, const client_place &place,
                             const char *ref_col_id) noexcept
{
    const char *ref_tbl_id = nullptr;
    KT_TRY(client_find_string(ctx, at, TOV_ROLE_TBL_ID, &ref_tbl_id));
    KT_TRY(client_check_key_col(ctx, w, place, ref_tbl_id, ref_col_id));
}

static constexpr string_check string_checks[] = {
    /* free */ nullptr,
    /* name */ my_check_name,
    /* type */ my_check_type,
    /* action */ my_check_action,
    /* default */ my_check_default,
    /* check */ my_check_check,
    /* inner check */ my_check_inner_check,
    /* table id */ my_check_ref_tbl,
    /* column id */ my_check_ref_col,
};
static_assert(std::size(string_checks) == TOV_ROLE_COL_ID + 1);

void client_check_string(KT_context *ctx, const client_walk &w, const client_record &at,
                         const tov_member &member) noexcept
{
    const string_check check = string_checks[member.role];
    if (!check)
        return;
    const char *text = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, at.record, member.key, &text));
    const bool may_be_null = member.role == TOV_ROLE_NAME || member.role == TOV_ROLE_TYPE;
    if (!text && member.is_required && !may_be_null)
        KT_TRY(KT_vhash__get__sz(ctx, at.record, member.key, &text));
    if (text || member.is_required)
        KT_TRY(check(ctx, w, at, member.label ? client_at(at.place, member.label) : at.place, text));
}
