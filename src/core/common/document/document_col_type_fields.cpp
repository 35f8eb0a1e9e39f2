// Reading a column's type record. A column whose type was never set fails every question here.

#include "document/tov_parse_defin_private.hpp"

void _tov_col__get_type(KT_context *ctx, const KT_vhash *col, const char **abstract_type,
                        const char **sqlite_typeof) noexcept
{
    KT_vhash *type = nullptr;
    const char *name = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__check__sz(ctx, type, "name", &name));
    if (abstract_type)
        *abstract_type = name;
    if (sqlite_typeof)
        *sqlite_typeof = name ? tov_abstract_type_to_sqlite_typeof(name) : nullptr;
}

void _tov_col__get_type_field_bool(KT_context *ctx, const KT_vhash *col, const char *field, KT_bool *has,
                                   KT_bool *value) noexcept
{
    KT_vhash *type = nullptr;
    KT_bool is_there = 0;
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__has(ctx, type, field, &is_there));
    if (is_there)
        KT_TRY(KT_vhash__get__bool(ctx, type, field, value));
    *has = is_there;
}

void _tov_col__get_type_field_int32(KT_context *ctx, const KT_vhash *col, const char *field, int32_t absent_value,
                                    int32_t *value) noexcept
{
    KT_vhash *type = nullptr;
    KT_bool is_there = 0;
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__has(ctx, type, field, &is_there));
    if (is_there)
        KT_TRY(KT_vhash__get__int32(ctx, type, field, value));
    else
        *value = absent_value;
}

void _tov_schema__get_col_type_field_bool(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *field, KT_bool *has, KT_bool *value) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__get_type_field_bool(ctx, col, field, has, value));
}

void _tov_schema__get_col_type_field_int32(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           const char *field, int32_t absent_value, int32_t *value) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__get_type_field_int32(ctx, col, field, absent_value, value));
}

void tov_schema__get_col_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              const char **abstract_type, const char **sqlite_typeof) noexcept
{
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(_tov_col__get_type(ctx, col, abstract_type, sqlite_typeof));
}

void tov_schema__get_col_type__unicode(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_bool *has, KT_bool *value) noexcept
{
    KT_TRY(_tov_schema__get_col_type_field_bool(ctx, schema, tbl_id, col_id, "unicode", has, value));
}

void tov_schema__get_col_type__fixed_width(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool *has, KT_bool *value) noexcept
{
    KT_TRY(_tov_schema__get_col_type_field_bool(ctx, schema, tbl_id, col_id, "fixed_width", has, value));
}

void tov_schema__get_col_type__scale(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                     int32_t *scale) noexcept
{
    KT_TRY(_tov_schema__get_col_type_field_int32(ctx, schema, tbl_id, col_id, "scale", -1, scale));
}

void tov_schema__get_col_type__precision(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         int32_t *precision) noexcept
{
    KT_TRY(_tov_schema__get_col_type_field_int32(ctx, schema, tbl_id, col_id, "precision", -1, precision));
}

void tov_schema__get_col_type__width(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                     int32_t *width) noexcept
{
    KT_TRY(_tov_schema__get_col_type_field_int32(ctx, schema, tbl_id, col_id, "width", -1, width));
}

void tov_schema__get_col_type__host_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char **host_type) noexcept
{
    KT_vhash *col = nullptr;
    KT_vhash *type = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__check__sz(ctx, type, "host_type", host_type));
}
