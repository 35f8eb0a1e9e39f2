// A collation of the server, by its name.
//
// Comparing gives an order of all strings in which those are equal that the server takes for equal, whatever bytes they
// consist of: two strings are compared by what each of them alone becomes.
#pragma once

#include "collate/ext_fold.hpp"

#include <unicode/coll.h>

#include <memory>

struct ext_collation {
    ext_rules rules;
    std::unique_ptr<icu::Collator> icu; // of the orders that need it
    // Kept between two calls for the memory that they have.
    ext_folded left;
    ext_folded right;
};

// Null for a name that is none of a collation's. May throw std::bad_alloc.
std::unique_ptr<ext_collation> ext_open_collation(std::string_view name);

// Less than, equal to or greater than 0. May throw std::bad_alloc.
int ext_compare(ext_collation &collation, std::string_view left, std::string_view right);
