#include "cli_references.hpp"

#include "cli_json.hpp"
#include "cli_schema.hpp"

static KT_varray *my_list_in(KT_context *ctx, const KT_vhash *record, const char *key)
{
    KT_varray *list = nullptr;
    KT_vhash__get__varray(ctx, record, key, &list);
    cli_check(ctx, key);
    return list;
}

static std::vector<std::string> my_column_names(KT_context *ctx, tov_schema *schema, const std::string &tbl_id,
                                                const KT_varray *col_ids)
{
    std::vector<std::string> names;
    for (const std::string &col_id : cli_texts_of(ctx, col_ids))
        names.push_back(cli_column_name(ctx, schema, tbl_id, col_id));
    return names;
}

std::vector<std::string> cli_table_ids(KT_context *ctx, tov_schema *schema)
{
    std::vector<std::string> ids;
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    cli_check(ctx, "");
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        tov_schema__get_nth_tbl_id(ctx, schema, n, &id);
        cli_check(ctx, "");
        ids.emplace_back(id);
    }
    return ids;
}

std::vector<cli_reference> cli_references_of(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    kt_owned_varray keys{ctx};
    tov_schema__list_keys(ctx, schema, tbl_id.c_str(), TOV_KEYS_FOREIGN, keys.out());
    cli_check(ctx, tbl_id);
    std::vector<cli_reference> references;
    for (const KT_vhash *key : cli_maps_of(ctx, keys)) {
        cli_reference reference;
        reference.name = cli_text_of(ctx, key, "name");
        reference.from_table = tbl_id;
        reference.to_table = cli_text_of(ctx, key, "ref-tbl");
        reference.from_columns = my_column_names(ctx, schema, tbl_id, my_list_in(ctx, key, "cols"));
        reference.to_columns = my_column_names(ctx, schema, reference.to_table, my_list_in(ctx, key, "ref-cols"));
        reference.on_delete = cli_text_of(ctx, key, "on-delete");
        reference.on_update = cli_text_of(ctx, key, "on-update");
        references.push_back(std::move(reference));
    }
    return references;
}

std::vector<std::vector<std::string>> cli_table_cycles(KT_context *ctx, tov_schema *schema)
{
    kt_owned_varray cycles{ctx};
    tov_schema__find_reference_cycles(ctx, schema, cycles.out(), nullptr);
    cli_check(ctx, "");
    std::vector<std::vector<std::string>> result;
    for (const KT_vhash *cycle : cli_maps_of(ctx, cycles))
        result.push_back(cli_texts_of(ctx, my_list_in(ctx, cycle, "tbls")));
    return result;
}

std::vector<std::vector<std::string>> cli_column_cycles(KT_context *ctx, tov_schema *schema)
{
    kt_owned_varray cycles{ctx};
    tov_schema__find_reference_cycles(ctx, schema, nullptr, cycles.out());
    cli_check(ctx, "");
    std::vector<std::vector<std::string>> result;
    for (const KT_vhash *cycle : cli_maps_of(ctx, cycles)) {
        result.emplace_back();
        for (const KT_vhash *col : cli_maps_of(ctx, my_list_in(ctx, cycle, "cols"))) {
            const std::string tbl_id = cli_text_of(ctx, col, "tbl");
            result.back().push_back(cli_table_name(ctx, schema, tbl_id) + "." +
                                    cli_column_name(ctx, schema, tbl_id, cli_text_of(ctx, col, "col")));
        }
    }
    return result;
}
