/* The smallest C program that uses the installed tools: it imports an export and prints its table's CREATE TABLE. */
#include "tov_client.h"
#include "tov_host.h"

#include <stdio.h>
#include <string.h>

static const char catalogue[] = "{\"tables\":[{\"id\":1,\"schema\":\"dbo\",\"name\":\"T\",\"columns\":["
                                "{\"id\":1,\"name\":\"Id\",\"system_type\":\"int\",\"max_length\":4,"
                                "\"is_nullable\":false,\"is_identity\":true}],"
                                "\"pk\":{\"columns\":[{\"name\":\"Id\"}]}}]}";

static void print_create_table(const char *script)
{
    const char *begin = strstr(script, "CREATE TABLE");
    const char *end = begin ? strchr(begin, ';') : NULL;
    if (end)
        printf("%.*s\n", (int)(end + 1 - begin), begin);
}

int main(void)
{
    KT_context *ctx = NULL;
    tov_schema *schema = NULL;
    KT_varray *findings = NULL;
    KT_string *script = NULL;
    int failed;

    KT_context__alloc(&ctx);
    if (!ctx)
        return 1;
    tov_host__import(ctx, catalogue, sizeof(catalogue) - 1, NULL, &schema, &findings);
    if (!KT_context__has_err(ctx))
        tov_client__write_script(ctx, schema, &script);
    failed = KT_context__has_err(ctx);
    if (failed)
        puts(KT_context__err_description(ctx));
    else
        print_create_table(KT_string__sz(script));
    KT_string__free(ctx, script);
    KT_varray__free(ctx, findings);
    tov_schema__nullfree(ctx, &schema);
    KT_context__free(ctx);
    return failed;
}
