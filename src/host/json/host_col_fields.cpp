// The columns of a table.
#include "json/host_table_fields.hpp"

#define KT_HERE "src/host/json/host_col_fields"

static constexpr host_field<host_identity> identity_fields[] = {
    {"seed", &host_identity::seed},
    {"increment", &host_identity::increment},
    {"last"},
    {"not_for_replication"},
};

static constexpr host_field<host_default> default_fields[] = {
    {"kind", &host_default::kind},
    {"id", host_int_field<host_default>{&host_default::id, host_any_low, host_any_high}},
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
    host_default *defval = reader.defaults.add();
    const KT_vhash *map = nullptr;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, default_fields, *defval));
    column.defval = defval;
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
    {"id", host_int_field<host_column>{&host_column::id, host_any_low, host_any_high}, true},
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
    {"code_page", host_int_field<host_column>{&host_column::code_page, 0, INT32_MAX}},
    {"comparison_style", host_int_field<host_column>{&host_column::comparison_style, 0, INT32_MAX}},
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

void host_read_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                    host_table &table)
{
    const auto make = [&table]() -> host_column & { return table.cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, column_fields, make));
}
