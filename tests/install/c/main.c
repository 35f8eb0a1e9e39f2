/* The smallest C program that uses the installed library: it prints the definition of one column. */
#include "kt_sqlite_functions.h"
#include "tov_parse_defin.h"
#include "tov_version.h"

#include <stdio.h>

#if TOV_SCHEMA_VERSION_MAJOR != 0
#error "the version macros are those of another version"
#endif

int main(void)
{
    KT_context *ctx = NULL;
    tov_schema *schema = NULL;
    const char *defin = NULL;
    int failed;

    KT_context__alloc(&ctx);
    if (!ctx)
        return 1;
    tov_schema__new(ctx, 1, &schema);
    if (!KT_context__has_err(ctx))
        tov_schema__add_tbl(ctx, schema, "t", "T", 1);
    if (!KT_context__has_err(ctx))
        tov_schema__add_col(ctx, schema, "t", "id", "Id", 1, 0, 0);
    if (!KT_context__has_err(ctx))
        tov_schema__set_col_type_identity(ctx, schema, "t", "id", NULL);
    if (!KT_context__has_err(ctx))
        tov_schema__get_col_defin(ctx, schema, "t", "id", NULL, &defin);
    failed = !defin || !tov__get_sqlite_functions();
    puts(defin ? defin : KT_context__err_description(ctx));
    tov_schema__nullfree(ctx, &schema);
    KT_context__free(ctx);
    return failed;
}
