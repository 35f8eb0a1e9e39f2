// Types that the caller gives columns in place of the server's: all that follows sees these, the server facts too.
#include "steps/host_import.hpp"
#include "tsql/host_tsql_type.hpp"

#include <algorithm>

#define KT_HERE "src/host/steps/host_override_types"

namespace {
struct host_type_override {
    const char *written = nullptr;
    std::string name; // folded, of a column or an alias type
    host_tsql_type type;
    bool is_used = false;
};
} // namespace

static void my_read(KT_context *ctx, const char *item, host_type_override &result)
{
    const std::string_view text = item;
    const size_t sign = text.rfind('=');
    if (sign == std::string_view::npos || sign == 0)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s' is not of the form NAME=TYPE", item);
    host_tsql_cursor cursor(text.substr(sign + 1));
    result.written = item;
    result.name = host_folded(text.substr(0, sign));
    result.type = host_read_type(cursor);
    if (cursor.failed())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s': %s", item, cursor.message().c_str());
    if (!result.type.is_system() || cursor.token.kind != host_tsql_kind::end)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s': '%s' is not a type of the server", item, item + sign + 1);
}

static bool my_counts(const host_column &col)
{
    constexpr std::string_view types[] = {"bigint", "int", "smallint", "tinyint", "decimal", "numeric"};
    return col.scale == 0 && col.system_type &&
           std::find(std::begin(types), std::end(types), col.system_type) != std::end(types);
}

static void my_set(KT_context *ctx, host_catalogue &catalogue, host_type_override &given, host_column &col)
{
    const char *collation = col.collation ? col.collation : catalogue.collation;
    given.is_used = true;
    col.user_type = col.user_type_schema = col.collation = nullptr;
    col.is_assembly_type = false;
    col.max_length = col.code_page = 0;
    col.comparison_style = -1;
    col.precision = col.scale = 0;
    host_set_declared_type(catalogue.texts, host_declared(given.type), col);
    host_set_collation(collation, col);
    if (col.is_identity && !my_counts(col))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s': the column is an identity, which only whole numbers can be",
                given.written);
}

static host_type_override *my_find(std::vector<host_type_override> &given, const std::string &name)
{
    const auto found = std::find_if(given.begin(), given.end(), [&name](const auto &one) { return one.name == name; });
    return found == given.end() ? nullptr : &*found;
}

// What is said of a column counts more than what is said of its alias type.
static void my_set_column(KT_context *ctx, host_catalogue &catalogue, std::vector<host_type_override> &given,
                          const std::string &label, host_column &col)
{
    host_type_override *found = my_find(given, label + '.' + host_folded(col.name));
    if (!found && col.user_type && col.user_type_schema)
        found = my_find(given, host_folded(col.user_type_schema) + '.' + host_folded(col.user_type));
    if (found)
        KT_TRY(my_set(ctx, catalogue, *found, col));
}

void host_override_types(KT_context *ctx, const tov_host_list &types, host_findings &findings,
                         host_catalogue &catalogue)
{
    std::vector<host_type_override> given(types.count);
    for (size_t n = 0; n < types.count; n++)
        KT_TRY(my_read(ctx, types.items[n], given[n]));
    if (given.empty())
        return;
    for (host_table &table : catalogue.tables) {
        const std::string label = host_folded(table.label);
        for (host_column &col : table.cols)
            KT_TRY(my_set_column(ctx, catalogue, given, label, col));
    }
    for (const host_type_override &one : given) {
        if (!one.is_used)
            KT_TRY(findings.add(ctx, "pattern-unused", nullptr, nullptr, one.written,
                                "type: no column or alias type has such a name"));
    }
}
