// The check of every text of a schema's document that becomes part of a statement.
#pragma once

#include "tov_client.h"

// Copies the schema's document: a map whose "schema" is what the schema writes as JSON; owned.
void client_copy_document(KT_context *ctx, tov_schema *schema, KT_vhash **copy) noexcept;

// Refuses the document when a text in it is not safe or not fit to stand in SQL text; see tov_client__check_texts().
void client_check_texts(KT_context *ctx, tov_schema *schema, KT_vhash *copy) noexcept;
