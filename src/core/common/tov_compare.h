/* Comparing two schemas, and the lite schema. */
#ifndef TOV_COMPARE_H
#define TOV_COMPARE_H

#include "tov_export.h"

KT_BEGIN_DECLS

TOV_API void tov_schema__list_tbls(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) KT_NOEXCEPT;

TOV_API void tov_schema__diff_tbls(KT_context *ctx, tov_schema *a, tov_schema *b, KT_varray **only_in_a,
                                   KT_varray **only_in_b, KT_varray **in_both_same,
                                   KT_varray **in_both_changed) KT_NOEXCEPT;

TOV_API void tov_schema__diff_cols(KT_context *ctx, tov_schema *a, tov_schema *b, const char *tbl_id,
                                   KT_varray **only_in_a, KT_varray **only_in_b, KT_varray **in_both) KT_NOEXCEPT;

TOV_API void tov_schema__lite(KT_context *ctx, tov_schema *schema, KT_nullhash *tbl_ids, KT_string **json) KT_NOEXCEPT;

TOV_API void tov_schema_lite__count_tbls(KT_context *ctx, KT_vhash *lite, uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema_lite__get_nth_tbl_id(KT_context *ctx, KT_vhash *lite, uint32_t n,
                                             const char **tbl_id) KT_NOEXCEPT;

TOV_API void tov_schema_lite__get_tbl_txid(KT_context *ctx, KT_vhash *lite, const char *tbl_id,
                                           int64_t *txid) KT_NOEXCEPT;

TOV_API void tov_schema_lite__count_cols(KT_context *ctx, KT_vhash *lite, const char *tbl_id,
                                         uint32_t *count) KT_NOEXCEPT;

TOV_API void tov_schema_lite__get_nth_col_id(KT_context *ctx, KT_vhash *lite, const char *tbl_id, uint32_t n,
                                             const char **col_id) KT_NOEXCEPT;

TOV_API void tov_schema_lite__get_col_name(KT_context *ctx, KT_vhash *lite, const char *tbl_id, const char *col_id,
                                           const char **name) KT_NOEXCEPT;

KT_END_DECLS

#endif
