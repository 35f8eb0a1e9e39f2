// tov-schema tables: what is in a schema, in creation order.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_layout.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "tov_client.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

struct tables_options {
    std::string schema;
    bool is_json = false;
};

struct table_facts {
    std::string id;
    std::string name;
    uint32_t columns = 0;
    uint32_t key_columns = 0;
    uint32_t uniques = 0;
    uint32_t foreign_keys = 0; // of both kinds
    uint32_t checks = 0;       // of both kinds
};

} // namespace

// Foreign keys and checks that columns carry.
static void my_count_in_columns(KT_context *ctx, tov_schema *schema, table_facts *facts)
{
    for (uint32_t n = 0; n < facts->columns; n++) {
        const char *col_id = nullptr;
        tov_schema__get_nth_col_id(ctx, schema, facts->id.c_str(), n, &col_id);
        cli_check(ctx, facts->name);
        KT_bool has_reference = 0;
        uint32_t checks = 0;
        tov_schema__get_colcon_fk(ctx, schema, facts->id.c_str(), col_id, &has_reference, nullptr, nullptr, nullptr,
                                  nullptr, nullptr);
        cli_check(ctx, facts->name);
        tov_schema__count_colcon_checks(ctx, schema, facts->id.c_str(), col_id, &checks);
        cli_check(ctx, facts->name);
        facts->foreign_keys += has_reference != 0;
        facts->checks += checks;
    }
}

static table_facts my_facts_of(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    table_facts facts;
    facts.id = tbl_id;
    facts.name = cli_table_name(ctx, schema, tbl_id);
    using count = void (*)(KT_context *, tov_schema *, const char *, uint32_t *) noexcept;
    const std::pair<count, uint32_t *> counts[] = {
        {tov_schema__count_cols, &facts.columns},
        {tov_schema__count_pk_cols, &facts.key_columns},
        {tov_schema__count_uniques, &facts.uniques},
        {tov_schema__count_checks, &facts.checks},
        {tov_schema__count_foreignkeys, &facts.foreign_keys},
    };
    for (const auto &[operation, result] : counts) {
        operation(ctx, schema, tbl_id.c_str(), result);
        cli_check(ctx, facts.name);
    }
    my_count_in_columns(ctx, schema, &facts);
    return facts;
}

static std::string my_as_text(const std::vector<table_facts> &tables)
{
    size_t width = 5;
    std::vector<std::string> names;
    for (const table_facts &t : tables) {
        names.push_back(cli_harmless(t.name));
        width = std::max(width, cli_width(names.back()));
    }
    const auto line = [&](const std::string &name, const char *rest) {
        return name + std::string(width - cli_width(name), ' ') + rest + "\n";
    };
    std::string text = line("table", "  columns  key  uniques  foreign keys  checks");
    for (size_t n = 0; n < tables.size(); n++) {
        const table_facts &t = tables[n];
        char rest[80]; // five numbers of at most ten digits each
        static_cast<void>(std::snprintf(rest, sizeof rest, "  %7u  %3u  %7u  %12u  %6u", t.columns, t.key_columns,
                                        t.uniques, t.foreign_keys, t.checks));
        text += line(names[n], rest);
    }
    return text;
}

static std::string my_as_json(KT_context *ctx, const std::vector<table_facts> &tables,
                              const std::vector<std::string> &remarks)
{
    cli_map result(ctx);
    KT_varray *list = cli_add_list(ctx, result, "tables");
    for (const table_facts &t : tables) {
        KT_vhash *entry = cli_append_map(ctx, list);
        cli_add_text(ctx, entry, "id", t.id.c_str());
        cli_add_text(ctx, entry, "name", t.name.c_str());
        cli_add_number(ctx, entry, "columns", t.columns);
        cli_add_number(ctx, entry, "key_columns", t.key_columns);
        cli_add_number(ctx, entry, "uniques", t.uniques);
        cli_add_number(ctx, entry, "foreign_keys", t.foreign_keys);
        cli_add_number(ctx, entry, "checks", t.checks);
    }
    cli_add_texts(ctx, result, "remarks", remarks);
    return cli_json_text(ctx, result) + "\n";
}

static int my_run(const tables_options &options)
{
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    cli_load_schema(ctx, options.schema, &schema);
    KT_varray *tbl_ids = nullptr, *remark_list = nullptr;
    tov_client__creation_order(ctx, schema, &tbl_ids, &remark_list);
    cli_check(ctx, options.schema);
    const std::vector<std::string> ids = cli_take_texts(ctx, tbl_ids), remarks = cli_take_texts(ctx, remark_list);

    std::vector<table_facts> tables;
    tables.reserve(ids.size());
    for (const std::string &id : ids)
        tables.push_back(my_facts_of(ctx, schema, id));
    if (options.is_json) {
        cli_print(my_as_json(ctx, tables, remarks));
        return cli_done;
    }
    for (const std::string &remark : remarks)
        cli_tell_line("tov-schema: note: " + remark);
    cli_print(my_as_text(tables));
    return cli_done;
}

void cli_add_tables(cli_arguments &arguments)
{
    auto options = std::make_shared<tables_options>();
    const cli_command command = arguments.add("tables", "List the tables of a schema in creation order");
    command.details("Example: tov-schema tables schema.json");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.flag("--json", options->is_json, "print JSON");
    command.runs([options] { return my_run(*options); });
}
