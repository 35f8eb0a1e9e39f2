// Translation of host defaults, shared with the tests. Results are owned and freed with _kt_free().
#pragma once

#include "kt_owned.hpp"

extern "C" {

// The SQLite default that stands for a host default in a column of an abstract type; null when the default cannot be
// carried over, which is not a failure. Only the low 8 bits of scale count, and those only for "decimal".
void tov_fix_mssql_defval(KT_context *ctx, const char *abstract_type, uint32_t scale, const char *host_text,
                          char **result) noexcept;

// The function that a host default like (getdate()) calls without arguments: null when the text holds nothing but
// parentheses, `name` as it was when the text is anything else.
void _tov_parse_mssql_defval_func_no_args(KT_context *ctx, const char *host_text, char **name) noexcept;

// Copies bytes into a new text.
void kt_copy_alloc_buf_len(KT_context *ctx, const char *bytes, uint32_t length, char **copy) noexcept;

} // extern "C"
