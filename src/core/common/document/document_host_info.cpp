// What the host says of a column: its type name, its collation, its default expression.
//
// The type name is in the column record and travels with the document. Collations and defaults are in the host
// internals, under both ids as the caller passed them, and nobody asks there whether the column exists.

#include "document/tov_parse_defin_private.hpp"

static void my_refuse_null_arguments(KT_context *ctx, const tov_schema *schema, const char *tbl_id,
                                     const char *col_id) noexcept
{
    if (!schema)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "psk is null");
    if (!tbl_id)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "psz_tbl_id is null");
    if (!col_id)
        KT_FAIL(KT_ERR_NULL_ARGUMENT, "psz_col_id is null");
}

void tov_schema__set_mssql_col_type_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char *host_type) noexcept
{
    KT_TRY(my_refuse_null_arguments(ctx, schema, tbl_id, col_id));
    if (!host_type)
        return;
    schema->change_count++;
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__remove_if_present(ctx, col, "mssql_col_data_type", nullptr));
    KT_TRY(KT_vhash__add__string__sz(ctx, col, "mssql_col_data_type", host_type));
}

void tov_schema__get_mssql_col_type_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char **host_type) noexcept
{
    KT_TRY(my_refuse_null_arguments(ctx, schema, tbl_id, col_id));
    if (!host_type)
        return;
    *host_type = nullptr;
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__get__sz(ctx, col, "mssql_col_data_type", host_type));
}

static void my_set_host_text(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                             const char *col_id, const char *text) noexcept
{
    if (!text)
        return;
    schema->change_count++;
    KT_vhash *entry = nullptr;
    KT_TRY(_tov_schema__ensure_host_entry(ctx, schema, map_key, tbl_id, &entry));
    KT_TRY(KT_vhash__update__string__sz(ctx, entry, col_id, text));
}

static void my_get_host_text(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                             const char *col_id, const char **text) noexcept
{
    KT_vhash *entry = nullptr;
    KT_TRY(_tov_schema__check_host_entry(ctx, schema, map_key, tbl_id, &entry));
    if (entry)
        KT_TRY(KT_vhash__check__sz(ctx, entry, col_id, text));
}

void tov_schema__set_host_collation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    const char *collation) noexcept
{
    KT_TRY(my_set_host_text(ctx, schema, "collations", tbl_id, col_id, collation));
}

void tov_schema__get_host_collation(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                    const char **collation) noexcept
{
    KT_TRY(my_get_host_text(ctx, schema, "collations", tbl_id, col_id, collation));
}

void tov_schema__set_host_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                 const char *expr) noexcept
{
    KT_TRY(my_set_host_text(ctx, schema, "defvals", tbl_id, col_id, expr));
}

void tov_schema__get_host_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                 const char **expr) noexcept
{
    KT_TRY(my_get_host_text(ctx, schema, "defvals", tbl_id, col_id, expr));
}

KT_bool tov_schema__is_mssql_spatial_col_type(const char *host_type) noexcept
{
    static constexpr const char *spatial_types[] = {"geography", "geometry", "hierarchyid"};
    for (const char *spatial_type : spatial_types) {
        if (host_type && KT_stricmp(host_type, spatial_type) == 0)
            return 1;
    }
    return 0;
}
