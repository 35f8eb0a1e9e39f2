// The readers of a type record's fields under their plain names; defval_plain_names.cpp says what for.

#include "document/tov_parse_defin_private.hpp"
#include "document/tov_plain_name.hpp"

extern "C" {

TOV_PLAIN_NAME void get_col_type_field_bool(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                            const char *field, KT_bool *has, KT_bool *value) noexcept;
TOV_PLAIN_NAME void get_col_type_field_int32(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                             const char *col_id, const char *field, int32_t absent_value,
                                             int32_t *value) noexcept;

void get_col_type_field_bool(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                             const char *field, KT_bool *has, KT_bool *value) noexcept
{
    _tov_schema__get_col_type_field_bool(ctx, schema, tbl_id, col_id, field, has, value);
}

void get_col_type_field_int32(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              const char *field, int32_t absent_value, int32_t *value) noexcept
{
    _tov_schema__get_col_type_field_int32(ctx, schema, tbl_id, col_id, field, absent_value, value);
}

} // extern "C"
