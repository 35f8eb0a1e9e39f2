// Cycles of references, of tables and of integer key columns: what the sources about them share.
#pragma once

#include "fk/fk_graph.hpp"

// Finds the cycles of integer key columns; records stays empty when there is none.
void fk_find_col_cycles(KT_context *ctx, tov_schema *schema, const fk_graph &graph, kt_owned_varray *records) noexcept;

// Appends a record with an empty list of members under the key; makes the list of records when it is the first.
void fk_append_cycle(KT_context *ctx, const char *key, kt_owned_varray *records, KT_varray **members) noexcept;
