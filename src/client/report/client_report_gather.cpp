// Gathers a report: the guide to the columns, completed table by table.
#include "report/client_report.hpp"
#include "tov_client.h"

#define KT_HERE "src/client/report/client_report_gather"

static void my_add_facts(KT_context *ctx, const client_report_tbl &tbl)
{
    int64_t history = 0;
    KT_TRY(client_report_copy_text(ctx, tbl.facts, "schema", tbl.record, "schema"));
    KT_TRY(client_report_copy_text(ctx, tbl.facts, "description", tbl.record, "description"));
    if (tbl.facts)
        KT_TRY(KT_vhash__check__int64(ctx, tbl.facts, "temporal_type", &history));
    if (history != 0)
        KT_TRY(KT_vhash__add__int64(ctx, tbl.record, "history", history));
}

static void my_complete_tbl(KT_context *ctx, const client_report_tbl &tbl)
{
    KT_TRY(KT_vhash__remove_if_present(ctx, tbl.record, "insert", nullptr));
    KT_TRY(my_add_facts(ctx, tbl));
    KT_TRY(client_report_complete_cols(ctx, tbl));
    KT_TRY(client_report_add_keys(ctx, tbl));
    KT_TRY(client_report_add_checks(ctx, tbl));
    KT_TRY(client_report_add_indexes(ctx, tbl));
}

// The guide lists the tables in schema order.
static void my_complete_tbls(KT_context *ctx, tov_schema *schema, const KT_vhash *data)
{
    const KT_vhash *document = nullptr;
    KT_vhash *tbls = nullptr;
    uint32_t n = 0;
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    KT_TRY(KT_vhash__check__vhash(ctx, document, "tbls", &tbls));
    for (KT_vhash *record : client_report_maps(ctx, data, "tables")) {
        const char *tbl_id = nullptr;
        KT_vhash *of_document = nullptr;
        KT_vhash *facts = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, tbls, n++, &tbl_id, &of_document));
        KT_TRY(tov_schema__check_tbl_server(ctx, schema, tbl_id, &facts));
        KT_TRY(my_complete_tbl(ctx, {schema, tbl_id, of_document, facts, record}));
    }
}

static void my_add_findings(KT_context *ctx, const KT_varray *findings, KT_vhash *data)
{
    static constexpr const char *members[] = {"code", "severity", "table", "column", "reason", "host_text", "place"};
    KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, findings, &count));
    KT_TRY(KT_vhash__addnew__varray(ctx, data, "findings", &list));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *finding = nullptr;
        KT_vhash *record = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, findings, n, &finding));
        KT_TRY(KT_varray__appendnew__vhash(ctx, list, &record));
        for (const char *member : members)
            KT_TRY(client_report_copy_text(ctx, finding, member, record, member));
    }
}

static void my_add_title(KT_context *ctx, tov_schema *schema, const char *title, KT_vhash *data)
{
    KT_vhash *server = nullptr;
    KT_TRY(tov_schema__check_server(ctx, schema, &server));
    const std::string database = client_report_text(ctx, server, "database");
    const std::string otherwise = database.empty() ? "Schema" : database;
    KT_TRY(KT_vhash__add__string__sz(ctx, data, "title", title && *title ? title : otherwise.c_str()));
    KT_TRY(client_report_copy_text(ctx, server, "collation", data, "collation"));
}

void client_report_gather(KT_context *ctx, tov_schema *schema, const tov_client_report_options *options,
                          KT_vhash **data)
{
    static constexpr tov_client_report_options none{};
    const tov_client_report_options &chosen = options ? *options : none;
    kt_owned_vhash map{ctx};
    KT_TRY(tov_client__describe_columns(ctx, schema, nullptr, map.out()));
    KT_TRY(my_add_title(ctx, schema, chosen.title, map));
    KT_TRY(my_complete_tbls(ctx, schema, map));
    if (chosen.database)
        KT_TRY(client_report_add_rows(ctx, schema, chosen.database, map));
    if (chosen.findings)
        KT_TRY(my_add_findings(ctx, chosen.findings, map));
    if (chosen.changes)
        KT_TRY(KT_vhash__addcopy__vhash(ctx, map, "changes", chosen.changes));
    map.move_to(data);
}
