// The public entries to the translation: by a schema's column, and by a host type code.

#include "defval/defval_translation.hpp"
#include "document/tov_parse_defin_private.hpp"

#include <cstring>

void tov_schema__fix_mssql_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                  const char *host_text, char **result) noexcept
{
    KT_vhash *col = nullptr;
    KT_vhash *type = nullptr;
    const char *abstract_type = nullptr;
    int64_t scale = 0;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__get__sz(ctx, type, "name", &abstract_type));
    if (std::strcmp(abstract_type, "decimal") == 0)
        KT_TRY(KT_vhash__get__int64(ctx, type, "scale", &scale));
    KT_TRY(tov_fix_mssql_defval(ctx, abstract_type, static_cast<uint32_t>(scale), host_text, result));
}

namespace {

struct host_type {
    int32_t code;
    const char *abstract_type;
};

} // namespace

// The host's system type ids.
static constexpr host_type my_host_types[] = {
    {36, "guid"},     // uniqueidentifier
    {40, "date"},     // date
    {41, "time"},     // time
    {42, "datetime"}, // datetime2
    {58, "datetime"}, // smalldatetime
    {61, "datetime"}, // datetime
    {48, "uint8"},    // tinyint
    {52, "sint16"},   // smallint
    {56, "sint32"},   // int
    {59, "real4"},    // real
    {60, "money8"},   // money
    {62, "real8"},    // float
    {104, "uint1"},   // bit
    {106, "decimal"}, // decimal
    {108, "decimal"}, // numeric
    {122, "money4"},  // smallmoney
    {127, "sint64"},  // bigint
    {165, "blob"},    // varbinary
    {173, "blob"},    // binary
    {240, "blob"},    // CLR user type
    {167, "text"},    // varchar
    {175, "text"},    // char
    {231, "text"},    // nvarchar
    {239, "text"},    // nchar
};

static const char *my_abstract_type_of(int32_t type_code) noexcept
{
    for (const host_type &type : my_host_types)
        if (type.code == type_code)
            return type.abstract_type;
    return nullptr;
}

KT_bool tov_is_defval_legit(const char *host_text, int32_t type_code, uint32_t scale) noexcept
{
    const char *abstract_type = my_abstract_type_of(type_code);
    if (!abstract_type)
        return 0;
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    if (!ctx)
        return 0;
    char *result = nullptr;
    tov_fix_mssql_defval(ctx, abstract_type, scale, host_text, &result);
    const KT_bool legit = result != nullptr;
    _kt_free(ctx, result);
    KT_context__free(ctx);
    return legit;
}
