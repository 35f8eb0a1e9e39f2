// From a catalogue file to a schema: reads the file, decides, and describes table after table.
//
// Deciding comes first, because what a column becomes depends on its table's keys. Then all tables get their columns,
// then their keys, then the references between them, which need both ends, and at last the checks, which SQLite
// compiles against complete tables.
#include "steps/host_import.hpp"

#include "json/host_catalogue.hpp"
#include "json/host_file.hpp"

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

// Characters beyond ASCII that would make a statement show otherwise than it reads, first and last of each range:
// controls, line separators and what changes the direction of writing.
static constexpr std::pair<std::string_view, std::string_view> unwritable[] = {
    // NOLINTNEXTLINE(misc-misleading-bidirectional): named in order to be refused.
    {"\u0080", "\u009F"}, {"\u061C", "\u061C"}, {"\u200E", "\u200F"}, {"\u2028", "\u202E"}, {"\u2066", "\u2069"},
};

// UTF-8 sorts as its characters do.
static bool my_begins_unwritable(std::string_view rest)
{
    for (const auto &[first, last] : unwritable) {
        if (rest.substr(0, first.size()) >= first && rest.substr(0, last.size()) <= last)
            return true;
    }
    const char byte = rest.front();
    return byte == '"' || byte == '\'' || static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

// The module writes names into statements as they stand; these would end a quoted name or a message.
static bool my_is_writable(std::string_view name)
{
    for (size_t at = 0; at < name.size(); at++) {
        if (my_begins_unwritable(name.substr(at)))
            return false;
    }
    return true;
}

static void my_report_name(KT_context *ctx, host_import &import, const host_table &table, const host_column *col,
                           const char *name)
{
    if (!my_is_writable(name))
        KT_TRY(import.findings.add(ctx, "name-not-writable", &table, col, name,
                                   "kept, but no SQLite table can be created from it: the name holds a quote, a "
                                   "control character or one that changes the direction of writing"));
}

static void my_report_names(KT_context *ctx, host_import &import, const host_table &table)
{
    KT_TRY(my_report_name(ctx, import, table, nullptr, table.sqlite_name.c_str()));
    for (const host_column &col : table.cols) {
        KT_TRY(my_report_name(ctx, import, table, &col, col.name));
        if (col.defval.name)
            KT_TRY(my_report_name(ctx, import, table, &col, col.defval.name));
    }
    if (table.has_pk)
        KT_TRY(my_report_name(ctx, import, table, nullptr, table.pk.name));
    for (const host_key &key : table.uniques)
        KT_TRY(my_report_name(ctx, import, table, nullptr, key.name));
    for (const host_foreignkey &fk : table.fks)
        KT_TRY(my_report_name(ctx, import, table, nullptr, fk.name));
    for (const host_check &check : table.checks)
        KT_TRY(my_report_name(ctx, import, table, nullptr, check.name));
}

static void my_add_column(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    const char *tbl_id = table.id_text.c_str();
    const char *col_id = col.id_text.c_str();
    KT_TRY(tov_schema__add_col(ctx, import.schema, tbl_id, col_id, col.name, col.prepared, 0, 0));
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
}

static void my_decide(KT_context *ctx, host_import &import, host_table &table)
{
    KT_TRY(my_report_names(ctx, import, table));
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
    for (host_table &table : import.catalogue.tables) {
        KT_TRY(my_decide(ctx, import, table));
        if (!table.is_left_out)
            tables.push_back(&table);
    }
    for (const host_table *table : tables)
        KT_TRY(my_add_table(ctx, import, *table, txid));
    for (host_table *table : tables)
        KT_TRY(host_add_keys(ctx, import, *table));
    for (const host_table *table : tables)
        KT_TRY(host_add_foreignkeys(ctx, import, *table));
    for (const host_table *table : tables)
        KT_TRY(host_add_checks(ctx, import, *table));
    KT_TRY(host_report_cycles(ctx, import));
}

static void my_report_document(KT_context *ctx, host_findings &findings, const host_catalogue &catalogue,
                               bool split_texts)
{
    if (split_texts)
        KT_TRY(findings.add(ctx, "text-split", nullptr, nullptr, nullptr,
                            "a tool put line ends into texts of the document: they were taken out again, but blanks "
                            "beside them may be lost"));
    if (!catalogue.can_view_definitions)
        KT_TRY(findings.add(ctx, "definitions-hidden", nullptr, nullptr, nullptr,
                            "the login that made the export may not see definitions: tables, defaults and checks may "
                            "be missing from it"));
    if (catalogue.tables.empty())
        KT_TRY(findings.add(ctx, "no-tables", nullptr, nullptr, nullptr, "the export holds no tables"));
}

static void my_report_unknown_fields(KT_context *ctx, host_findings &findings, const KT_vhash *unknown_fields)
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, unknown_fields, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, unknown_fields, n, &name, nullptr));
        KT_TRY(findings.add(ctx, "unknown-field", nullptr, nullptr, name, "ignored: no field of this name is known"));
    }
}

static void my_import(KT_context *ctx, std::string_view file, const tov_host_options &options, tov_schema **result,
                      KT_varray **result_findings)
{
    std::string json;
    bool split_texts = false;
    KT_TRY(host_decode_file(ctx, file.data(), file.size(), json, split_texts));
    kt_owned_vhash document{ctx};
    kt_owned_vhash unknown_fields{ctx};
    KT_TRY(KT_vhash__alloc__from_json__sz(ctx, document.out(), json.c_str()));
    KT_TRY(KT_vhash__alloc(ctx, unknown_fields.out()));
    host_reader reader{unknown_fields};
    host_catalogue catalogue;
    KT_TRY(host_read_catalogue(ctx, reader, document, catalogue));
    host_findings findings{ctx};
    KT_TRY(my_report_document(ctx, findings, catalogue, split_texts));
    if (options.verbose)
        KT_TRY(my_report_unknown_fields(ctx, findings, unknown_fields));
    host_owned_schema schema{ctx};
    KT_TRY(my_new_schema(ctx, schema));
    host_import import{schema, catalogue, findings};
    KT_TRY(my_build(ctx, import, options.txid));
    schema.move_to(result);
    findings.move_to(result_findings);
}

void tov_host__import(KT_context *ctx, const char *bytes, size_t size, const tov_host_options *options,
                      tov_schema **schema, KT_varray **findings) noexcept
{
    kt_contain(ctx, [&] {
        KT_TRY(my_import(ctx, {bytes, size}, options ? *options : tov_host_options{}, schema, findings));
    });
}
