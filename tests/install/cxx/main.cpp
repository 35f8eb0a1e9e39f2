// The smallest C++ program that uses the installed library: it prints the definition of one column.
#include "kt_sqlite_functions.h"
#include "tov_parse_defin.h"
#include "tov_version.h"

#include <iostream>
#include <memory>

static_assert(TOV_SCHEMA_VERSION_MAJOR == 0, "the version macros are those of another version");

int main()
{
    KT_context *raw = nullptr;
    KT_context__alloc(&raw);
    const std::unique_ptr<KT_context, void (*)(KT_context *)> ctx(
        raw, [](KT_context *context) { KT_context__free(context); });
    if (!ctx)
        return 1;
    tov_schema *schema = nullptr;
    const char *defin = nullptr;
    tov_schema__new(ctx.get(), 1, &schema);
    if (!KT_context__has_err(ctx.get()))
        tov_schema__add_tbl(ctx.get(), schema, "t", "T", 1);
    if (!KT_context__has_err(ctx.get()))
        tov_schema__add_col(ctx.get(), schema, "t", "id", "Id", 1, 0, 0);
    if (!KT_context__has_err(ctx.get()))
        tov_schema__set_col_type_identity(ctx.get(), schema, "t", "id", nullptr);
    if (!KT_context__has_err(ctx.get()))
        tov_schema__get_col_defin(ctx.get(), schema, "t", "id", nullptr, &defin);
    const bool failed = KT_context__has_err(ctx.get()) || !tov__get_sqlite_functions();
    std::cout << (failed ? KT_context__err_description(ctx.get()) : defin) << '\n';
    tov_schema__nullfree(ctx.get(), &schema);
    return failed;
}
