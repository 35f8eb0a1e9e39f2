/* Describes a table as SQL Server has it, sends it on as JSON, and writes its SQLite form on the other side. */
#include "tov_parse_defin.h"

#include <stdio.h>

/* The context carries the error: after a call that failed, this function is done. */
#define TRY(call)                     \
    do {                              \
        call;                         \
        if (KT_context__has_err(ctx)) \
            return;                   \
    } while (0)

static void describe(KT_context *ctx, tov_schema *schema)
{
    const uint32_t width = 40; /* characters */

    TRY(tov_schema__add_tbl(ctx, schema, "101", "Product", 1));
    TRY(tov_schema__add_col(ctx, schema, "101", "1", "ProductId", 1, 0, 0));
    TRY(tov_schema__set_col_type_identity(ctx, schema, "101", "1", NULL));
    TRY(tov_schema__add_col(ctx, schema, "101", "2", "Name", 1, 0, 0));
    TRY(tov_schema__set_col_type_text(ctx, schema, "101", "2", "Latin1_General_CI_AS", NULL, /* binary */ 0,
                                      /* noaccent */ 0, /* nocase */ 1, 0, 0, 0, /* fixed width */ 0, /* unicode */ 1,
                                      width));
    TRY(tov_schema__set_colcon_notnull(ctx, schema, "101", "2", 1, NULL));
}

static void print_table(KT_context *ctx, tov_schema *schema, const char *tbl_id)
{
    const char *name = NULL;
    uint32_t count = 0;

    TRY(tov_schema__get_tbl_name(ctx, schema, tbl_id, &name));
    TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    printf("CREATE TABLE \"%s\" (", name);
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = NULL;
        const char *defin = NULL;
        TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, n, &col_id));
        TRY(tov_schema__get_col_defin(ctx, schema, tbl_id, col_id, NULL, &defin));
        printf("%s\n    %s", n ? "," : "", defin); /* the text lives as long as the schema */
    }
    printf("\n);\n");
}

static void run(KT_context *ctx, tov_schema **host, tov_schema **client, KT_string **json)
{
    TRY(tov_schema__new(ctx, 1, host));
    TRY(describe(ctx, *host));
    TRY(tov_schema__to_json(ctx, *host, json));
    TRY(tov_schema__from_json(ctx, KT_string__sz(*json), client));
    TRY(print_table(ctx, *client, "101"));
}

int main(void)
{
    KT_context *ctx = NULL;
    tov_schema *host = NULL;
    tov_schema *client = NULL;
    KT_string *json = NULL;
    int failed;

    KT_context__alloc(&ctx);
    if (!ctx)
        return 1;
    run(ctx, &host, &client, &json);
    failed = KT_context__has_err(ctx);
    if (failed)
        fprintf(stderr, "%s\n", KT_context__err_description(ctx));

    KT_context__err_reset(ctx);
    KT_string__free(ctx, json);
    tov_schema__nullfree(ctx, &client);
    tov_schema__nullfree(ctx, &host);
    KT_context__free(ctx);
    return failed;
}
