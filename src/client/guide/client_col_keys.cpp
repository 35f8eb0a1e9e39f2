// Keys hold ids in the case in which they were added; columns have theirs in lower case.
#include "guide/client_col_keys.hpp"

#include "kt_folded.hpp"

#include <string_view>

#define KT_HERE "src/client/guide/client_col_keys"

static void my_read_reference(KT_context *ctx, tov_schema *schema, const KT_vhash *key, uint32_t n,
                              client_col_keys &keys)
{
    const char *tbl_id = nullptr;
    const char *col_id = nullptr;
    const char *tbl = nullptr;
    const char *col = nullptr;
    KT_varray *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__get__sz(ctx, key, "ref-tbl", &tbl_id));
    KT_TRY(KT_vhash__get__varray(ctx, key, "ref-cols", &cols));
    KT_TRY(KT_varray__count(ctx, cols, &count));
    KT_TRY(tov_schema__get_tbl_name(ctx, schema, tbl_id, &tbl));
    if (n < count) {
        KT_TRY(KT_varray__get__sz(ctx, cols, n, &col_id));
        KT_TRY(tov_schema__get_col_name(ctx, schema, tbl_id, col_id, &col));
    }
    keys.references.push_back({tbl ? tbl : tbl_id, col ? col : ""});
}

static void my_read_key(KT_context *ctx, tov_schema *schema, const KT_vhash *key,
                        std::map<std::string, client_col_keys> &keys)
{
    const char *kind = nullptr;
    KT_varray *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__get__sz(ctx, key, "kind", &kind));
    KT_TRY(KT_vhash__get__varray(ctx, key, "cols", &cols));
    KT_TRY(KT_varray__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, cols, n, &col_id));
        client_col_keys &of_col = keys[kt_folded(col_id)];
        const std::string_view word = kind;
        if (word == "primary")
            of_col.pk_position = n + 1;
        else if (word == "unique")
            of_col.is_unique = true;
        else
            KT_TRY(my_read_reference(ctx, schema, key, n, of_col));
    }
}

void client_read_col_keys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                          std::map<std::string, client_col_keys> &keys)
{
    kt_owned_varray records{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_keys(ctx, schema, tbl_id, TOV_KEYS_PRIMARY | TOV_KEYS_UNIQUE | TOV_KEYS_FOREIGN,
                                 records.out()));
    if (!records)
        return;
    KT_TRY(KT_varray__count(ctx, records, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *key = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, records, n, &key));
        KT_TRY(my_read_key(ctx, schema, key, keys));
    }
}
