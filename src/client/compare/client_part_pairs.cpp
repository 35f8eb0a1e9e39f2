#include "compare/client_part_pairs.hpp"

#include "kt_folded.hpp"

#include <algorithm>

static bool my_has_given_name(const client_part &part) noexcept
{
    return !part.name.empty() && !part.name_is_made_up;
}

bool client_is_same_name(const client_part &a, const client_part &b) noexcept
{
    return kt_equal_folded(a.name, b.name) || (!my_has_given_name(a) && !my_has_given_name(b));
}

static bool my_have_same_name(const client_part &a, const client_part &b)
{
    return !a.name.empty() && kt_equal_folded(a.name, b.name);
}

static bool my_are_alike(const client_part &a, const client_part &b)
{
    return client_have_same_facts(a.facts, b.facts);
}

static bool my_have_same_cols(const client_part &a, const client_part &b)
{
    const client_fact *one = client_find_fact(a.facts, client_fact_kind::cols);
    const client_fact *other = client_find_fact(b.facts, client_fact_kind::cols);
    const bool is_nameless = !my_has_given_name(a) || !my_has_given_name(b);
    return is_nameless && one && other && one->meaning == other->meaning;
}

static bool my_are_primary(const client_part &a, const client_part &)
{
    return a.kind == client_part_kind::primary_key;
}

static std::vector<size_t> my_of_kind(const std::vector<client_part> &parts, client_part_kind kind)
{
    std::vector<size_t> found;
    for (size_t n = 0; n < parts.size(); n++) {
        if (parts[n].kind == kind)
            found.push_back(n);
    }
    return found;
}

std::string client_label_of(const client_part &part)
{
    if (!part.name.empty())
        return part.name;
    const client_fact *cols = client_find_fact(part.facts, client_fact_kind::cols);
    const client_fact *condition = client_find_fact(part.facts, client_fact_kind::expression);
    return cols ? '(' + cols->shown + ')' : condition ? condition->shown : "";
}

std::vector<client_pair> client_pair_parts(const std::vector<client_part> &old_parts,
                                           const std::vector<client_part> &new_parts, client_part_kind kind)
{
    std::vector<client_pair> pairs;
    std::vector<size_t> old_left = my_of_kind(old_parts, kind);
    std::vector<size_t> new_left = my_of_kind(new_parts, kind);
    for (const auto belong : {my_have_same_name, my_are_alike, my_have_same_cols, my_are_primary}) {
        std::erase_if(old_left, [&](size_t o) {
            const auto found = std::find_if(new_left.begin(), new_left.end(),
                                            [&](size_t n) { return belong(old_parts[o], new_parts[n]); });
            if (found == new_left.end())
                return false;
            pairs.push_back({o, *found, belong == my_are_alike});
            new_left.erase(found);
            return true;
        });
    }
    for (const size_t o : old_left)
        pairs.push_back({o, client_nothing, false});
    for (const size_t n : new_left)
        pairs.push_back({client_nothing, n, false});
    const auto label = [&](const client_pair &pair) {
        return kt_folded(
            client_label_of(pair.new_at == client_nothing ? old_parts[pair.old_at] : new_parts[pair.new_at]));
    };
    std::stable_sort(pairs.begin(), pairs.end(),
                     [&](const client_pair &a, const client_pair &b) { return label(a) < label(b); });
    return pairs;
}
