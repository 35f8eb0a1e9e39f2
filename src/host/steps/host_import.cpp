// From a source to a schema: reads it, decides, and describes table after table.
//
// Deciding comes first, because what a column becomes depends on its table's keys. Then all tables get their columns,
// then their keys, then the references between them, which need both ends, then the checks, which SQLite compiles
// against complete tables. What is said of comparisons depends on which of these were kept.
#include "steps/host_import.hpp"

#include "defaults/host_constant.hpp"
#include "steps/host_source.hpp"

#define KT_HERE "src/host/steps/host_import"

static constexpr uint32_t compat_level = 1;

// A schema under construction, freed when the import fails.
static void my_free_schema(KT_context *ctx, tov_schema *schema) noexcept
{
    tov_schema__nullfree(ctx, &schema);
}
using host_owned_schema = kt_owned<tov_schema, my_free_schema>;

static void my_new_schema(KT_context *ctx, host_owned_schema &schema)
{
    KT_TRY(tov_schema__new(ctx, compat_level, schema.out()));
    KT_TRY(tov_schema__set_backend_info__name(ctx, schema, "SQL Server"));
    KT_TRY(tov_schema__set_backend_info__api(ctx, schema, "catalogue export"));
    KT_TRY(tov_schema__set_backend_info__indistinct_unique_nulls(ctx, schema, 1));
}

static void my_add_column(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    const char *tbl_id = table.id_text.c_str();
    const char *col_id = col.id_text;
    KT_TRY(tov_schema__add_col(ctx, import.schema, tbl_id, col_id, col.sqlite_name, col.prepared, 0, 0));
    if (col.rowid_key)
        KT_TRY(tov_schema__set_col_type_identity(ctx, import.schema, tbl_id, col_id, col.rowid_key->name));
    else
        KT_TRY(host_add_type(ctx, import, table, col));
    KT_TRY(tov_schema__set_mssql_col_type_name(ctx, import.schema, tbl_id, col_id,
                                               col.user_type ? col.user_type : host_type_name(col)));
    if (!col.is_nullable)
        KT_TRY(tov_schema__set_colcon_notnull(ctx, import.schema, tbl_id, col_id, 1, nullptr));
    KT_TRY(host_add_default(ctx, import, table, col));
    if (col.prepared && col.rule)
        KT_TRY(import.findings.add(ctx, "rule-left-out", &table, &col, col.rule,
                                   "left out: rules bound to a column are not carried over"));
}

// Without a column SQLite creates no table, so nothing of such a one is carried over.
static bool my_has_columns(const host_table &table)
{
    for (const host_column &col : table.cols) {
        if (col.prepared)
            return true;
    }
    return false;
}

static void my_add_table(KT_context *ctx, host_import &import, const host_table &table, int64_t txid)
{
    KT_TRY(tov_schema__add_tbl(ctx, import.schema, table.id_text.c_str(), table.sqlite_name.c_str(), txid));
    for (const host_column &col : table.cols)
        KT_TRY(my_add_column(ctx, import, table, col));
    KT_TRY(host_add_table_facts(ctx, import, table));
}

static void my_decide(KT_context *ctx, host_import &import, host_table &table)
{
    KT_TRY(host_classify_columns(ctx, import, table));
    KT_TRY(host_choose_rowid(ctx, import, table));
    table.is_left_out = !my_has_columns(table);
    if (table.is_left_out)
        KT_TRY(import.findings.add(ctx, "table-without-columns", &table, nullptr, nullptr,
                                   "left out: none of its columns can be carried over"));
}

static void my_build(KT_context *ctx, host_import &import, int64_t txid)
{
    std::vector<host_table *> tables;
    KT_TRY(host_report_left_objects(ctx, import));
    KT_TRY(host_check_special_tables(ctx, import));
    KT_TRY(host_check_names(ctx, import));
    for (host_table &table : import.catalogue.tables) {
        if (!table.is_left_out)
            KT_TRY(my_decide(ctx, import, table));
        if (!table.is_left_out)
            tables.push_back(&table);
    }
    for (const host_table *table : tables)
        KT_TRY(my_add_table(ctx, import, *table, txid));
    for (host_table *table : tables)
        KT_TRY(host_add_keys(ctx, import, *table));
    for (const host_table *table : tables)
        KT_TRY(host_add_indexes(ctx, import, *table));
    for (host_table *table : tables)
        KT_TRY(host_add_foreignkeys(ctx, import, *table));
    for (host_table *table : tables)
        KT_TRY(host_add_checks(ctx, import, *table));
    for (const host_table *table : tables)
        KT_TRY(host_report_comparisons(ctx, import, *table));
    KT_TRY(host_report_cycles(ctx, import));
}

static void my_report_source(KT_context *ctx, host_findings &findings, const host_catalogue &catalogue)
{
    if (catalogue.visibility == host_visibility::partial)
        KT_TRY(findings.add(ctx, "definitions-hidden", nullptr, nullptr, nullptr,
                            "the login that made the export may not see definitions: tables, defaults and checks may "
                            "be missing from it"));
    if (catalogue.visibility == host_visibility::unknown)
        KT_TRY(findings.add(ctx, "definitions-unknown", nullptr, nullptr, nullptr,
                            "the export does not say whether its login may see definitions: if not, tables, defaults "
                            "and checks are missing from it"));
    if (catalogue.tables.empty())
        KT_TRY(findings.add(ctx, "no-tables", nullptr, nullptr, nullptr, "the source holds no tables"));
}

static void my_check_constants(KT_context *ctx, const tov_host_list &constants)
{
    for (size_t n = 0; n < constants.count; n++) {
        const std::string_view item = constants.items[n];
        const size_t equals = item.find('=');
        if (equals == std::string_view::npos || !host_is_session_name(item.substr(0, equals)))
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s' is not of the form NAME=VALUE with a function such as db_name",
                    constants.items[n]);
    }
}

static void my_import(KT_context *ctx, std::span<const tov_host_file> files, const tov_host_options &options,
                      tov_schema **result, KT_varray **result_findings)
{
    KT_TRY(my_check_constants(ctx, options.constants));
    host_findings findings{ctx};
    host_source source{ctx};
    KT_TRY(host_read_source(ctx, files, options, findings, source));
    KT_TRY(my_report_source(ctx, findings, source.catalogue));
    host_order_catalogue(source.catalogue);
    KT_TRY(host_select_tables(ctx, options, findings, source.catalogue));
    KT_TRY(host_override_types(ctx, options.types, findings, source.catalogue));
    KT_TRY(host_link_catalogue(ctx, source.catalogue));
    host_owned_schema schema{ctx};
    KT_TRY(my_new_schema(ctx, schema));
    host_import import{schema, source.catalogue, findings, options};
    KT_TRY(host_add_database_facts(ctx, import));
    KT_TRY(my_build(ctx, import, options.txid));
    schema.move_to(result);
    findings.move_to(result_findings);
}

void tov_host__import_files(KT_context *ctx, const tov_host_file *files, size_t count, const tov_host_options *options,
                            tov_schema **schema, KT_varray **findings) noexcept
{
    kt_contain(ctx, [&] {
        KT_TRY(my_import(ctx, {files, count}, options ? *options : tov_host_options{}, schema, findings));
    });
}

void tov_host__import(KT_context *ctx, const char *bytes, size_t size, const tov_host_options *options,
                      tov_schema **schema, KT_varray **findings) noexcept
{
    const tov_host_file file{nullptr, bytes, size};
    KT_TRY(tov_host__import_files(ctx, &file, 1, options, schema, findings));
}
