// What belongs together is found in the order of evidence: what the options say, then ids or names, then, for what is
// left over, ids and likeness. Only the last is a guess.
#include "compare/client_pairing.hpp"

#include <algorithm>

#define KT_HERE "src/client/compare/client_match"

// The pairs in the order of the new side, what it lacks where it was on the old.
static std::vector<client_pair> my_pairs_in_order(const client_pairing &work)
{
    std::vector<client_pair> pairs;
    std::vector<size_t> new_to_old(work.new_taken.size(), client_nothing);
    size_t old_at = 0;
    const auto add_removed = [&] {
        for (; old_at < work.old_to_new.size() && work.old_to_new[old_at] == client_nothing; old_at++)
            pairs.push_back({old_at, client_nothing, false});
    };
    for (size_t o = 0; o < work.old_to_new.size(); o++) {
        if (work.old_to_new[o] != client_nothing)
            new_to_old[work.old_to_new[o]] = o;
    }
    for (size_t n = 0; n < new_to_old.size(); n++) {
        add_removed();
        const size_t o = new_to_old[n];
        pairs.push_back({o, n, o != client_nothing && work.is_guess[o]});
        if (o == old_at)
            old_at++;
    }
    for (; old_at < work.old_to_new.size(); old_at++) {
        if (work.old_to_new[old_at] == client_nothing)
            pairs.push_back({old_at, client_nothing, false});
    }
    return pairs;
}

static void my_sort_by_name(client_comparison &comparison)
{
    const auto name = [&](const client_tbl_pair &pair) -> const std::string & {
        return pair.tbl.new_at != client_nothing ? comparison.new_content.tbls[pair.tbl.new_at].name
                                                 : comparison.old_content.tbls[pair.tbl.old_at].name;
    };
    std::vector<std::pair<std::pair<std::string, std::string_view>, size_t>> keys; // and where the pair is
    keys.reserve(comparison.tbls.size());
    for (const client_tbl_pair &pair : comparison.tbls)
        keys.push_back({{kt_folded(name(pair)), name(pair)}, keys.size()});
    std::sort(keys.begin(), keys.end());
    std::vector<client_tbl_pair> sorted;
    sorted.reserve(keys.size());
    for (const auto &[key, at] : keys)
        sorted.push_back(std::move(comparison.tbls[at]));
    comparison.tbls = std::move(sorted);
}

static void my_pair_all(const client_renames &renames, bool by_id, client_comparison &comparison)
{
    const auto &old_tbls = comparison.old_content.tbls;
    const auto &new_tbls = comparison.new_content.tbls;
    client_pairing tbls(old_tbls.size(), new_tbls.size());
    client_pair_tbls(comparison, by_id, renames, tbls);
    for (const client_pair &pair : my_pairs_in_order(tbls)) {
        client_tbl_pair &both = comparison.tbls.emplace_back(client_tbl_pair{pair, {}});
        const size_t old_cols = pair.old_at == client_nothing ? 0 : old_tbls[pair.old_at].cols.size();
        const size_t new_cols = pair.new_at == client_nothing ? 0 : new_tbls[pair.new_at].cols.size();
        client_pairing cols(old_cols, new_cols);
        if (pair.is_both())
            client_pair_cols(comparison, pair, by_id, renames, cols);
        both.cols = my_pairs_in_order(cols);
    }
    my_sort_by_name(comparison);
}

static void my_note(std::map<std::string, std::string> &names, const std::string &old_name, const std::string &new_name)
{
    if (!old_name.empty() && !new_name.empty() && !kt_equal_folded(old_name, new_name))
        names[kt_folded(old_name)] = kt_folded(new_name);
}

// What the old schema's tables and columns are called in the new one.
static client_renaming my_renaming_of(const client_comparison &comparison)
{
    client_renaming renaming;
    for (const client_tbl_pair &pair : comparison.tbls) {
        if (!pair.tbl.is_both())
            continue;
        const client_tbl_content &old_tbl = comparison.old_content.tbls[pair.tbl.old_at];
        const client_tbl_content &new_tbl = comparison.new_content.tbls[pair.tbl.new_at];
        std::map<std::string, std::string> cols;
        for (const client_pair &col : pair.cols) {
            if (!col.is_both())
                continue;
            my_note(cols, old_tbl.cols[col.old_at].name, new_tbl.cols[col.new_at].name);
            my_note(cols, old_tbl.cols[col.old_at].sqlite_name, new_tbl.cols[col.new_at].sqlite_name);
        }
        if (!cols.empty())
            renaming.cols[old_tbl.id] = std::move(cols);
        if (!kt_equal_folded(old_tbl.sqlite_name, new_tbl.sqlite_name))
            renaming.tbls[old_tbl.id] = kt_folded(new_tbl.sqlite_name);
    }
    return renaming;
}

void client_match(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                  const tov_client_compare_options &options, const client_same_tbls &same,
                  client_comparison &comparison) noexcept
{
    kt_contain(ctx, [&] {
        client_renames renames;
        KT_TRY(client_read_content(ctx, old_schema, {}, same, comparison.old_content));
        KT_TRY(client_read_content(ctx, new_schema, {}, same, comparison.new_content));
        KT_TRY(client_read_renames(ctx, options, comparison, renames));
        my_pair_all(renames, options.by_id, comparison);
        KT_TRY(client_check_renamed_cols(ctx, comparison, renames));
        const client_renaming renaming = my_renaming_of(comparison);
        if (renaming.tbls.empty() && renaming.cols.empty())
            return;
        comparison.old_content = {};
        KT_TRY(client_read_content(ctx, old_schema, renaming, same, comparison.old_content));
    });
}
