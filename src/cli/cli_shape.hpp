// Whether a document has the shape of a schema.
#pragma once

#include "cli.hpp"

// Fails at the first value that is not what a schema has at that place, and names it, e.g.
// tbls.581577110.cols.2.type.name is missing.
void cli_check_schema_shape(KT_context *ctx, const KT_vhash *document, const std::string &path);
