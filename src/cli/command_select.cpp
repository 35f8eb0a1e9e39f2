// tov-schema select: the SQL Server text that reads a table, with the conversions that its columns need.

#include "cli_files.hpp"
#include "cli_json.hpp"
#include "cli_references.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "kt_chars.h"

#include <memory>

namespace {

struct select_options {
    std::string schema;
    std::string table;
    std::string alias = "t";
    std::string other_alias = "o";
    uint32_t mode = 0;
    uint32_t other_mode = 0;
    bool is_json = false;
};

} // namespace

// The select list looks host types up, so each column must have one; import records them all.
static bool my_has_host_types(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    uint32_t count = 0;
    tov_schema__count_cols(ctx, schema, tbl_id.c_str(), &count);
    cli_check(ctx, tbl_id);
    bool has_all = true;
    for (uint32_t n = 0; n < count && has_all; n++) {
        const char *col_id = nullptr, *host_type = nullptr;
        tov_schema__get_nth_col_id(ctx, schema, tbl_id.c_str(), n, &col_id);
        cli_check(ctx, tbl_id);
        KT_context__push_level(ctx);
        tov_schema__get_mssql_col_type_name(ctx, schema, tbl_id.c_str(), col_id, &host_type);
        has_all = !KT_context__has_err(ctx);
        KT_context__pop_level(ctx);
    }
    return has_all;
}

// Names go into the text as they are: one that ends its quotes would make a statement of the schema's own choosing.
static void my_refuse_unsafe_name(KT_context *ctx, const char *name)
{
    const char *flaw = name ? tov_find_name_flaw(name) : nullptr; // without a name the text cannot be written
    if (!flaw)
        return;
    KT_string *shown = nullptr;
    KT_string__alloc__sz(ctx, &shown, "column ");
    cli_check(ctx, flaw);
    KT_string__append__shown(ctx, shown, name);
    throw cli_failure(flaw, cli_take(ctx, shown));
}

static void my_refuse_unsafe_names(KT_context *ctx, const KT_vhash *columns)
{
    uint32_t count = 0;
    KT_vhash__count(ctx, columns, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        KT_vhash__get_nth_pair(ctx, columns, n, &name, nullptr);
        my_refuse_unsafe_name(ctx, name);
    }
}

// A key may hold columns that are not prepared, which the select list lacks.
static void my_refuse_unsafe_key_names(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    uint32_t count = 0;
    tov_schema__count_pk_cols(ctx, schema, tbl_id.c_str(), &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr, *name = nullptr;
        tov_schema__get_nth_pk_col(ctx, schema, tbl_id.c_str(), n, &col_id, &name);
        cli_check(ctx, tbl_id);
        my_refuse_unsafe_name(ctx, name);
    }
    cli_check(ctx, tbl_id);
}

static std::string my_select_list(KT_context *ctx, tov_schema *schema, const select_options &options,
                                  const std::string &tbl_id)
{
    kt_owned_vhash columns{ctx};
    tov_schema__get_converted_col_names_as_vhash(ctx, schema, tbl_id.c_str(), 0, columns.out());
    cli_check(ctx, options.table);
    my_refuse_unsafe_names(ctx, columns);
    KT_string *list = nullptr;
    tov_schema__get_pvh_col_names_comma_separated_and_qualified(ctx, options.mode, schema, tbl_id.c_str(), columns,
                                                                nullptr, options.alias.c_str(), 1,
                                                                my_has_host_types(ctx, schema, tbl_id), &list);
    cli_check(ctx, options.table);
    return cli_take(ctx, list);
}

// A key column on a cycle of references would be followed round and round.
static void my_refuse_column_cycles(KT_context *ctx, tov_schema *schema)
{
    for (const std::vector<std::string> &cycle : cli_column_cycles(ctx, schema)) {
        std::string columns;
        for (const std::string &column : cycle)
            columns += (columns.empty() ? "" : ", ") + column;
        throw cli_failure("the key columns refer to each other in a cycle", columns);
    }
}

static int my_run(const select_options &options)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_load_schema(ctx, options.schema, &schema);
    const std::string tbl_id = cli_find_table(ctx, schema, options.table);
    if (options.mode || options.other_mode)
        my_refuse_column_cycles(ctx, schema);
    my_refuse_unsafe_key_names(ctx, schema, tbl_id);
    const std::string columns = my_select_list(ctx, schema, options, tbl_id);
    KT_string *join = nullptr;
    tov_schema__get_on_pk_col_names(ctx, schema, tbl_id.c_str(), options.alias.c_str(), options.other_alias.c_str(),
                                    options.mode, options.other_mode, &join);
    cli_check(ctx, options.table);
    const std::string condition = cli_take(ctx, join);
    if (!options.is_json) {
        cli_print(columns + "\n" + condition + "\n");
        return cli_done;
    }
    cli_map result(ctx);
    cli_add_text(ctx, result, "select", columns.c_str());
    cli_add_text(ctx, result, "on", condition.c_str());
    cli_print(cli_json_text(ctx, result) + "\n");
    return cli_done;
}

void cli_add_select(cli_arguments &arguments)
{
    auto options = std::make_shared<select_options>();
    const cli_command command = arguments.add("select", "Print SQL Server's select list and key join for a table");
    command.details("The first line is the select list, the second the join condition on the key.\n"
                    "Modes: 0 columns as they are, 1 from the text form S:123 to bigint, 2 from integer to S:123.\n\n"
                    "Example: tov-schema select schema.json Orders --alias o --mode 2");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.argument("TABLE", options->table, "the table's id or name").required();
    command.option("--alias", options->alias, "the alias of the table (default: t)", "NAME");
    command.option("--other-alias", options->other_alias, "the alias on the other side of the join (default: o)",
                   "NAME");
    command.option("--mode", options->mode, "how key columns of identity values are read (default: 0)").between(0, 2);
    command.option("--other-mode", options->other_mode, "the same on the other side of the join (default: 0)")
        .between(0, 2);
    command.flag("--json", options->is_json, "print JSON");
    command.runs([options] { return my_run(*options); });
}
