/* A program that has functions of its own under the plain names, which take and give other things altogether. */
#include "tov_parse_defin.h"

#include <stdio.h>
#include <stdlib.h>

#define OWN(name)                                        \
    const char *name(void);                              \
    const char *name(void)                               \
    {                                                    \
        fputs("the library called " #name "\n", stderr); \
        exit(1);                                         \
    }

OWN(get_token)
OWN(keywordCode)
OWN(is_valid_constant)
OWN(int_default_valid)
OWN(parse_mssql_defval_func_no_args)
OWN(sqlite_fun__exec)
OWN(sqlite_fun__execf)
OWN(get_col_type_field_bool)
OWN(get_col_type_field_int32)
OWN(my_diff_loop_tbls)
OWN(my_diff_loop_cols)

#ifdef WITH_PLAIN_TABLE
/* Takes a plain name from the library, out of the very object that has plain names of which this program has its own.
 */
#undef sqlite3KeywordCode
int sqlite3KeywordCode(const char *text, int n);
#endif

static const char *default_of(KT_context *ctx, tov_schema *schema, const char *col_id, const char *host_text)
{
    char *text = NULL;
    tov_schema__fix_mssql_defval(ctx, schema, "t", col_id, host_text, &text);
    return text;
}

int main(void)
{
    KT_context *ctx = NULL;
    tov_schema *schema = NULL;
    KT_varray *only = NULL;
    KT_bool has = 0, unicode = 0;
    int32_t width = 0;
    KT_context__alloc(&ctx);
    tov_schema__new(ctx, 1, &schema);
    tov_schema__add_tbl(ctx, schema, "t", "T", 1);
    tov_schema__add_col(ctx, schema, "t", "i", "I", 1, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "t", "i", "sint32");
    tov_schema__add_col(ctx, schema, "t", "r", "R", 1, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "t", "r", "real8");
    tov_schema__add_col(ctx, schema, "t", "d", "D", 1, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "t", "d", "date");
    tov_schema__get_col_type__unicode(ctx, schema, "t", "i", &has, &unicode);
    tov_schema__get_col_type__width(ctx, schema, "t", "i", &width);
    tov_schema__diff_tbls(ctx, schema, NULL, &only, NULL, NULL, NULL);
    tov_schema__diff_cols(ctx, schema, schema, "t", NULL, NULL, &only);
    printf("%s %s %s\n", default_of(ctx, schema, "i", "((5))"), default_of(ctx, schema, "r", "(1.5)"),
           default_of(ctx, schema, "d", "(getutcdate())"));
#ifdef WITH_PLAIN_TABLE
    printf("%d\n", sqlite3KeywordCode("select", 6));
#endif
    return KT_context__has_err(ctx) ? 1 : 0;
}
