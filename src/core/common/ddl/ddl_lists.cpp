// Lists of a table's columns for the statements that callers write: "a","b" and its kin.
//
// Columns come in table order, key columns in key order; a table with an identity column has that column alone as its
// key. A comma precedes every item but the first one written, whatever was skipped.

#include "ddl/ddl_text.hpp"
#include "ddl/ddl_walk.hpp"

namespace {

// What is inside the quotes before a name; both empty in a plain list.
struct my_lead {
    const char *text = "";
    const char *link = ""; // "." with its quotes, after a qualifier
};

constexpr char my_qualifier_link[] = "\".\"";

} // namespace

static void my_append_item(KT_context *ctx, KT_string *list, const my_lead &lead, const char *name) noexcept
{
    const bool is_first = *KT_string__sz(list) == '\0';
    KT_TRY(ddl_append(ctx, list, {is_first ? "\"" : ",\"", lead.text, lead.link, name, "\""}));
}

static void my_append_col_name(KT_context *ctx, KT_string *list, const my_lead &lead, const KT_vhash *col) noexcept
{
    const char *name = nullptr;
    KT_TRY(ddl_get_col_name(ctx, col, &name));
    KT_TRY(my_append_item(ctx, list, lead, name));
}

// The names of all the columns of a walk.
static void my_list_names(KT_context *ctx, const ddl_cols &cols, const my_lead &lead, KT_string **result) noexcept
{
    kt_owned_string list{ctx};
    KT_TRY(KT_string__alloc(ctx, list.out()));
    for (uint32_t n = 0; n < cols.count; n++) {
        KT_vhash *col = nullptr;
        KT_TRY(ddl_get_nth_col(ctx, cols, n, nullptr, &col));
        KT_TRY(my_append_col_name(ctx, list, lead, col));
    }
    list.move_to(result);
}

static void my_list_col_names(KT_context *ctx, tov_schema *schema, const char *tbl_id, const my_lead &lead,
                              KT_string **result) noexcept
{
    ddl_cols cols = {schema, tbl_id};
    KT_TRY(ddl_get_cols(ctx, &cols));
    KT_TRY(my_list_names(ctx, cols, lead, result));
}

static void my_list_pk_col_names(KT_context *ctx, tov_schema *schema, const char *tbl_id, const my_lead &lead,
                                 KT_string **result) noexcept
{
    ddl_cols pk_cols = {schema, tbl_id};
    KT_TRY(ddl_get_pk_cols(ctx, &pk_cols));
    KT_TRY(my_list_names(ctx, pk_cols, lead, result));
}

void tov_schema__get_col_ids_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             KT_string **result) noexcept
{
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(_tov_schema__get_tbl_cols(ctx, schema, tbl_id, &cols));
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    kt_owned_string list{ctx};
    KT_TRY(KT_string__alloc(ctx, list.out()));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &col_id, nullptr));
        KT_TRY(my_append_item(ctx, list, {}, col_id));
    }
    list.move_to(result);
}

void tov_schema__get_col_names_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               KT_string **result) noexcept
{
    KT_TRY(my_list_col_names(ctx, schema, tbl_id, {}, result));
}

void tov_schema__get_col_names_comma_separated_and_qualified(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                             const char *qualifier, KT_string **result) noexcept
{
    KT_TRY(my_list_col_names(ctx, schema, tbl_id, {qualifier, my_qualifier_link}, result));
}

void tov_schema__get_col_names_comma_separated_without_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_string **result) noexcept
{
    ddl_cols cols = {schema, tbl_id};
    KT_TRY(ddl_get_cols(ctx, &cols));
    kt_owned_string list{ctx};
    KT_TRY(KT_string__alloc(ctx, list.out()));
    for (uint32_t n = 0; n < cols.count; n++) {
        const char *col_id = nullptr;
        KT_vhash *col = nullptr;
        KT_bool in_pk = 0;
        KT_TRY(ddl_get_nth_col(ctx, cols, n, &col_id, &col));
        KT_TRY(_tov_tbl__is_col_id_in_pk(ctx, schema, cols.tbl, tbl_id, col_id, &in_pk));
        if (!in_pk)
            KT_TRY(my_append_col_name(ctx, list, {}, col));
    }
    list.move_to(result);
}

void tov_schema__get_pk_col_names_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                  KT_string **result) noexcept
{
    KT_TRY(my_list_pk_col_names(ctx, schema, tbl_id, {}, result));
}

void tov_schema__get_pk_col_names_comma_separated__no_fixed_width_cols(KT_context *ctx, tov_schema *schema,
                                                                       const char *tbl_id, KT_string **result) noexcept
{
    ddl_cols pk_cols = {schema, tbl_id};
    KT_TRY(ddl_get_pk_cols(ctx, &pk_cols));
    kt_owned_string list{ctx};
    KT_TRY(KT_string__alloc(ctx, list.out()));
    for (uint32_t n = 0; n < pk_cols.count; n++) {
        const char *col_id = nullptr;
        KT_vhash *col = nullptr;
        KT_bool is_text = 0;
        KT_bool is_fixed_width = 0;
        int64_t width = 0;
        KT_TRY(ddl_get_nth_col(ctx, pk_cols, n, &col_id, &col));
        KT_TRY(tov_schema__get_textwidth(ctx, schema, tbl_id, col_id, nullptr, &is_text, &is_fixed_width, &width));
        if (!is_text || !is_fixed_width)
            KT_TRY(my_append_col_name(ctx, list, {}, col));
    }
    list.move_to(result);
}

void tov_schema__get_pk_col_names_comma_separated_and_prefixed(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                               const char *prefix, KT_string **result) noexcept
{
    KT_TRY(my_list_pk_col_names(ctx, schema, tbl_id, {prefix}, result));
}

void tov_schema__get_pk_col_names_comma_separated_and_qualified(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                                const char *qualifier, KT_string **result) noexcept
{
    KT_TRY(my_list_pk_col_names(ctx, schema, tbl_id, {qualifier, my_qualifier_link}, result));
}

void tov_schema__get_col_names_as_vhash(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                        KT_vhash **result) noexcept
{
    ddl_cols cols = {schema, tbl_id};
    KT_TRY(ddl_get_cols(ctx, &cols));
    kt_owned_vhash names{ctx};
    KT_TRY(KT_vhash__alloc(ctx, names.out()));
    for (uint32_t n = 0; n < cols.count; n++) {
        const char *col_id = nullptr;
        const char *name = nullptr;
        KT_vhash *col = nullptr;
        KT_TRY(ddl_get_nth_col(ctx, cols, n, &col_id, &col));
        KT_TRY(ddl_get_col_name(ctx, col, &name));
        KT_TRY(KT_vhash__add__string__sz(ctx, names, name, col_id));
    }
    names.move_to(result);
}
