// References that lead to no row. The keys referred to are collected once for each reference, unless an index of theirs
// serves; a row with NULL in its columns refers to nothing.
#include "verify/client_verify_keys.hpp"

#define KT_HERE "src/client/verify/client_verify_references"

namespace {

struct asked_reference {
    std::vector<const client_verify_col *> cols;
    std::vector<const client_verify_col *> parent_cols;
};

} // namespace

// A key that names no columns refers to the primary key.
static void my_read_parent_ids(KT_context *ctx, const client_verify &run, const KT_vhash *key, const char *parent_id,
                               std::vector<std::string> &ids)
{
    kt_owned_varray keys{ctx};
    KT_vhash *pk = nullptr;
    KT_TRY(client_read_ids(ctx, key, "ref-cols", ids));
    if (!ids.empty())
        return;
    KT_TRY(tov_schema__list_keys(ctx, run.schema, parent_id, TOV_KEYS_PRIMARY, keys.out()));
    if (!keys)
        return;
    KT_TRY(KT_varray__get__vhash(ctx, keys, 0, &pk));
    KT_TRY(client_read_ids(ctx, pk, "cols", ids));
}

static std::string my_statement(const client_verify &run, const client_verify_tbl &tbl, const client_verify_tbl &parent,
                                const asked_reference &reference)
{
    std::string results = client_row_results(tbl);
    std::string where;
    std::string key;
    std::string parent_key;
    for (size_t n = 0; n < reference.cols.size(); n++) {
        const client_verify_col &col = *reference.cols[n];
        const client_verify_col &parent_col = *reference.parent_cols[n];
        results += "," + client_short_value(col.raw);
        where += col.raw + " IS NOT NULL AND ";
        // The columns referred to decide, and their names stand alone in their subquery.
        key += (n ? "," : "") + client_key_value(run, parent_col, col.raw);
        parent_key += (n ? "," : "") + client_key_value(run, parent_col, client_quoted(parent_col.row_col->name));
    }
    return "SELECT " + results + " FROM " + tbl.source + " WHERE " + where + "((" + key + ") IN (SELECT " + parent_key +
           " FROM " + client_quoted(parent.tbl.name) + ")) IS NOT TRUE";
}

static void my_look(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, const client_verify_tbl &parent,
                    const asked_reference &reference)
{
    kt_owned_statement statement{run.database.functions};
    bool ok = false;
    bool has = false;
    KT_TRY(client_verify__prepare(ctx, run, tbl, my_statement(run, tbl, parent, reference), statement, ok));
    if (ok)
        KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
    while (has) {
        const size_t count = reference.cols.size();
        const std::string value = client_joined_results(run, statement, client_count_row_results(tbl), count);
        const std::string message =
            "no row of \"" + parent.tbl.name + "\" has this key (" + client_joined_names(reference.parent_cols) + ")";
        KT_TRY(client_verify__report_row(
            ctx, run, tbl, statement,
            {client_violation_code("no-such-row").kind, message, client_joined_names(reference.cols), value}));
        KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
    }
}

static void my_look_at_key(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, const KT_vhash *key)
{
    const char *parent_id = nullptr;
    std::vector<std::string> ids;
    std::vector<std::string> parent_ids;
    client_verify_tbl parent;
    asked_reference reference;
    KT_TRY(KT_vhash__get__sz(ctx, key, "ref-tbl", &parent_id));
    KT_TRY(client_read_ids(ctx, key, "cols", ids));
    KT_TRY(my_read_parent_ids(ctx, run, key, parent_id, parent_ids));
    KT_TRY(client_verify__read_tbl(ctx, run, parent_id, parent));
    const bool are_there = client_find_key_cols(tbl, ids, reference.cols) &&
                           client_find_key_cols(parent, parent_ids, reference.parent_cols);
    if (are_there && ids.size() == parent_ids.size()) {
        KT_TRY(my_look(ctx, run, tbl, parent, reference));
        return;
    }
    const std::string message = "the reference to \"" + parent.tbl.name + "\": a column or the table is missing";
    KT_TRY(client_verify__report_tbl(ctx, run, tbl.tbl.name.c_str(),
                                     {client_violation_code("not-checked").kind, message, "", ""}));
}

void client_verify__references(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    kt_owned_varray keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_keys(ctx, run.schema, tbl.tbl.id.c_str(), TOV_KEYS_FOREIGN, keys.out()));
    if (keys)
        KT_TRY(KT_varray__count(ctx, keys, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *key = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, keys, n, &key));
        KT_TRY(my_look_at_key(ctx, run, tbl, key));
    }
}
