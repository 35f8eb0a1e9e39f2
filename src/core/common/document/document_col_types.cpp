// Recording what values a column holds.
//
// Every setter replaces the type record whole, so that a column has exactly the fields of its last setter, in the
// order in which they are written here.

#include "document/tov_parse_defin_private.hpp"

#include <cstring>

// Puts a new type record that holds only its name in the place of the column's old one.
static void my_renew_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                          const char *abstract_type, KT_vhash **type) noexcept
{
    schema->change_count++;
    KT_vhash *col = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__remove_if_present(ctx, col, "type", nullptr));
    KT_TRY(KT_vhash__addnew__vhash(ctx, col, "type", type));
    KT_TRY(KT_vhash__add__string__sz(ctx, *type, "name", abstract_type));
}

void tov_schema__set_col_type_identity(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       const char *constraint_name) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "identity", &type));
    if (constraint_name)
        KT_TRY(KT_vhash__add__string__sz(ctx, type, "constraint_name", constraint_name));
}

void tov_schema__set_col_type_simple(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                     const char *abstract_type) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, abstract_type, &type));
}

void tov_schema__set_col_type_decimal(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      uint8_t precision, uint8_t scale) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "decimal", &type));
    KT_TRY(KT_vhash__add__int64(ctx, type, "precision", precision));
    KT_TRY(KT_vhash__add__int64(ctx, type, "scale", scale));
}

void tov_schema__set_col_type_blob(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   KT_bool fixed_width, uint32_t width) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "blob", &type));
    KT_TRY(KT_vhash__add__bool(ctx, type, "fixed_width", tov_low_byte_flag(fixed_width)));
    KT_TRY(KT_vhash__add__int64(ctx, type, "width", width));
}

void tov_schema__set_col_type_time(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   uint8_t precision) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "time", &type));
    KT_TRY(KT_vhash__add__int64(ctx, type, "precision", precision));
}

void tov_schema__set_col_type_datetime(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       uint8_t precision, const char *host_type) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "datetime", &type));
    KT_TRY(KT_vhash__add__int64(ctx, type, "precision", precision));
    // The host side looks for the older host types of such columns among the collations.
    if (host_type && strcmp(host_type, "datetime2") != 0)
        KT_TRY(tov_schema__set_host_collation(ctx, schema, tbl_id, col_id, host_type));
}

// How the host compares the column's texts. A binary collation has no further rules.
static void my_add_comparison_rules(KT_context *ctx, KT_vhash *type, KT_bool binary, KT_bool noaccent, KT_bool nocase,
                                    KT_bool ks, KT_bool ws, KT_bool sc) noexcept
{
    if (binary) {
        KT_TRY(KT_vhash__add__bool(ctx, type, "binary", 1));
        return;
    }
    KT_TRY(KT_vhash__add__bool(ctx, type, "noaccent", tov_low_byte_flag(noaccent)));
    KT_TRY(KT_vhash__add__bool(ctx, type, "nocase", tov_low_byte_flag(nocase)));
    if (ks)
        KT_TRY(KT_vhash__add__bool(ctx, type, "_KS", 1));
    if (ws)
        KT_TRY(KT_vhash__add__bool(ctx, type, "_WS", 1));
    if (sc)
        KT_TRY(KT_vhash__add__bool(ctx, type, "_SC", 1));
}

void tov_schema__set_col_type_text(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   const char *host_collation, const char *locale, KT_bool binary, KT_bool noaccent,
                                   KT_bool nocase, KT_bool ks, KT_bool ws, KT_bool sc, KT_bool fixed_width,
                                   KT_bool unicode, uint32_t width) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "text", &type));
    KT_TRY(tov_schema__set_host_collation(ctx, schema, tbl_id, col_id, host_collation));
    KT_TRY(KT_vhash__add__bool(ctx, type, "fixed_width", tov_low_byte_flag(fixed_width)));
    if (locale)
        KT_TRY(KT_vhash__add__string__sz(ctx, type, "locale", locale));
    KT_TRY(my_add_comparison_rules(ctx, type, binary, noaccent, nocase, ks, ws, sc));
    KT_TRY(KT_vhash__add__bool(ctx, type, "unicode", tov_low_byte_flag(unicode)));
    KT_TRY(KT_vhash__add__int64(ctx, type, "width", width));
}

void tov_schema__set_col_type_unsuported(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                         const char *host_type) noexcept
{
    KT_vhash *type = nullptr;
    KT_TRY(my_renew_type(ctx, schema, tbl_id, col_id, "host", &type));
    KT_TRY(KT_vhash__add__string__sz(ctx, type, "host_type", host_type));
}
