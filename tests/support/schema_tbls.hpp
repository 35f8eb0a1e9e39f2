// The names of a schema's tables, in its order; "" for one without a name.
#pragma once

#include "tov_parse_defin.h"

#include <string>
#include <vector>

inline std::vector<std::string> tbl_names_of(KT_context *ctx, tov_schema *schema)
{
    std::vector<std::string> names;
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        const char *name = nullptr;
        tov_schema__get_nth_tbl_id(ctx, schema, n, &id);
        tov_schema__get_tbl_name(ctx, schema, id, &name);
        names.emplace_back(name ? name : "");
    }
    return names;
}
