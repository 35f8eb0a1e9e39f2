// Two schemas in one JSON object, "old" and "new", for targets that set one beside the other.
#pragma once

#include "kt_owned.hpp"
#include "tov_document.h"

#include <string>

struct schema_pair {
    schema_pair(KT_context *context, const uint8_t *data, size_t size) : ctx(context)
    {
        kt_owned_vhash both{ctx};
        const std::string json(reinterpret_cast<const char *>(data), size);
        KT_vhash__alloc__from_json__sz(ctx, both.out(), json.c_str());
        old_schema = read(both, "old");
        new_schema = read(both, "new");
        KT_context__err_reset(ctx);
    }
    ~schema_pair()
    {
        tov_schema__nullfree(ctx, &old_schema);
        tov_schema__nullfree(ctx, &new_schema);
    }
    schema_pair(const schema_pair &) = delete;
    schema_pair &operator=(const schema_pair &) = delete;

    bool is_whole() const
    {
        return old_schema && new_schema;
    }

    KT_context *ctx;
    tov_schema *old_schema; // null where there is none
    tov_schema *new_schema;

  private:
    tov_schema *read(const KT_vhash *both, const char *key) const
    {
        tov_schema *schema = nullptr;
        KT_vhash *child = nullptr;
        kt_owned_vhash copy{ctx};
        if (!kt_has_err(ctx))
            KT_vhash__get__vhash(ctx, both, key, &child);
        if (!kt_has_err(ctx))
            KT_vhash__alloc__copy(ctx, copy.out(), child);
        if (!kt_has_err(ctx))
            tov_schema__alloc__vhash(ctx, copy.out(), nullptr, &schema);
        return schema;
    }
};
