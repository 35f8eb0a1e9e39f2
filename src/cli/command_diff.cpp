// tov-schema diff: which tables and columns two schemas share.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct diff_options {
    std::string old_schema;
    std::string new_schema;
    bool is_json = false;
};

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

static std::string my_column_name(KT_context *ctx, tov_schema *schema, const std::string &tbl_id,
                                  const std::string &col_id)
{
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, tbl_id.c_str(), col_id.c_str(), &name);
    cli_check(ctx, tbl_id);
    return name ? name : col_id;
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
                    cli_harmless(cli_table_name(ctx, schema, tbl_id) + "." + my_column_name(ctx, schema, tbl_id, id)) +
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

static int my_run(const diff_options &options)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema a(ctx), b(ctx);
    cli_load_schema(ctx, options.old_schema, &a);
    cli_load_schema(ctx, options.new_schema, &b);
    const table_diff tables = my_compare_tables(ctx, a, b);
    std::vector<column_diff> columns;
    for (const auto &shared : {tables.changed, tables.same})
        for (const std::string &id : shared) {
            column_diff diff = my_compare_columns(ctx, a, b, id);
            if (!diff.only_in_old.empty() || !diff.only_in_new.empty())
                columns.push_back(std::move(diff));
        }
    cli_print(options.is_json ? my_as_json(ctx, tables, columns) : my_as_text(ctx, a, b, tables, columns));
    const bool is_same =
        tables.only_in_old.empty() && tables.only_in_new.empty() && tables.changed.empty() && columns.empty();
    return is_same ? cli_done : cli_found;
}

void cli_add_diff(cli_arguments &arguments)
{
    auto options = std::make_shared<diff_options>();
    const cli_command command = arguments.add("diff", "Compare two schemas by their tables and columns");
    command.details(
        "A table in both is changed when both carry a transaction id and the two differ. Exit code: 0 same,\n"
        "1 different. JSON holds ids, the text names.\n\n"
        "Example: tov-schema diff old.json new.json");
    command.argument("OLD", options->old_schema, "a schema; - for standard input").required();
    command.argument("NEW", options->new_schema, "the schema to compare it with; - for standard input").required();
    command.flag("--json", options->is_json, "print JSON");
    command.runs([options] { return my_run(*options); });
}
