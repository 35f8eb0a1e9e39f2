// SQLite knows these collations when it has the extension libtov_sqlite. Of a column's COLLATE clauses SQLite takes the
// last one, so the server's can stand after all that the schema's own definition says.
#include "create/client_collations.hpp"

#include "create/client_place.hpp"

#include <algorithm>

#define KT_HERE "src/client/create/client_collations"

// A collation whose name begins so compares strings of a code page otherwise than Unicode; the extension has the
// first under the name with this after it.
static constexpr std::string_view sql_prefix = "SQL_";
static constexpr const char *code_page_suffix = ".varchar";

static bool my_is_name(const std::string &name) noexcept
{
    const auto may_be_in_name = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    return std::all_of(name.begin(), name.end(), may_be_in_name);
}

static std::string my_clause(const client_row_col &col)
{
    std::string name = col.collation;
    if (name.starts_with(sql_prefix) && !client_is_unicode(col.type.base))
        name += code_page_suffix;
    return " COLLATE " + client_quoted(name);
}

void client_read_collations(KT_context *ctx, const client_row_tbl &tbl, client_collations &collations) noexcept
{
    if (!tbl.has_facts)
        return;
    kt_contain(ctx, [&] {
        for (const client_row_col &col : tbl.cols) {
            if (!col.stored || col.collation.empty())
                continue;
            if (!my_is_name(col.collation)) {
                const client_place place{tbl.name.c_str(), "column", col.name.c_str(), "collation"};
                CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "not a name that a collation can have");
            }
            collations.push_back({col.col_id, my_clause(col)});
        }
    });
}

const char *client_find_collation(const client_collations &collations, const char *col_id) noexcept
{
    for (const client_collation &collation : collations) {
        if (KT_stricmp(collation.col_id.c_str(), col_id) == 0)
            return collation.clause.c_str();
    }
    return "";
}
