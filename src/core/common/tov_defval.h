/* SQL Server defaults become SQLite defaults. */
#ifndef TOV_DEFVAL_H
#define TOV_DEFVAL_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__fix_mssql_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *host_text, char **result) KT_NOEXCEPT;

TOV_API KT_bool tov_is_defval_legit(const char *host_text, int32_t type_code, uint32_t scale) KT_NOEXCEPT;

TOV_API void tov_convert_decimal_constant_to_scaled_integer(KT_context *ctx, const char *text, uint32_t scale,
                                                            int64_t *value) KT_NOEXCEPT;

TOV_API int sqlite3KeywordCode(const char *text, int n) KT_NOEXCEPT;

TOV_API extern const unsigned char sqlite3CtypeMap[256];

TOV_API extern const unsigned char sqlite3UpperToLower[256];

KT_END_DECLS

#endif
