// Bytes stay bytes, whatever tools of the server print for them: a program that reads a view has more use for them.
#include "create/client_views.hpp"

#include "create/client_place.hpp"
#include "guide/client_guide.hpp"

#define KT_HERE "src/client/create/client_views"

// Only a table whose name begins like a view's can be in the way.
static bool my_is_named_like_view(const client_tbl &tbl) noexcept
{
    return KT_strnicmp(tbl.name, client_view_prefix, 2) == 0;
}

void client_check_views(KT_context *ctx, const client_plan &plan) noexcept
{
    for (const client_tbl &tbl : plan.tbls) {
        if (!my_is_named_like_view(tbl))
            continue;
        for (const client_tbl &shown : plan.tbls) {
            if (KT_stricmp(shown.name, tbl.name + 2) == 0)
                CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, client_place{shown.name},
                            "its view would have the name \"%s\", which a table has", tbl.name);
        }
    }
}

static std::string my_select_list(const client_row_tbl &tbl)
{
    std::string list;
    for (const client_row_col &col : tbl.cols) {
        if (!col.stored)
            continue;
        const std::string name = client_quoted(col.name);
        const std::string shown = client_is_binary(col.type.base) ? name : client_showing_expression(col.type, name);
        list += list.empty() ? "\n    " : ",\n    ";
        list += shown == name ? name : shown + " AS " + name;
    }
    return list;
}

void client_write_view(KT_context *ctx, const client_tbl &tbl, KT_string *sql) noexcept
{
    kt_contain(ctx, [&] {
        const std::string text = std::string("CREATE VIEW \"") + client_view_prefix + tbl.name + "\" AS SELECT" +
                                 my_select_list(tbl.rows) + "\nFROM \"" + tbl.name + '"';
        KT_TRY(KT_string__append__sz(ctx, sql, text.c_str()));
    });
}
