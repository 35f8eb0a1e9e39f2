// The list with which the host selects chosen columns.
//
// Spatial columns are cast to VARBINARY, others to what the caller's map says. Where the host keeps integer keys in a
// text form, "S:" and the decimal value, columns that go back to an identity column are converted between the forms.

#include "ddl/ddl_text.hpp"
#include "ddl/ddl_walk.hpp"

namespace {

// What is known of the columns' names: a list of all columns would walk over the table once for each when it asked
// tov_schema__find_col_by_name(), so the columns that a walk has passed are remembered. Names that no prepared column
// has, few if any, are left to that operation.
struct my_names {
    ddl_cols cols;
    kt_owned_vhash col_ids; // name to id, for the columns walked so far; null before the first question
    uint32_t walked = 0;
};

// A host select list that is being written.
struct my_select {
    tov_schema *schema;
    const char *tbl_id;
    const char *qualifier;
    uint32_t mode;
    bool use_hash_values;
    bool look_up_host_types;
    KT_string *text;
    my_names *names;
};

// One entry of the caller's map: a column name, and perhaps the type to cast it to.
struct my_entry {
    const char *name;
    const KT_variant *value;
    const char *col_id = nullptr; // found by name when first needed; null when no column has the name
};

} // namespace

static void my_walk_on(KT_context *ctx, my_names *names, const char *name, const char **col_id) noexcept
{
    const char *nth_id = nullptr;
    const char *nth_name = nullptr;
    KT_vhash *nth = nullptr;
    KT_bool is_known = 0;
    KT_TRY(ddl_get_nth_col(ctx, names->cols, names->walked, &nth_id, &nth));
    KT_TRY(KT_vhash__check__sz(ctx, nth, "name", &nth_name));
    names->walked++;
    if (nth_name)
        KT_TRY(KT_vhash__has(ctx, names->col_ids, nth_name, &is_known));
    if (!nth_name || is_known)
        return;
    KT_TRY(KT_vhash__add__string__sz(ctx, names->col_ids, nth_name, nth_id));
    if (std::strcmp(nth_name, name) == 0)
        *col_id = nth_id;
}

// The first column of a name; null when no column has it.
static void my_find_col(KT_context *ctx, const my_select &s, const char *name, const char **col_id) noexcept
{
    my_names &names = *s.names;
    if (!names.col_ids.get()) {
        KT_TRY(ddl_get_cols(ctx, &names.cols));
        KT_TRY(KT_vhash__alloc(ctx, names.col_ids.out()));
    }
    KT_TRY(KT_vhash__check__sz(ctx, names.col_ids, name, col_id));
    while (!*col_id && names.walked < names.cols.count)
        KT_TRY(my_walk_on(ctx, &names, name, col_id));
    if (!*col_id)
        KT_TRY(tov_schema__find_col_by_name(ctx, s.schema, s.tbl_id, name, col_id));
}

// Writes the column in the other form of identity values, when the mode asks for one and the column has such values.
static void my_append_if_identity(KT_context *ctx, const my_select &s, my_entry *entry, bool *written) noexcept
{
    const char *root_tbl_id = nullptr;
    KT_TRY(my_find_col(ctx, s, entry->name, &entry->col_id));
    if (entry->col_id)
        KT_TRY(tov_schema__find_ipk_root_column(ctx, s.schema, s.tbl_id, entry->col_id, &root_tbl_id, nullptr));
    if (!root_tbl_id || (s.mode != ddl_text_to_integer && s.mode != ddl_integer_to_text))
        return;
    KT_TRY(ddl_append_converted_identity(ctx, s.text, s.mode, s.qualifier, entry->name));
    *written = true;
}

static void my_get_host_type(KT_context *ctx, const my_select &s, my_entry *entry, const char **host_type) noexcept
{
    if (!entry->col_id)
        KT_TRY(my_find_col(ctx, s, entry->name, &entry->col_id));
    KT_TRY(tov_schema__get_mssql_col_type_name(ctx, s.schema, s.tbl_id, entry->col_id, host_type));
}

// VARBINARY(n) for a spatial column whose type has a fixed-width flag, set or not, and a width; null without.
static void my_make_spatial_cast_type(KT_context *ctx, const my_select &s, const my_entry &entry,
                                      char **cast_type) noexcept
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

static void my_append_entry(KT_context *ctx, const my_select &s, my_entry entry) noexcept
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
        cast_type = made ? made.get() : DDL_VARIABLE_BINARY;
    }
    KT_TRY(ddl_append_host_col(ctx, s.text, s.qualifier, entry.name, cast_type));
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
    my_names names = {{schema, tbl_id}, kt_owned_vhash{ctx}};
    const my_select select = {schema, tbl_id, qualifier, mode, use_hash_values != 0, look_up_host_types != 0,
                              text,   &names};
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
