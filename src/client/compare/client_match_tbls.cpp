// Which table is which. Likeness counts where no other table looks the same.
#include "compare/client_pairing.hpp"

#include <algorithm>
#include <unordered_set>

// All that a table is but its name.
static std::string my_shape_of(const client_tbl_content &tbl)
{
    std::string text;
    for (const client_part &col : tbl.cols)
        text += kt_folded(col.name) + '\n' + client_shape_of(col) + '\v';
    return text;
}

static bool my_share_most_cols(const client_tbl_content &a, const client_tbl_content &b)
{
    std::unordered_set<std::string> names;
    for (const client_part &col : a.cols)
        names.insert(kt_folded(col.name));
    const auto shared = std::count_if(b.cols.begin(), b.cols.end(),
                                      [&](const client_part &col) { return names.contains(kt_folded(col.name)); });
    return static_cast<size_t>(shared) * 2 > std::max(a.cols.size(), b.cols.size());
}

namespace {

// The tables of both sides.
struct tbl_sides {
    const std::vector<client_tbl_content> &old_tbls;
    const std::vector<client_tbl_content> &new_tbls;

    const client_tbl_content &at(bool is_old, size_t n) const
    {
        return (is_old ? old_tbls : new_tbls)[n];
    }
};

} // namespace

// The shapes that more than one table has which nothing is known of yet: they are evidence of nothing.
static std::unordered_set<std::string> my_common_shapes(const tbl_sides &sides, const client_pairing &work)
{
    std::unordered_set<std::string> common;
    for (const bool is_old : {true, false}) {
        std::unordered_set<std::string> met;
        for (size_t n = 0; n < (is_old ? sides.old_tbls : sides.new_tbls).size(); n++) {
            if (is_old ? !work.is_open(n) : work.new_taken[n])
                continue;
            std::string shape = my_shape_of(sides.at(is_old, n));
            if (!met.insert(shape).second)
                common.insert(std::move(shape));
        }
    }
    return common;
}

static void my_guess_tbls(const tbl_sides &sides, client_pairing &work)
{
    client_join_equal(
        work, true, [&](bool is_old, size_t n) { return kt_folded(sides.at(is_old, n).id); },
        [&](size_t o, size_t n) { return my_share_most_cols(sides.old_tbls[o], sides.new_tbls[n]); });
    const std::unordered_set<std::string> common = my_common_shapes(sides, work);
    client_join_equal(
        work, true, [&](bool is_old, size_t n) { return my_shape_of(sides.at(is_old, n)); },
        [&](size_t o, size_t) { return !common.contains(my_shape_of(sides.old_tbls[o])); });
}

void client_pair_tbls(const client_comparison &comparison, bool by_id, const client_renames &renames,
                      client_pairing &work)
{
    const tbl_sides sides{comparison.old_content.tbls, comparison.new_content.tbls};
    for (const client_pair &pair : renames.tbls) {
        if (pair.new_at == client_nothing)
            work.is_removed[pair.old_at] = true;
        else if (work.is_open(pair.old_at) && !work.new_taken[pair.new_at])
            work.join(pair.old_at, pair.new_at, false);
    }
    // An id or a name may be empty, a key that joins may not.
    if (by_id)
        return client_join_equal(work, [&](bool is_old, size_t n) { return '+' + kt_folded(sides.at(is_old, n).id); });
    client_join_names(work, [&](bool is_old, size_t n) {
        const client_tbl_content &tbl = sides.at(is_old, n);
        return tbl.has_facts ? tbl.name : std::string();
    });
    // Where one document does not know the server's names, those in SQLite are what both have.
    client_join_names(work, [&](bool is_old, size_t n) { return '+' + sides.at(is_old, n).sqlite_name; });
    my_guess_tbls(sides, work);
}
