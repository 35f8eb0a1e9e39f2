// The columns of a table: what the guide says of them, their SQLite type, and the server's collation and description.
#include "report/client_report.hpp"

#include <algorithm>
#include <map>
#include <string_view>

#define KT_HERE "src/client/report/client_report_cols"

// What the guide says to programs and people have no use for.
static constexpr const char *for_programs[] = {"show", "store", "store_text", "bind"};

// A definition is the quoted name, the type with its collation, and constraints. No type holds the words that
// constraints begin with.
static std::string my_type_of(std::string_view definition, std::string_view name)
{
    definition.remove_prefix(std::min(name.size() + 2, definition.size()));
    size_t end = definition.size();
    for (const std::string_view word : {" NOT NULL", " CONSTRAINT ", " DEFAULT ", " CHECK ", " REFERENCES "})
        end = std::min(end, definition.find(word));
    definition = definition.substr(0, end);
    definition.remove_prefix(definition.starts_with(' ') ? 1 : 0);
    return std::string(definition);
}

// The types of the columns that SQLite's table has, by their names.
static void my_read_types(KT_context *ctx, const client_report_tbl &tbl, std::map<std::string, std::string> &types)
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, tbl.schema, tbl.id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *name = nullptr;
        const char *definition = nullptr;
        KT_TRY(tov_schema__get_nth_col_id(ctx, tbl.schema, tbl.id, n, &col_id));
        KT_TRY(tov_schema__get_col_name(ctx, tbl.schema, tbl.id, col_id, &name));
        KT_TRY(tov_schema__get_col_defin(ctx, tbl.schema, tbl.id, col_id, nullptr, &definition));
        if (name)
            types[name] = my_type_of(definition, name);
    }
}

static void my_complete_col(KT_context *ctx, const KT_vhash *fact, const std::string &type, KT_vhash *col)
{
    for (const char *member : for_programs)
        KT_TRY(KT_vhash__remove_if_present(ctx, col, member, nullptr));
    if (!type.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, col, "sqlite_type", type.c_str()));
    KT_TRY(client_report_copy_text(ctx, fact, "collation", col, "collation"));
    KT_TRY(client_report_copy_text(ctx, fact, "description", col, "description"));
}

// The guide has read the same facts, in their order, unless they could not be used.
void client_report_complete_cols(KT_context *ctx, const client_report_tbl &tbl)
{
    std::map<std::string, std::string> types;
    KT_TRY(my_read_types(ctx, tbl, types));
    const std::vector<KT_vhash *> cols = client_report_maps(ctx, tbl.record, "columns");
    const std::vector<KT_vhash *> facts = client_report_maps(ctx, tbl.facts, "cols");
    for (size_t n = 0; n < cols.size(); n++) {
        const KT_vhash *fact = facts.size() == cols.size() ? facts[n] : nullptr;
        const bool is_left_out = !client_report_text(ctx, cols[n], "left_out").empty();
        const std::string name = client_report_text(ctx, cols[n], "name");
        KT_TRY(my_complete_col(ctx, fact, is_left_out ? "" : types[name], cols[n]));
    }
}
