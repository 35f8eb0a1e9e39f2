// What the sources of the schema module share: the file text of its stack frames, the handle, and the lookups through
// which every operation reaches a table or a column. Not exported; the static library's users (tests) can link it.
#pragma once

#include "kt_scope.hpp"
#include "tov_parse_defin.h"

#define KT_HERE "src/core/common/tov_parse_defin"

struct tov_schema {
    KT_vhash *document;
    KT_vhash *host_internals; // null until a write first needs it
    KT_strpool *strpool;
};

// A flag that is true exactly when the argument's low byte is 1, whatever the upper bytes hold.
inline KT_bool tov_low_byte_flag(KT_bool argument) noexcept
{
    return (static_cast<uint32_t>(argument) & 0xFFU) == 1U;
}

extern "C" {

// Lookups. Results are borrowed from the document. A table that does not exist is KT_ERR_NOT_FOUND, first of all.

void _tov_schema__get_tbls(KT_context *ctx, tov_schema *schema, KT_vhash **tbls) noexcept;
void _tov_schema__get_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **tbl) noexcept;
void _tov_schema__get_tbl_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **cols) noexcept;
// Finds a prepared column or, failing that, an unprepared one.
void _tov_schema__get_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                          KT_vhash **col) noexcept;
// The table's unprepared columns under the id as it stands; creates what is missing on the way, asks for no table.
void _tov_schema__get_tbl_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          KT_vhash **cols) noexcept;
// The same without creating anything: null when any level is absent.
void _tov_schema__check_tbl_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                            KT_vhash **cols) noexcept;
void _tov_schema__get_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **pk) noexcept;
void _tov_schema__get_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **uniques) noexcept;
void _tov_schema__get_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                  KT_vhash **foreignkeys) noexcept;
void _tov_schema__check_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **pk) noexcept;
void _tov_schema__check_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                    KT_vhash **foreignkeys) noexcept;
void _tov_schema__get_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **checks) noexcept;
// The host internals, created when the schema has none yet.
void _tov_schema__ensure_host_internals(KT_context *ctx, tov_schema *schema, KT_vhash **host_internals) noexcept;

// Records a rule for a foreign key; the only conflict situation known is 5, a violation on insert.
void _tov_schema__set_fk_rule(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                              int32_t situation, int32_t value) noexcept;

// Abstract type names to SQLite's words: constant texts, "" for an unknown name.
const char *tov_abstract_type_to_sqlite_decl(const char *abstract_type) noexcept;
const char *tov_abstract_type_to_sqlite_typeof(const char *abstract_type) noexcept;

} // extern "C"
