// A schema that frees itself.
#pragma once

#include "tov_parse_defin.h"

struct client_owned_schema {
    explicit client_owned_schema(KT_context *context) noexcept : ctx(context)
    {
    }
    ~client_owned_schema()
    {
        KT_context__push_level(ctx);
        tov_schema__nullfree(ctx, &schema);
        KT_context__pop_level(ctx);
    }
    client_owned_schema(const client_owned_schema &) = delete;
    client_owned_schema &operator=(const client_owned_schema &) = delete;

    KT_context *ctx;
    tov_schema *schema = nullptr;
};
