// What a table's keys say of each of its columns.
#pragma once

#include "kt_owned.hpp"
#include "tov_client.h"

#include <map>
#include <string>
#include <vector>

struct client_col_reference {
    std::string tbl; // names
    std::string col; // empty where the reference does not name it: the primary key
};

struct client_col_keys {
    uint32_t pk_position = 0; // counted from 1; 0 where it is not part of the primary key
    bool is_unique = false;   // part of another key
    std::vector<client_col_reference> references;
};

// By the columns' ids.
void client_read_col_keys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                          std::map<std::string, client_col_keys> &keys);
