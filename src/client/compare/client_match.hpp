// Which table and column of one schema is which of the other.
#pragma once

#include "compare/client_content.hpp"

#include <cstddef>

inline constexpr size_t client_nothing = static_cast<size_t>(-1);

// Two positions that belong together; one of them is client_nothing for what the other side lacks.
struct client_pair {
    size_t old_at = client_nothing;
    size_t new_at = client_nothing;
    bool is_guess = false; // a renaming that nobody has said

    bool is_both() const
    {
        return old_at != client_nothing && new_at != client_nothing;
    }
};

struct client_tbl_pair {
    client_pair tbl;
    std::vector<client_pair> cols; // those of the new table in their order, and those that it lacks where they were
};

// A whole comparison: both contents, read with each other's names.
struct client_comparison {
    client_content old_content;
    client_content new_content;
    std::vector<client_tbl_pair> tbls; // in the order of names
};

// Reads both schemas and finds what belongs together. Of the tables that are the same only the names are read.
void client_match(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                  const tov_client_compare_options &options, const client_same_tbls &same,
                  client_comparison &comparison) noexcept;
