// Questions about the tables of a schema: how many, which, and by what name.

#include "document/document_ids.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>

void tov_schema__count_tbls(KT_context *ctx, tov_schema *schema, uint32_t *count) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    KT_TRY(KT_vhash__count(ctx, tbls, count));
}

void tov_schema__get_nth_tbl_id(KT_context *ctx, tov_schema *schema, uint32_t n, const char **tbl_id) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    KT_TRY(KT_vhash__get_nth_pair(ctx, tbls, n, tbl_id, nullptr));
}

void tov_schema__has_tbl_id(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_bool *has) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(_tov_schema__get_tbls(ctx, schema, &tbls));
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, tbl_id, &room, &key));
    KT_TRY(KT_vhash__has(ctx, tbls, key, has));
}

void tov_schema__get_tbl_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char **name) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__sz(ctx, tbl, "name", name));
}

static void my_get_nth_tbl_name(KT_context *ctx, tov_schema *schema, uint32_t n, const char **tbl_id,
                                const char **name) noexcept
{
    KT_vhash *tbl = nullptr;
    KT_TRY(_tov_schema__get_nth_tbl(ctx, schema, n, tbl_id, &tbl));
    KT_TRY(KT_vhash__check__sz(ctx, tbl, "name", name));
}

void tov_schema__find_tbl_by_name(KT_context *ctx, tov_schema *schema, const char *name, const char **tbl_id) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *nth_id = nullptr;
        const char *nth_name = nullptr;
        KT_TRY(my_get_nth_tbl_name(ctx, schema, n, &nth_id, &nth_name));
        if (nth_name && strcmp(nth_name, name) == 0) {
            *tbl_id = nth_id;
            return;
        }
    }
    *tbl_id = nullptr;
}

void tov_schema__get_tbl_names_vhash(KT_context *ctx, tov_schema *schema, KT_vhash **names) noexcept
{
    uint32_t count = 0;
    kt_owned_vhash found{ctx};
    KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
    KT_TRY(KT_vhash__alloc(ctx, found.out()));
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        KT_TRY(my_get_nth_tbl_name(ctx, schema, n, nullptr, &name));
        if (name)
            KT_TRY(KT_vhash__update__null(ctx, found, name));
    }
    found.move_to(names);
}
