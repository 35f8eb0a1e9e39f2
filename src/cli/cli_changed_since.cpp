// What the module's own comparison says: which tables and columns, by id and transaction id.
#include "cli_changed_since.hpp"

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_schema.hpp"

namespace {

struct table_diff {
    std::vector<std::string> only_in_old, only_in_new, same, changed;
};

struct column_diff {
    std::string table;
    std::vector<std::string> only_in_old, only_in_new;
};

} // namespace

static table_diff my_compare_tables(KT_context *ctx, tov_schema *a, tov_schema *b)
{
    KT_varray *only_a = nullptr, *only_b = nullptr, *same = nullptr, *changed = nullptr;
    tov_schema__diff_tbls(ctx, a, b, &only_a, &only_b, &same, &changed);
    table_diff diff{cli_take_texts(ctx, only_a), cli_take_texts(ctx, only_b), cli_take_texts(ctx, same),
                    cli_take_texts(ctx, changed)};
    cli_check(ctx, "");
    return diff;
}

static column_diff my_compare_columns(KT_context *ctx, tov_schema *a, tov_schema *b, const std::string &tbl_id)
{
    KT_varray *only_a = nullptr, *only_b = nullptr;
    tov_schema__diff_cols(ctx, a, b, tbl_id.c_str(), &only_a, &only_b, nullptr);
    column_diff diff{tbl_id, cli_take_texts(ctx, only_a), cli_take_texts(ctx, only_b)};
    cli_check(ctx, tbl_id);
    return diff;
}

static std::string my_as_text(KT_context *ctx, tov_schema *a, tov_schema *b, const table_diff &tables,
                              const std::vector<column_diff> &columns)
{
    std::string text;
    const auto add_tables = [&](const char *what, tov_schema *schema, const std::vector<std::string> &ids) {
        for (const std::string &id : ids)
            text += what + cli_harmless(cli_table_name(ctx, schema, id)) + "\n";
    };
    const auto add_columns = [&](const char *what, tov_schema *schema, const std::string &tbl_id,
                                 const std::vector<std::string> &ids) {
        for (const std::string &id : ids)
            text += what +
                    cli_harmless(cli_table_name(ctx, schema, tbl_id) + "." + cli_column_name(ctx, schema, tbl_id, id)) +
                    "\n";
    };
    add_tables("only in old: ", a, tables.only_in_old);
    add_tables("only in new: ", b, tables.only_in_new);
    add_tables("changed: ", b, tables.changed);
    for (const column_diff &diff : columns) {
        add_columns("only in old: ", a, diff.table, diff.only_in_old);
        add_columns("only in new: ", b, diff.table, diff.only_in_new);
    }
    add_tables("same: ", a, tables.same);
    return text;
}

static std::string my_as_json(KT_context *ctx, const table_diff &tables, const std::vector<column_diff> &columns)
{
    cli_map result(ctx);
    cli_add_texts(ctx, result, "only_in_old", tables.only_in_old);
    cli_add_texts(ctx, result, "only_in_new", tables.only_in_new);
    cli_add_texts(ctx, result, "changed", tables.changed);
    cli_add_texts(ctx, result, "same", tables.same);
    KT_varray *list = cli_add_list(ctx, result, "columns");
    for (const column_diff &diff : columns) {
        KT_vhash *entry = cli_append_map(ctx, list);
        cli_add_text(ctx, entry, "table", diff.table.c_str());
        cli_add_texts(ctx, entry, "only_in_old", diff.only_in_old);
        cli_add_texts(ctx, entry, "only_in_new", diff.only_in_new);
    }
    return cli_json_text(ctx, result) + "\n";
}

int cli_print_changed_since(KT_context *ctx, tov_schema *a, tov_schema *b, bool is_json)
{
    const table_diff tables = my_compare_tables(ctx, a, b);
    std::vector<column_diff> columns;
    for (const auto &shared : {tables.changed, tables.same})
        for (const std::string &id : shared) {
            column_diff diff = my_compare_columns(ctx, a, b, id);
            if (!diff.only_in_old.empty() || !diff.only_in_new.empty())
                columns.push_back(std::move(diff));
        }
    cli_print(is_json ? my_as_json(ctx, tables, columns) : my_as_text(ctx, a, b, tables, columns));
    const bool is_same =
        tables.only_in_old.empty() && tables.only_in_new.empty() && tables.changed.empty() && columns.empty();
    return is_same ? cli_done : cli_found;
}
