// What the options say was renamed.
#pragma once

#include "compare/client_match.hpp"

// Pairs that are decided: of tables, and of columns by the table. One with nothing on the new side was removed.
struct client_renames {
    std::vector<client_pair> tbls;
    struct col {
        size_t old_tbl;
        size_t old_col;
        std::string new_name; // empty: removed
    };
    std::vector<col> cols;
};

void client_read_renames(KT_context *ctx, const tov_client_compare_options &options,
                         const client_comparison &comparison, client_renames &renames);

// Refuses the new name of a column that is not there, once tables are paired.
void client_check_renamed_cols(KT_context *ctx, const client_comparison &comparison, const client_renames &renames);

// The column of a new name, which may have the table before it.
size_t client_find_renamed_col(const client_tbl_content &tbl, const std::string &new_name);
