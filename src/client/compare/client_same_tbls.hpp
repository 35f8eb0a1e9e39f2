// Tables that two schemas have alike to the byte: of most schemas that are compared all but a few.
#pragma once

#include "compare/client_match.hpp"

// Finds the tables that have one id and one record in both schemas and refer to such only: comparing them finds
// nothing. There are none where that cannot be told, as in a document with a string that is not UTF-8.
void client_find_same_tbls(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema, client_same_tbls &same);

// Whether each of them is paired with itself: where two tables have one name, it need not be.
bool client_are_paired(const client_comparison &comparison, const client_same_tbls &same);
