// tov-schema lite: the short summary of a schema, written or listed.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_paths.hpp"
#include "cli_references.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct lite_options {
    std::string schema;
    std::vector<std::string> tables;
    std::string output = "-";
    std::string read;
};

} // namespace

static int my_write_lite(const lite_options &options)
{
    cli_keep_inputs(options.output, {options.schema});
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_load_schema(ctx, options.schema, &schema);
    std::vector<std::string> ids;
    for (const std::string &table : options.tables)
        ids.push_back(cli_find_table(ctx, schema, table));
    if (options.tables.empty())
        ids = cli_table_ids(ctx, schema);

    kt_owned_nullhash set{ctx};
    KT_nullhash__alloc(ctx, set.out());
    cli_check(ctx, "");
    for (const std::string &id : ids) {
        KT_nullhash__update(ctx, set, id.c_str());
        cli_check(ctx, id);
    }
    KT_string *json = nullptr;
    tov_schema__lite(ctx, schema, set, &json);
    const std::string text = cli_take(ctx, json);
    cli_check(ctx, options.schema);
    cli_write_file(options.output, text + "\n");
    return cli_done;
}

// A table's line, then one for each of its columns.
static std::string my_list_table(KT_context *ctx, KT_vhash *lite, uint32_t n, const std::string &path)
{
    const char *tbl_id = nullptr;
    int64_t txid = 0;
    uint32_t count = 0;
    tov_schema_lite__get_nth_tbl_id(ctx, lite, n, &tbl_id);
    cli_check(ctx, path);
    tov_schema_lite__get_tbl_txid(ctx, lite, tbl_id, &txid);
    cli_check(ctx, path);
    tov_schema_lite__count_cols(ctx, lite, tbl_id, &count);
    cli_check(ctx, path);
    std::string text = cli_harmless(tbl_id) + "\ttxid " + std::to_string(txid) + "\n";
    for (uint32_t i = 0; i < count; i++) {
        const char *col_id = nullptr, *name = nullptr;
        tov_schema_lite__get_nth_col_id(ctx, lite, tbl_id, i, &col_id);
        cli_check(ctx, path);
        tov_schema_lite__get_col_name(ctx, lite, tbl_id, col_id, &name);
        cli_check(ctx, path);
        text += "  " + cli_harmless(col_id) + "\t" + cli_harmless(name) + "\n";
    }
    return text;
}

static int my_read_lite(const std::string &path)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_map lite(ctx, cli_read_text(path), path);
    uint32_t count = 0;
    tov_schema_lite__count_tbls(ctx, lite, &count);
    cli_check(ctx, path);
    std::string text;
    for (uint32_t n = 0; n < count; n++)
        text += my_list_table(ctx, lite, n, path);
    cli_print(text);
    return cli_done;
}

static int my_run(const lite_options &options)
{
    if (!options.read.empty())
        return my_read_lite(options.read);
    if (options.schema.empty())
        throw cli_usage_failure("lite needs a SCHEMA, or --read FILE");
    return my_write_lite(options);
}

void cli_add_lite(cli_arguments &arguments)
{
    auto options = std::make_shared<lite_options>();
    const cli_command command = arguments.add("lite", "Write the short summary of a schema, or list one");
    command.details("Examples: tov-schema lite schema.json Orders Customers -o lite.json\n"
                    "          tov-schema lite --read lite.json");
    const cli_option schema = command.argument("SCHEMA", options->schema, "the schema; - for standard input");
    command.argument("TABLE", options->tables, "the tables to summarise, by id or name (default: all)");
    command.option("-o,--output", options->output, "where the summary goes (default: standard output)");
    command.option("--read", options->read, "list the tables and columns of a summary; - for standard input")
        .excludes(schema);
    command.runs([options] { return my_run(*options); });
}
