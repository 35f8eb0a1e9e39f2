// Which column of a table is which.
#include "compare/client_pairing.hpp"

// What is known of a column but its names.
std::string client_shape_of(const client_part &col)
{
    std::string text = col.id.empty() ? "-" : "+";
    for (const client_fact &fact : col.facts) {
        if (fact.kind != client_fact_kind::name_in_sqlite && fact.kind != client_fact_kind::default_name)
            text += std::to_string(static_cast<int>(fact.kind)) + '\t' + fact.meaning + '\n';
    }
    return text;
}

// A column that stands after the same one, and is the same but for its name.
static void my_guess_by_place(const client_tbl_content &old_tbl, const client_tbl_content &new_tbl,
                              client_pairing &work)
{
    for (size_t o = 0; o < old_tbl.cols.size(); o++) {
        const size_t before = o == 0 ? client_nothing : work.old_to_new[o - 1];
        const size_t n = o == 0 ? 0 : before == client_nothing ? client_nothing : before + 1;
        if (n < new_tbl.cols.size() && work.is_open(o) && !work.new_taken[n] &&
            client_shape_of(old_tbl.cols[o]) == client_shape_of(new_tbl.cols[n]))
            work.join(o, n, true);
    }
}

static bool my_have_same_type(const client_part &a, const client_part &b)
{
    for (const client_fact_kind kind : {client_fact_kind::type, client_fact_kind::stored_as}) {
        const client_fact *one = client_find_fact(a.facts, kind);
        const client_fact *other = client_find_fact(b.facts, kind);
        if (one && other)
            return one->meaning == other->meaning;
    }
    return false;
}

static void my_take_renames(const client_tbl_content &new_tbl, size_t old_at, const client_renames &renames,
                            client_pairing &work)
{
    for (const client_renames::col &rename : renames.cols) {
        if (rename.old_tbl != old_at)
            continue;
        const size_t n = client_find_renamed_col(new_tbl, rename.new_name);
        if (rename.new_name.empty())
            work.is_removed[rename.old_col] = true;
        else if (n != client_nothing && work.is_open(rename.old_col) && !work.new_taken[n])
            work.join(rename.old_col, n, false);
    }
}

void client_pair_cols(const client_comparison &comparison, const client_pair &tbls, bool by_id,
                      const client_renames &renames, client_pairing &work)
{
    const client_tbl_content &old_tbl = comparison.old_content.tbls[tbls.old_at];
    const client_tbl_content &new_tbl = comparison.new_content.tbls[tbls.new_at];
    const auto col = [&](bool is_old, size_t n) -> const client_part & { return (is_old ? old_tbl : new_tbl).cols[n]; };
    const bool both_know = old_tbl.has_facts && new_tbl.has_facts;
    my_take_renames(new_tbl, tbls.old_at, renames, work);
    const auto id = [&](bool is_old, size_t n) { return kt_folded(col(is_old, n).id); };
    if (by_id)
        client_join_equal(work, id);
    client_join_names(work, [&](bool is_old, size_t n) {
        const client_part &it = col(is_old, n);
        if (by_id && !it.id.empty())
            return std::string();
        return both_know || it.sqlite_name.empty() ? it.name : it.sqlite_name;
    });
    if (by_id)
        return;
    client_join_equal(work, true, id,
                      [&](size_t o, size_t n) { return my_have_same_type(old_tbl.cols[o], new_tbl.cols[n]); });
    my_guess_by_place(old_tbl, new_tbl, work);
}
