// The answer of a comparison: its changes as maps and lists.
#include "compare/client_changes.hpp"
#include "compare/client_same_tbls.hpp"
#include "kt_folded.hpp"

#define KT_HERE "src/client/compare/client_compare"

static void my_add_text(KT_context *ctx, KT_vhash *record, const char *key, const std::string &text) noexcept
{
    if (!text.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, record, key, text.c_str()));
}

static void my_write_change(KT_context *ctx, const client_change &change, KT_varray *list) noexcept
{
    KT_vhash *record = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, list, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "kind", change.kind));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "change", change.what));
    KT_TRY(my_add_text(ctx, record, "name", change.name));
    KT_TRY(my_add_text(ctx, record, "old_name", change.old_name));
    if (change.is_guess)
        KT_TRY(KT_vhash__add__bool(ctx, record, "guess", 1));
    if (change.member)
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "member", change.member));
    KT_TRY(my_add_text(ctx, record, "old", change.old_text));
    KT_TRY(my_add_text(ctx, record, "new", change.new_text));
}

static void my_write_changes(KT_context *ctx, const std::vector<client_change> &changes, KT_vhash *record) noexcept
{
    KT_varray *list = nullptr;
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "changes", &list));
    for (const client_change &change : changes)
        KT_TRY(my_write_change(ctx, change, list));
}

// A table is renamed when the name that both documents have for it is another, if only in its letter case.
static void my_write_rename(KT_context *ctx, const client_tbl_content &a, const client_tbl_content &b, bool is_guess,
                            KT_vhash *record) noexcept
{
    const bool both_know = a.has_facts && b.has_facts;
    const std::string &old_name = both_know ? a.name : a.sqlite_name;
    const std::string &new_name = both_know ? b.name : b.sqlite_name;
    const bool is_renamed = old_name != new_name;
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", b.name.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "change", is_renamed ? "renamed" : "changed"));
    if (is_renamed)
        KT_TRY(my_add_text(ctx, record, "old_name", old_name));
    if (is_renamed && is_guess && !kt_equal_folded(old_name, new_name))
        KT_TRY(KT_vhash__add__bool(ctx, record, "guess", 1));
}

static bool my_is_same_tbl(const client_tbl_content &a, const client_tbl_content &b) noexcept
{
    return a.has_facts && b.has_facts ? a.name == b.name : a.sqlite_name == b.sqlite_name;
}

static void my_write_tbl(KT_context *ctx, const client_comparison &comparison, const client_tbl_pair &pair,
                         KT_varray *tbls)
{
    const bool is_old = pair.tbl.old_at != client_nothing;
    const bool is_new = pair.tbl.new_at != client_nothing;
    const client_tbl_content *a = is_old ? &comparison.old_content.tbls[pair.tbl.old_at] : nullptr;
    const client_tbl_content *b = is_new ? &comparison.new_content.tbls[pair.tbl.new_at] : nullptr;
    std::vector<client_change> changes;
    client_compare_tbls(comparison, pair, changes);
    if (a && b && changes.empty() && my_is_same_tbl(*a, *b))
        return;
    KT_vhash *record = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, tbls, &record));
    if (a && b) {
        KT_TRY(my_write_rename(ctx, *a, *b, pair.tbl.is_guess, record));
    } else if (const client_tbl_content *only = a ? a : b) {
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "name", only->name.c_str()));
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "change", a ? "removed" : "added"));
    }
    KT_TRY(my_add_text(ctx, record, "old_id", a ? a->id : ""));
    KT_TRY(my_add_text(ctx, record, "new_id", b ? b->id : ""));
    KT_TRY(my_write_changes(ctx, changes, record));
}

// Options that rename can name any table, and so all of them are read.
static void my_match(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                     const tov_client_compare_options &options, client_comparison &comparison)
{
    client_same_tbls same;
    if (options.rename_count == 0)
        KT_TRY(client_find_same_tbls(ctx, old_schema, new_schema, same));
    KT_TRY(client_match(ctx, old_schema, new_schema, options, same, comparison));
    if (client_are_paired(comparison, same))
        return;
    comparison = {};
    KT_TRY(client_match(ctx, old_schema, new_schema, options, {}, comparison));
}

void tov_client__compare(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                         const tov_client_compare_options *options, KT_vhash **changes) noexcept
{
    kt_contain(ctx, [&] {
        client_comparison comparison;
        kt_owned_vhash result{ctx};
        std::vector<client_change> of_whole;
        KT_varray *tbls = nullptr;
        KT_TRY(tov_schema__check_shape(ctx, old_schema));
        KT_TRY(tov_schema__check_shape(ctx, new_schema));
        KT_TRY(my_match(ctx, old_schema, new_schema, options ? *options : tov_client_compare_options{}, comparison));
        KT_TRY(KT_vhash__alloc(ctx, result.out()));
        client_compare_wholes(comparison, of_whole);
        KT_TRY(my_write_changes(ctx, of_whole, result));
        KT_TRY(KT_vhash__addnew__varray(ctx, result, "tables", &tbls));
        for (const client_tbl_pair &pair : comparison.tbls)
            KT_TRY(my_write_tbl(ctx, comparison, pair, tbls));
        result.move_to(changes);
    });
}
