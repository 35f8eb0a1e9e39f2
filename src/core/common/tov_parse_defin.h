/*
 * The schema module: the description of a set of synchronised tables, and every question about it.
 *
 * The conventions below hold for every operation; a docstring says only what is particular to its own.
 *
 * - Context. Every operation takes the error context first. A call has failed exactly when KT_context__has_err() is
 *   true after it. What failed stays in the context until KT_context__err_reset(), and until then every further call
 *   does nothing, except those that free.
 * - Outputs are written when the call succeeds, and left untouched when it fails, unless an operation says otherwise.
 * - Borrowed strings and containers belong to the schema and stay valid until it is changed at that place or freed.
 *   Definitions live in the schema's string pool until the schema is freed. Every other new string or container is
 *   owned by the caller, who frees it with the free operation of its type (char * with _kt_free()).
 * - Ids of tables and columns match without regard to case, names and all other ids exactly. Names, aliases and
 *   expressions go into generated text as they are, without escaping: whoever takes a schema from outside checks
 *   them first.
 * - Arguments must not be null unless a docstring calls them optional. A string that a call keeps is copied; it must
 *   not be one that was borrowed from a record that the call replaces.
 * - KT_ERR_NOT_FOUND means that a table id or column id is not in the schema, and can come from every operation that
 *   takes one. Any operation may fail with KT_ERR_OUT_OF_MEMORY.
 * - A document from outside may have any shape. Where a value is missing or of another type than expected, the
 *   runtime's codes (kt_context.h) say so.
 * - A schema and a context are used by one thread at a time; distinct schemas may be used on distinct threads.
 */
#ifndef TOV_PARSE_DEFIN_H
#define TOV_PARSE_DEFIN_H

#include "tov_abstract_types.h"
#include "tov_col_types.h"
#include "tov_compare.h"
#include "tov_constraints.h"
#include "tov_ddl.h"
#include "tov_defval.h"
#include "tov_document.h"
#include "tov_queries.h"
#include "tov_references.h"
#include "tov_shape.h"

#endif
