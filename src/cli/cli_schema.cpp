#include "cli_schema.hpp"

#include "cli_files.hpp"
#include "cli_json.hpp"
#include "cli_json_lines.hpp"
#include "cli_nearest.hpp"
#include "tov_host.h"

static bool my_has_key(KT_context *ctx, const KT_vhash *map, const char *key)
{
    KT_bool has = 0;
    KT_vhash__has(ctx, map, key, &has);
    return has;
}

// A child as a map of its own: the schema takes over whole documents.
static void my_copy_child(KT_context *ctx, const KT_vhash *map, const char *key, const std::string &path,
                          KT_vhash **copy)
{
    KT_vhash *child = nullptr;
    KT_vhash__get__vhash(ctx, map, key, &child);
    cli_check(ctx, path);
    KT_vhash__alloc__copy(ctx, copy, child);
    cli_check(ctx, path);
}

// What import reads is easily taken for what it writes.
static void my_refuse_source(const std::string &bytes, const std::string &path)
{
    const int32_t kind = tov_host__recognise(bytes.data(), bytes.size());
    if (kind == TOV_HOST_SOURCE_PACKAGE)
        throw cli_failure("this is a package; tov-schema import makes a schema from it", path);
    if (kind == TOV_HOST_SOURCE_SCRIPT)
        throw cli_failure("this is not a schema; tov-schema import makes one from packages, scripts and exports", path);
}

static bool my_is_export(KT_context *ctx, const KT_vhash *file)
{
    return my_has_key(ctx, file, "format") || (my_has_key(ctx, file, "tables") && !my_has_key(ctx, file, "tbls"));
}

static void my_take_schema(KT_context *ctx, cli_map &file, const std::string &path, cli_schema *schema)
{
    kt_owned_vhash document{ctx}, host_internals{ctx};
    if (my_has_key(ctx, file, "schema")) {
        my_copy_child(ctx, file, "schema", path, document.out());
        if (my_has_key(ctx, file, "host_internals"))
            my_copy_child(ctx, file, "host_internals", path, host_internals.out());
    } else {
        *document.out() = std::exchange(file.map, nullptr);
    }
    tov_schema__alloc__vhash(ctx, document.out(), host_internals.out(), &schema->schema);
    cli_check(ctx, path);
    tov_schema__check_shape(ctx, schema->schema);
    cli_check(ctx, path);
}

void cli_load_schema(KT_context *ctx, const std::string &path, cli_schema *schema)
{
    const std::string text = cli_read_file(path);
    my_refuse_source(text, path);
    cli_refuse_nul(text, path);
    cli_map file(ctx, text, path);
    if (my_is_export(ctx, file))
        throw cli_failure("this is a catalogue export; tov-schema import makes a schema from it", path);
    my_take_schema(ctx, file, path, schema);
}

bool cli_take_schema(KT_context *ctx, const std::string &text, const std::string &path, cli_schema *schema)
{
    if (!text.starts_with('{') || text.find('\0') != std::string::npos)
        return false;
    cli_map file(ctx);
    KT_vhash__free(ctx, std::exchange(file.map, nullptr));
    KT_vhash__alloc__from_json__sz(ctx, &file.map, text.c_str());
    // Import takes exports that are not quite JSON, and has the better message for what is none.
    if (KT_context__err_code(ctx) == KT_ERR_BAD_JSON) {
        KT_context__err_reset(ctx);
        return false;
    }
    cli_check(ctx, path);
    if (my_is_export(ctx, file))
        return false;
    my_take_schema(ctx, file, path, schema);
    return true;
}

std::string cli_schema_json(KT_context *ctx, tov_schema *schema, bool is_compact)
{
    KT_string *json = nullptr;
    tov_schema__to_json(ctx, schema, &json);
    const std::string text = cli_take(ctx, json);
    cli_check(ctx, "");
    return (is_compact ? text : cli_json_lines(text)) + "\n";
}

std::string cli_table_name(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    const char *name = nullptr;
    tov_schema__get_tbl_name(ctx, schema, tbl_id.c_str(), &name);
    cli_check(ctx, tbl_id);
    return name ? name : tbl_id;
}

std::string cli_column_name(KT_context *ctx, tov_schema *schema, const std::string &tbl_id, const std::string &col_id)
{
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, tbl_id.c_str(), col_id.c_str(), &name);
    cli_check(ctx, cli_table_name(ctx, schema, tbl_id));
    return name ? name : col_id;
}

std::vector<std::string> cli_table_names(KT_context *ctx, tov_schema *schema)
{
    std::vector<std::string> names;
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id);
        cli_check(ctx, "");
        names.push_back(cli_table_name(ctx, schema, tbl_id));
    }
    return names;
}

static std::string my_unknown_table(KT_context *ctx, tov_schema *schema, const std::string &table)
{
    const std::string nearest = cli_nearest(table, cli_table_names(ctx, schema));
    return "there is no table '" + table + "'" + (nearest.empty() ? "" : "; did you mean '" + nearest + "'?");
}

std::string cli_find_table(KT_context *ctx, tov_schema *schema, const std::string &table)
{
    KT_bool has = 0;
    tov_schema__has_tbl_id(ctx, schema, table.c_str(), &has);
    cli_check(ctx, table);
    if (has)
        return table;
    const char *tbl_id = nullptr;
    tov_schema__find_tbl_by_name(ctx, schema, table.c_str(), &tbl_id);
    cli_check(ctx, table);
    if (tbl_id)
        return tbl_id;

    uint32_t count = 0;
    std::string found;
    tov_schema__count_tbls(ctx, schema, &count);
    for (uint32_t n = 0; n < count; n++) {
        tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id);
        cli_check(ctx, table);
        if (KT_stricmp(cli_table_name(ctx, schema, tbl_id).c_str(), table.c_str()) != 0)
            continue;
        if (!found.empty())
            throw cli_failure("several tables have this name in other letter cases", table);
        found = tbl_id;
    }
    if (found.empty())
        throw cli_failure(my_unknown_table(ctx, schema, table));
    return found;
}
