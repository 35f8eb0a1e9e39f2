// Facts are compared one by one. What SQLite has of a column or index follows from what the server has of it, so a
// change there is told only where it does not: where an import has come to another conclusion, or a document has no
// facts about the server.
#include "compare/client_changes.hpp"

#include "compare/client_part_pairs.hpp"
#include "kt_folded.hpp"

#include <algorithm>
#include <iterator>

namespace {

// What is compared.
struct sides {
    bool both_know;          // what the server says
    bool is_renamed = false; // names in SQLite follow
};

} // namespace

static bool my_is_flag(const client_fact *a, const client_fact *b)
{
    return (!a || a->shown == "yes") && (!b || b->shown == "yes");
}

static std::string my_shown(const client_fact *fact, bool is_flag)
{
    return fact ? fact->shown : is_flag ? "no" : "";
}

static bool my_differ(const client_fact *a, const client_fact *b, const client_fact_traits &traits)
{
    if (traits.may_be_unknown && (!a || !b))
        return false;
    return (a == nullptr) != (b == nullptr) || (a && a->meaning != b->meaning);
}

// The kinds of facts that differ, in their order.
static std::vector<client_fact_kind> my_changed_kinds(const std::vector<client_fact> &a,
                                                      const std::vector<client_fact> &b, const sides &compared)
{
    std::string groups;
    std::vector<client_fact_kind> kinds;
    for (const bool of_sqlite : {false, true}) {
        const std::string of_server = groups;
        for (size_t n = 0; n < static_cast<size_t>(client_fact_kind::count); n++) {
            const auto kind = static_cast<client_fact_kind>(n);
            const client_fact_traits &traits = client_traits_of(kind);
            if (traits.of_sqlite != of_sqlite || (!of_sqlite && !compared.both_know) ||
                (kind == client_fact_kind::name_in_sqlite && compared.is_renamed) ||
                (of_sqlite && of_server.find(traits.group) != std::string::npos) ||
                !my_differ(client_find_fact(a, kind), client_find_fact(b, kind), traits))
                continue;
            kinds.push_back(kind);
            groups += traits.group;
        }
    }
    std::sort(kinds.begin(), kinds.end());
    return kinds;
}

static void my_compare_facts(const std::vector<client_fact> &a, const std::vector<client_fact> &b,
                             const sides &compared, const client_change &about, std::vector<client_change> &changes)
{
    if (client_have_same_facts(a, b))
        return;
    for (const client_fact_kind kind : my_changed_kinds(a, b, compared)) {
        const client_fact *one = client_find_fact(a, kind);
        const client_fact *other = client_find_fact(b, kind);
        client_change change = about;
        change.what = "changed";
        change.old_name.clear();
        change.is_guess = false;
        change.member = client_traits_of(kind).member;
        change.old_text = my_shown(one, my_is_flag(one, other));
        change.new_text = my_shown(other, my_is_flag(one, other));
        changes.push_back(std::move(change));
    }
}

// Whether a fact goes without saying where those about the server are told.
static bool my_goes_without_saying(const client_fact &fact, const std::vector<client_fact> &facts)
{
    const client_fact_traits &traits = client_traits_of(fact.kind);
    return fact.kind == client_fact_kind::name_in_sqlite || fact.kind == client_fact_kind::default_name ||
           fact.kind == client_fact_kind::stored_nullable ||
           (traits.of_sqlite && std::any_of(facts.begin(), facts.end(), [&](const client_fact &other) {
                const client_fact_traits &others = client_traits_of(other.kind);
                return !others.of_sqlite && others.group == traits.group;
            }));
}

// A part as a whole in words: "nvarchar(40), nullable, default (N'none')".
static std::string my_description(const std::vector<client_fact> &facts)
{
    std::string text;
    for (const client_fact &fact : facts) {
        if (my_goes_without_saying(fact, facts))
            continue;
        const std::string member = client_traits_of(fact.kind).member;
        text += text.empty() ? "" : ", ";
        switch (fact.kind) {
        case client_fact_kind::type:
        case client_fact_kind::stored_as:
        case client_fact_kind::expression:
            text += fact.shown;
            break;
        case client_fact_kind::cols:
            text += '(' + fact.shown + ')';
            break;
        default:
            text += fact.shown == "yes" ? member : member + ' ' + fact.shown;
            break;
        }
    }
    return text;
}

static client_change my_whole_part(const client_part &part, bool is_new)
{
    client_change change{client_part_word(part.kind), is_new ? "added" : "removed", client_label_of(part)};
    (is_new ? change.new_text : change.old_text) = my_description(part.facts);
    return change;
}

// A name that is another, or is written in other letters: nobody has to guess at the latter.
static void my_add_rename(const std::string &old_name, const std::string &new_name, bool is_guess, client_change change,
                          std::vector<client_change> &changes)
{
    change.what = "renamed";
    change.name = new_name;
    change.old_name = old_name;
    change.is_guess = is_guess && !kt_equal_folded(old_name, new_name);
    changes.push_back(std::move(change));
}

// A key that has lost its name, or was given one, is not another key.
static void my_compare_names(const client_part &a, const client_part &b, bool is_guess, const client_change &about,
                             std::vector<client_change> &changes)
{
    if (!a.name.empty() && !b.name.empty())
        return my_add_rename(a.name, b.name, is_guess, about, changes);
    client_change change = about;
    change.member = "name";
    change.old_text = a.name;
    change.new_text = b.name;
    changes.push_back(std::move(change));
}

static void my_compare_parts(const client_part &a, const client_part &b, bool is_guess, bool both_know,
                             std::vector<client_change> &changes)
{
    if (a.name == b.name && client_have_same_facts(a.facts, b.facts))
        return;
    const client_change about{client_part_word(b.kind), "changed", client_label_of(b)};
    const bool is_renamed = a.name != b.name && (kt_equal_folded(a.name, b.name) || !client_is_same_name(a, b));
    if (is_renamed)
        my_compare_names(a, b, is_guess, about, changes);
    my_compare_facts(a.facts, b.facts, {both_know, is_renamed}, about, changes);
}

static void my_compare_pair(const std::vector<client_part> &old_parts, const std::vector<client_part> &new_parts,
                            const client_pair &pair, bool both_know, std::vector<client_change> &changes)
{
    if (pair.is_both())
        my_compare_parts(old_parts[pair.old_at], new_parts[pair.new_at], pair.is_guess, both_know, changes);
    else if (pair.new_at == client_nothing)
        changes.push_back(my_whole_part(old_parts[pair.old_at], false));
    else
        changes.push_back(my_whole_part(new_parts[pair.new_at], true));
}

// The name that both documents have for a column.
static const std::string &my_name_to_compare(const client_part &col, bool both_know)
{
    return both_know || col.sqlite_name.empty() ? col.name : col.sqlite_name;
}

static void my_compare_col(const client_part &old_col, const client_part &new_col, bool is_guess, bool both_know,
                           std::vector<client_change> &changes)
{
    const std::string &old_name = my_name_to_compare(old_col, both_know);
    const std::string &new_name = my_name_to_compare(new_col, both_know);
    if (old_name == new_name && client_have_same_facts(old_col.facts, new_col.facts))
        return;
    client_part a = old_col;
    client_part b = new_col;
    a.name = old_name;
    b.name = new_name;
    my_compare_parts(a, b, is_guess, both_know, changes);
}

static void my_compare_cols(const client_tbl_content &old_tbl, const client_tbl_content &new_tbl,
                            const client_tbl_pair &pair, bool both_know, std::vector<client_change> &changes)
{
    for (const client_pair &col : pair.cols) {
        const bool is_old = col.old_at != client_nothing;
        const bool is_new = col.new_at != client_nothing;
        // What SQLite does not have, a document without facts about the server cannot mention.
        const bool is_stored =
            (is_old && !old_tbl.cols[col.old_at].id.empty()) || (is_new && !new_tbl.cols[col.new_at].id.empty());
        if (!both_know && !is_stored)
            continue;
        if (is_old && is_new)
            my_compare_col(old_tbl.cols[col.old_at], new_tbl.cols[col.new_at], col.is_guess, both_know, changes);
        else
            my_compare_pair(old_tbl.cols, new_tbl.cols, col, both_know, changes);
    }
}

// The order of the columns that both have.
static void my_compare_order(const client_tbl_content &old_tbl, const client_tbl_content &new_tbl,
                             const client_tbl_pair &pair, std::vector<client_change> &changes)
{
    std::vector<client_pair> both;
    std::copy_if(pair.cols.begin(), pair.cols.end(), std::back_inserter(both),
                 [](const client_pair &col) { return col.is_both(); });
    const auto by_old_place = [](const client_pair &a, const client_pair &b) { return a.old_at < b.old_at; };
    if (std::is_sorted(both.begin(), both.end(), by_old_place))
        return;
    client_change change{"table", "changed", new_tbl.name,
                         {},      false,     client_traits_of(client_fact_kind::col_order).member};
    for (const client_pair &col : both)
        change.new_text += (change.new_text.empty() ? "" : ", ") + new_tbl.cols[col.new_at].name;
    std::sort(both.begin(), both.end(), by_old_place);
    for (const client_pair &col : both)
        change.old_text += (change.old_text.empty() ? "" : ", ") + old_tbl.cols[col.old_at].name;
    changes.push_back(std::move(change));
}

// A unique index is a key of SQLite's table as well: it is told once.
static void my_drop_told_twice(std::vector<client_change> &changes)
{
    const std::string_view unique_word = client_part_word(client_part_kind::unique_key);
    const std::string_view index_word = client_part_word(client_part_kind::index);
    std::vector<std::string> indexes;
    for (const client_change &change : changes) {
        if (change.kind == index_word)
            indexes.push_back(kt_folded(change.name));
    }
    std::erase_if(changes, [&](const client_change &change) {
        return change.kind == unique_word &&
               std::find(indexes.begin(), indexes.end(), kt_folded(change.name)) != indexes.end();
    });
}

static void my_compare_other_parts(const std::vector<client_part> &old_parts, const std::vector<client_part> &new_parts,
                                   bool both_know, std::vector<client_change> &changes)
{
    static constexpr client_part_kind kinds[] = {client_part_kind::primary_key, client_part_kind::unique_key,
                                                 client_part_kind::foreign_key, client_part_kind::check,
                                                 client_part_kind::index,       client_part_kind::sequence};
    for (const client_part_kind kind : kinds) {
        const bool is_servers = kind == client_part_kind::index || kind == client_part_kind::sequence;
        if (is_servers && !both_know)
            continue;
        for (const client_pair &pair : client_pair_parts(old_parts, new_parts, kind))
            my_compare_pair(old_parts, new_parts, pair, both_know, changes);
    }
    my_drop_told_twice(changes);
}

void client_compare_wholes(const client_comparison &comparison, std::vector<client_change> &changes)
{
    const client_content &a = comparison.old_content;
    const client_content &b = comparison.new_content;
    const bool both_know = a.has_facts && b.has_facts;
    my_compare_facts(a.facts, b.facts, {both_know}, {"schema", "changed", ""}, changes);
    my_compare_other_parts(a.parts, b.parts, both_know, changes);
}

void client_compare_tbls(const client_comparison &comparison, const client_tbl_pair &pair,
                         std::vector<client_change> &changes)
{
    const client_tbl_content none;
    const client_tbl_content &a =
        pair.tbl.old_at == client_nothing ? none : comparison.old_content.tbls[pair.tbl.old_at];
    const client_tbl_content &b =
        pair.tbl.new_at == client_nothing ? none : comparison.new_content.tbls[pair.tbl.new_at];
    const bool both_know = pair.tbl.is_both() ? a.has_facts && b.has_facts : true;
    const bool is_renamed = both_know ? a.name != b.name : a.sqlite_name != b.sqlite_name;
    if (pair.tbl.is_both()) {
        my_compare_facts(a.facts, b.facts, {both_know, is_renamed}, {"table", "changed", b.name}, changes);
        my_compare_order(a, b, pair, changes);
    }
    my_compare_cols(a, b, pair, both_know, changes);
    my_compare_other_parts(a.parts, b.parts, both_know, changes);
}
