// Finding pairs: what the sources that match tables and columns share.
#pragma once

#include "compare/client_match.hpp"
#include "compare/client_renames.hpp"
#include "kt_folded.hpp"

#include <algorithm>
#include <unordered_map>

// The tables or columns of both sides while pairs are found.
struct client_pairing {
    client_pairing(size_t old_count, size_t new_count) : old_to_new(old_count, client_nothing), new_taken(new_count)
    {
        is_removed.resize(old_count);
        is_guess.resize(old_count);
    }
    std::vector<size_t> old_to_new;
    std::vector<bool> new_taken;
    std::vector<bool> is_removed; // so somebody said: it has nothing on the new side
    std::vector<bool> is_guess;

    bool is_open(size_t old_at) const
    {
        return old_to_new[old_at] == client_nothing && !is_removed[old_at];
    }
    void join(size_t old_at, size_t new_at, bool guessed)
    {
        old_to_new[old_at] = new_at;
        new_taken[new_at] = true;
        is_guess[old_at] = guessed;
    }
};

// Joins what has the same key, the n-th on one side with the n-th on the other; an empty key is none. key(is_old, n)
// gives keys, accept(old, new) has the last word.
template <class Key, class Accept> void client_join_equal(client_pairing &work, bool is_guess, Key key, Accept accept)
{
    // Mostly both sides begin alike: as long as they do, the n-th with a key is at the same place on both.
    size_t same = 0;
    for (; same < work.new_taken.size() && same < work.old_to_new.size(); same++) {
        if (!work.is_open(same) || work.new_taken[same])
            break;
        const std::string own_key = key(true, same);
        if (own_key != key(false, same) || (!own_key.empty() && !accept(same, same)))
            break;
        if (!own_key.empty())
            work.join(same, same, is_guess);
    }
    if (std::find(work.new_taken.begin(), work.new_taken.end(), false) == work.new_taken.end())
        return;
    std::unordered_map<std::string, std::vector<size_t>> new_by_key;
    for (size_t n = work.new_taken.size(); n-- > 0;) {
        if (!work.new_taken[n])
            new_by_key[key(false, n)].push_back(n);
    }
    for (size_t n = 0; n < work.old_to_new.size(); n++) {
        const std::string own_key = work.is_open(n) ? key(true, n) : std::string();
        const auto found = new_by_key.find(own_key);
        if (own_key.empty() || found == new_by_key.end() || found->second.empty() || !accept(n, found->second.back()))
            continue;
        work.join(n, found->second.back(), is_guess);
        found->second.pop_back();
    }
}

template <class Key> void client_join_equal(client_pairing &work, Key key)
{
    client_join_equal(work, false, key, [](size_t, size_t) { return true; });
}

// Names as they are, then without their letter case.
template <class Name> void client_join_names(client_pairing &work, Name name)
{
    client_join_equal(work, name);
    client_join_equal(work, [&](bool is_old, size_t n) { return kt_folded(name(is_old, n)); });
}

// What is known of a column but its names.
std::string client_shape_of(const client_part &col);

// Pairs tables, and columns of two tables, whose position among the old ones is given.
void client_pair_tbls(const client_comparison &comparison, bool by_id, const client_renames &renames,
                      client_pairing &work);
void client_pair_cols(const client_comparison &comparison, const client_pair &tbls, bool by_id,
                      const client_renames &renames, client_pairing &work);
