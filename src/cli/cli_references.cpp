#include "cli_references.hpp"

#include "cli_json.hpp"
#include "cli_schema.hpp"

namespace {

std::string text_or_empty(const char *text)
{
    return text ? text : "";
}

bool is_action(const char *action)
{
    return action && KT_stricmp(action, "NO ACTION") != 0;
}

std::string column_name(KT_context *ctx, tov_schema *schema, const std::string &tbl_id, const std::string &col_id)
{
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, tbl_id.c_str(), col_id.c_str(), &name);
    cli_check(ctx, cli_table_name(ctx, schema, tbl_id));
    return name ? name : col_id;
}

void add_column_reference(KT_context *ctx, tov_schema *schema, const std::string &tbl_id, const char *col_id,
                          std::vector<cli_reference> *references)
{
    KT_bool has = 0;
    const char *name = nullptr, *ref_tbl_id = nullptr, *ref_col_id = nullptr, *on_delete = nullptr,
               *on_update = nullptr;
    tov_schema__get_colcon_fk(ctx, schema, tbl_id.c_str(), col_id, &has, &name, &ref_tbl_id, &ref_col_id, &on_delete,
                              &on_update);
    cli_check(ctx, tbl_id);
    if (!has)
        return;
    cli_reference reference;
    reference.name = text_or_empty(name);
    reference.from_table = tbl_id;
    reference.to_table = text_or_empty(ref_tbl_id);
    reference.from_columns = {column_name(ctx, schema, tbl_id, col_id)};
    if (ref_col_id)
        reference.to_columns = {column_name(ctx, schema, reference.to_table, ref_col_id)};
    reference.on_delete = is_action(on_delete) ? on_delete : "";
    reference.on_update = is_action(on_update) ? on_update : "";
    references->push_back(std::move(reference));
}

// Name and actions of a key of a table are optional in the document, and the operations that read them one by one
// fail without them; so each is asked for on its own level.
template <class Read> std::string optional_text(KT_context *ctx, Read read)
{
    const char *text = nullptr;
    KT_context__push_level(ctx);
    read(&text);
    std::string result = KT_context__has_err(ctx) ? "" : text_or_empty(text);
    KT_context__pop_level(ctx);
    return result;
}

void add_table_reference(KT_context *ctx, tov_schema *schema, const std::string &tbl_id, uint32_t n,
                         std::vector<cli_reference> *references)
{
    const char *fk_id = nullptr, *ref_tbl_id = nullptr;
    uint32_t count = 0;
    tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id.c_str(), n, &fk_id);
    cli_check(ctx, tbl_id);
    tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id.c_str(), fk_id, &ref_tbl_id);
    cli_check(ctx, tbl_id);
    tov_schema__count_foreignkey_cols(ctx, schema, tbl_id.c_str(), fk_id, &count);
    cli_check(ctx, tbl_id);

    cli_reference reference;
    reference.id = fk_id;
    reference.from_table = tbl_id;
    reference.to_table = ref_tbl_id;
    reference.name = optional_text(
        ctx, [&](const char **text) { tov_schema__get_foreignkey_name(ctx, schema, tbl_id.c_str(), fk_id, text); });
    reference.on_delete = optional_text(ctx, [&](const char **text) {
        tov_schema__get_foreignkey_delete_action(ctx, schema, tbl_id.c_str(), fk_id, text);
    });
    if (!is_action(reference.on_delete.c_str()))
        reference.on_delete.clear();
    for (uint32_t i = 0; i < count; i++) {
        const char *col_id = nullptr, *ref_col_id = nullptr;
        tov_schema__get_nth_foreignkey_col_ids(ctx, schema, tbl_id.c_str(), fk_id, i, &col_id, &ref_col_id);
        cli_check(ctx, tbl_id);
        reference.from_columns.push_back(column_name(ctx, schema, tbl_id, col_id));
        reference.to_columns.push_back(column_name(ctx, schema, reference.to_table, ref_col_id));
    }
    references->push_back(std::move(reference));
}

struct owned_list {
    explicit owned_list(KT_context *context) : ctx(context)
    {
    }
    ~owned_list()
    {
        KT_varray__free(ctx, list);
    }
    owned_list(const owned_list &) = delete;
    owned_list &operator=(const owned_list &) = delete;

    uint32_t count() const
    {
        uint32_t n = 0;
        if (list)
            KT_varray__count(ctx, list, &n);
        return n;
    }
    KT_varray *members(uint32_t n, const char *key) const
    {
        KT_vhash *record = nullptr;
        KT_varray *members = nullptr;
        KT_varray__get__vhash(ctx, list, n, &record);
        cli_check(ctx, key);
        KT_vhash__get__varray(ctx, record, key, &members);
        cli_check(ctx, key);
        return members;
    }

    KT_context *ctx;
    KT_varray *list = nullptr;
};

} // namespace

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
    std::vector<cli_reference> references;
    uint32_t count = 0;
    tov_schema__count_cols(ctx, schema, tbl_id.c_str(), &count);
    cli_check(ctx, tbl_id);
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        tov_schema__get_nth_col_id(ctx, schema, tbl_id.c_str(), n, &col_id);
        cli_check(ctx, tbl_id);
        add_column_reference(ctx, schema, tbl_id, col_id, &references);
    }
    tov_schema__count_foreignkeys(ctx, schema, tbl_id.c_str(), &count);
    cli_check(ctx, tbl_id);
    for (uint32_t n = 0; n < count; n++)
        add_table_reference(ctx, schema, tbl_id, n, &references);
    return references;
}

// One copy of the document serves all keys.
void cli_add_update_actions(KT_context *ctx, tov_schema *schema, std::vector<cli_reference> *references)
{
    cli_map copy(ctx);
    tov_schema__copy_into_vhash(ctx, schema, copy, 0);
    cli_check(ctx, "");
    const auto member = [ctx](const KT_vhash *map, const std::string &key) {
        KT_vhash *value = nullptr;
        KT_vhash__get__vhash(ctx, map, key.c_str(), &value);
        cli_check(ctx, key);
        return value;
    };
    const KT_vhash *document = member(copy, "schema");
    for (cli_reference &reference : *references) {
        if (reference.id.empty())
            continue;
        const KT_vhash *tbl = member(member(document, "tbls"), reference.from_table);
        const char *on_update = nullptr;
        KT_vhash__check__sz(ctx, member(member(tbl, "foreignkeys"), reference.id), "on_update", &on_update);
        cli_check(ctx, reference.id);
        reference.on_update = is_action(on_update) ? on_update : "";
    }
}

std::vector<std::vector<std::string>> cli_table_cycles(KT_context *ctx, tov_schema *schema)
{
    owned_list cycles(ctx);
    tov_schema__find_reference_cycles(ctx, schema, &cycles.list, nullptr);
    cli_check(ctx, "");
    std::vector<std::vector<std::string>> result;
    for (uint32_t n = 0; n < cycles.count(); n++) {
        KT_varray *members = cycles.members(n, "tbls");
        uint32_t count = 0;
        KT_varray__count(ctx, members, &count);
        result.emplace_back();
        for (uint32_t i = 0; i < count; i++) {
            const char *tbl_id = nullptr;
            KT_varray__get__sz(ctx, members, i, &tbl_id);
            cli_check(ctx, "");
            result.back().emplace_back(tbl_id);
        }
    }
    return result;
}

std::vector<std::vector<std::string>> cli_column_cycles(KT_context *ctx, tov_schema *schema)
{
    owned_list cycles(ctx);
    tov_schema__find_reference_cycles(ctx, schema, nullptr, &cycles.list);
    cli_check(ctx, "");
    std::vector<std::vector<std::string>> result;
    for (uint32_t n = 0; n < cycles.count(); n++) {
        KT_varray *members = cycles.members(n, "cols");
        uint32_t count = 0;
        KT_varray__count(ctx, members, &count);
        result.emplace_back();
        for (uint32_t i = 0; i < count; i++) {
            KT_vhash *place = nullptr;
            const char *tbl_id = nullptr, *col_id = nullptr;
            KT_varray__get__vhash(ctx, members, i, &place);
            cli_check(ctx, "");
            KT_vhash__get__sz(ctx, place, "tbl", &tbl_id);
            cli_check(ctx, "");
            KT_vhash__get__sz(ctx, place, "col", &col_id);
            cli_check(ctx, "");
            result.back().push_back(cli_table_name(ctx, schema, tbl_id) + "." +
                                    column_name(ctx, schema, tbl_id, col_id));
        }
    }
    return result;
}
