// Columns as the host selects them: those that it cannot hand over as they are, binary ones of variable width, are
// cast.

#include "ddl/ddl_text.hpp"
#include "ddl/ddl_walk.hpp"

// Whether a column is a blob that does not say it has a fixed width.
static void my_is_variable_width_blob(KT_context *ctx, const KT_vhash *col, bool *answer) noexcept
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
static void my_add_converted_col(KT_context *ctx, const KT_vhash *col, KT_vhash *names) noexcept
{
    const char *name = nullptr;
    bool is_cast = false;
    KT_TRY(ddl_get_col_name(ctx, col, &name));
    KT_TRY(my_is_variable_width_blob(ctx, col, &is_cast));
    KT_TRY(KT_vhash__add__string__sz(ctx, names, name, is_cast ? DDL_VARIABLE_BINARY : nullptr));
}

static void my_add_converted_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             KT_vhash *names) noexcept
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

// A column that is found by its name.
static void my_append_converted_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_name,
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
    KT_TRY(ddl_append_host_col(ctx, text, qualifier, col_name, is_cast ? DDL_VARIABLE_BINARY : nullptr));
}

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
