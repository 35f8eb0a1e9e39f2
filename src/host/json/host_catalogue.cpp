// The fields of a catalogue export, in the order in which the server writes them.
#include "json/host_catalogue.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/json/host_catalogue"

static constexpr int64_t any_low = INT64_MIN;
static constexpr int64_t any_high = INT64_MAX;

static constexpr host_field<host_identity> identity_fields[] = {
    {"seed", &host_identity::seed},
    {"increment", &host_identity::increment},
    {"last"},
    {"not_for_replication"},
};

static constexpr host_field<host_default> default_fields[] = {
    {"kind", &host_default::kind},
    {"id", host_int_field<host_default>{&host_default::id, any_low, any_high}},
    {"name", &host_default::name},
    {"definition", &host_default::definition},
    {"is_system_named", &host_default::is_system_named},
};

struct host_computed {
    const char *definition = nullptr;
    bool is_persisted = false;
};

static constexpr host_field<host_computed> computed_fields[] = {
    {"definition", &host_computed::definition},
    {"is_persisted", &host_computed::is_persisted},
};

static void my_read_identity(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             host_column &column)
{
    const KT_vhash *map = nullptr;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, identity_fields, column.identity));
}

static void my_read_default(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                            host_column &column)
{
    const KT_vhash *map = nullptr;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, default_fields, column.defval));
    column.defval.present = true;
}

static void my_read_computed(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             host_column &column)
{
    const KT_vhash *map = nullptr;
    host_computed computed;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, computed_fields, computed));
    column.computed = computed.definition;
    column.is_persisted = computed.is_persisted;
}

static constexpr host_field<host_column> column_fields[] = {
    {"id", host_int_field<host_column>{&host_column::id, any_low, any_high}, true},
    {"name", &host_column::name, true},
    {"system_type_id"},
    {"system_type", &host_column::system_type},
    {"user_type_id"},
    {"user_type", &host_column::user_type},
    {"user_type_schema", &host_column::user_type_schema},
    {"is_user_type"},
    {"is_assembly_type", &host_column::is_assembly_type},
    {"max_length", host_int_field<host_column>{&host_column::max_length, -1, INT32_MAX}, true},
    {"precision", host_int_field<host_column>{&host_column::precision, 0, 255}},
    {"scale", host_int_field<host_column>{&host_column::scale, 0, 255}},
    {"collation", &host_column::collation},
    {"code_page", host_int_field<host_column>{&host_column::code_page, any_low, any_high}},
    {"comparison_style", host_int_field<host_column>{&host_column::comparison_style, 0, any_high}},
    {"is_nullable", &host_column::is_nullable, true},
    {"is_identity", &host_column::is_identity},
    {"is_rowguidcol", &host_column::is_rowguidcol},
    {"is_computed", &host_column::is_computed},
    {"is_sparse", &host_column::is_sparse},
    {"is_column_set", &host_column::is_column_set},
    {"is_filestream", &host_column::is_filestream},
    {"is_hidden", &host_column::is_hidden},
    {"generated_always_type", host_int_field<host_column>{&host_column::generated_always_type, 0, 255}},
    {"encryption_type", host_int_field<host_column>{&host_column::encryption_type, 0, 255}},
    {"graph_type", host_int_field<host_column>{&host_column::graph_type, 0, 255}},
    {"identity", my_read_identity},
    {"default", my_read_default},
    {"computed", my_read_computed},
    {"rule", &host_column::rule},
    {"description", &host_column::description},
};

struct host_key_col {
    const char *name = nullptr;
    bool descending = false;
};

static constexpr host_field<host_key_col> key_col_fields[] = {
    {"name", &host_key_col::name, true},
    {"descending", &host_key_col::descending},
};

// The columns of a key or an index.
template <class Key>
static void my_read_key_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             Key &key)
{
    std::vector<host_key_col> cols;
    const auto make = [&cols]() -> host_key_col & { return cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, key_col_fields, make));
    for (const host_key_col &col : cols) {
        key.col_names.push_back(col.name);
        key.descending.push_back(col.descending);
    }
}

// The columns whose values an index carries along.
template <class Key>
static void my_read_included(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             Key &key)
{
    std::vector<host_key_col> cols;
    const auto make = [&cols]() -> host_key_col & { return cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, key_col_fields, make));
    for (const host_key_col &col : cols)
        key.included_names.push_back(col.name);
}

static void my_read_unique_kind(KT_context *ctx, host_reader &, const host_place &place, const KT_variant &value,
                                host_key &key)
{
    const char *kind = nullptr;
    KT_TRY(host_read_text(ctx, place, value, &kind));
    key.is_index = std::string_view(kind) == "index";
}

static constexpr host_field<host_key> pk_fields[] = {
    {"name", &host_key::name},
    {"is_system_named", &host_key::is_system_named},
    {"is_clustered", &host_key::is_clustered},
    {"is_disabled", &host_key::is_disabled},
    {"columns", my_read_key_cols<host_key>, true},
};

static constexpr host_field<host_key> unique_fields[] = {
    {"name", &host_key::name},
    {"kind", my_read_unique_kind},
    {"is_system_named", &host_key::is_system_named},
    {"index_id"},
    {"is_clustered", &host_key::is_clustered},
    {"is_disabled", &host_key::is_disabled},
    {"filter", &host_key::filter},
    {"columns", my_read_key_cols<host_key>, true},
    {"included", my_read_included<host_key>},
};

static constexpr host_field<host_index> index_fields[] = {
    {"name", &host_index::name, true},
    {"kind", &host_index::kind},
    {"is_clustered", &host_index::is_clustered},
    {"is_disabled", &host_index::is_disabled},
    {"filter", &host_index::filter},
    {"columns", my_read_key_cols<host_index>},
    {"included", my_read_included<host_index>},
};

struct host_fk_col {
    const char *column = nullptr;
    const char *ref_column = nullptr;
};

static constexpr host_field<host_fk_col> fk_col_fields[] = {
    {"column", &host_fk_col::column, true},
    {"ref_column", &host_fk_col::ref_column, true},
};

static void my_read_fk_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                            host_foreignkey &fk)
{
    std::vector<host_fk_col> cols;
    const auto make = [&cols]() -> host_fk_col & { return cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, fk_col_fields, make));
    for (const host_fk_col &col : cols)
        fk.col_names.emplace_back(col.column, col.ref_column);
}

// The export writes an action with "_" for the blank: NO_ACTION.
static bool my_is_action(std::string_view text, std::string_view action)
{
    return std::equal(text.begin(), text.end(), action.begin(), action.end(),
                      [](char a, char b) { return a == (b == ' ' ? '_' : b); });
}

template <const char *host_foreignkey::*Action>
static void my_read_action(KT_context *ctx, host_reader &, const host_place &place, const KT_variant &value,
                           host_foreignkey &fk)
{
    const char *text = nullptr;
    KT_TRY(host_read_text(ctx, place, value, &text));
    for (const char *action : host_fk_actions) {
        if (my_is_action(text, action)) {
            fk.*Action = action;
            return;
        }
    }
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is '%s', none of NO_ACTION, CASCADE, SET_NULL, SET_DEFAULT",
            host_place_text(place).c_str(), text);
}

static constexpr host_field<host_foreignkey> fk_fields[] = {
    {"name", &host_foreignkey::name},
    {"id", host_int_field<host_foreignkey>{&host_foreignkey::id, any_low, any_high}, true},
    {"ref_table_id", host_int_field<host_foreignkey>{&host_foreignkey::ref_tbl_id, any_low, any_high}, true},
    {"ref_schema", &host_foreignkey::ref_schema, true},
    {"ref_table", &host_foreignkey::ref_table, true},
    {"ref_key"},
    {"on_delete", my_read_action<&host_foreignkey::on_delete>, true},
    {"on_update", my_read_action<&host_foreignkey::on_update>, true},
    {"is_disabled", &host_foreignkey::is_disabled},
    {"is_not_trusted", &host_foreignkey::is_not_trusted},
    {"not_for_replication", &host_foreignkey::not_for_replication},
    {"is_system_named", &host_foreignkey::is_system_named},
    {"columns", my_read_fk_cols, true},
};

static constexpr host_field<host_check> check_fields[] = {
    {"name", &host_check::name},
    {"is_system_named", &host_check::is_system_named},
    {"definition", &host_check::definition},
    {"column", &host_check::col_name},
    {"is_disabled", &host_check::is_disabled},
    {"is_not_trusted", &host_check::is_not_trusted},
    {"not_for_replication", &host_check::not_for_replication},
};

static void my_read_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                         host_table &table)
{
    const auto make = [&table]() -> host_column & { return table.cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, column_fields, make));
}

static void my_read_pk(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                       host_table &table)
{
    const KT_vhash *map = nullptr;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, pk_fields, table.pk));
    table.has_pk = true;
}

static void my_read_uniques(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                            host_table &table)
{
    const auto make = [&table]() -> host_key & { return table.uniques.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, unique_fields, make));
}

static void my_read_indexes(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                            host_table &table)
{
    const auto make = [&table]() -> host_index & { return table.indexes.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, index_fields, make));
}

static void my_read_fks(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                        host_table &table)
{
    const auto make = [&table]() -> host_foreignkey & { return table.fks.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, fk_fields, make));
}

static void my_read_checks(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                           host_table &table)
{
    const auto make = [&table]() -> host_check & { return table.checks.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, check_fields, make));
}

static constexpr host_field<host_table> table_fields[] = {
    {"id", host_int_field<host_table>{&host_table::id, any_low, any_high}, true},
    {"schema", &host_table::schema_name, true},
    {"name", &host_table::name, true},
    {"temporal_type", host_int_field<host_table>{&host_table::temporal_type, 0, 255}},
    {"is_memory_optimized", &host_table::is_memory_optimized},
    {"is_filetable", &host_table::is_filetable},
    {"is_external", &host_table::is_external},
    {"is_node", &host_table::is_node},
    {"is_edge", &host_table::is_edge},
    {"row_count", host_int_field<host_table>{&host_table::row_count, 0, any_high}},
    {"description", &host_table::description},
    {"columns", my_read_cols, true},
    {"pk", my_read_pk},
    {"uniques", my_read_uniques},
    {"indexes", my_read_indexes},
    {"fks", my_read_fks},
    {"checks", my_read_checks},
};

// The right that the login had; an export that does not say it may lack what the login could not see.
static void my_read_visibility(KT_context *ctx, host_reader &, const host_place &place, const KT_variant &value,
                               host_catalogue &catalogue)
{
    bool is_granted = false;
    KT_TRY(host_read_flag(ctx, place, value, &is_granted));
    catalogue.visibility = is_granted ? host_visibility::full : host_visibility::partial;
}

static constexpr host_field<host_catalogue> database_fields[] = {
    {"name", &host_catalogue::name},
    {"collation", &host_catalogue::collation},
    {"code_page", host_int_field<host_catalogue>{&host_catalogue::code_page, any_low, any_high}},
    {"comparison_style"},
    {"can_view_definitions", my_read_visibility},
};

static constexpr host_field<host_sequence> sequence_fields[] = {
    {"schema", &host_sequence::schema_name, true}, {"name", &host_sequence::name, true},
    {"type", &host_sequence::system_type},         {"start", &host_sequence::start},
    {"increment", &host_sequence::increment},
};

static constexpr host_field<host_left_object> object_fields[] = {
    {"kind", &host_left_object::kind, true},
    {"name", &host_left_object::name, true},
};

// The document around the records.
struct host_export {
    const char *format = nullptr;
    int64_t format_version = 0;
    bool has_tables = false;
    host_catalogue *catalogue = nullptr;
};

static void my_read_database(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             host_export &document)
{
    const KT_vhash *map = nullptr;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, database_fields, *document.catalogue));
}

static void my_read_sequences(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                              host_export &document)
{
    const auto make = [&document]() -> host_sequence & { return document.catalogue->sequences.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, sequence_fields, make));
}

static void my_read_objects(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                            host_export &document)
{
    const auto make = [&document]() -> host_left_object & { return document.catalogue->left_objects.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, object_fields, make));
}

static void my_read_tables(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                           host_export &document)
{
    const auto make = [&document]() -> host_table & { return document.catalogue->tables.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, table_fields, make));
    document.has_tables = true;
}

static constexpr host_field<host_export> export_fields[] = {
    {"format", &host_export::format},
    {"format_version", host_int_field<host_export>{&host_export::format_version, any_low, any_high}},
    {"exported_at"},
    {"server"},
    {"database", my_read_database},
    {"tables", my_read_tables},
    {"sequences", my_read_sequences},
    {"objects", my_read_objects},
};

// A document that says what it is must be an export in the one form there is; one that does not must hold tables.
static void my_check_format(KT_context *ctx, const host_export &document)
{
    if (!document.format && !document.has_tables)
        KT_FAIL(KT_ERR_KEY_NOT_FOUND, "the document is not a catalogue export: it has neither a format nor tables");
    if (!document.format)
        return;
    if (std::string_view(document.format) != "sqlserver-catalogue")
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "format is '%s', not 'sqlserver-catalogue'", document.format);
    if (document.format_version != 1)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "format_version is %lld; this program reads version 1",
                static_cast<long long>(document.format_version));
}

void host_read_catalogue(KT_context *ctx, host_reader &reader, const KT_vhash *document, host_catalogue &catalogue)
{
    host_export read;
    read.catalogue = &catalogue;
    catalogue.visibility = host_visibility::unknown;
    KT_TRY(host_read_record(ctx, reader, host_place{}, document, export_fields, read));
    KT_TRY(my_check_format(ctx, read));
}
