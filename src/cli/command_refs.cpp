// tov-schema refs: who refers to whom.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_references.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <memory>

namespace {

struct refs_options {
    std::string schema;
    std::string table;
    bool is_json = false;
};

} // namespace

// Table (a, b) -> Parent (x, y)  ON DELETE CASCADE  [FK_name]
static std::string my_as_line(KT_context *ctx, tov_schema *schema, const cli_reference &reference)
{
    const auto columns = [](const std::vector<std::string> &names) {
        std::string text;
        for (const std::string &name : names)
            text += (text.empty() ? "" : ", ") + name;
        return " (" + text + ")";
    };
    std::string line = cli_table_name(ctx, schema, reference.from_table) + columns(reference.from_columns) + " -> " +
                       cli_table_name(ctx, schema, reference.to_table) + columns(reference.to_columns);
    if (!reference.on_delete.empty())
        line += "  ON DELETE " + reference.on_delete;
    if (!reference.on_update.empty())
        line += "  ON UPDATE " + reference.on_update;
    if (!reference.name.empty())
        line += "  [" + reference.name + "]";
    return cli_harmless(line) + "\n";
}

static void my_add_to(KT_context *ctx, tov_schema *schema, const cli_reference &reference, KT_varray *list)
{
    KT_vhash *entry = cli_append_map(ctx, list);
    if (!reference.name.empty())
        cli_add_text(ctx, entry, "name", reference.name.c_str());
    cli_add_text(ctx, entry, "from_table", cli_table_name(ctx, schema, reference.from_table).c_str());
    cli_add_texts(ctx, entry, "from_columns", reference.from_columns);
    cli_add_text(ctx, entry, "to_table", cli_table_name(ctx, schema, reference.to_table).c_str());
    cli_add_texts(ctx, entry, "to_columns", reference.to_columns);
    if (!reference.on_delete.empty())
        cli_add_text(ctx, entry, "on_delete", reference.on_delete.c_str());
    if (!reference.on_update.empty())
        cli_add_text(ctx, entry, "on_update", reference.on_update.c_str());
}

// All keys, or those that a table holds and those that refer to it.
static std::vector<cli_reference> my_collect(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    std::vector<cli_reference> result;
    for (const std::string &id : cli_table_ids(ctx, schema))
        for (cli_reference &reference : cli_references_of(ctx, schema, id))
            if (tbl_id.empty() || KT_stricmp(reference.from_table.c_str(), tbl_id.c_str()) == 0 ||
                KT_stricmp(reference.to_table.c_str(), tbl_id.c_str()) == 0)
                result.push_back(std::move(reference));
    return result;
}

// Name the tables of each cycle by what a person calls them.
static std::vector<std::string> my_cycle_texts(KT_context *ctx, tov_schema *schema)
{
    std::vector<std::string> texts;
    for (const std::vector<std::string> &cycle : cli_table_cycles(ctx, schema)) {
        std::string text = "tables in a cycle:";
        for (const std::string &tbl_id : cycle)
            text += " " + cli_table_name(ctx, schema, tbl_id);
        texts.push_back(text);
    }
    for (const std::vector<std::string> &cycle : cli_column_cycles(ctx, schema)) {
        std::string text = "key columns in a cycle:";
        for (const std::string &column : cycle)
            text += " " + column;
        texts.push_back(text);
    }
    return texts;
}

static int my_run(const refs_options &options)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_load_schema(ctx, options.schema, &schema);
    const std::string tbl_id = options.table.empty() ? "" : cli_find_table(ctx, schema, options.table);
    const std::vector<cli_reference> references = my_collect(ctx, schema, tbl_id);
    const std::vector<std::string> cycles = tbl_id.empty() ? my_cycle_texts(ctx, schema) : std::vector<std::string>();

    if (options.is_json) {
        cli_map result(ctx);
        KT_varray *list = cli_add_list(ctx, result, "references");
        for (const cli_reference &reference : references)
            my_add_to(ctx, schema, reference, list);
        cli_add_texts(ctx, result, "cycles", cycles);
        cli_print(cli_json_text(ctx, result) + "\n");
        return cli_done;
    }
    std::string text;
    for (const cli_reference &reference : references)
        text += my_as_line(ctx, schema, reference);
    for (const std::string &cycle : cycles)
        text += cli_harmless(cycle) + "\n";
    cli_print(text);
    return cli_done;
}

void cli_add_refs(cli_arguments &arguments)
{
    auto options = std::make_shared<refs_options>();
    const cli_command command = arguments.add("refs", "Show which tables refer to which, with columns and actions");
    command.details("Example: tov-schema refs schema.json Orders");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.argument("TABLE", options->table, "only keys of this table and keys that refer to it (id or name)");
    command.flag("--json", options->is_json, "print JSON");
    command.runs([options] { return my_run(*options); });
}
