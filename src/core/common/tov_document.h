/* The schema handle, its JSON form, tables, columns and the settings of a schema. */
#ifndef TOV_DOCUMENT_H
#define TOV_DOCUMENT_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__new(KT_context *ctx, uint32_t compat_level, tov_schema **schema) KT_NOEXCEPT;

TOV_API void tov_schema__from_json(KT_context *ctx, const char *json, tov_schema **schema) KT_NOEXCEPT;

TOV_API void tov_schema__alloc__vhash(KT_context *ctx, KT_vhash **document, KT_vhash **host_internals,
                                      tov_schema **schema) KT_NOEXCEPT;

TOV_API void tov_schema__to_json(KT_context *ctx, tov_schema *schema, KT_string **json) KT_NOEXCEPT;

TOV_API void tov_schema__copy_into_vhash(KT_context *ctx, tov_schema *schema, KT_vhash *destination,
                                         KT_bool include_host_internals) KT_NOEXCEPT;

TOV_API void tov_schema__nullfree(KT_context *ctx, tov_schema **schema) KT_NOEXCEPT;

TOV_API void tov_schema__add_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *name,
                                 int64_t txid) KT_NOEXCEPT;

TOV_API void tov_schema__set_tbl_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char *name) KT_NOEXCEPT;

TOV_API void tov_schema__check_tbl_txid(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                        int64_t *txid) KT_NOEXCEPT;

TOV_API void tov_schema__add_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                 const char *name, KT_bool prepared, int64_t dump_txid,
                                 int64_t dump_generation) KT_NOEXCEPT;

TOV_API void tov_schema__set_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char *name) KT_NOEXCEPT;

TOV_API void tov_schema__is_col_unprepared(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           KT_bool *unprepared) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_dump_txid(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           int64_t *dump_txid) KT_NOEXCEPT;

TOV_API void tov_schema__get_col_dump_generation(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                 const char *col_id, int64_t *dump_generation) KT_NOEXCEPT;

TOV_API void tov_schema__set_filter_id(KT_context *ctx, tov_schema *schema, int64_t filter_id) KT_NOEXCEPT;

TOV_API void tov_schema__get_filter_id(KT_context *ctx, tov_schema *schema, int64_t *filter_id) KT_NOEXCEPT;

TOV_API void tov_schema__set_backend_info__name(KT_context *ctx, tov_schema *schema, const char *name) KT_NOEXCEPT;

TOV_API void tov_schema__set_backend_info__api(KT_context *ctx, tov_schema *schema, const char *api) KT_NOEXCEPT;

TOV_API void tov_schema__set_backend_info__indistinct_unique_nulls(KT_context *ctx, tov_schema *schema,
                                                                   KT_bool flag) KT_NOEXCEPT;

TOV_API void tov_schema__get_backend_info__indistinct_unique_nulls(KT_context *ctx, tov_schema *schema,
                                                                   KT_bool *value) KT_NOEXCEPT;

KT_END_DECLS

#endif
