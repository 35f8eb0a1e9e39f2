// Keys and references of a table, columns and tables by name.
#include "report/client_report.hpp"

#include <string_view>

#define KT_HERE "src/client/report/client_report_keys"

static void my_read_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                             std::string &name)
{
    const char *found = nullptr;
    KT_bool has = 0;
    name = col_id;
    KT_TRY(tov_schema__has_tbl_id(ctx, schema, tbl_id, &has));
    if (has)
        KT_TRY(tov_schema__has_col_id(ctx, schema, tbl_id, col_id, &has));
    if (has)
        KT_TRY(tov_schema__get_col_name(ctx, schema, tbl_id, col_id, &found));
    name = found ? found : col_id;
}

std::string client_report_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id)
{
    std::string name;
    if (!kt_has_err(ctx))
        my_read_col_name(ctx, schema, tbl_id, col_id, name);
    return name;
}

static void my_add_col_names(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                             const std::vector<std::string> &col_ids, const char *as, KT_vhash *record)
{
    KT_varray *names = nullptr;
    KT_TRY(KT_vhash__addnew__varray(ctx, record, as, &names));
    for (const std::string &col_id : col_ids) {
        const std::string name = client_report_col_name(ctx, schema, tbl_id, col_id.c_str());
        KT_TRY(KT_varray__append__string__sz(ctx, names, name.c_str()));
    }
}

// A reference to a table that the schema lacks says its id.
static void my_add_reference(KT_context *ctx, const client_report_tbl &tbl, const KT_vhash *key, KT_vhash *record)
{
    const std::string ref_tbl_id = client_report_text(ctx, key, "ref-tbl");
    const char *name = nullptr;
    KT_bool has = 0;
    KT_TRY(tov_schema__has_tbl_id(ctx, tbl.schema, ref_tbl_id.c_str(), &has));
    if (has)
        KT_TRY(tov_schema__get_tbl_name(ctx, tbl.schema, ref_tbl_id.c_str(), &name));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "table", name ? name : ref_tbl_id.c_str()));
    KT_TRY(
        my_add_col_names(ctx, tbl.schema, ref_tbl_id.c_str(), client_report_texts(ctx, key, "ref-cols"), "to", record));
    KT_TRY(client_report_copy_text(ctx, key, "on-delete", record, "on_delete"));
    KT_TRY(client_report_copy_text(ctx, key, "on-update", record, "on_update"));
}

static void my_add_key(KT_context *ctx, const client_report_tbl &tbl, const KT_vhash *key)
{
    const std::string kind = client_report_text(ctx, key, "kind");
    const bool is_reference = kind == "foreign";
    KT_varray *list = nullptr;
    KT_vhash *record = nullptr;
    KT_TRY(KT_vhash__ensure__varray(ctx, tbl.record, is_reference ? "references" : "keys", &list));
    KT_TRY(KT_varray__appendnew__vhash(ctx, list, &record));
    KT_TRY(client_report_copy_text(ctx, key, "name", record, "name"));
    KT_TRY(my_add_col_names(ctx, tbl.schema, tbl.id, client_report_texts(ctx, key, "cols"), "columns", record));
    if (is_reference)
        KT_TRY(my_add_reference(ctx, tbl, key, record));
    else
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "kind", kind.c_str()));
}

void client_report_add_keys(KT_context *ctx, const client_report_tbl &tbl)
{
    kt_owned_varray keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_keys(ctx, tbl.schema, tbl.id, TOV_KEYS_PRIMARY | TOV_KEYS_UNIQUE | TOV_KEYS_FOREIGN,
                                 keys.out()));
    if (keys)
        KT_TRY(KT_varray__count(ctx, keys, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *key = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, keys, n, &key));
        KT_TRY(my_add_key(ctx, tbl, key));
    }
}
