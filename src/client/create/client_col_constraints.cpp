// They stand with their column rather than after all columns, so that ALTER TABLE can add a column with its own.
#include "create/client_col_constraints.hpp"

#define KT_HERE "src/client/create/client_col_constraints"

// Numbers that the document lacks read as -1; the module's own statement tells whether it needs them.
static void my_require_numbers(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id) noexcept
{
    kt_owned_string statement{ctx};
    KT_TRY(tov_schema__get_col_validation_expression(ctx, schema, tbl_id, col_id, statement.out()));
}

void client_read_checked_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              client_checked_type &type) noexcept
{
    const char *name = nullptr;
    int32_t scale = 0;
    KT_TRY(tov_schema__get_col_type(ctx, schema, tbl_id, col_id, &name, nullptr));
    type.abstract = tov_find_abstract_type(name);
    const tov_type_kind kind = type.abstract ? type.abstract->kind : tov_type_kind{TOV_KIND_IDENTITY};
    bool lacks_number = false;
    if (kind == TOV_KIND_DECIMAL) {
        KT_TRY(tov_schema__get_col_type__precision(ctx, schema, tbl_id, col_id, &type.precision));
        KT_TRY(tov_schema__get_col_type__scale(ctx, schema, tbl_id, col_id, &scale));
        lacks_number = type.precision == -1 || scale == -1;
    } else if (type.abstract && type.abstract->is_checked && (kind == TOV_KIND_TEXT || kind == TOV_KIND_BLOB)) {
        KT_TRY(tov_schema__get_col_type__width(ctx, schema, tbl_id, col_id, &type.width));
        lacks_number = type.width == -1;
    }
    if (lacks_number)
        KT_TRY(my_require_numbers(ctx, schema, tbl_id, col_id));
}

void client_find_col_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                 const std::string &value, bool with_rules, client_code_pages &pages,
                                 std::vector<client_constraint> &constraints)
{
    client_checked_type type{};
    KT_TRY(client_read_checked_type(ctx, schema, tbl.id, col_id, type));
    const client_row_col *col = with_rules && tbl.rows.has_facts ? client_find_stored_col(tbl.rows, col_id) : nullptr;
    if (col && !col->rowid)
        type.server = &col->type;
    constraints = client_constraints_of(type, value, pages);
}

void client_append_col_constraints(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const char *col_id,
                                   bool with_rules, client_code_pages &pages, std::string &sql)
{
    const char *name = nullptr;
    std::vector<client_constraint> constraints;
    KT_TRY(tov_schema__get_col_name(ctx, schema, tbl.id, col_id, &name));
    KT_TRY(client_find_col_constraints(ctx, schema, tbl, col_id, client_quoted(name), with_rules, pages, constraints));
    for (const client_constraint &constraint : constraints)
        sql += std::string("\n        CONSTRAINT \"[") + name + "] constraint violation: " + constraint.message +
               "\" CHECK (" + constraint.accepted + ")";
}
