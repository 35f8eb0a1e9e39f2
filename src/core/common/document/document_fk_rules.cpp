// How a violation of a foreign key is to be treated: rules that are kept in the host internals, under the ids of table
// and key as the caller passed them. The module keeps their values and does not read anything into them.

#include "document/tov_parse_defin_private.hpp"

void _tov_schema__set_fk_rule(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                              int32_t situation, int32_t value) noexcept
{
    schema->change_count++;
    KT_vhash *rules = nullptr;
    KT_vhash *rule = nullptr;
    KT_TRY(_tov_schema__ensure_host_entry(ctx, schema, "fk-rules", tbl_id, &rules));
    KT_TRY(KT_vhash__ensure__vhash(ctx, rules, fk_id, &rule));
    if (situation != TOV_VIOLATION_ON_INSERT)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "Unknown foreign key conflict situation: %d", situation);
    KT_TRY(KT_vhash__update__int64(ctx, rule, "violation-on-insert", value));
}

static void my_drop_rule(KT_context *ctx, void *fk_id, const char *, KT_variant *rules) noexcept
{
    if (rules->type == KT_VARIANT_VHASH)
        KT_TRY(KT_vhash__remove_if_present(ctx, rules->as.vhash, static_cast<const char *>(fk_id), nullptr));
}

void _tov_schema__drop_fk_rules(KT_context *ctx, tov_schema *schema, const char *fk_id) noexcept
{
    KT_vhash *rules_by_tbl = nullptr;
    if (schema->host_internals)
        KT_TRY(KT_vhash__check__vhash(ctx, schema->host_internals, "fk-rules", &rules_by_tbl));
    if (rules_by_tbl)
        KT_TRY(KT_vhash__foreach(ctx, rules_by_tbl, my_drop_rule, const_cast<char *>(fk_id)));
}

void tov_schema__get_fk_rules(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **rules) noexcept
{
    KT_TRY(_tov_schema__check_host_entry(ctx, schema, "fk-rules", tbl_id, rules));
}
