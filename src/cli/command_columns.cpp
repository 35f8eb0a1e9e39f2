// tov-schema columns: how the values of each column are kept, shown and stored.

#include "cli_files.hpp"
#include "cli_json.hpp"
#include "cli_layout.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "tov_client.h"

#include <memory>

namespace {

struct columns_options {
    std::string schema;
    std::string table;
    bool is_json = false;
};

using lines = std::vector<std::vector<std::string>>;

// Examples of wide columns are cut here; in JSON they are whole.
constexpr size_t most_shown = 40;

} // namespace

static std::vector<KT_vhash *> my_maps(KT_context *ctx, const KT_vhash *record, const char *key)
{
    KT_varray *list = nullptr;
    KT_vhash__check__varray(ctx, record, key, &list);
    cli_check(ctx, key);
    return cli_maps_of(ctx, list);
}

static std::string my_cut(const std::string &text)
{
    if (cli_width(text) <= most_shown)
        return text;
    size_t size = most_shown;
    while ((static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        size--;
    return text.substr(0, size) + "...";
}

// primary key 2, unique, -> Customers.Id
static std::string my_keys(KT_context *ctx, const KT_vhash *col)
{
    std::string text;
    const auto add = [&](const std::string &key) { text += (text.empty() ? "" : ", ") + key; };
    int64_t position = 0;
    KT_vhash__check__int64(ctx, col, "primary_key", &position);
    cli_check(ctx, "primary_key");
    if (position > 0)
        add(position > 1 ? "primary key " + std::to_string(position) : "primary key");
    if (cli_flag_of(ctx, col, "unique"))
        add("unique");
    for (KT_vhash *reference : my_maps(ctx, col, "references")) {
        const std::string of_tbl = cli_harmless_of(ctx, reference, "column");
        add("-> " + cli_harmless_of(ctx, reference, "table") + (of_tbl.empty() ? "" : "." + of_tbl));
    }
    return text;
}

static std::string my_server_type(KT_context *ctx, const KT_vhash *col)
{
    const std::string alias = cli_harmless_of(ctx, col, "user_type");
    const std::string type = cli_harmless_of(ctx, col, "server_type");
    const std::string identity = cli_harmless_of(ctx, col, "identity");
    return (alias.empty() ? type : type + " " + alias) + (identity.empty() ? "" : " identity(" + identity + ")");
}

static std::vector<std::string> my_line(KT_context *ctx, const KT_vhash *col)
{
    const std::string left_out = cli_harmless_of(ctx, col, "left_out");
    std::vector<std::string> line = {cli_harmless_of(ctx, col, "name"), my_server_type(ctx, col)};
    if (!left_out.empty()) {
        line.emplace_back("left out");
        line.resize(8);
        line.push_back(left_out + " " + cli_harmless_of(ctx, col, "computed"));
        return line;
    }
    line.emplace_back(cli_flag_of(ctx, col, "nullable") ? "yes" : "no");
    line.emplace_back(cli_flag_of(ctx, col, "required") ? "required" : "");
    line.push_back(my_cut(cli_harmless_of(ctx, col, "default")));
    line.push_back(cli_harmless_of(ctx, col, "storage"));
    line.push_back(my_cut(cli_harmless_of(ctx, col, "example")));
    line.push_back(my_cut(cli_harmless_of(ctx, col, "stored_example")));
    line.push_back(cli_harmless_of(ctx, col, "form"));
    line.push_back(my_keys(ctx, col));
    return line;
}

// The expressions of columns whose values are not shown and stored as they are.
static void my_add_expressions(KT_context *ctx, const KT_vhash *col, lines &text)
{
    if (!cli_harmless_of(ctx, col, "left_out").empty())
        return;
    const std::string name = cli_harmless_of(ctx, col, "name");
    const std::string show = cli_harmless_of(ctx, col, "show");
    const std::string store = cli_harmless_of(ctx, col, "store");
    const std::string of_text = cli_harmless_of(ctx, col, "store_text");
    const bool is_shown_as_it_is = show.size() == name.size() + 2;
    const std::string bind = cli_harmless_of(ctx, col, "bind");
    if (!is_shown_as_it_is)
        text.push_back({name, "show", show});
    if (store != "?1" || !of_text.empty())
        text.push_back({is_shown_as_it_is ? name : "", "store", store + "    -- ?1: " + bind});
    if (!of_text.empty())
        text.push_back({"", "store", of_text + "    -- ?1: the text; SQLite 3.41 or later"});
}

static std::string my_as_text(KT_context *ctx, const KT_vhash *tbl)
{
    const std::string name = cli_harmless_of(ctx, tbl, "table");
    const std::string server_name = cli_harmless_of(ctx, tbl, "server_table");
    lines cols = {
        {"column", "server type", "NULL", "insert", "default", "stored as", "example", "stored", "form", "keys"}};
    lines expressions;
    for (KT_vhash *col : my_maps(ctx, tbl, "columns")) {
        cols.push_back(my_line(ctx, col));
        my_add_expressions(ctx, col, expressions);
    }
    std::string text = name + (server_name == name ? "" : ", on the server " + server_name) + "\n";
    text += cli_lay_out(cols, "  ");
    if (!expressions.empty())
        text += "\n" + cli_lay_out(expressions, "  ");
    return text;
}

static int my_run(const columns_options &options)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_load_schema(ctx, options.schema, &schema);
    const std::string tbl_id = options.table.empty() ? "" : cli_find_table(ctx, schema, options.table);
    kt_owned_vhash guide{ctx};
    tov_client__describe_columns(ctx, schema, tbl_id.empty() ? nullptr : tbl_id.c_str(), guide.out());
    cli_check(ctx, options.schema);
    if (options.is_json) {
        cli_print(cli_json_text(ctx, guide) + "\n");
        return cli_done;
    }
    std::string text;
    for (const KT_vhash *tbl : my_maps(ctx, guide, "tables"))
        text += (text.empty() ? "" : "\n") + my_as_text(ctx, tbl);
    cli_print(text);
    return cli_done;
}

void cli_add_columns(cli_arguments &arguments)
{
    auto options = std::make_shared<columns_options>();
    const cli_command command = arguments.add("columns", "Say how the values of each column are kept");
    command.details("For each column: its type on the server, whether it takes NULL and must be given a value, its "
                    "default and keys,\nits form in the database with an example; and below the expressions that "
                    "show a value as the server does and that\nmake the stored form of a parameter, where it is not "
                    "the value itself. docs/values.md says the same of each type.\n\n"
                    "Example: tov-schema columns schema.json Orders");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.argument("TABLE", options->table, "only this table, by id or name");
    command.flag("--json", options->is_json, "print JSON, with the INSERT for each table");
    command.runs([options] { return my_run(*options); });
}
