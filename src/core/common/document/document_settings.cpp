// What holds for a schema as a whole: the filter id, and facts about the host server ("backend").

#include "document/tov_parse_defin_private.hpp"

void tov_schema__set_filter_id(KT_context *ctx, tov_schema *schema, int64_t filter_id) noexcept
{
    schema->change_count++;
    KT_TRY(KT_vhash__update__int64(ctx, schema->document, "filter_id", filter_id));
}

void tov_schema__get_filter_id(KT_context *ctx, tov_schema *schema, int64_t *filter_id) noexcept
{
    int64_t stored = 0;
    KT_TRY(KT_vhash__check__int64(ctx, schema->document, "filter_id", &stored));
    *filter_id = stored;
}

static void my_ensure_backend(KT_context *ctx, tov_schema *schema, KT_vhash **backend) noexcept
{
    KT_TRY(KT_vhash__ensure__vhash(ctx, schema->document, "backend", backend));
}

static void my_set_backend_text(KT_context *ctx, tov_schema *schema, const char *key, const char *text) noexcept
{
    schema->change_count++;
    KT_vhash *backend = nullptr;
    KT_TRY(my_ensure_backend(ctx, schema, &backend));
    KT_TRY(KT_vhash__update__string__sz(ctx, backend, key, text));
}

void tov_schema__set_backend_info__name(KT_context *ctx, tov_schema *schema, const char *name) noexcept
{
    KT_TRY(my_set_backend_text(ctx, schema, "name", name));
}

void tov_schema__set_backend_info__api(KT_context *ctx, tov_schema *schema, const char *api) noexcept
{
    KT_TRY(my_set_backend_text(ctx, schema, "api", api));
}

void tov_schema__set_backend_info__indistinct_unique_nulls(KT_context *ctx, tov_schema *schema, KT_bool flag) noexcept
{
    schema->change_count++;
    KT_vhash *backend = nullptr;
    KT_TRY(my_ensure_backend(ctx, schema, &backend));
    KT_TRY(KT_vhash__update__bool(ctx, backend, "indistinct_unique_nulls", flag != 0));
}

void tov_schema__get_backend_info__indistinct_unique_nulls(KT_context *ctx, tov_schema *schema, KT_bool *flag) noexcept
{
    KT_vhash *backend = nullptr;
    KT_bool stored = 0;
    KT_TRY(my_ensure_backend(ctx, schema, &backend));
    KT_TRY(KT_vhash__check__bool(ctx, backend, "indistinct_unique_nulls", &stored));
    *flag = stored;
}
