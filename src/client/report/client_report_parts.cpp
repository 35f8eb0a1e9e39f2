// Checks and indexes of a table.
#include "report/client_report.hpp"

#define KT_HERE "src/client/report/client_report_parts"

static void my_append(KT_context *ctx, const client_report_tbl &tbl, const char *key, KT_vhash **record)
{
    KT_varray *list = nullptr;
    KT_TRY(KT_vhash__ensure__varray(ctx, tbl.record, key, &list));
    KT_TRY(KT_varray__appendnew__vhash(ctx, list, record));
}

static void my_add_check(KT_context *ctx, const client_report_tbl &tbl, const KT_vhash *check, const std::string &col)
{
    KT_vhash *record = nullptr;
    KT_TRY(my_append(ctx, tbl, "checks", &record));
    KT_TRY(client_report_copy_text(ctx, check, "expr", record, "expression"));
    KT_TRY(client_report_copy_text(ctx, check, "name", record, "name"));
    if (!col.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "column", col.c_str()));
}

static void my_add_col_checks(KT_context *ctx, const client_report_tbl &tbl)
{
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__vhash(ctx, tbl.document, "cols", &cols));
    if (cols)
        KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *col = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, cols, n, nullptr, &col));
        for (const KT_vhash *check : client_report_maps(ctx, col, "check"))
            KT_TRY(my_add_check(ctx, tbl, check, client_report_text(ctx, col, "name")));
    }
}

void client_report_add_checks(KT_context *ctx, const client_report_tbl &tbl)
{
    KT_vhash *checks = nullptr;
    uint32_t count = 0;
    KT_TRY(my_add_col_checks(ctx, tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl.document, "check", &checks));
    if (checks)
        KT_TRY(KT_vhash__count(ctx, checks, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *check = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, checks, n, nullptr, &check));
        KT_TRY(my_add_check(ctx, tbl, check, ""));
    }
}

static bool my_has_flag(KT_context *ctx, const KT_vhash *index, const char *key)
{
    KT_bool is_set = 0;
    if (!kt_has_err(ctx))
        KT_vhash__check__bool(ctx, index, key, &is_set);
    return is_set != 0;
}

// unique, clustered, XML
static std::string my_kind_of(KT_context *ctx, const KT_vhash *index)
{
    std::string kind;
    for (const char *flag : {"unique", "clustered", "disabled"}) {
        if (my_has_flag(ctx, index, flag))
            kind += (kind.empty() ? "" : ", ") + std::string(flag);
    }
    const std::string other = client_report_text(ctx, index, "kind");
    return kind + (kind.empty() || other.empty() ? "" : ", ") + other;
}

static void my_add_index_cols(KT_context *ctx, const client_report_tbl &tbl, const KT_vhash *index, const char *key,
                              const char *as, KT_vhash *record)
{
    KT_varray *directions = nullptr;
    KT_varray *names = nullptr;
    uint32_t direction_count = 0;
    const std::vector<std::string> col_ids = client_report_texts(ctx, index, key);
    KT_RETURN_IF_FAILED;
    if (col_ids.empty())
        return;
    KT_TRY(KT_vhash__check__varray(ctx, index, "descending", &directions));
    if (directions && std::string(key) == "cols")
        KT_TRY(KT_varray__count(ctx, directions, &direction_count));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, as, &names));
    for (uint32_t n = 0; n < col_ids.size(); n++) {
        std::string name = client_report_col_name(ctx, tbl.schema, tbl.id, col_ids[n].c_str());
        const KT_variant *is_descending = nullptr;
        if (n < direction_count)
            KT_TRY(KT_varray__get_nth(ctx, directions, n, &is_descending));
        if (is_descending && is_descending->type == KT_VARIANT_BOOL && is_descending->as.boolean)
            name += " DESC";
        KT_TRY(KT_varray__append__string__sz(ctx, names, name.c_str()));
    }
}

static void my_add_index(KT_context *ctx, const client_report_tbl &tbl, const KT_vhash *index)
{
    KT_vhash *record = nullptr;
    const std::string kind = my_kind_of(ctx, index);
    KT_TRY(my_append(ctx, tbl, "indexes", &record));
    KT_TRY(client_report_copy_text(ctx, index, "name", record, "name"));
    if (!kind.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, record, "kind", kind.c_str()));
    KT_TRY(my_add_index_cols(ctx, tbl, index, "cols", "columns", record));
    KT_TRY(my_add_index_cols(ctx, tbl, index, "included", "included", record));
    KT_TRY(client_report_copy_text(ctx, index, "filter", record, "filter"));
    if (my_has_flag(ctx, index, "left_out"))
        KT_TRY(KT_vhash__add__bool(ctx, record, "left_out", 1));
}

void client_report_add_indexes(KT_context *ctx, const client_report_tbl &tbl)
{
    for (const KT_vhash *index : client_report_maps(ctx, tbl.facts, "indexes"))
        KT_TRY(my_add_index(ctx, tbl, index));
}
