// Whether a document has the shape of one, found out quickly.
#pragma once

#include "document/tov_parse_defin_private.hpp"

// How the tree holds a member of this type.
KT_variant_type document_variant_of(tov_member_type type) noexcept;

// The member with that key, or null.
const tov_member *document_find_member(const tov_shape &shape, const char *key) noexcept;

// Whether a value counts as none. Null in the place of an optional string does: setters write it for a string that is
// null.
bool document_is_absent(const KT_variant *value, const tov_member &member) noexcept;

// Whether the record has the shape.
bool document_has_shape(KT_context *ctx, const KT_vhash *record, const tov_shape &shape) noexcept;
