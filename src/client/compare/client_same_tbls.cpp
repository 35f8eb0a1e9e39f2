// Records are compared as JSON texts, a table at a time. What a table says of another one, by its id, depends on that
// one's names: so a table is not the same either where it refers to one that is not.
#include "compare/client_same_tbls.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <cstring>

#define KT_HERE "src/client/compare/client_same_tbls"

static void my_find_tbls(KT_context *ctx, tov_schema *schema, KT_vhash **tbls)
{
    const KT_vhash *document = nullptr;
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    KT_TRY(KT_vhash__check__vhash(ctx, document, "tbls", tbls));
}

static void my_are_alike(KT_context *ctx, const KT_vhash *a, const KT_vhash *b, bool &are_alike)
{
    kt_owned_string one{ctx};
    kt_owned_string other{ctx};
    KT_TRY(KT_string__alloc(ctx, one.out()));
    KT_TRY(KT_string__alloc(ctx, other.out()));
    KT_TRY(KT_vhash__to_json(ctx, a, one));
    KT_TRY(KT_vhash__to_json(ctx, b, other));
    are_alike = std::strcmp(KT_string__sz(one), KT_string__sz(other)) == 0;
}

// The ids of the tables of one side that the other side has alike, and of those that it has not.
static void my_tell_apart(KT_context *ctx, const KT_vhash *tbls, const KT_vhash *other_tbls, client_same_tbls &same,
                          client_same_tbls &others)
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, tbls, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *tbl = nullptr;
        KT_vhash *other = nullptr;
        bool are_alike = false;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, tbls, n, &id, &tbl));
        KT_TRY(KT_vhash__check__vhash(ctx, other_tbls, id, &other));
        if (other)
            KT_TRY(my_are_alike(ctx, tbl, other, are_alike));
        (are_alike ? same : others).insert(kt_folded(id));
    }
}

static void my_refers_to_one_of(KT_context *ctx, tov_schema *schema, const char *tbl_id, const client_same_tbls &others,
                                bool &refers)
{
    kt_owned_nullhash ids{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_tbls_referenced_by(ctx, schema, tbl_id, ids.out()));
    if (ids)
        KT_TRY(KT_nullhash__count(ctx, ids, &count));
    for (uint32_t n = 0; n < count && !refers; n++) {
        const char *id = nullptr;
        KT_TRY(KT_nullhash__get_nth(ctx, ids, n, &id));
        refers = others.contains(kt_folded(id));
    }
}

static void my_find_same_tbls(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema, client_same_tbls &same)
{
    KT_vhash *old_tbls = nullptr;
    KT_vhash *new_tbls = nullptr;
    client_same_tbls others;
    KT_TRY(my_find_tbls(ctx, old_schema, &old_tbls));
    KT_TRY(my_find_tbls(ctx, new_schema, &new_tbls));
    if (!old_tbls || !new_tbls)
        return;
    KT_TRY(my_tell_apart(ctx, old_tbls, new_tbls, same, others));
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, new_tbls, &count));
    std::vector<const char *> ids(count);
    for (uint32_t n = 0; n < count; n++) {
        const KT_variant *tbl = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, new_tbls, n, &ids[n], &tbl));
        if (!same.contains(kt_folded(ids[n])))
            others.insert(kt_folded(ids[n]));
    }
    if (others.empty())
        return;
    for (const char *id : ids) {
        const std::string folded = kt_folded(id);
        bool refers = others.contains(folded); // as one of two ids that differ in letter case
        KT_TRY(my_refers_to_one_of(ctx, new_schema, id, others, refers));
        if (refers)
            same.erase(folded);
    }
}

void client_find_same_tbls(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema, client_same_tbls &same)
{
    KT_context__push_level(ctx);
    my_find_same_tbls(ctx, old_schema, new_schema, same);
    const uint64_t code = KT_context__err_code(ctx);
    KT_context__pop_level(ctx);
    if (code != 0)
        same.clear();
    if (code == KT_ERR_OUT_OF_MEMORY)
        KT_FAIL_GENERIC(code);
}

bool client_are_paired(const client_comparison &comparison, const client_same_tbls &same)
{
    const auto id = [](const std::vector<client_tbl_content> &tbls, size_t at) {
        return at == client_nothing ? std::string() : kt_folded(tbls[at].id);
    };
    return std::all_of(comparison.tbls.begin(), comparison.tbls.end(), [&](const client_tbl_pair &pair) {
        const std::string old_id = id(comparison.old_content.tbls, pair.tbl.old_at);
        const std::string new_id = id(comparison.new_content.tbls, pair.tbl.new_at);
        return old_id == new_id || (!same.contains(old_id) && !same.contains(new_id));
    });
}
