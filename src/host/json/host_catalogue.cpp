// A catalogue export as a whole, its fields in the order in which the server writes them.
#include "json/host_catalogue.hpp"

#include "json/host_table_fields.hpp"

#include <string_view>

#define KT_HERE "src/host/json/host_catalogue"

static constexpr host_field<host_table> table_fields[] = {
    {"id", host_int_field<host_table>{&host_table::id, host_any_low, host_any_high}, true},
    {"schema", &host_table::schema_name, true},
    {"name", &host_table::name, true},
    {"temporal_type", host_int_field<host_table>{&host_table::temporal_type, 0, 255}},
    {"is_memory_optimized", &host_table::is_memory_optimized},
    {"is_filetable", &host_table::is_filetable},
    {"is_external", &host_table::is_external},
    {"is_node", &host_table::is_node},
    {"is_edge", &host_table::is_edge},
    {"row_count", host_int_field<host_table>{&host_table::row_count, 0, host_any_high}},
    {"description", &host_table::description},
    {"columns", host_read_cols, true},
    {"pk", host_read_pk},
    {"uniques", host_read_uniques},
    {"indexes", host_read_indexes},
    {"fks", host_read_fks},
    {"checks", host_read_checks},
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
    {"code_page", host_int_field<host_catalogue>{&host_catalogue::code_page, host_any_low, host_any_high}},
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
    {"format_version", host_int_field<host_export>{&host_export::format_version, host_any_low, host_any_high}},
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
