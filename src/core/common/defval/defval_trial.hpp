// Questions about a default that SQLite itself answers best, asked of a throw-away in-memory database.
#pragma once

#include "kt_owned.hpp"

extern "C" {

// Stores a literal, which is SQL text, in a column of an abstract type, under the check that real tables get. `ok`
// says whether the row went in. A literal that the check rejects is a failure: KT_ERR_SQLITE with SQLite's constraint
// code, described by the check's message.
void _tov_is_valid_constant(KT_context *ctx, const char *abstract_type, const char *literal, KT_bool *ok) noexcept;

// Whether a literal lies in a range, both ends included. Anything but a plain decimal integer goes to the trial above.
void _tov_int_default_valid(KT_context *ctx, const char *literal, const char *abstract_type, int64_t low, int64_t high,
                            KT_bool *ok) noexcept;

} // extern "C"

// Runs a query for typeof(x) and x, and reads an x that is the text True or False, in any letter case, as "1" or "0";
// `bit` is null for any other.
void _tov_read_truth(KT_context *ctx, const char *query, const char **bit) noexcept;
