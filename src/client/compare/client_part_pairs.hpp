// Which key, check, index or sequence of one side is which of the other.
#pragma once

#include "compare/client_match.hpp"

// Whether two names say the same: they are alike but for letter case, or neither was given by a person.
bool client_is_same_name(const client_part &a, const client_part &b) noexcept;

// The pairs of parts of one kind in the order of names: parts of the same name, then those that are the same but for
// it, then those without a name that have the same columns.
std::vector<client_pair> client_pair_parts(const std::vector<client_part> &old_parts,
                                           const std::vector<client_part> &new_parts, client_part_kind kind);

// What a part is called: its name, or else its columns or condition.
std::string client_label_of(const client_part &part);
