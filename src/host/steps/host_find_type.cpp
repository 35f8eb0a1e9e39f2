// Types for those who have a declaration and no column: the same reading and the same table as an import's.
#include "records/host_declared_type.hpp"
#include "steps/host_import.hpp"
#include "tov_host_types.h"
#include "tsql/host_tsql_type.hpp"

#define KT_HERE "src/host/steps/host_find_type"

static void my_find(const char *declared, tov_host_type *type, KT_bool *is_known)
{
    host_tsql_cursor cursor(declared);
    const host_tsql_type read = host_read_type(cursor);
    *is_known = read.is_system() && !cursor.failed() && cursor.token.kind == host_tsql_kind::end;
    if (!*is_known)
        return;
    host_texts texts;
    host_column col;
    host_set_declared_type(texts, host_declared(read), col);
    const bool is_decimal = read.system_name == "decimal" || read.system_name == "numeric";
    *type = {host_abstract_type(col), is_decimal ? static_cast<uint32_t>(col.scale) : 0, host_is_row_version(col)};
}

void tov_host__find_type(KT_context *ctx, const char *declared, tov_host_type *type, KT_bool *is_known) noexcept
{
    KT_RETURN_IF_FAILED;
    KT_TRY(kt_contain(ctx, [&] { my_find(declared, type, is_known); }));
}

const char *tov_host__get_nth_type_name(uint32_t n) noexcept
{
    return host_nth_type_name(n);
}
