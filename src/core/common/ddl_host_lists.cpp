// Select expressions for the host: columns that it cannot hand over as they are become casts.
//
// Variable-width binary and spatial columns are cast to VARBINARY. Where the host keeps integer keys in a text form,
// "S:" and the decimal value, columns that go back to an identity column are converted between the two forms.

#include "ddl_text.hpp"
#include "ddl_walk.hpp"

namespace {

constexpr char my_variable_binary[] = "VARBINARY(MAX)";

// Whether a column is a blob that does not say it has a fixed width.
void my_is_variable_width_blob(KT_context *ctx, const KT_vhash *col, bool *answer) noexcept
{
    const char *abstract_type = nullptr;
    KT_bool has = 0;
    KT_bool fixed_width = 0;
    KT_TRY(_tov_col__get_type(ctx, col, &abstract_type, nullptr));
    const bool is_blob = ddl_is_type(abstract_type, "blob");
    if (is_blob)
        KT_TRY(_tov_col__get_type_field_bool(ctx, col, "fixed_width", &has, &fixed_width));
    *answer = is_blob && !(has && fixed_width);
}

// Adds a column to a map of names: the type it must be cast to when it is selected, or null.
void my_add_converted_col(KT_context *ctx, const KT_vhash *col, KT_vhash *names) noexcept
{
    const char *name = nullptr;
    bool is_cast = false;
    KT_TRY(ddl_get_col_name(ctx, col, &name));
    KT_TRY(my_is_variable_width_blob(ctx, col, &is_cast));
    KT_TRY(KT_vhash__add__string__sz(ctx, names, name, is_cast ? my_variable_binary : nullptr));
}

void my_add_converted_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash *names) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_unprepared_cols(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_vhash *col = nullptr;
        KT_TRY(tov_schema__get_nth_unprepared_col_id(ctx, schema, tbl_id, n, &col_id));
        KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
        KT_TRY(my_add_converted_col(ctx, col, names));
    }
}

// "qualifier"."name", inside a cast when there is a type to cast to.
void my_append_expression(KT_context *ctx, KT_string *text, const char *qualifier, const char *name,
                          const char *cast_type) noexcept
{
    if (cast_type)
        KT_TRY(ddl_append(ctx, text, {"CAST(\"", qualifier, "\".\"", name, "\" AS ", cast_type, ")"}));
    else
        KT_TRY(ddl_append(ctx, text, {"\"", qualifier, "\".\"", name, "\""}));
}

// A column that is found by its name.
void my_append_converted_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_name,
                             const char *qualifier, KT_string *text) noexcept
{
    const char *col_id = nullptr;
    KT_vhash *col = nullptr;
    bool is_cast = false;
    KT_TRY(tov_schema__find_col_by_name(ctx, schema, tbl_id, col_name, &col_id));
    if (!col_id)
        KT_FAIL(KT_ERR_NOT_FOUND, "no column named '%s' in tbl id '%s'", col_name, tbl_id);
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(my_is_variable_width_blob(ctx, col, &is_cast));
    KT_TRY(my_append_expression(ctx, text, qualifier, col_name, is_cast ? my_variable_binary : nullptr));
}

// A host select list that is being written.
struct my_select {
    tov_schema *schema;
    const char *tbl_id;
    const char *qualifier;
    uint32_t mode;
    bool use_hash_values;
    bool look_up_host_types;
    KT_string *text;
};

// One entry of the caller's map: a column name, and perhaps the type to cast it to.
struct my_entry {
    const char *name;
    const KT_variant *value;
    const char *col_id = nullptr; // found by name when first needed; null when no column has the name
};

// Writes the column in the other form of identity values, when the mode asks for one and the column has such values.
void my_append_if_identity(KT_context *ctx, const my_select &s, my_entry *entry, bool *written) noexcept
{
    const char *root_tbl_id = nullptr;
    KT_TRY(tov_schema__find_col_by_name(ctx, s.schema, s.tbl_id, entry->name, &entry->col_id));
    if (entry->col_id)
        KT_TRY(tov_schema__find_ipk_root_column(ctx, s.schema, s.tbl_id, entry->col_id, &root_tbl_id, nullptr));
    if (!root_tbl_id || (s.mode != ddl_text_to_integer && s.mode != ddl_integer_to_text))
        return;
    KT_TRY(ddl_append_converted_identity(ctx, s.text, s.mode, s.qualifier, entry->name));
    *written = true;
}

void my_get_host_type(KT_context *ctx, const my_select &s, my_entry *entry, const char **host_type) noexcept
{
    if (!entry->col_id)
        KT_TRY(tov_schema__find_col_by_name(ctx, s.schema, s.tbl_id, entry->name, &entry->col_id));
    KT_TRY(tov_schema__get_mssql_col_type_name(ctx, s.schema, s.tbl_id, entry->col_id, host_type));
}

// VARBINARY(n) for a spatial column whose type has a fixed-width flag, set or not, and a width; null without.
void my_make_spatial_cast_type(KT_context *ctx, const my_select &s, const my_entry &entry, char **cast_type) noexcept
{
    KT_bool has = 0;
    KT_bool fixed_width = 0;
    int32_t width = 0;
    KT_TRY(tov_schema__get_col_type__fixed_width(ctx, s.schema, s.tbl_id, entry.col_id, &has, &fixed_width));
    if (has)
        KT_TRY(tov_schema__get_col_type__width(ctx, s.schema, s.tbl_id, entry.col_id, &width));
    if (width == 0)
        return;
    *cast_type = KT_mprintf("VARBINARY(%d)", width);
    if (!*cast_type)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

void my_append_entry(KT_context *ctx, const my_select &s, my_entry entry) noexcept
{
    bool written = false;
    if (s.mode != 0)
        KT_TRY(my_append_if_identity(ctx, s, &entry, &written));
    if (written)
        return;
    const char *host_type = nullptr;
    if (s.look_up_host_types)
        KT_TRY(my_get_host_type(ctx, s, &entry, &host_type));

    const char *cast_type = nullptr;
    kt_owned_text made{ctx};
    if (s.use_hash_values && entry.value->type == KT_VARIANT_STRING) {
        KT_TRY(KT_variant__get__sz(ctx, entry.value, &cast_type));
    } else if (tov_schema__is_mssql_spatial_col_type(host_type)) {
        KT_TRY(my_make_spatial_cast_type(ctx, s, entry, made.out()));
        cast_type = made ? made.get() : my_variable_binary;
    }
    KT_TRY(my_append_expression(ctx, s.text, s.qualifier, entry.name, cast_type));
}

} // namespace

void tov_schema__get_converted_col_names_as_vhash(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                  KT_bool include_unprepared, KT_vhash **result) noexcept
{
    ddl_cols cols = {schema, tbl_id};
    KT_TRY(ddl_get_cols(ctx, &cols));
    kt_owned_vhash names{ctx};
    KT_TRY(KT_vhash__alloc(ctx, names.out()));
    for (uint32_t n = 0; n < cols.count; n++) {
        KT_vhash *col = nullptr;
        KT_TRY(ddl_get_nth_col(ctx, cols, n, nullptr, &col));
        KT_TRY(my_add_converted_col(ctx, col, names));
    }
    if (include_unprepared)
        KT_TRY(my_add_converted_unprepared_cols(ctx, schema, tbl_id, names));
    names.move_to(result);
}

void tov_schema__get_converted_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_name,
                                        const char *qualifier, KT_string **result) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(my_append_converted_col(ctx, schema, tbl_id, col_name, qualifier, text));
    text.move_to(result);
}

void tov_schema__get_pk_col_names_converted(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                            const char *qualifier, KT_string **result) noexcept
{
    ddl_cols pk_cols = {schema, tbl_id};
    KT_TRY(ddl_get_pk_cols(ctx, &pk_cols));
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    for (uint32_t n = 0; n < pk_cols.count; n++) {
        KT_vhash *col = nullptr;
        const char *name = nullptr;
        KT_TRY(ddl_get_nth_col(ctx, pk_cols, n, nullptr, &col));
        KT_TRY(ddl_get_col_name(ctx, col, &name));
        if (n > 0)
            KT_TRY(KT_string__append__sz(ctx, text, ","));
        KT_TRY(my_append_converted_col(ctx, schema, tbl_id, name, qualifier, text));
    }
    text.move_to(result);
}

void tov_schema__get_pvh_col_names_comma_separated_and_qualified(KT_context *ctx, uint32_t mode, tov_schema *schema,
                                                                 const char *tbl_id, KT_vhash *cols,
                                                                 const char *skipped_name, const char *qualifier,
                                                                 KT_bool use_hash_values, KT_bool look_up_host_types,
                                                                 KT_string **result) noexcept
{
    kt_owned_string text{ctx};
    uint32_t count = 0;
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    const my_select select = {schema, tbl_id, qualifier, mode, use_hash_values != 0, look_up_host_types != 0, text};
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &name, &value));
        if (skipped_name && std::strcmp(name, skipped_name) == 0)
            continue;
        if (*KT_string__sz(text))
            KT_TRY(KT_string__append__sz(ctx, text, ","));
        KT_TRY(my_append_entry(ctx, select, {name, value}));
    }
    text.move_to(result);
}
